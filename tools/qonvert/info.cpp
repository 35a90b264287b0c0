// qonvert info: what a texture file holds.
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "tools/qonvert/files.h"
#include "tools/qonvert/format_names.h"
#include "tools/qonvert/load.h"
#include "tools/qonvert/verbs.h"

namespace qonvert {

namespace {

struct InfoOptions {
    std::string file;
    std::string container;
    std::string raw;
};

const char* OriginName(Origin origin) {
    switch (origin) {
        case Origin::kTopLeft:
            return "top-left";
        case Origin::kBottomLeft:
            return "bottom-left";
        case Origin::kUnstated:
            break;
    }
    return "unstated";
}

nlohmann::ordered_json ToJson(const std::string& path, const LoadedTexture& loaded,
                              const Findings& findings) {
    const TextureFile& texture = loaded.texture;
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    json["file"] = path;
    json["container"] = loaded.container->name;
    json["format"] = FormatName(texture.format);
    json["encoding"] = texture.encoding;
    json["width"] = texture.width;
    json["height"] = texture.height;
    json["origin"] = OriginName(texture.origin);
    json["bytes"] = loaded.fileBytes;
    json["levels"] = nlohmann::ordered_json::array();
    for (std::uint32_t i = 0; i < texture.levels.size(); ++i) {
        json["levels"].push_back({{"width", LevelSide(texture.width, i)},
                                  {"height", LevelSide(texture.height, i)},
                                  {"bytes", texture.levels[i].size()}});
    }
    json["warnings"] = qonvert::ToJson(findings);
    return json;
}

void PrintText(std::ostream& out, const std::string& path, const LoadedTexture& loaded,
               const Findings& findings) {
    const TextureFile& texture = loaded.texture;
    out << Printable(path) << '\n'
        << "  container  " << loaded.container->name << " (" << texture.encoding << ")\n"
        << "  format     " << FormatName(texture.format) << '\n'
        << "  size       " << texture.width << " x " << texture.height << '\n'
        << "  origin     " << OriginName(texture.origin) << '\n'
        << "  file       " << loaded.fileBytes << " bytes\n";
    for (std::uint32_t i = 0; i < texture.levels.size(); ++i) {
        out << "  level " << i << "    " << LevelSide(texture.width, i) << " x "
            << LevelSide(texture.height, i) << ", " << texture.levels[i].size() << " bytes\n";
    }
    for (const Finding& finding : findings) {
        out << "  " << Printable(finding.Describe()) << '\n';
    }
}

ExitCode RunInfo(const Session& session, const InfoOptions& options) {
    ReadOptions read;
    read.deepSamples = DeepSamples::kLuminance16;
    if (!options.raw.empty()) {
        ParseRaw(options.raw, read);
    }
    Findings findings;
    LoadedTexture loaded;
    LoadTexture(options.file, options.container, read, findings, loaded);
    if (session.json) {
        session.Print(ToJson(InputName(options.file), loaded, findings));
    } else {
        PrintText(session.text(), InputName(options.file), loaded, findings);
    }
    return ExitCode::kOk;
}

}  // namespace

void AddInfoVerb(CLI::App& program, Session& session) {
    auto options = std::make_shared<InfoOptions>();
    CLI::App* verb = AddVerb(program, session, "info", "Show what a texture file holds",
                             [&session, options] { return RunInfo(session, *options); });
    verb->add_option("FILE", options->file, "Texture file, - for standard input")->required();
    verb->add_option("--container", options->container, "Container, where neither name nor first bytes tell");
    verb->add_option("--raw", options->raw, "Size and format of a headerless file")->type_name("WxH:FORMAT");
    verb->footer("Example:\n  qonvert info leaf.ktx");
}

}  // namespace qonvert
