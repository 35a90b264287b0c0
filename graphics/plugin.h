// The entry points that the host looks up by name.
#pragma once

#include <cstdint>

#include "core/class_registry.h"
#include "graphics/api.h"

extern "C" {

// Registers a factory record for each of the seven core classes that this library implements. The
// registry owns the records: it must give them up before the library is unloaded. Always 1.
ZORVAN_GL_API uint32_t Initialize(zorvan::ClassRegistry* registry);

// A new zorvan::GraphicsDevice, owned by the caller and deleted through its virtual destructor.
ZORVAN_GL_API void* CreateDevice();

// Call before unloading. Does nothing: registry and host release what this library made.
ZORVAN_GL_API void Shutdown();
}
