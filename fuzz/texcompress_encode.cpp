// Random pixels of random layouts for every block encoder, each followed by its decoder. Buffers are as
// large as the interface says and no larger.
#include <algorithm>
#include <bit>

#include "fuzz_input.h"
#include "texcompress/texcompress.h"

namespace {

using zorvan::fuzz::FuzzInput;
using zorvan::fuzz::Require;

struct Source {
    std::array<uint32_t, 4> masks;
    uint32_t width, height, pitch;
    std::unique_ptr<uint8_t[]> pixels;
};

Source MakeSource(FuzzInput& input) {
    constexpr std::array<std::array<uint32_t, 4>, 5> kLayouts = {{
        {0xFF, 0xFF00, 0xFF0000, 0xFF000000},
        {0xFF, 0xFF00, 0xFF0000, 0},
        {0xF800, 0x07E0, 0x001F, 0},
        {0xF000, 0x0F00, 0x00F0, 0x000F},
        {0xF800, 0x07C0, 0x003E, 0x0001},
    }};
    Source source;
    source.masks = input.Pick(kLayouts);
    uint32_t bits = 0;
    uint32_t allMasks = 0;
    const bool randomMasks = input.Byte() % 4 == 0;
    for (uint32_t& mask : source.masks) {
        mask = randomMasks ? input.Word() : mask;
        bits += static_cast<uint32_t>(std::popcount(mask));
        allMasks |= mask;
    }
    const uint32_t bytesPerPixel = (bits + 7) / 8;
    const auto bytesReached = static_cast<uint32_t>(std::bit_width(allMasks) + 7) / 8;
    source.width = input.Range(1, 20);
    source.height = input.Range(1, 20);
    source.pitch = source.width * bytesPerPixel + input.Range(0, 5);
    source.pixels = input.Fill((source.height - 1) * source.pitch + (source.width - 1) * bytesPerPixel +
                               std::max(bytesPerPixel, bytesReached));
    return source;
}

void EncodeWithoutHeader(FuzzInput input) {
    constexpr std::array<uint32_t, 4> kFormats = {TXC_FORMAT_ATC, TXC_FORMAT_ETC1, TXC_FORMAT_ATI1N,
                                                  TXC_FORMAT_ATI2N};
    const uint32_t format = input.Pick(kFormats);
    const uint32_t flags = input.Byte();
    const Source source = MakeSource(input);
    uint32_t size = 0;
    TxCompressQueryEncodeBufferSize(source.width, source.height, 1, flags, format, &size);
    const auto blocks = std::make_unique<uint8_t[]>(size);
    uint32_t written = size;
    const uint32_t status = TxCompressEncode(source.pixels.get(), source.masks[0], source.masks[1],
                                             source.masks[2], source.masks[3], source.width, source.height,
                                             source.pitch, flags, format, blocks.get(), &written);
    if ((flags & 3) == 3) {
        Require(status == TXC_ERR_BAD_FLAGS);
        return;
    }
    Require(status == TXC_OK && written == size);
    const uint32_t decodedSize = source.width * source.height * ((flags & TXC_FLAG_ALPHA) != 0 ? 4 : 3);
    const auto pixels = std::make_unique<uint8_t[]>(decodedSize);
    Require(TxCompressDecode(format, source.width, source.height, flags, blocks.get(), 0, TXC_ORDER_RGB,
                             pixels.get(), decodedSize) == TXC_OK);
}

void EncodeWithHeader(FuzzInput input) {
    const uint32_t format = input.Byte() % 2 == 0 ? TXC_FORMAT_ATC : TXC_FORMAT_ATC_LEGACY;
    const uint32_t flags = input.Range(0, 2);
    const auto encode =
        input.Byte() % 2 == 0 ? ATI_TC_EncodeImage_Seperate_Header : ATI_TC_EncodeImageFast_Seperate_Header;
    const Source source = MakeSource(input);
    uint32_t size = 0;
    _ATITC_HEADER header{};
    const auto run = [&](void* blocks) {
        return encode(source.pixels.get(), source.masks[0], source.masks[1], source.masks[2], source.masks[3],
                      source.width, source.height, source.pitch, flags, format, &header, blocks, &size);
    };
    Require(run(nullptr) == TXC_OK);
    const auto blocks = std::make_unique<uint8_t[]>(size);
    const uint32_t status = run(blocks.get());
    Require(status == TXC_OK || status == TXC_ERR_LOW_QUALITY);
    uint32_t decodedSize = 0;
    Require(ATI_TC_DecodeImage_Seperate_Header(&header, nullptr, TXC_ORDER_RGB, nullptr, &decodedSize) ==
            TXC_OK);
    const auto pixels = std::make_unique<uint8_t[]>(decodedSize);
    Require(ATI_TC_DecodeImage_Seperate_Header(&header, blocks.get(), TXC_ORDER_BGR, pixels.get(),
                                               &decodedSize) == TXC_OK);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    if (input.Byte() % 2 == 0) {
        EncodeWithoutHeader(input);
    } else {
        EncodeWithHeader(input);
    }
    return 0;
}
