// Every entry point of the block codecs with random arguments from a caller that keeps to the interface. All
// buffers lie between guard pages and have the bytes that the interface names; formats, flags, orders and
// capacities may be wrong, and then nothing may have changed.
#include <bit>
#include <utility>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "fuzz/guarded_memory.h"
#include "texcompress/texcompress.h"

namespace {

using zorvan::fuzz::FuzzInput;
using zorvan::fuzz::GuardedMemory;
using zorvan::fuzz::Require;

constexpr uint64_t kLargestBuffer = 1u << 18;  // bytes
constexpr size_t kHeaderBytes = sizeof(_ATITC_HEADER);

GuardedMemory& SourceMemory() {
    static GuardedMemory memory(kLargestBuffer);
    return memory;
}
GuardedMemory& DestinationMemory() {
    static GuardedMemory memory(kLargestBuffer);
    return memory;
}

bool Seldom(FuzzInput& input) {
    return input.Byte() >= 240;
}

uint32_t Format(FuzzInput& input) {
    constexpr std::array<uint32_t, 5> kFormats = {TXC_FORMAT_ATC, TXC_FORMAT_ETC1, TXC_FORMAT_ATI1N,
                                                  TXC_FORMAT_ATI2N, TXC_FORMAT_ATC_LEGACY};
    return Seldom(input) ? input.Word() : input.Pick(kFormats);
}

uint32_t Flags(FuzzInput& input) {
    return Seldom(input) ? input.Word() : input.Byte() % 32;
}

uint32_t Side(FuzzInput& input) {
    return Seldom(input) ? input.Word() : input.Byte() % 24;
}

bool IsAtc(uint32_t format) {
    return format == TXC_FORMAT_ATC || format == TXC_FORMAT_ATC_LEGACY;
}

uint32_t BlockBytes(uint32_t format, uint32_t flags) {
    const bool alpha = (flags & TXC_FLAG_ALPHA) != 0;
    if (format == TXC_FORMAT_ATI1N) {
        return 8;
    }
    return format == TXC_FORMAT_ATI2N || alpha ? 16 : 8;
}

uint64_t ImageBytes(uint32_t width, uint32_t height, uint32_t blockBytes) {
    return ((uint64_t{width} + 3) / 4) * ((uint64_t{height} + 3) / 4) * blockBytes;
}

// A capacity around what is needed.
uint32_t Capacity(FuzzInput& input, uint64_t needed) {
    const uint64_t largest = std::min(needed, kLargestBuffer);
    const uint32_t choice = input.Byte();
    if (choice < 200) {
        return static_cast<uint32_t>(largest);
    }
    return static_cast<uint32_t>(choice < 230 ? largest - std::min<uint64_t>(largest, input.Byte())
                                              : std::min(largest + input.Byte(), kLargestBuffer));
}

struct Source {
    std::array<uint32_t, 4> masks;
    uint32_t width, height, pitch;
    uint64_t bytes;  // that may be read
};

Source MakeSource(FuzzInput& input) {
    constexpr std::array<std::array<uint32_t, 4>, 5> kLayouts = {{
        {0xFF, 0xFF00, 0xFF0000, 0xFF000000},
        {0xFF, 0xFF00, 0xFF0000, 0},
        {0xF800, 0x07E0, 0x001F, 0},
        {0xF000, 0x0F00, 0x00F0, 0x000F},
        {0xFF, 0xFF, 0xFF, 0},
    }};
    Source source;
    source.masks = input.Pick(kLayouts);
    const bool anyMasks = Seldom(input);
    uint32_t bits = 0;
    uint32_t all = 0;
    for (uint32_t& mask : source.masks) {
        mask = anyMasks ? input.Word() : mask;
        bits += static_cast<uint32_t>(std::popcount(mask));
        all |= mask;
    }
    const uint32_t pixel = (bits + 7) / 8;
    const auto reached = static_cast<uint32_t>(std::bit_width(all) + 7) / 8;
    source.width = Side(input);
    source.height = Side(input);
    source.pitch = Seldom(input) ? input.Word() : source.width * pixel + input.Byte() % 8;
    source.bytes = 0;
    if (source.width != 0 && source.height != 0) {
        source.bytes = uint64_t{source.height - 1} * source.pitch + uint64_t{source.width - 1} * pixel +
                       std::max(pixel, reached);
    }
    return source;
}

// The bytes that a call may change, and what they and its size word were before.
class Destination {
  public:
    Destination(FuzzInput& input, uint32_t room) {
        bytes = DestinationMemory().Take(room, (input.Byte() & 1) != 0);
        input.Fill(bytes, room);
        before_.assign(bytes, bytes + room);
    }
    bool IsUntouched() const { return std::equal(before_.begin(), before_.end(), bytes); }
    bool StayedInside() const { return DestinationMemory().SlackIsUntouched(); }
    // Of a call's result: only a success may have written, and only to the room.
    void Judge(uint32_t status, uint32_t expected) const {
        Require(status == expected || (expected == TXC_OK && status == TXC_ERR_LOW_QUALITY));
        Require(StayedInside() && (expected == TXC_OK || IsUntouched()));
    }

    uint8_t* bytes;

  private:
    std::vector<uint8_t> before_;
};

struct Encoding {
    Source source;
    uint32_t flags, format;
    const uint8_t* pixels;
};

// False when the image is too large to be kept, and would not be refused either.
bool MakeEncoding(FuzzInput& input, Encoding& encoding, uint64_t& needed) {
    encoding.format = Format(input);
    encoding.flags = Flags(input);
    encoding.source = MakeSource(input);
    const Source& source = encoding.source;
    needed = ImageBytes(source.width, source.height, BlockBytes(encoding.format, encoding.flags));
    // What is refused is not read: it gets no pixels at all.
    const bool kept = source.bytes <= kLargestBuffer && needed <= kLargestBuffer;
    if (!kept && needed <= kLargestBuffer) {
        return false;
    }
    const size_t bytes = kept ? source.bytes : 0;
    uint8_t* pixels = SourceMemory().Take(bytes, (input.Byte() & 1) != 0);
    input.Fill(pixels, bytes);
    encoding.pixels = pixels;
    return true;
}

uint32_t ExpectedOfEncoding(const Encoding& encoding, bool accepted, uint64_t needed, uint32_t capacity) {
    return (encoding.flags & 3) == 3 ? TXC_ERR_BAD_FLAGS
           : !accepted               ? TXC_ERR_BAD_FORMAT
           : needed > capacity       ? TXC_ERR_BUFFER_TOO_SMALL
                                     : TXC_OK;
}

void EncodeWithoutHeader(FuzzInput& input) {
    Encoding encoding;
    uint64_t needed = 0;
    if (!MakeEncoding(input, encoding, needed)) {
        return;
    }
    const auto& [source, flags, format, pixels] = encoding;
    uint32_t asked = 0;
    const bool accepted =
        TxCompressQueryEncodeBufferSize(source.width, source.height, 1, flags, format, &asked) == TXC_OK;
    // The size of an image without pixels counts a block all the same.
    needed = std::max<uint64_t>(needed, asked);
    const uint32_t capacity = Capacity(input, needed);
    const Destination destination(input, capacity);
    uint32_t written = capacity;
    const uint32_t status = TxCompressEncode(pixels, source.masks[0], source.masks[1], source.masks[2],
                                             source.masks[3], source.width, source.height, source.pitch,
                                             flags, format, destination.bytes, &written);
    destination.Judge(status, ExpectedOfEncoding(encoding, accepted, needed, capacity));
    Require(written == (status == TXC_OK ? asked : capacity));
}

// The size that the encoders with a header tell, and the bytes that they need: a side from 2^31 on is a
// negative one to them, which has no blocks.
std::pair<uint32_t, uint64_t> NeededWithHeader(const Encoding& encoding) {
    const auto& [source, flags, format, pixels] = encoding;
    const auto visited = [](uint32_t side) { return side < 0x80000000 ? side : 0; };
    uint32_t asked = 0;
    ATI_TC_EncodeImage_Seperate_Header(pixels, source.masks[0], source.masks[1], source.masks[2],
                                       source.masks[3], source.width, source.height, source.pitch, flags,
                                       format, nullptr, nullptr, &asked);
    const uint64_t blocks =
        ImageBytes(visited(source.width), visited(source.height), BlockBytes(format, flags));
    return {asked, std::max<uint64_t>(asked, blocks)};
}

void EncodeWithHeader(FuzzInput& input) {
    Encoding encoding;
    uint64_t needed = 0;
    if (!MakeEncoding(input, encoding, needed)) {
        return;
    }
    const auto& [source, flags, format, pixels] = encoding;
    const auto [asked, room] = NeededWithHeader(encoding);
    const auto encode =
        input.Byte() % 2 == 0 ? ATI_TC_EncodeImage_Seperate_Header : ATI_TC_EncodeImageFast_Seperate_Header;
    const bool query = Seldom(input);
    const uint32_t capacity = Capacity(input, room);
    const Destination destination(input, capacity);
    _ATITC_HEADER header{1, 2, 3, 4, 5};
    uint32_t word = capacity;
    const uint32_t status = encode(pixels, source.masks[0], source.masks[1], source.masks[2], source.masks[3],
                                   source.width, source.height, source.pitch, flags, format, &header,
                                   query ? nullptr : destination.bytes, &word);
    const uint32_t expected = ExpectedOfEncoding(encoding, IsAtc(format), query ? 0 : room, capacity);
    destination.Judge(status, expected);
    if (query) {
        Require(destination.IsUntouched() && header.nFormat == 1);
        Require(word == (status == TXC_OK ? asked : capacity));
    } else {
        Require(word == capacity && header.nDataOffset == (expected == TXC_OK ? kHeaderBytes : 5));
    }
}

// The size word lies twenty words before the one that is passed.
void EncodeIntoOneBuffer(FuzzInput& input) {
    Encoding encoding;
    uint64_t needed = 0;
    if (!MakeEncoding(input, encoding, needed)) {
        return;
    }
    const auto& [source, flags, format, pixels] = encoding;
    const uint64_t room = NeededWithHeader(encoding).second;
    const uint32_t capacity = std::min<uint32_t>(Capacity(input, room), kLargestBuffer - kHeaderBytes);
    const Destination destination(input, capacity + kHeaderBytes);
    std::array<uint32_t, 21> words{};
    words[0] = capacity;
    words[20] = 77;
    const uint32_t status = ATI_TC_EncodeImage(pixels, source.masks[0], source.masks[1], source.masks[2],
                                               source.masks[3], source.width, source.height, source.pitch,
                                               flags, format, destination.bytes, &words[20]);
    destination.Judge(status, ExpectedOfEncoding(encoding, IsAtc(format), room, capacity));
    Require(words[0] == capacity + kHeaderBytes && words[20] == 77);
}

struct Decoding {
    uint32_t format, width, height, flags, order;
    uint64_t pixelBytes;  // of the decoded image
};

Decoding MakeDecoding(FuzzInput& input) {
    Decoding decoding;
    decoding.format = Format(input);
    decoding.flags = Flags(input);
    decoding.width = Side(input);
    decoding.height = Side(input);
    decoding.order = Seldom(input) ? input.Word() : 1 + input.Byte() % 2;
    decoding.pixelBytes = 0;
    return decoding;
}

uint64_t PixelBytes(uint64_t width, uint64_t height, uint32_t flags) {
    return width * height * ((flags & TXC_FLAG_ALPHA) != 0 ? 4 : 3);
}

uint32_t ExpectedOfDecoding(const Decoding& decoding, bool accepted, uint32_t capacity) {
    return !accepted                                    ? TXC_ERR_BAD_FORMAT
           : decoding.pixelBytes > capacity             ? TXC_ERR_BUFFER_TOO_SMALL
           : decoding.order != 1 && decoding.order != 2 ? TXC_ERR_BAD_ORDER
                                                        : TXC_OK;
}

uint32_t LevelSide(uint32_t side, uint32_t level) {
    return level < 32 ? std::max(1u, side >> level) : 1;
}

void DecodeLevel(FuzzInput& input) {
    Decoding decoding = MakeDecoding(input);
    const auto [format, width, height, flags, order, unused] = decoding;
    const uint32_t level = Seldom(input) ? input.Word() : input.Byte() % 6;
    const uint32_t levelWidth = LevelSide(width, level);
    const uint32_t levelHeight = LevelSide(height, level);
    decoding.pixelBytes = PixelBytes(levelWidth, levelHeight, flags);
    const bool accepted =
        format != TXC_FORMAT_ATC_LEGACY && (IsAtc(format) || format == TXC_FORMAT_ETC1 ||
                                            format == TXC_FORMAT_ATI1N || format == TXC_FORMAT_ATI2N);
    // The levels before, then the level's own blocks.
    uint64_t blocks = ImageBytes(levelWidth, levelHeight, BlockBytes(format, flags));
    const auto chain = static_cast<uint32_t>(std::bit_width(std::max(width, height)));
    for (uint32_t i = 0; i < std::min(level, chain); ++i) {
        blocks += ImageBytes(LevelSide(width, i), LevelSide(height, i), BlockBytes(format, flags));
    }
    if (blocks > kLargestBuffer && decoding.pixelBytes <= kLargestBuffer) {
        return;
    }
    const size_t kept = blocks <= kLargestBuffer ? blocks : 0;
    uint8_t* source = SourceMemory().Take(kept, (input.Byte() & 1) != 0);
    input.Fill(source, kept);
    const bool record = (input.Byte() & 1) != 0;
    const uint32_t capacity = Capacity(input, decoding.pixelBytes);
    const Destination destination(input, capacity);
    const std::array<uint32_t, 4> words = {format, width, height, flags};
    const uint32_t status =
        record ? TxCompressDecodeFileData(words.data(), source, level, order, destination.bytes, capacity)
               : TxCompressDecode(format, width, height, flags, source, level, order, destination.bytes,
                                  capacity);
    destination.Judge(status, ExpectedOfDecoding(decoding, accepted, capacity));
}

void DecodeWithHeader(FuzzInput& input) {
    Decoding decoding = MakeDecoding(input);
    const auto [format, width, height, flags, order, unused] = decoding;
    decoding.pixelBytes = PixelBytes(width, height, flags);
    const bool oneBuffer = (input.Byte() & 1) != 0;
    const uint32_t offset = kHeaderBytes + input.Byte() % 9;
    const uint64_t blocks = ImageBytes(width, height, BlockBytes(TXC_FORMAT_ATC, flags));
    if (blocks > kLargestBuffer - offset && decoding.pixelBytes <= kLargestBuffer) {
        return;
    }
    const size_t kept = (oneBuffer ? offset : 0) + (blocks <= kLargestBuffer - offset ? blocks : 0);
    uint8_t* source = SourceMemory().Take(kept, (input.Byte() & 1) != 0);
    input.Fill(source, kept);
    const _ATITC_HEADER header{format, width, height, flags, offset};
    if (oneBuffer) {
        std::memcpy(source, &header, sizeof(header));
    }
    const bool query = Seldom(input);
    const uint32_t capacity = Capacity(input, decoding.pixelBytes);
    const Destination destination(input, capacity);
    uint8_t* pixels = query ? nullptr : destination.bytes;
    uint32_t word = capacity;
    const uint32_t status = oneBuffer
                                ? ATI_TC_DecodeImage(source, order, pixels, &word)
                                : ATI_TC_DecodeImage_Seperate_Header(&header, source, order, pixels, &word);
    if (query) {
        Require(status == (IsAtc(format) ? TXC_OK : TXC_ERR_BAD_FORMAT) && destination.IsUntouched());
        Require(word == (status == TXC_OK ? static_cast<uint32_t>(decoding.pixelBytes) : capacity));
    } else {
        destination.Judge(status, ExpectedOfDecoding(decoding, IsAtc(format), capacity));
        Require(word == capacity);
    }
}

void AskSizes(FuzzInput& input) {
    const uint32_t format = Format(input);
    const uint32_t flags = Flags(input);
    const uint32_t width = Side(input);
    const uint32_t height = Side(input);
    uint32_t size = 1;
    const uint32_t encoded =
        TxCompressQueryEncodeBufferSize(width, height, Side(input), flags, format, &size);
    Require(encoded == TXC_OK || (encoded == TXC_ERR_BAD_FORMAT && size == 0));
    size = 1;
    Require(TxCompressQueryDecodeBufferSize(width, height, format, flags & 2, &size) == encoded);
    Require(encoded == TXC_OK || size == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    switch (input.Byte() % 6) {
        case 0:
            EncodeWithoutHeader(input);
            break;
        case 1:
            EncodeWithHeader(input);
            break;
        case 2:
            EncodeIntoOneBuffer(input);
            break;
        case 3:
            DecodeLevel(input);
            break;
        case 4:
            DecodeWithHeader(input);
            break;
        default:
            AskSizes(input);
            break;
    }
    return 0;
}
