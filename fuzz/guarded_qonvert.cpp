// Qonvert with random descriptors from a caller that keeps to the interface: between guard pages lie as many
// bytes as the larger of what it states and what the format needs, never more.
#include <cstdio>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "fuzz/guarded_memory.h"
#include "texconv/qonvert.h"

namespace {

using zorvan::fuzz::FuzzInput;
using zorvan::fuzz::GuardedMemory;
using zorvan::fuzz::Require;

constexpr std::uint32_t kLargestBuffer = 1u << 18;  // bytes
constexpr std::uint32_t kMostPixels = 1u << 11;
constexpr std::uint32_t kQuiet = 1;
constexpr std::uint32_t kVersionQuery = 2;

bool Seldom(FuzzInput& input) {
    return input.Byte() >= 240;
}

std::uint32_t Dimension(FuzzInput& input) {
    return Seldom(input) ? input.Word() : input.Byte() % 40;
}

// Small, with any of the values between that mean nothing, or anything.
std::uint32_t Option(FuzzInput& input, std::uint32_t count) {
    return Seldom(input) ? input.Word() : input.Byte() % count;
}

TFormatFlags Flags(FuzzInput& input) {
    TFormatFlags flags{};
    flags.nStride = Seldom(input) ? input.Word() : input.Byte();
    if (Seldom(input)) {
        flags.nMaskRed = input.Word();
        flags.nMaskGreen = input.Word();
        flags.nMaskBlue = input.Word();
        flags.nMaskAlpha = input.Word();
    }
    flags.nMirrorX = Option(input, 2);
    flags.nFlipY = Option(input, 2);
    flags.nFastCompress = Option(input, 3);
    flags.nScaleFilter = Option(input, 7);
    flags.nBumpmap = Option(input, 5);
    flags.nBumpmapHeight = Option(input, 30);
    flags.nBumpmapWrap = Option(input, 2);
    flags.nMode = Seldom(input) ? input.Word() % 4 : kQuiet;
    return flags;
}

struct Descriptor {
    TFormatFlags flags;
    TQonvertImage image;
    std::uint32_t needed = 0;  // bytes of the pixels, modulo 2^32
    std::uint32_t room = 0;    // bytes at pData
};

// What the interface itself says.
std::uint32_t Needed(const Descriptor& descriptor) {
    TFormatFlags flags = descriptor.flags;
    flags.nMode = kQuiet;
    TQonvertImage query = descriptor.image;
    query.pFormatFlags = &flags;
    if (descriptor.image.pFormatFlags == nullptr) {
        flags = {};
        flags.nMode = kQuiet;
    }
    query.pData = nullptr;
    Require(Qonvert(nullptr, &query) == 0);
    return query.nDataSize;
}

void Describe(FuzzInput& input, Descriptor& descriptor) {
    descriptor.flags = Flags(input);
    descriptor.image = {Dimension(input), Dimension(input), Option(input, 43), nullptr, 0, nullptr};
    descriptor.image.pFormatFlags = Seldom(input) ? nullptr : &descriptor.flags;
    descriptor.needed = Needed(descriptor);
    // Stated right, too small or too large.
    const std::uint32_t choice = input.Byte();
    descriptor.image.nDataSize = choice < 200   ? descriptor.needed
                                 : choice < 228 ? input.Word() % ((descriptor.needed + 1) | 1)
                                                : descriptor.needed + input.Byte();
    descriptor.room = std::max(descriptor.needed, descriptor.image.nDataSize);
}

// Small enough to be worth a run, or too large for any working image.
bool Worthwhile(const Descriptor& descriptor) {
    const std::uint64_t pixels = std::uint64_t{descriptor.image.nWidth} * descriptor.image.nHeight;
    return descriptor.needed <= kLargestBuffer && descriptor.room <= kLargestBuffer &&
           (pixels <= kMostPixels || pixels > UINT32_MAX);
}

bool AsksVersion(const Descriptor& descriptor) {
    return descriptor.image.pFormatFlags != nullptr && descriptor.flags.nMode == kVersionQuery;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // What the converter has to say is not wanted; the fuzzer prints through a stream of its own.
    std::FILE* nowhere = std::fopen("/dev/null", "w");
    if (nowhere != nullptr) {
        stderr = nowhere;
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static GuardedMemory sourceMemory(kLargestBuffer);
    static GuardedMemory destinationMemory(kLargestBuffer);
    FuzzInput input(data, size);
    const std::uint32_t special = input.Byte();
    Descriptor source;
    Descriptor destination;
    Describe(input, source);
    Describe(input, destination);
    if (AsksVersion(source) || AsksVersion(destination)) {
        destination.room = std::max(destination.room, 4u);
    }
    if (!Worthwhile(source) || !Worthwhile(destination)) {
        return 0;
    }
    const bool shares = special == 255;
    if (shares) {
        source.room = destination.room = std::max(source.room, destination.room);
    }
    destination.image.pData = destinationMemory.Take(destination.room, (special & 1) != 0);
    input.Fill(destination.image.pData, destination.room);
    source.image.pData =
        shares ? destination.image.pData : sourceMemory.Take(source.room, (special & 2) != 0);
    input.Fill(source.image.pData, source.room);
    const std::vector<std::uint8_t> before(source.image.pData, source.image.pData + source.room);

    std::uint8_t* const sourceBytes = source.image.pData;
    if (special == 254) {
        source.image.pData = nullptr;
    }
    if (special == 253) {
        destination.image.pData = nullptr;
    }
    Require(Qonvert(special == 252 ? nullptr : &source.image, &destination.image) == 0);

    Require(destinationMemory.SlackIsUntouched());
    if (!shares) {
        Require(sourceMemory.SlackIsUntouched());
        Require(std::equal(before.begin(), before.end(), sourceBytes));
    }
    return 0;
}
