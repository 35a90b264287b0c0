#include "core/file_stream.h"

namespace zorvan {

FileStream::~FileStream() {
    Close();
}

bool FileStream::Open(MStringT<wchar_t> const& path, FileMode mode) {
    Close();
    file_ = std::fopen(ToUtf8(path).c_str(), mode == FileMode::Write ? "wb" : "rb");
    if (file_ == nullptr) {
        return false;
    }
    // Unbuffered: a full disk shows in the write that meets it, not in Close.
    std::setvbuf(file_, nullptr, _IONBF, 0);
    return true;
}

uint32_t FileStream::Write(void const* data, uint32_t size) {
    return file_ == nullptr ? 0 : static_cast<uint32_t>(std::fwrite(data, 1, size, file_));
}

uint32_t FileStream::Read(void* data, uint32_t size) {
    return file_ == nullptr ? 0 : static_cast<uint32_t>(std::fread(data, 1, size, file_));
}

void FileStream::Close() {
    if (file_ != nullptr) {
        std::fclose(file_);
        file_ = nullptr;
    }
}

}  // namespace zorvan
