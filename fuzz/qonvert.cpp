// Qonvert with honest descriptors: both buffers have exactly the bytes that the size rule asks for,
// everything else is arbitrary.
#include <algorithm>

#include "fuzz/fuzz_input.h"
#include "texconv/image.h"

namespace {

using QXTextureConverter::CImage;
using zorvan::fuzz::FuzzInput;
using zorvan::fuzz::Require;

constexpr std::uint32_t kLargestBuffer = 1u << 20;  // bytes
constexpr std::uint32_t kMostPixels = 1u << 14;

// Mostly small, sometimes beyond any memory.
std::uint32_t Dimension(FuzzInput& input) {
    const std::uint32_t byte = input.Byte();
    return byte < 252 ? byte % 80 : input.Word();
}

// Nearly always a supported format.
std::uint32_t Format(FuzzInput& input) {
    const std::uint32_t byte = input.Byte();
    return byte < 250 ? QXTextureConverter::kFormats[byte % 40].code : (byte - 250) * 26;
}

TFormatFlags Flags(FuzzInput& input) {
    TFormatFlags flags{};
    const std::uint32_t present = input.Byte();
    if ((present & 1) != 0) {
        flags.nStride = (present & 4) != 0 ? input.Word() : input.Byte();
    }
    if ((present & 2) != 0) {
        flags.nMaskRed = input.Word();
        flags.nMaskGreen = input.Word();
        flags.nMaskBlue = input.Word();
        flags.nMaskAlpha = input.Word();
    }
    flags.nMirrorX = input.Byte() & 1;
    flags.nFlipY = input.Byte() & 1;
    flags.nFastCompress = input.Byte() & 1;
    flags.nScaleFilter = input.Byte() % 8;
    flags.nBumpmap = input.Byte() % 5;
    flags.nBumpmapHeight = input.Byte() < 200 ? 10 : input.Word();
    flags.nBumpmapWrap = input.Byte() & 1;
    flags.nMode = 1;
    return flags;
}

// Small enough to be worth a run, or too large for any working image.
bool Worthwhile(const TQonvertImage& image, std::uint32_t size) {
    const std::uint64_t pixels = std::uint64_t{image.nWidth} * image.nHeight;
    return size <= kLargestBuffer && (pixels <= kMostPixels || pixels > UINT32_MAX);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    TFormatFlags sourceFlags = Flags(input);
    TFormatFlags destinationFlags = Flags(input);
    const bool withFlags = (input.Byte() & 1) != 0;
    TQonvertImage source{
        Dimension(input), Dimension(input), Format(input), withFlags ? &sourceFlags : nullptr, 0, nullptr};
    TQonvertImage destination{source.nWidth, source.nHeight, Format(input), &destinationFlags, 0, nullptr};
    if ((input.Byte() & 1) != 0) {
        destination.nWidth = Dimension(input);
        destination.nHeight = Dimension(input);
    }

    CImage query(&source, &destination);
    query.m_bVerbose = false;
    const std::uint32_t destinationSize = query.ImgSize(&destination);
    source.nDataSize = query.ImgSize(&source);
    if (!Worthwhile(source, source.nDataSize) || !Worthwhile(destination, destinationSize)) {
        return 0;
    }

    const auto pixels = input.Fill(source.nDataSize);
    const auto first = input.Fill(destinationSize);
    const auto second = input.Fill(destinationSize);
    source.pData = pixels.get();
    for (std::uint8_t* bytes : {first.get(), second.get()}) {
        destination.pData = bytes;
        destination.nDataSize = destinationSize;
        Require(Qonvert(&source, &destination) == 0);
    }
    // The same call gives the same bytes.
    Require(std::equal(first.get(), first.get() + destinationSize, second.get()));
    return 0;
}
