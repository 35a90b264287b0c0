// Images of scenes and tools: PNG or JPEG bytes either fail with words or give all their pixels.
#include "core/image_file.h"
#include "fuzz/container_input.h"
#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    using namespace zorvan;
    using fuzz::Require;
    qonvert::ReadOptions unused;
    const Image before{1, 1, {1, 2, 3, 4}};
    Image image = before;
    if (DecodeImage(qonvert::fuzz::FileFromInput("png", {data, size}, unused), image).empty()) {
        Require(image.width > 0 && image.height > 0);
        Require(image.rgba.size() == std::size_t{4} * image.width * image.height);
    } else {
        Require(image == before);
    }
    return 0;
}
