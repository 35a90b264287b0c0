// Byte streams to files.
#pragma once

#include <cstdint>
#include <cstdio>

#include "core/api.h"
#include "core/mstring.h"

namespace zorvan {

enum class FileMode : uint32_t {
    Read = 1,
    Write = 2,  // creates the file or empties it
};

class ZORVAN_CORE_API FileStream {
  public:
    FileStream() = default;
    FileStream(FileStream const&) = delete;
    FileStream& operator=(FileStream const&) = delete;
    ~FileStream();  // closes a stream that is still open

    // Closes the stream first when it is open. False when the file cannot be opened.
    bool Open(MStringT<wchar_t> const& path, FileMode mode);
    // Both return the number of bytes moved, less than asked at the end or on an error.
    uint32_t Write(void const* data, uint32_t size);
    uint32_t Read(void* data, uint32_t size);
    // Flushes and closes; nothing when not open.
    void Close();

  private:
    std::FILE* file_ = nullptr;
};

}  // namespace zorvan
