#include "core/shader.h"

#include <unordered_map>

namespace zorvan {
namespace {

void RegisterShader(void* owner) {
    auto& shader = *static_cast<Shader*>(owner);
    shader.properties.Add("identifier", shader.identifier);
    shader.properties.Add("binary", shader.binary);
}

using Registry = std::unordered_map<uint32_t, RefT<Shader>>;

Registry& TheRegistry() {
    // Never destroyed: the shaders' code may be unloaded before the process's last destructors run.
    static Registry& registry = *new Registry;
    return registry;
}

}  // namespace

Shader::Shader() : properties(this, &RegisterShader), identifier(properties), binary(properties) {}

Shader::~Shader() = default;

void Shader::Save(Serializer& writer) {
    properties.Save(writer);
}

bool Shader::Load(Deserializer& reader) {
    return properties.Load(reader);
}

Shader* Shader::Find(uint32_t identifier) {
    const auto found = TheRegistry().find(identifier);
    return found == TheRegistry().end() ? nullptr : found->second.Get();
}

void Shader::Add(Shader* shader) {
    if (shader != nullptr) {
        TheRegistry()[shader->identifier.Get()] = RefT<Shader>(shader);
    }
}

void Shader::ReleaseAll() {
    TheRegistry().clear();
}

}  // namespace zorvan
