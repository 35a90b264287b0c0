// Nodes from scene data, by their class names.
#include <memory>
#include <string_view>

#include "core/class_registry.h"
#include "core/sprite.h"

namespace zorvan {
namespace {

struct NodeClass {
    std::string_view name;
    ClassId id;
};

// Only nodes: the registry creates resources as well.
constexpr NodeClass kNodeClasses[] = {{"TransformNode", MakeClassId(u"TransformNode")},
                                      {"Timeline", MakeClassId(u"Timeline")},
                                      {"Camera", MakeClassId(u"Camera")},
                                      {"Sprite", MakeClassId(u"Sprite")},
                                      {"Text", MakeClassId(u"Text")}};

// About what the largest kind of node takes, with its properties and their table.
constexpr uint64_t kNodeBytes = 2048;

Node* CreateNode(Deserializer& reader, std::string_view name) {
    for (NodeClass const& entry : kNodeClasses) {
        if (entry.name != name) {
            continue;
        }
        if (entry.id == MakeClassId(u"TransformNode")) {
            return new TransformNode;  // groups need no back end
        }
        auto* node = static_cast<Node*>(reader.Registry().Create(entry.id));
        if (node == nullptr) {
            reader.Fail("class", "got \"" + std::string(name) + "\", for which no back end is loaded");
        }
        return node;
    }
    reader.Fail("class", "got \"" + std::string(name) +
                             "\", expected TransformNode, Timeline, Camera, Sprite or Text");
    return nullptr;
}

// Loaded geometry shows the whole stored image; setting the texture once shows its used part.
void ShowUsedPart(Node& node) {
    if (!node.IsKindOf(MakeClassId(u"Sprite"))) {
        return;
    }
    auto& sprite = static_cast<Sprite&>(node);
    RefT<Texture> texture(sprite.GetTexture());
    if (texture && (texture->usedWidth.Get() != texture->width.Get() ||
                    texture->usedHeight.Get() != texture->height.Get())) {
        sprite.SetTexture(texture.Get());
    }
}

}  // namespace

Node* LoadNode(Deserializer& reader, char const* impliedClass) {
    std::string name = impliedClass == nullptr ? "" : impliedClass;
    if (!reader.Read("class", name) && (reader.Failed() || impliedClass == nullptr)) {
        reader.Fail(nullptr, "got a node without \"class\", expected its class name");
        return nullptr;
    }
    if (!reader.TakeMemory(nullptr, kNodeBytes, "a node")) {
        return nullptr;
    }
    std::unique_ptr<Node> node(CreateNode(reader, name));
    if (node == nullptr || !node->Load(reader)) {
        return nullptr;
    }
    ShowUsedPart(*node);
    return node.release();
}

}  // namespace zorvan
