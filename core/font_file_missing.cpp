// Stands in for font_file.cpp in builds without FreeType.
#include "core/font_file.h"

namespace zorvan {

FontFile::~FontFile() = default;

std::unique_ptr<FontFile> FontFile::Open(std::string const& path, int, std::string& error) {
    error = path + ": this library was built without font support";
    return nullptr;
}

}  // namespace zorvan
