// The converter's pipelines on an image of 1024 x 1024 pixels: MPixel/s, how many times the plain kernels'
// rate that is, and its part of the rate at which memcpy copies R, G, B, A pixels; the best of several rounds
// each, taken in turns. Then the memory that a conversion takes beside its source and destination.
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <vector>

#include "texcompress/instruction_set.h"
#include "texconv/image.h"

namespace {

std::size_t allocated = 0;
std::size_t mostAllocated = 0;

void* Counted(void* memory) {
    allocated += malloc_usable_size(memory);
    mostAllocated = std::max(mostAllocated, allocated);
    return memory;
}

}  // namespace

// Every allocation of the process comes through here.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void __libc_free(void* memory);

void* malloc(size_t size) {
    return Counted(__libc_malloc(size));
}
void* calloc(size_t count, size_t size) {
    return Counted(__libc_calloc(count, size));
}
void* realloc(void* memory, size_t size) {
    allocated -= malloc_usable_size(memory);
    return Counted(__libc_realloc(memory, size));
}
void free(void* memory) {
    allocated -= malloc_usable_size(memory);
    __libc_free(memory);
}
}

namespace {

using namespace QXTextureConverter;
using zorvan::texcompress::InstructionSet;

constexpr std::uint32_t kSide = 1024;
constexpr int kRounds = 25;

struct Pipeline {
    const char* name;
    std::uint32_t from;
    std::uint32_t to;
    std::uint32_t side = kSide;    // of the destination
    std::uint32_t filter = 0;      // nScaleFilter
    std::uint32_t bumpKernel = 0;  // nBumpmap
    std::uint32_t mirror = 0;      // nMirrorX
    std::uint32_t flip = 0;        // nFlipY
    std::uint32_t redMask = 0;     // of the destination
    bool destinationPixels = false;
};

constexpr Pipeline kPipelines[] = {
    {"copy RGBA8888", FMT_RGBA8888, FMT_RGBA8888},
    {"read RGB565", FMT_RGB565, FMT_RGBA8888},
    {"read RGBA5551", FMT_RGBA5551, FMT_RGBA8888},
    {"read RGBA4444", FMT_RGBA4444, FMT_RGBA8888},
    {"read RGB888", FMT_RGB888, FMT_RGBA8888},
    {"read L8", FMT_L8, FMT_RGBA8888},
    {"read LA88", FMT_LA88, FMT_RGBA8888},
    {"read BGRA8888", FMT_BGRA8888, FMT_RGBA8888},
    {"write RGB565", FMT_RGBA8888, FMT_RGB565},
    {"write RGBA5551", FMT_RGBA8888, FMT_RGBA5551},
    {"write RGBA4444", FMT_RGBA8888, FMT_RGBA4444},
    {"write RGB888", FMT_RGBA8888, FMT_RGB888},
    {"write L8", FMT_RGBA8888, FMT_L8},
    {"write LA88", FMT_RGBA8888, FMT_LA88},
    {"write BGRA8888", FMT_RGBA8888, FMT_BGRA8888},
    {"write 555, own masks", FMT_RGBA8888, FMT_RGB565, kSide, 0, 0, 0, 0, 0x7C00},
    {"read P8_RGB565", FMT_P8_RGB565, FMT_RGBA8888},
    {"read P4_RGB565", FMT_P4_RGB565, FMT_RGBA8888},
    {"read RGBA16F", FMT_RGBA16F, FMT_RGBA8888},
    {"read RGBA32F", FMT_RGBA32F, FMT_RGBA8888},
    {"write RGBA16F", FMT_RGBA8888, FMT_RGBA16F},
    {"write RGBA32F", FMT_RGBA8888, FMT_RGBA32F},
    {"RGBA32F to RGBA16F", FMT_RGBA32F, FMT_RGBA16F},
    {"RGBA16F to RGBA32F", FMT_RGBA16F, FMT_RGBA32F},
    {"mirror", FMT_RGBA8888, FMT_RGBA8888, kSide, 0, 0, 1},
    {"flip", FMT_RGBA8888, FMT_RGBA8888, kSide, 0, 0, 0, 1},
    {"box 2:1", FMT_RGBA8888, FMT_RGBA8888, kSide / 2},
    {"box 3.3:1", FMT_RGBA8888, FMT_RGBA8888, 310},
    {"cubic 2:1", FMT_RGBA8888, FMT_RGBA8888, kSide / 2, 4, 0, 0, 0, 0, true},
    {"cubic 1:2", FMT_RGBA8888, FMT_RGBA8888, kSide * 2, 4, 0, 0, 0, 0, true},
    {"bump map, diagonal", FMT_RGBA8888, FMT_RGBA8888, kSide, 0, 1},
    {"bump map, Sobel", FMT_RGBA8888, FMT_RGBA8888, kSide, 0, 2},
    {"bump map, Prewitt", FMT_RGBA8888, FMT_RGBA8888, kSide, 0, 3},
    {"write P8_RGBA8888", FMT_RGBA8888, FMT_P8_RGBA8888},
    {"write P4_RGB565", FMT_RGBA8888, FMT_P4_RGB565},
};

// Gradients with a little noise: smooth as pictures are, with many colours.
void Paint(std::vector<std::uint8_t>& rgba) {
    std::uint32_t state = 1;
    for (std::uint32_t i = 0; i < kSide * kSide; ++i) {
        state = state * 1664525u + 1013904223u;
        const std::uint32_t noise = state >> 29;
        const std::uint32_t x = i % kSide;
        const std::uint32_t y = i / kSide;
        std::uint8_t* pixel = &rgba[std::size_t{i} * 4];
        pixel[0] = static_cast<std::uint8_t>(x / 5 + noise);
        pixel[1] = static_cast<std::uint8_t>(y / 5 + noise);
        pixel[2] = static_cast<std::uint8_t>((x + y) / 9);
        pixel[3] = static_cast<std::uint8_t>(255 - (noise == 0 ? x / 8 : 0));
    }
}

// An image and the memory that it describes.
struct Buffer {
    Buffer(std::uint32_t side, std::uint32_t format) : image{side, side, format, nullptr, 0, nullptr} {
        TQonvertImage any{1, 1, FMT_L8, nullptr, 0, nullptr};
        Qonvert(&any, &image);  // asks for the size
        bytes.resize(image.nDataSize);
        image.pData = bytes.data();
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    TFormatFlags flags{};
    std::vector<std::uint8_t> bytes;
    TQonvertImage image;
};

double CpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

class Best {
  public:
    template <typename Work>
    void Time(const Work& work) {
        const double start = CpuSeconds();
        work();
        m_seconds = std::min(m_seconds, CpuSeconds() - start);
    }
    double Rate(double pixels) const { return pixels / m_seconds * 1e-6; }

  private:
    double m_seconds = std::numeric_limits<double>::infinity();
};

void Measure(const Pipeline& pipeline, InstructionSet fastest) {
    Buffer painted(kSide, FMT_RGBA8888);
    Paint(painted.bytes);
    Buffer source(kSide, pipeline.from);
    Qonvert(&painted.image, &source.image);
    Buffer destination(pipeline.side, pipeline.to);
    TFormatFlags& flags = destination.flags;
    flags.nScaleFilter = pipeline.filter;
    flags.nBumpmap = pipeline.bumpKernel;
    flags.nBumpmapHeight = 10;
    flags.nMirrorX = pipeline.mirror;
    flags.nFlipY = pipeline.flip;
    flags.nMaskRed = pipeline.redMask;
    destination.image.pFormatFlags = &flags;

    std::vector<std::uint8_t> copy(painted.bytes.size());
    Best plain;
    Best fast;
    Best copying;
    for (int round = 0; round < kRounds; ++round) {
        if (round < kRounds / 5) {
            SelectInstructionSet(InstructionSet::kScalar);
            plain.Time([&] { Qonvert(&source.image, &destination.image); });
            SelectInstructionSet(fastest);
        }
        fast.Time([&] { Qonvert(&source.image, &destination.image); });
        copying.Time([&] { std::memcpy(copy.data(), painted.bytes.data(), copy.size()); });
    }
    const std::size_t before = allocated;
    mostAllocated = allocated;
    Qonvert(&source.image, &destination.image);

    const double side = pipeline.destinationPixels ? pipeline.side : kSide;
    const double rate = fast.Rate(side * side);
    std::printf("%-22s %9.0f %8.1f %8.3f %10zu\n", pipeline.name, rate, rate / plain.Rate(side * side),
                rate / copying.Rate(double{kSide} * kSide), (mostAllocated - before) / 1024);
}

}  // namespace

int main(int argc, char** argv) {
    const InstructionSet fastest = zorvan::texcompress::SelectedInstructionSet();
    std::printf("kernels: %s; cubic: destination's pixels, all others: source's\n",
                InstructionSetName(fastest));
    std::printf("%-22s %9s %8s %8s %10s\n", "1024 x 1024", "MPixel/s", "x plain", "x memcpy", "KiB beside");
    for (const Pipeline& pipeline : kPipelines) {
        if (argc < 2 || std::strstr(pipeline.name, argv[1]) != nullptr) {
            Measure(pipeline, fastest);
        }
    }
    return 0;
}
