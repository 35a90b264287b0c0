// Stands in for the PNG codec in builds without image support.
#include "core/image_codecs.h"

namespace zorvan {
namespace {

constexpr char const* kMissing = "this library was built without image support";

}  // namespace

std::string DecodePng(std::vector<uint8_t> const&, Image&, MemoryClaim*) {
    return kMissing;
}

std::string EncodePng(Image const&, std::string&) {
    return kMissing;
}

}  // namespace zorvan
