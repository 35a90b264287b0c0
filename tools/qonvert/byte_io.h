// Words out of and into byte buffers, with every size checked.
#pragma once

#include <cstdint>
#include <string>

#include "tools/qonvert/finding.h"
#include "tools/qonvert/texture_file.h"

namespace qonvert {

// Reads on through a file's bytes. A read beyond the end rejects the file.
class ByteReader {
  public:
    explicit ByteReader(ByteSpan bytes, bool bigEndian = false) : bytes_(bytes), bigEndian_(bigEndian) {}

    void setBigEndian(bool bigEndian) { bigEndian_ = bigEndian; }
    std::uint64_t remaining() const { return bytes_.size() - at_; }

    std::uint16_t Half(const char* field) { return static_cast<std::uint16_t>(Number(field, 2)); }
    std::uint32_t Word(const char* field) { return Number(field, 4); }

    // The next `count` bytes of the header.
    ByteSpan Header(const char* field, std::uint64_t count) {
        return Take(FindingNumber::kHeaderTruncated, field, count);
    }
    // The next `count` bytes of pixel data.
    ByteSpan Data(const std::string& field, std::uint64_t count) {
        return Take(FindingNumber::kDataMissing, field, count);
    }
    // Skips up to `count` padding bytes, which may be missing at the end of the file.
    void SkipPadding(std::uint64_t count) { at_ += count < remaining() ? count : remaining(); }

  private:
    ByteSpan Take(FindingNumber number, const std::string& field, std::uint64_t count) {
        if (count > remaining()) {
            Reject(number, field, std::to_string(remaining()) + " bytes left in the file",
                   std::to_string(count));
        }
        const ByteSpan part = bytes_.subspan(at_, static_cast<std::size_t>(count));
        at_ += part.size();
        return part;
    }
    std::uint32_t Number(const char* field, unsigned count) {
        const ByteSpan part = Header(field, count);
        std::uint32_t number = 0;
        for (unsigned i = 0; i < count; ++i) {
            number |= std::uint32_t{part[i]} << (8 * (bigEndian_ ? count - 1 - i : i));
        }
        return number;
    }

    ByteSpan bytes_;
    std::size_t at_ = 0;
    bool bigEndian_;
};

inline void AppendWord(Bytes& out, std::uint32_t word) {
    for (unsigned i = 0; i < 4; ++i) {
        out.push_back(static_cast<std::uint8_t>(word >> (8 * i)));
    }
}

inline void AppendBigEndianHalf(Bytes& out, std::uint32_t half) {
    out.push_back(static_cast<std::uint8_t>(half >> 8));
    out.push_back(static_cast<std::uint8_t>(half));
}

inline void Append(Bytes& out, ByteSpan part) {
    out.insert(out.end(), part.begin(), part.end());
}

// Notes bytes that lie behind the last level.
inline void NoteTrailingBytes(const ByteReader& reader, Findings& findings) {
    if (reader.remaining() != 0) {
        Note(findings, FindingNumber::kTrailingBytes, "bytes after the last level",
             std::to_string(reader.remaining()), "0");
    }
}

}  // namespace qonvert
