// A program of the graphics device, shared through a registry.
#pragma once

#include <cstdint>
#include <vector>

#include "core/api.h"
#include "core/property.h"
#include "core/referenced.h"

namespace zorvan {

// The order of the virtual operations is part of the binary interface with the plug-in.
class ZORVAN_CORE_API Shader : public Referenced {
  public:
    Shader();
    Shader(Shader const&) = delete;
    ~Shader() override;

    virtual void Save(Serializer& writer);
    virtual bool Load(Deserializer& reader);

    // The registered shader with the identifier, or null.
    static Shader* Find(uint32_t identifier);
    // Registers a shader under its identifier and holds a reference: programs outlive their users. An
    // earlier shader of the same identifier is released.
    static void Add(Shader* shader);
    // Empties the registry. For the host, before the device's context and the plug-in go away.
    static void ReleaseAll();

    PropertyList properties;
    PropertyT<uint32_t> identifier;
    // Precompiled program for the device; empty for programs built from source.
    PropertyT<std::vector<uint8_t>> binary;
};

}  // namespace zorvan
