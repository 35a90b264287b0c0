// Random blocks and headers with honest sizes for every block decoder. Buffers are as large as the
// interface says and no larger, so that the address sanitizer sees each byte too far.
#include <algorithm>
#include <cstring>

#include "fuzz_input.h"
#include "texcompress/texcompress.h"

namespace {

using zorvan::fuzz::FuzzInput;
using zorvan::fuzz::Require;

constexpr std::array<uint32_t, 6> kFormats = {TXC_FORMAT_ATC,   TXC_FORMAT_ETC1,       TXC_FORMAT_ATI1N,
                                              TXC_FORMAT_ATI2N, TXC_FORMAT_ATC_LEGACY, 0xCCC40003};

void DecodeLevel(FuzzInput input) {
    const uint32_t format = input.Pick(kFormats);
    const uint32_t width = input.Range(0, 20);
    const uint32_t height = input.Range(0, 20);
    const uint32_t flags = input.Byte();
    const uint32_t level = input.Byte() % 40;
    const uint32_t order = input.Range(0, 3);
    const bool valid = format != TXC_FORMAT_ATC_LEGACY && format != 0xCCC40003;

    // The chain before the level, then the level itself.
    uint32_t before = 0;
    uint32_t own = 0;
    const uint32_t levelWidth = level < 32 ? std::max(1u, width >> level) : 1;
    const uint32_t levelHeight = level < 32 ? std::max(1u, height >> level) : 1;
    TxCompressQueryEncodeBufferSize(width, height, level, flags, format, &before);
    const uint32_t status = TxCompressQueryEncodeBufferSize(levelWidth, levelHeight, 1, flags, format, &own);
    Require((status == TXC_OK) == valid);

    const auto blocks = input.Fill(before + own);
    const uint32_t size = levelWidth * levelHeight * ((flags & TXC_FLAG_ALPHA) != 0 ? 4 : 3);
    const auto pixels = std::make_unique<uint8_t[]>(size);
    const uint32_t decoded =
        TxCompressDecode(format, width, height, flags, blocks.get(), level, order, pixels.get(), size);
    const uint32_t expected = !valid                     ? TXC_ERR_BAD_FORMAT
                              : order == 1 || order == 2 ? TXC_OK
                                                         : TXC_ERR_BAD_ORDER;
    Require(decoded == expected);
    const uint32_t tooSmall =
        TxCompressDecode(format, width, height, flags, blocks.get(), level, order, pixels.get(), size - 1);
    Require(tooSmall == (valid ? TXC_ERR_BUFFER_TOO_SMALL : TXC_ERR_BAD_FORMAT));
}

void DecodeBuffer(FuzzInput input) {
    _ATITC_HEADER header;
    header.nFormat = input.Pick(kFormats);
    header.nWidth = input.Range(0, 20);
    header.nHeight = input.Range(0, 20);
    header.nFlags = input.Byte();
    header.nDataOffset = input.Range(20, 30);
    const uint32_t order = input.Range(0, 3);
    const bool alpha = (header.nFlags & TXC_FLAG_ALPHA) != 0;

    const size_t blockBytes = (header.nWidth + 3) / 4 * ((header.nHeight + 3) / 4) * (alpha ? 16 : 8);
    const auto buffer = input.Fill(header.nDataOffset + blockBytes);
    std::memcpy(buffer.get(), &header, sizeof(header));
    uint32_t size = 0;
    if (ATI_TC_DecodeImage(buffer.get(), order, nullptr, &size) != TXC_OK) {
        return;
    }
    Require(size == header.nWidth * header.nHeight * (alpha ? 4 : 3));
    const auto pixels = std::make_unique<uint8_t[]>(size);
    const uint32_t status = ATI_TC_DecodeImage(buffer.get(), order, pixels.get(), &size);
    Require(status == (order == 1 || order == 2 ? TXC_OK : TXC_ERR_BAD_ORDER));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    if (input.Byte() % 4 != 0) {
        DecodeLevel(input);
    } else {
        DecodeBuffer(input);
    }
    return 0;
}
