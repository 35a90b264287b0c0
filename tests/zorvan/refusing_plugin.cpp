// A plug-in whose start fails.
#include <cstdint>

namespace zorvan {
class ClassRegistry;
}

extern "C" {
__attribute__((visibility("default"))) uint32_t Initialize(zorvan::ClassRegistry*) {
    return 0;
}
__attribute__((visibility("default"))) void* CreateDevice() {
    return nullptr;
}
__attribute__((visibility("default"))) void Shutdown() {}
}
