#include "tools/zorvan/warnings.h"

#include <algorithm>

#include "core/pixel_format.h"
#include "core/sprite.h"
#include "core/text.h"
#include "tools/zorvan/atitc.h"
#include "tools/zorvan/describe_node.h"

namespace zorvan::tool {
namespace {

// Levels of a complete mip chain.
uint32_t CompleteChain(Texture const& texture) {
    uint32_t levels = 1;
    for (int32_t side = std::max(texture.width.Get(), texture.height.Get()); side > 1; side /= 2) {
        ++levels;
    }
    return levels;
}

void CheckTexture(Texture const& texture, std::vector<std::string>& problems) {
    const uint32_t levels = texture.levels.Count();
    const uint32_t complete = CompleteChain(texture);
    if (levels > 1 && levels < complete) {
        problems.push_back("texture '" + texture.name + "' has " + std::to_string(levels) + " of " +
                           std::to_string(complete) + " mip levels: it draws black");
    }
    if (IsAtitc(texture)) {
        problems.push_back("texture '" + texture.name + "' is " + TextureFormatName(texture.format.Get()) +
                           ": it draws black on drivers that lack GL_AMD_compressed_ATC_texture, unless "
                           "--decode-atitc unpacks it");
    }
}

// Text adds light: each channel ends at background x (1 - colour) + colour x alpha.
void CheckText(Text& text, RealFixed opacity, Scene const& scene, std::vector<std::string>& problems) {
    const std::string name = NodePath(text) + ": text";
    ColorT<RealFixed> const& color = text.color.Get();
    ColorT<RealFixed> const& behind = scene.background;
    const RealFixed zero{};
    if (!text.font.Get()) {
        problems.push_back(name + " without a font draws nothing");
    } else if (color.red == zero && color.green == zero && color.blue == zero) {
        problems.push_back(name + " in black never shows: text adds light");
    } else if (color.alpha * opacity >= kOne<RealFixed> &&
               std::min({behind.red, behind.green, behind.blue}) >= kOne<RealFixed>) {
        problems.push_back(name + " that is opaque never shows on the scene's white background");
    }
}

void CheckNode(Node& node, RealFixed opacity, Scene const& scene, std::vector<std::string>& problems) {
    if (node.IsKindOf(MakeClassId(u"TransformNode"))) {
        opacity = opacity * static_cast<TransformNode&>(node).opacity.Get();
    }
    if (node.IsKindOf(MakeClassId(u"Text"))) {
        CheckText(static_cast<Text&>(node), opacity, scene, problems);
    } else if (node.IsKindOf(MakeClassId(u"Sprite"))) {
        auto& sprite = static_cast<Sprite&>(node);
        if (sprite.width.Get() == 0 || sprite.height.Get() == 0) {
            problems.push_back(NodePath(node) + ": a sprite of " + std::to_string(sprite.width.Get()) + "x" +
                               std::to_string(sprite.height.Get()) + " pixels draws nothing");
        }
    }
    for (Node* child : node.GetChildren()) {
        CheckNode(*child, opacity, scene, problems);
    }
}

}  // namespace

std::vector<std::string> FindProblems(Scene& scene) {
    std::vector<std::string> problems;
    for (RefT<Texture> const& texture : scene.textures) {
        CheckTexture(*texture, problems);
    }
    CheckNode(*scene.root, kOne<RealFixed>, scene, problems);
    return problems;
}

}  // namespace zorvan::tool
