// The converter's pipelines on a natural-looking image of 1024 x 1024 pixels, with each set of kernels that
// the machine runs: MPixel/s, how many times the plain kernels' rate that is, its part of the rate at which
// memcpy copies R, G, B, A pixels, and how many times the rate of the conversion as it is defined, pixel by
// pixel. All are the best of several rounds, taken in turns. The last figure is the memory that a conversion
// takes beside its source and destination.
//
// Usage: texconv_bench [--benchmark_format=json] [PART OF A NAME]
#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <string_view>
#include <vector>

#include "bench/converter_definitions.h"
#include "tests/texcompress/test_images.h"
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
constexpr int kRounds = 40;
constexpr int kSlowRounds = 5;  // for what takes long

using Definition = std::vector<std::uint8_t> (*)(const converter_definitions::Image& image);

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
    Definition definition = nullptr;
    std::uint32_t sourceRedMask = 0;
};

template <std::uint32_t kNewSide>
std::vector<std::uint8_t> CubicByDefinition(const converter_definitions::Image& image) {
    return converter_definitions::Cubic(image, kNewSide, kNewSide).rgba;
}

std::vector<std::uint8_t> SobelByDefinition(const converter_definitions::Image& image) {
    return converter_definitions::SobelNormals(image).rgba;
}

std::vector<std::uint8_t> PaletteByDefinition(const converter_definitions::Image& image) {
    return converter_definitions::Palette(image);
}

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
    {"read 565, mask beyond", FMT_RGB565, FMT_RGBA8888, kSide, 0, 0, 0, 0, 0, false, nullptr, 0xFF0000},
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
    {"cubic 2:1", FMT_RGBA8888, FMT_RGBA8888, kSide / 2, 4, 0, 0, 0, 0, true, CubicByDefinition<kSide / 2>},
    {"cubic 1:2", FMT_RGBA8888, FMT_RGBA8888, kSide * 2, 4, 0, 0, 0, 0, true, CubicByDefinition<kSide * 2>},
    {"bump map, diagonal", FMT_RGBA8888, FMT_RGBA8888, kSide, 0, 1},
    {"bump map, Sobel", FMT_RGBA8888, FMT_RGBA8888, kSide, 0, 2, 0, 0, 0, false, SobelByDefinition},
    {"bump map, Prewitt", FMT_RGBA8888, FMT_RGBA8888, kSide, 0, 3},
    {"write P8_RGBA8888", FMT_RGBA8888, FMT_P8_RGBA8888, kSide, 0, 0, 0, 0, 0, false, PaletteByDefinition},
    {"write P4_RGB565", FMT_RGBA8888, FMT_P4_RGB565},
    {"read ETC1_RGB8", FMT_ETC1_RGB8, FMT_RGBA8888},
    {"ETC1_RGB8 to half-size P8", FMT_ETC1_RGB8, FMT_P8_RGBA8888, kSide / 2},
    {"ETC1_RGB8 to half-size 3DC_X", FMT_ETC1_RGB8, FMT_3DC_X, kSide / 2},
};

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
    // Works once before, so that the caches hold of this work what they can and nothing of the one before.
    template <typename Work>
    void Time(const Work& work) {
        work();
        const double start = CpuSeconds();
        work();
        m_seconds = std::min(m_seconds, CpuSeconds() - start);
    }
    // In MPixel/s; 0 before the first time.
    double Rate(double pixels) const { return pixels / m_seconds * 1e-6; }

  private:
    double m_seconds = std::numeric_limits<double>::infinity();
};

struct Result {
    std::vector<double> rates;  // of the sets of kernels, in MPixel/s
    double copying;             // of memcpy
    double definition;          // 0: none
    std::size_t kibBeside;
};

// The quickest memcpy of a run, for all its rows: beside conversions a copy is slower, which would flatter
// them.
double CopyingRate(const std::vector<std::uint8_t>& rgba) {
    std::vector<std::uint8_t> copy(rgba.size());
    Best best;
    for (int i = 0; i < 5 * kRounds; ++i) {
        best.Time([&] {
            std::memcpy(copy.data(), rgba.data(), copy.size());
            asm volatile("" : : "r"(copy.data()) : "memory");
        });
    }
    return best.Rate(double{kSide} * kSide);
}

Result Measure(const Pipeline& pipeline, const std::vector<std::uint8_t>& rgba, double copying) {
    Buffer painted(kSide, FMT_RGBA8888);
    painted.bytes.assign(rgba.begin(), rgba.end());
    painted.image.pData = painted.bytes.data();
    Buffer source(kSide, pipeline.from);
    Qonvert(&painted.image, &source.image);
    source.flags.nMaskRed = pipeline.sourceRedMask;
    source.image.pFormatFlags = pipeline.sourceRedMask != 0 ? &source.flags : nullptr;
    Buffer destination(pipeline.side, pipeline.to);
    TFormatFlags& flags = destination.flags;
    flags.nScaleFilter = pipeline.filter;
    flags.nBumpmap = pipeline.bumpKernel;
    flags.nBumpmapHeight = 10;
    flags.nMirrorX = pipeline.mirror;
    flags.nFlipY = pipeline.flip;
    flags.nMaskRed = pipeline.redMask;
    destination.image.pFormatFlags = &flags;

    std::vector<Best> sets(zorvan::texcompress::InstructionSetCount());
    Best defining;
    for (int round = 0; round < kRounds; ++round) {
        for (std::size_t set = round < kSlowRounds ? 0 : 1; set < sets.size(); ++set) {
            SelectInstructionSet(static_cast<InstructionSet>(set));
            sets[set].Time([&] { Qonvert(&source.image, &destination.image); });
        }
    }
    const std::size_t before = allocated;
    mostAllocated = allocated;
    Qonvert(&source.image, &destination.image);
    const std::size_t beside = mostAllocated - before;
    for (int round = 0; pipeline.definition != nullptr && round < kSlowRounds; ++round) {
        defining.Time([&] {
            if (pipeline.definition({kSide, kSide, rgba}) != destination.bytes) {
                std::fprintf(stderr, "%s: the definition gives other bytes\n", pipeline.name);
                std::exit(1);
            }
        });
    }

    const double side = pipeline.destinationPixels ? pipeline.side : kSide;
    Result result{{}, copying, defining.Rate(side * side), beside / 1024};
    for (const Best& set : sets) {
        result.rates.push_back(set.Rate(side * side));
    }
    return result;
}

// In the form of Google Benchmark's reports.
void PrintJson(const char* name, const Result& result, bool first) {
    for (std::size_t set = 0; set < result.rates.size(); ++set) {
        std::printf("%s{\"name\": \"%s/%s\", \"MPixel/s\": %g, \"x plain\": %g, \"x memcpy\": %g, ",
                    first && set == 0 ? "" : ",\n", name,
                    InstructionSetName(static_cast<InstructionSet>(set)), result.rates[set],
                    result.rates[set] / result.rates[0], result.rates[set] / result.copying);
        if (result.definition > 0) {
            std::printf("\"x definition\": %g, ", result.rates[set] / result.definition);
        }
        std::printf("\"KiB beside\": %zu}", result.kibBeside);
    }
}

void PrintRow(const char* name, const Result& result) {
    std::printf("%-28s", name);
    for (const double rate : result.rates) {
        std::printf(" %9.0f", rate);
    }
    const double fastest = result.rates.back();
    std::printf(" %8.1f %8.3f ", fastest / result.rates[0], fastest / result.copying);
    result.definition > 0 ? std::printf("%12.1f", fastest / result.definition) : std::printf("%12s", "");
    std::printf(" %10zu\n", result.kibBeside);
}

void PrintHead() {
    std::printf("cubic: destination's pixels, all others: source's\n%-28s", "1024 x 1024, MPixel/s");
    for (std::size_t set = 0; set < zorvan::texcompress::InstructionSetCount(); ++set) {
        std::printf(" %9s", InstructionSetName(static_cast<InstructionSet>(set)));
    }
    std::printf(" %8s %8s %12s %10s\n", "x plain", "x memcpy", "x definition", "KiB beside");
}

}  // namespace

int main(int argc, char** argv) {
    bool json = false;
    std::string_view wanted;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--benchmark_format=json") {
            json = true;
        } else {
            wanted = argument;
        }
    }
    const std::vector<std::uint8_t> rgba = zorvan::texcompress::NaturalImages(kSide).front().pixels;
    if (json) {
        std::printf("{\"context\": {\"executable\": \"texconv_bench\"}, \"benchmarks\": [\n");
    } else {
        PrintHead();
    }
    const double copying = CopyingRate(rgba);
    bool first = true;
    for (const Pipeline& pipeline : kPipelines) {
        if (std::string_view(pipeline.name).find(wanted) == std::string_view::npos) {
            continue;
        }
        const Result result = Measure(pipeline, rgba, copying);
        json ? PrintJson(pipeline.name, result, first) : PrintRow(pipeline.name, result);
        first = false;
    }
    if (json) {
        std::printf("\n]}\n");
    }
    return 0;
}
