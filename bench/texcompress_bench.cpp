// MPixel/s of every block encoder and decoder on one natural-looking image of 1024 x 1024 pixels, with
// each set of kernels that the machine runs. Counters: "x plain" is the ratio to the plain set and
// "x memcpy" that to copying the image's bytes of R, G, B, A, both of the same run.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <ctime>

#include "tests/texcompress/codec_calls.h"
#include "texcompress/block_kernels.h"

namespace {

using namespace zorvan::texcompress;

const TestImage& Image() {
    static const TestImage image = NaturalImages(1024).front();
    return image;
}

// The quickest of the calls of one benchmark, in processor time: what others on the machine disturb
// least.
class QuickestCall {
  public:
    template <typename Call>
    void Time(Call call) {
        const std::clock_t begin = std::clock();
        call();
        seconds_ = std::min(seconds_, static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC);
    }
    double MPixels() const { return static_cast<double>(Image().width) * Image().height / 1e6 / seconds_; }

  private:
    double seconds_ = 1e9;
};

double MemcpyMPixels() {
    static const double rate = [] {
        std::vector<uint8_t> copy(Image().pixels.size());
        QuickestCall quickest;
        for (int i = 0; i < 200; ++i) {
            quickest.Time([&] {
                std::memcpy(copy.data(), Image().pixels.data(), copy.size());
                benchmark::ClobberMemory();
            });
        }
        return quickest.MPixels();
    }();
    return rate;
}

// plainRate is that of the plain set, which runs first.
void Report(benchmark::State& state, const QuickestCall& quickest, size_t set, double& plainRate) {
    plainRate = set == 0 ? quickest.MPixels() : plainRate;
    state.counters["MPixel/s"] = quickest.MPixels();
    state.counters["x plain"] = quickest.MPixels() / plainRate;
    state.counters["x memcpy"] = quickest.MPixels() / MemcpyMPixels();
}

void BenchEncode(benchmark::State& state, const Codec& codec, size_t set, double& plainRate) {
    UseBlockKernels(*KernelSetAt(set).kernels);
    std::vector<uint8_t> blocks = Encode(codec, SourceOf(Image()));
    auto size = static_cast<uint32_t>(blocks.size());
    _ATITC_HEADER header;
    QuickestCall quickest;
    for (auto _ : state) {
        quickest.Time([&] { Encode(codec, SourceOf(Image()), blocks.data(), &size, &header); });
    }
    Report(state, quickest, set, plainRate);
}

void BenchDecode(benchmark::State& state, const Codec& codec, size_t set, double& plainRate) {
    const uint32_t width = Image().width;
    const uint32_t height = Image().height;
    UseBlockKernels(*KernelSetAt(KernelSetCount() - 1).kernels);
    const std::vector<uint8_t> blocks = Encode(codec, SourceOf(Image()));
    std::vector<uint8_t> pixels = Decode(codec, width, height, blocks);
    auto size = static_cast<uint32_t>(pixels.size());
    UseBlockKernels(*KernelSetAt(set).kernels);
    QuickestCall quickest;
    for (auto _ : state) {
        quickest.Time(
            [&] { Decode(codec, width, height, blocks.data(), TXC_ORDER_RGB, pixels.data(), &size); });
    }
    Report(state, quickest, set, plainRate);
}

}  // namespace

int main(int argc, char** argv) {
    std::array<std::array<double, 2>, kCodecs.size()> plainRates{};
    for (size_t i = 0; i < kCodecs.size(); ++i) {
        for (size_t set = 0; set < KernelSetCount(); ++set) {
            const auto add = [&](const char* verb, auto run, double& plainRate) {
                const std::string name =
                    std::string(verb) + ' ' + kCodecs[i].name + '/' + KernelSetAt(set).name;
                benchmark::RegisterBenchmark(name.c_str(), [i, set, run,
                                                            &plainRate](benchmark::State& state) {
                    run(state, kCodecs[i], set, plainRate);
                })->Unit(benchmark::kMillisecond);
            };
            add("encode", BenchEncode, plainRates[i][0]);
            add("decode", BenchDecode, plainRates[i][1]);
        }
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
