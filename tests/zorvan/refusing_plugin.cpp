// A plug-in whose start fails.
#include <cstdint>

extern "C" {
__attribute__((visibility("default"))) uint32_t Initialize(void*) {
    return 0;
}
__attribute__((visibility("default"))) void* CreateDevice() {
    return nullptr;
}
__attribute__((visibility("default"))) void Shutdown() {}
}
