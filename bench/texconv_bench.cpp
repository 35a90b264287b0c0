// MPixel/s of the converter's pipelines on an image of 1024 x 1024 pixels, each beside the rate of a
// memcpy of the bytes that it reads and writes, in the same run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <limits>
#include <vector>

#include "texconv/image.h"

namespace {

using namespace QXTextureConverter;

constexpr std::uint32_t kSide = 1024;

struct Pipeline {
    const char* name;
    std::uint32_t from;
    std::uint32_t to;
    std::uint32_t side = kSide;    // of the destination
    std::uint32_t filter = 0;      // nScaleFilter
    std::uint32_t bumpKernel = 0;  // nBumpmap
    std::uint32_t mirror = 0;      // nMirrorX
};

constexpr Pipeline kPipelines[] = {
    {"copy RGBA8888", FMT_RGBA8888, FMT_RGBA8888},
    {"read RGB888", FMT_RGB888, FMT_RGBA8888},
    {"read RGB565", FMT_RGB565, FMT_RGBA8888},
    {"read L8", FMT_L8, FMT_RGBA8888},
    {"read P8_RGB565", FMT_P8_RGB565, FMT_RGBA8888},
    {"read P4_RGB565", FMT_P4_RGB565, FMT_RGBA8888},
    {"read RGBA32F", FMT_RGBA32F, FMT_RGBA8888},
    {"read RGBA16F", FMT_RGBA16F, FMT_RGBA8888},
    {"write RGB888", FMT_RGBA8888, FMT_RGB888},
    {"write RGB565", FMT_RGBA8888, FMT_RGB565},
    {"write RGBA32F", FMT_RGBA8888, FMT_RGBA32F},
    {"write RGBA16F", FMT_RGBA8888, FMT_RGBA16F},
    {"write P8_RGBA8888", FMT_RGBA8888, FMT_P8_RGBA8888},
    {"write P4_RGB565", FMT_RGBA8888, FMT_P4_RGB565},
    {"RGB565 to RGBA4444", FMT_RGB565, FMT_RGBA4444},
    {"RGBA32F to RGBA16F", FMT_RGBA32F, FMT_RGBA16F},
    {"RGBA16F to RGBA32F", FMT_RGBA16F, FMT_RGBA32F},
    {"mirror", FMT_RGBA8888, FMT_RGBA8888, kSide, 0, 0, 1},
    {"box to half", FMT_RGBA8888, FMT_RGBA8888, kSide / 2},
    {"box to double", FMT_RGBA8888, FMT_RGBA8888, kSide * 2},
    {"point to half", FMT_RGBA8888, FMT_RGBA8888, kSide / 2, 1},
    {"four samples to half", FMT_RGBA8888, FMT_RGBA8888, kSide / 2, 3},
    {"cubic to half", FMT_RGBA8888, FMT_RGBA8888, kSide / 2, 4},
    {"float box to half", FMT_RGBA32F, FMT_RGBA32F, kSide / 2},
    {"float cubic to half", FMT_RGBA32F, FMT_RGBA32F, kSide / 2, 4},
    {"bump map, diagonal", FMT_RGBA8888, FMT_RGBA8888, kSide, 0, 1},
    {"bump map, Sobel", FMT_RGBA8888, FMT_RGBA8888, kSide, 0, 2},
};

// An image and the memory that it describes.
struct Buffer {
    Buffer(std::uint32_t side, std::uint32_t format) : image{side, side, format, &flags, 0, nullptr} {
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

// Gradients with a little noise: smooth as pictures are, with many colours.
void Paint(Buffer& buffer) {
    std::uint32_t state = 1;
    for (std::uint32_t i = 0; i < kSide * kSide; ++i) {
        state = state * 1664525u + 1013904223u;
        const std::uint32_t x = i % kSide;
        const std::uint32_t y = i / kSide;
        const std::uint32_t noise = state >> 29;
        std::uint8_t* pixel = buffer.bytes.data() + std::size_t{i} * 4;
        pixel[0] = static_cast<std::uint8_t>(x / 5 + noise);
        pixel[1] = static_cast<std::uint8_t>(y / 5 + noise);
        pixel[2] = static_cast<std::uint8_t>((x + y) / 9);
        pixel[3] = static_cast<std::uint8_t>(255 - (noise == 0 ? x / 8 : 0));
    }
}

double SecondsOf(std::chrono::steady_clock::duration time) {
    return std::chrono::duration<double>(time).count();
}

void Run(benchmark::State& state, const Pipeline& pipeline) {
    Buffer painted(kSide, FMT_RGBA8888);
    Paint(painted);
    Buffer source(kSide, pipeline.from);
    Qonvert(&painted.image, &source.image);
    Buffer destination(pipeline.side, pipeline.to);
    destination.flags.nScaleFilter = pipeline.filter;
    destination.flags.nBumpmap = pipeline.bumpKernel;
    destination.flags.nBumpmapHeight = 10;
    destination.flags.nMirrorX = pipeline.mirror;

    // As many bytes as the conversion moves: half of them are read, half are written.
    const std::size_t moved = (source.bytes.size() + destination.bytes.size()) / 2;
    std::vector<std::uint8_t> from(moved, 1);
    std::vector<std::uint8_t> to(moved, 2);
    // The best of all rounds: the others were disturbed.
    double converting = std::numeric_limits<double>::infinity();
    double copying = converting;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        Qonvert(&source.image, &destination.image);
        benchmark::ClobberMemory();
        const auto converted = std::chrono::steady_clock::now();
        std::memcpy(to.data(), from.data(), moved);
        benchmark::ClobberMemory();
        const auto copied = std::chrono::steady_clock::now();
        converting = std::min(converting, SecondsOf(converted - start));
        copying = std::min(copying, SecondsOf(copied - converted));
        state.SetIterationTime(SecondsOf(converted - start));
    }
    // Pixels are counted where there are more, in the source or in the destination.
    const double side = std::max(kSide, pipeline.side);
    const double pixels = side * side * 1e-6;
    state.counters["MPixel/s"] = pixels / converting;
    state.counters["memcpy_MPixel/s"] = pixels / copying;
    state.counters["of_memcpy_%"] = 100 * copying / converting;
}

}  // namespace

int main(int argc, char** argv) {
    for (const Pipeline& pipeline : kPipelines) {
        benchmark::RegisterBenchmark(pipeline.name, Run, pipeline)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
