// Scene files: whatever loads, saves to a text that loads to the same scene, and updates.
#include <string_view>

#include "fuzz/fuzz_input.h"
#include "tests/core/fake_backend.h"

namespace {

// Within what the fuzzer may take itself.
constexpr std::uint64_t kMemoryLimit = 512u << 20;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using namespace zorvan;
    using fuzz::Require;
    const std::string_view text(reinterpret_cast<char const*>(data), size);
    test::FakeBackend backend;
    Scene scene;
    scene.SetMemoryLimit(kMemoryLimit);
    if (!scene.Parse(text, backend.registry)) {
        Require(!scene.Error().empty());
        return 0;
    }
    std::string first;
    std::string second;
    if (!scene.Save(first)) {
        return 0;
    }
    Scene again;
    again.SetMemoryLimit(kMemoryLimit);
    Require(again.Parse(first, backend.registry));
    Require(again.Save(second));
    Require(first == second);
    test::FakeDevice device;
    for (int half = 0; half < 8; ++half) {
        again.root->Update(device, RealFixed::FromRaw(half * 32768));
    }
    return 0;
}
