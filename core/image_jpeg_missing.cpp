// Stands in for the JPEG codec in builds without it.
#include "core/image_codecs.h"

namespace zorvan {

std::string DecodeJpeg(std::vector<uint8_t> const&, Image&, MemoryClaim*) {
    return "this library was built without JPEG support";
}

}  // namespace zorvan
