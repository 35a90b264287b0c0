// Words out of files and into byte buffers, with every size checked.
#pragma once

#include <cstdint>
#include <string>

#include "tools/qonvert/byte_source.h"
#include "tools/qonvert/finding.h"
#include "tools/qonvert/texture_file.h"

namespace qonvert {

// Reads on through a file's bytes. A read beyond the end rejects the file.
class ByteReader {
  public:
    explicit ByteReader(ByteSource& source, bool bigEndian = false)
        : source_(source), bigEndian_(bigEndian) {}

    void setBigEndian(bool bigEndian) { bigEndian_ = bigEndian; }
    std::uint64_t Ahead(std::uint64_t most) { return source_.Ahead(most); }

    std::uint16_t Half(const char* field) { return static_cast<std::uint16_t>(Number(field, 2)); }
    std::uint32_t Word(const char* field) { return Number(field, 4); }

    // The next `count` bytes of the header.
    Bytes Header(const char* field, std::uint64_t count) {
        return Take(FindingNumber::kHeaderTruncated, field, count);
    }
    // The next `count` bytes of pixel data.
    Bytes Data(const std::string& field, std::uint64_t count) {
        return Take(FindingNumber::kDataMissing, field, count);
    }
    // Skips up to `count` padding bytes, fewer than 4, which may be missing at the end of the file.
    void SkipPadding(std::uint64_t count) {
        std::uint8_t padding[4];
        source_.Take(std::span(padding, static_cast<std::size_t>(Ahead(count))));
    }
    // Rejects a file that ends before the next `count` bytes.
    void Require(FindingNumber number, const std::string& field, std::uint64_t count) {
        if (const std::uint64_t left = Ahead(count); left < count) {
            Reject(number, field, std::to_string(left) + " bytes left in the file", std::to_string(count));
        }
    }

  private:
    Bytes Take(FindingNumber number, const std::string& field, std::uint64_t count) {
        Require(number, field, count);
        Bytes part(static_cast<std::size_t>(count));
        source_.Take(part);
        return part;
    }
    std::uint32_t Number(const char* field, unsigned count) {
        Require(FindingNumber::kHeaderTruncated, field, count);
        std::uint8_t part[4];
        source_.Take(std::span(part, count));
        std::uint32_t number = 0;
        for (unsigned i = 0; i < count; ++i) {
            number |= std::uint32_t{part[i]} << (8 * (bigEndian_ ? count - 1 - i : i));
        }
        return number;
    }

    ByteSource& source_;
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

// Notes bytes that lie behind `what`.
inline void NoteTrailingBytes(ByteSource& source, Findings& findings, const char* what = "the last level") {
    if (const std::uint64_t count = source.Skip(); count != 0) {
        Note(findings, FindingNumber::kTrailingBytes, std::string("bytes after ") + what,
             std::to_string(count), "0");
    }
}

}  // namespace qonvert
