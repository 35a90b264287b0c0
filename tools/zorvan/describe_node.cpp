#include "tools/zorvan/describe_node.h"

#include <nlohmann/json.hpp>

#include "core/json_writer.h"

namespace zorvan::tool {

std::string ClassName(Node& node) {
    std::string name = node.GetClassName();
    if (name.size() > 2 && name.ends_with("GL")) {
        name.resize(name.size() - 2);
    }
    return name;
}

std::string NodePath(Node& node) {
    Node* parent = node.GetParent();
    if (parent == nullptr) {
        return "/root";
    }
    const uint32_t index = parent->GetChildren().IndexOf(&node);
    // A camera stands beside the children.
    return NodePath(*parent) +
           (index == List<Node*>::kNotFound ? "/camera" : "/children/" + std::to_string(index));
}

std::string PropertyText(Node& node) {
    JsonWriter writer;
    node.GetProperties().Save(writer);
    // The writer's own line breaks are for files.
    return nlohmann::ordered_json::parse(writer.Text()).dump();
}

}  // namespace zorvan::tool
