// Where a container's reader takes a file's bytes from: as many as it needs, one after another.
#pragma once

#include <cstdint>

#include "tools/qonvert/texture_file.h"

namespace texfile {
class InputFile;
}

namespace qonvert {

// Every function may throw ToolError (I/O).
class ByteSource {
  public:
    virtual ~ByteSource() = default;

    // How many of the next `most` bytes there are. To be asked before memory is taken for them.
    virtual std::uint64_t Ahead(std::uint64_t most) = 0;
    // Takes as many bytes as `out` holds, which must be there.
    void Take(std::span<std::uint8_t> out) {
        TakeNext(out);
        taken_ += out.size();
    }
    // Skips what is left; returns how many bytes that were.
    std::uint64_t Skip() {
        const std::uint64_t count = SkipRest();
        taken_ += count;
        return count;
    }
    // Bytes taken and skipped so far.
    std::uint64_t taken() const { return taken_; }

  private:
    virtual void TakeNext(std::span<std::uint8_t> out) = 0;
    virtual std::uint64_t SkipRest() = 0;

    std::uint64_t taken_ = 0;
};

// Bytes that stay the caller's.
class MemorySource final : public ByteSource {
  public:
    explicit MemorySource(ByteSpan bytes) : bytes_(bytes) {}
    std::uint64_t Ahead(std::uint64_t most) override;

  private:
    void TakeNext(std::span<std::uint8_t> out) override;
    std::uint64_t SkipRest() override;

    ByteSpan bytes_;
};

// An open file or pipe that outlives this.
class FileSource final : public ByteSource {
  public:
    explicit FileSource(texfile::InputFile& file) : file_(file) {}
    std::uint64_t Ahead(std::uint64_t most) override;

  private:
    void TakeNext(std::span<std::uint8_t> out) override;
    std::uint64_t SkipRest() override;

    texfile::InputFile& file_;
};

}  // namespace qonvert
