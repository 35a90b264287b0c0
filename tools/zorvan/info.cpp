#include <CLI/CLI.hpp>
#include <algorithm>
#include <new>
#include <string_view>

#include "core/sprite.h"
#include "core/text.h"
#include "core/timeline.h"
#include "tools/common/printable.h"
#include "tools/zorvan/census.h"
#include "tools/zorvan/describe_node.h"
#include "tools/zorvan/loaded_scene.h"
#include "tools/zorvan/report.h"
#include "tools/zorvan/values.h"
#include "tools/zorvan/verb.h"
#include "tools/zorvan/warnings.h"

namespace zorvan::tool {
namespace {

constexpr char const* kFooter =
    "Examples:\n"
    "  zorvan info hello.json\n"
    "  zorvan info crowd.json --children 3\n"
    "  zorvan info hello.json --json\n"
    "\n"
    "Needs neither EGL nor GL.";

struct InfoOptions {
    SceneSource source;
    uint32_t children = 12;
    bool json = false;
};

std::string SizeText(int32_t width, int32_t height) {
    return ToText({width, height});
}

double Number(RealFixed value) {
    return static_cast<double>(value.raw) / 65536.0;
}

// What sets a node apart from others of its class.
Json Details(Node& node) {
    Json details = Json::object();
    if (!node.name.empty()) {
        details["name"] = node.name;
    }
    if (node.IsKindOf(MakeClassId(u"Sprite"))) {
        auto& sprite = static_cast<Sprite&>(node);
        details["size"] = SizeText(sprite.width.Get(), sprite.height.Get());
        details["texture"] = sprite.GetTexture() == nullptr ? Json() : Json(sprite.GetTexture()->name);
    } else if (node.IsKindOf(MakeClassId(u"Text"))) {
        auto& text = static_cast<Text&>(node);
        details["string"] = ToUtf8(text.string.Get());
        details["font"] = text.font.Get() ? Json(text.font.Get()->name) : Json();
    } else if (node.IsKindOf(MakeClassId(u"Timeline"))) {
        auto& timeline = static_cast<Timeline&>(node);
        details["length"] = Number(timeline.length.Get());
        details["rate"] = Number(timeline.rate.Get());
        details["tracks"] = timeline.GetTracks().size();
        details["camera"] = timeline.GetCamera() != nullptr;
    }
    if (node.IsKindOf(MakeClassId(u"TransformNode"))) {
        auto& placed = static_cast<TransformNode&>(node);
        if (placed.transferMode.Get() != kNoTransferMode) {
            details["transferMode"] = placed.transferMode.Get();
        }
    }
    return details;
}

Json TreeAsJson(Node& node) {
    Json json = {{"class", ClassName(node)}};
    json.update(Details(node));
    if (!node.GetChildren().IsEmpty()) {
        Json& children = json["children"] = Json::array();
        for (Node* child : node.GetChildren()) {
            children.push_back(TreeAsJson(*child));
        }
    }
    return json;
}

Json TextureAsJson(Texture const& texture) {
    return {{"name", texture.name},
            {"format", TextureFormatName(texture.format.Get())},
            {"stored", SizeText(texture.width.Get(), texture.height.Get())},
            {"used", SizeText(texture.usedWidth.Get(), texture.usedHeight.Get())},
            {"levels", texture.levels.Count()},
            {"bytes", texture.pixels.size}};
}

void PrintJson(InfoOptions const& options, LoadedScene& loaded, Census const& census) {
    Scene& scene = loaded.GetScene();
    Json json = {{"scene", options.source.scene},
                 {"counts",
                  {{"nodes", census.nodes},
                   {"groups", census.groups},
                   {"sprites", census.sprites},
                   {"texts", census.texts},
                   {"timelines", census.timelines},
                   {"cameras", census.cameras},
                   {"tracks", census.tracks},
                   {"depth", census.depth}}},
                 {"textures", Json::array()},
                 {"fonts", Json::array()},
                 {"programs", scene.shaders.size()}};
    for (RefT<Texture> const& texture : scene.textures) {
        json["textures"].push_back(TextureAsJson(*texture));
    }
    for (RefT<Font> const& font : scene.fonts) {
        json["fonts"].push_back(font->name);
    }
    json["texture_bytes"] = loaded.GetTextureBytes();
    json["warnings"] = FindProblems(scene);
    json["tree"] = TreeAsJson(*scene.root);
    Print(json, stdout);
}

// "Sprite name=sun size=256x256 texture=glow"
std::string DescribeNode(Node& node) {
    std::string line = ClassName(node);
    const Json details = Details(node);
    for (auto const& [key, value] : details.items()) {
        if (!value.is_null() && value != false) {
            line += "  " + key + " " +
                    (value.is_string() ? value.get<std::string>()
                                       : value.dump(-1, ' ', false, Json::error_handler_t::replace));
        }
    }
    return line;
}

void PrintTree(Node& node, std::string const& margin, uint32_t mostChildren) {
    List<Node*>& children = node.GetChildren();
    const uint32_t shown = std::min(children.Count(), mostChildren);
    const uint32_t hidden = children.Count() - shown;
    for (uint32_t i = 0; i < shown; ++i) {
        const bool last = i + 1 == shown && hidden == 0;
        std::printf("%s%s%s\n", margin.c_str(), last ? "└─ " : "├─ ",
                    tools::Printable(DescribeNode(*children[i])).c_str());
        PrintTree(*children[i], margin + (last ? "   " : "│  "), mostChildren);
    }
    if (hidden > 0) {
        std::printf("%s└─ and %u more\n", margin.c_str(), hidden);
    }
}

void PrintText(InfoOptions const& options, LoadedScene& loaded, Census const& census) {
    Scene& scene = loaded.GetScene();
    std::printf("%s\n", tools::Printable(options.source.scene).c_str());
    std::printf(
        "%u nodes, %u deep: %u sprites, %u texts, %u timelines with %u tracks, %u cameras, %u groups\n",
        census.nodes, census.depth, census.sprites, census.texts, census.timelines, census.tracks,
        census.cameras, census.groups);
    std::printf("%zu textures, %llu bytes; %zu fonts; %zu stored programs\n", scene.textures.size(),
                static_cast<unsigned long long>(loaded.GetTextureBytes()), scene.fonts.size(),
                scene.shaders.size());
    for (RefT<Texture> const& texture : scene.textures) {
        std::printf("  %-20s %-10s %-18s %u bytes\n", tools::Printable(texture->name).c_str(),
                    SizeText(texture->width.Get(), texture->height.Get()).c_str(),
                    TextureFormatName(texture->format.Get()), texture->pixels.size);
    }
    std::printf("%s\n", tools::Printable(DescribeNode(*scene.root)).c_str());
    PrintTree(*scene.root, "", options.children);
    for (std::string const& problem : FindProblems(scene)) {
        std::printf("warning: %s\n", tools::Printable(problem).c_str());
    }
}

Status Info(InfoOptions const& options) try {
    Result<std::unique_ptr<LoadedScene>> loaded = LoadedScene::Open(options.source);
    if (!loaded) {
        return loaded.GetFailure();
    }
    const Census census = CountNodes(*(*loaded)->GetScene().root);
    (options.json ? PrintJson : PrintText)(options, **loaded, census);
    return std::nullopt;
} catch (std::bad_alloc const&) {
    return NoMemoryFor(options.source.scene);
}

}  // namespace

Verb AddInfoVerb(CLI::App& program) {
    CLI::App* command = program.add_subcommand("info", "Tells what is in a scene file");
    auto options = std::make_shared<InfoOptions>();
    command->add_option("SCENE", options->source.scene, "Scene file (JSON)")->required();
    command->add_option("--children", options->children,
                        "Show at most this many children of each node; default 12");
    options->source.AddSourceOptions(*command);
    command->add_flag("--json", options->json, "Print everything as JSON");
    command->footer(kFooter);
    return {command, [options] { return Info(*options); }};
}

}  // namespace zorvan::tool
