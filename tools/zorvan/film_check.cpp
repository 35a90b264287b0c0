#include "tools/zorvan/film_check.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace zorvan::tool {
namespace {

// A file with a window on it.
class Film {
  public:
    explicit Film(int descriptor) : descriptor_(descriptor) {
        struct stat status {};
        size_ = fstat(descriptor, &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
    }

    uint64_t GetSize() const { return size_; }

    // -1 behind the end, and where the file cannot be read.
    int Byte(uint64_t at) {
        if (at - begin_ >= filled_) {
            const ssize_t got = pread(descriptor_, window_.data(), window_.size(), static_cast<off_t>(at));
            begin_ = at;
            filled_ = got > 0 ? static_cast<size_t>(got) : 0;
        }
        return filled_ > 0 ? window_[at - begin_] : -1;
    }

    // A number of `count` bytes, at most 8, the highest first.
    std::optional<uint64_t> Number(uint64_t at, int count) {
        uint64_t number = 0;
        for (int i = 0; i < count; ++i) {
            const int byte = Byte(at + static_cast<uint64_t>(i));
            if (byte < 0) {
                return std::nullopt;
            }
            number = number << 8 | static_cast<uint64_t>(byte);
        }
        return number;
    }

  private:
    int descriptor_;
    uint64_t size_ = 0;
    uint64_t begin_ = 0;
    size_t filled_ = 0;
    std::array<uint8_t, 4096> window_;
};

// Bytes of the colour table that a GIF's flags announce.
uint64_t ColorTableSize(int flags) {
    return flags >= 0x80 ? uint64_t{3} << ((flags & 7) + 1) : 0;
}

// The place behind a GIF's chain of data blocks, which an empty one ends; nothing when the file ends before.
std::optional<uint64_t> SkipDataBlocks(Film& film, uint64_t at) {
    int count = film.Byte(at);
    while (count > 0) {
        at += 1 + static_cast<uint64_t>(count);
        count = film.Byte(at);
    }
    return count == 0 ? std::optional(at + 1) : std::nullopt;
}

// Where an MP4 box or a Matroska element has its content.
struct Part {
    uint64_t id = 0;
    uint64_t begin = 0;
    uint64_t end = 0;
};

// Nothing when the box does not fit into the film.
std::optional<Part> ReadBox(Film& film, uint64_t at) {
    std::optional<uint64_t> size = film.Number(at, 4);
    const std::optional<uint64_t> id = film.Number(at + 4, 4);
    Part box{id.value_or(0), at + 8, 0};
    if (size == uint64_t{1}) {
        size = film.Number(at + 8, 8);
        box.begin += 8;
    }
    // A size of 0, up to the end, is what the writer puts first and replaces when it knows.
    if (!id || !size || *size < box.begin - at || *size > film.GetSize() - at) {
        return std::nullopt;
    }
    box.end = at + *size;
    return box;
}

// Bytes that a number of Matroska's takes, by its first one; 0 for none.
int LengthOf(int first) {
    int length = first > 0 ? 1 : 0;
    for (; length > 0 && (first & (0x100 >> length)) == 0; ++length) {
    }
    return length;
}

// Nothing when the element's size is unknown or more than there is before `end`.
std::optional<Part> ReadElement(Film& film, uint64_t at, uint64_t end) {
    const int idLength = LengthOf(film.Byte(at));
    const uint64_t sizeAt = at + static_cast<uint64_t>(idLength);
    const int sizeLength = LengthOf(film.Byte(sizeAt));
    const std::optional<uint64_t> id = film.Number(at, idLength);
    const std::optional<uint64_t> size = film.Number(sizeAt, sizeLength);
    if (idLength == 0 || sizeLength == 0 || !id || !size) {
        return std::nullopt;
    }
    const uint64_t mask = (uint64_t{1} << (7 * sizeLength)) - 1;
    const uint64_t begin = sizeAt + static_cast<uint64_t>(sizeLength);
    if ((*size & mask) == mask || begin > end || (*size & mask) > end - begin) {
        return std::nullopt;
    }
    return Part{*id, begin, begin + (*size & mask)};
}

}  // namespace

bool IsWholeGif(int descriptor) {
    constexpr uint64_t kSignature = 0x474946;  // "GIF"
    constexpr int kImage = 0x2C, kExtension = 0x21, kTrailer = 0x3B;
    Film film(descriptor);
    bool hasImage = false;
    std::optional<uint64_t> at = 13 + ColorTableSize(film.Byte(10));
    bool good = film.Number(0, 3) == kSignature;
    while (good && at && film.Byte(*at) != kTrailer) {
        const int kind = film.Byte(*at);
        good = kind == kImage || kind == kExtension;
        hasImage |= kind == kImage;
        // A label, or a header, colours and the size of the codes.
        at = SkipDataBlocks(film,
                            *at + (kind == kImage ? 11 + ColorTableSize(film.Byte(*at + 9)) : uint64_t{2}));
    }
    return good && hasImage && at && *at + 1 == film.GetSize();
}

bool IsWholeMp4(int descriptor) {
    constexpr uint64_t kType = 0x66747970, kIndex = 0x6D6F6F76, kData = 0x6D646174;  // ftyp, moov, mdat
    Film film(descriptor);
    int types = 0, indices = 0, data = 0;
    uint64_t at = 0;
    while (at < film.GetSize()) {
        const std::optional<Part> box = ReadBox(film, at);
        if (!box) {
            return false;
        }
        types += box->id == kType ? 1 : 0;
        indices += box->id == kIndex ? 1 : 0;
        data += box->id == kData ? 1 : 0;
        at = box->end;
    }
    return types == 1 && indices == 1 && data > 0;
}

bool IsWholeWebm(int descriptor) {
    constexpr uint64_t kHeader = 0x1A45DFA3, kSegment = 0x18538067, kCluster = 0x1F43B675;
    Film film(descriptor);
    const std::optional<Part> header = ReadElement(film, 0, film.GetSize());
    if (!header || header->id != kHeader) {
        return false;
    }
    const std::optional<Part> segment = ReadElement(film, header->end, film.GetSize());
    if (!segment || segment->id != kSegment || segment->end != film.GetSize()) {
        return false;
    }
    bool hasCluster = false;
    for (uint64_t at = segment->begin; at < segment->end;) {
        const std::optional<Part> element = ReadElement(film, at, segment->end);
        if (!element) {
            return false;
        }
        hasCluster |= element->id == kCluster;
        at = element->end;
    }
    return hasCluster;
}

}  // namespace zorvan::tool
