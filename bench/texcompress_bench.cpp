// MPixel/s of every block encoder and decoder on one natural-looking image of 1024 x 1024 pixels.
#include <benchmark/benchmark.h>

#include "tests/texcompress/codec_calls.h"

namespace {

using namespace zorvan::texcompress;

const TestImage& Image() {
    static const TestImage image = NaturalImages(1024).front();
    return image;
}

void CountPixels(benchmark::State& state) {
    const double pixels = static_cast<double>(Image().width) * Image().height / 1e6;
    state.counters["MPixel/s"] = benchmark::Counter(pixels, benchmark::Counter::kIsIterationInvariantRate);
}

void BenchEncode(benchmark::State& state, const EncoderCase& encoder) {
    uint32_t status = TXC_OK;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Encode(encoder, Image(), status));
    }
    CountPixels(state);
}

void BenchDecode(benchmark::State& state, const EncoderCase& encoder) {
    uint32_t status = TXC_OK;
    const std::vector<uint8_t> blocks = Encode(encoder, Image(), status);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Decode(encoder, Image(), blocks));
    }
    CountPixels(state);
}

}  // namespace

int main(int argc, char** argv) {
    for (const EncoderCase& encoder : kEncoderCases) {
        const auto add = [&encoder](const char* verb, auto run) {
            benchmark::RegisterBenchmark((std::string(verb) + ' ' + encoder.name).c_str(), run, encoder)
                ->Unit(benchmark::kMillisecond);
        };
        add("encode", BenchEncode);
        add("decode", BenchDecode);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
