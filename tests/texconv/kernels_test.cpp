// Every set of kernels against the plain one, bit for bit, at every length and alignment.
#include <algorithm>
#include <iterator>
#include <limits>

#include "tests/texconv/support.h"
#include "texconv/row_kernels.h"

namespace texconv_test {
namespace {

constexpr std::size_t kMostPixels = 40;

// Compares what kernel(set, to) stores in `size` bytes, one off any alignment, with guards around.
template <typename Kernel>
void ExpectSame(std::size_t size, const Kernel& kernel) {
    const auto stored = [&](const RowKernels& set) {
        Bytes buffer(size + 34, 0xCD);
        kernel(set, buffer.data() + 17);
        return buffer;
    };
    const Bytes expected = stored(kScalarRowKernels);
    WithEachKernelSet([&] { EXPECT_EQ(stored(SelectRowKernels()), expected); });
}

TEST(RowKernels, WordsOfEveryLayoutAndLength) {
    Random random(1);
    std::vector<WordLayout> layouts;
    for (const FormatInfo& format : kFormats) {
        if (format.formatClass == FormatClass::kPlain) {
            layouts.emplace_back(format.masks, format.bitsPerPixel / 8);
        }
    }
    for (std::uint32_t i = 0; i < 300; ++i) {
        const auto mask = [&] {
            const std::uint32_t bits = i % 2 == 0 ? random.Next() * random.Next() : 0xFFu << (i % 24);
            return bits >> (random.Next() % 32);
        };
        layouts.push_back({{mask(), mask(), mask(), i % 3 == 0 ? 0 : mask()}, i % 5, i % 6 == 0});
    }
    const Bytes pixels = random.Fill(kMostPixels * 4 + 1);
    const std::uint8_t* from = pixels.data() + 1;
    for (std::size_t i = 0; i < layouts.size(); ++i) {
        for (std::size_t count = i % 8; count <= kMostPixels; count += i < 20 ? 1 : 8) {
            const WordLayout& layout = layouts[i];
            SCOPED_TRACE(testing::Message() << i << ' ' << count);
            ExpectSame(count * 4, [&](auto& set, auto* to) { set.unpack(layout, from, count, to); });
            ExpectSame(count * layout.bytes, [&](auto& set, auto* to) { set.pack(layout, from, count, to); });
            ExpectSame(count * 4, [&](auto& set, auto* to) { set.mirror(from, count, to); });
            ExpectSame(count * 2, [&](auto& set, auto* to) { set.halve(from, from - 1, count / 2, to); });
        }
    }
}

TEST(RowKernels, ChannelsOfEveryValue) {
    const std::vector<std::uint16_t> halves = EveryWord();
    const Bytes bytes(BytesOf(halves));  // every byte at even and odd places
    // 255 times the first three: just below 2^31, just below 2^32, and 2^32.
    std::vector<std::uint32_t> words{0x4B008080, 0x4B808080, 0x4B808081};
    Random random(2);
    for (std::uint32_t i = 0; i < 65536; ++i) {
        // Every sign and exponent, with the ends of the mantissas.
        const std::uint32_t mantissas[] = {0, 1, 0x7FFFFF, random.Next()};
        words.push_back(i >> 7 << 23 | (mantissas[i % 4] & 0x7FFFFF));
        words.push_back((random.Next() << 8) ^ random.Next());
    }
    const auto check = [](ChannelKernel RowKernels::*kernel, const auto& from, std::size_t toBytes) {
        const std::size_t count = from.size() - 3;
        ExpectSame(count * toBytes, [&](auto& set, auto* to) {
            (set.*kernel)(reinterpret_cast<const std::uint8_t*>(from.data()), count, to);
        });
    };
    check(&RowKernels::floatsToBytes, words, 1);
    std::vector<std::uint32_t> below2;
    std::ranges::copy_if(words, std::back_inserter(below2),
                         [](std::uint32_t word) { return word < 0x40000000; });
    check(&RowKernels::floatsToBytes, below2, 1);  // which has a shorter way
    check(&RowKernels::halvesToBytes, halves, 1);
    check(&RowKernels::bytesToFloats, bytes, 4);
    check(&RowKernels::bytesToHalves, bytes, 2);
    check(&RowKernels::floatsToHalves, words, 2);
    check(&RowKernels::halvesToFloats, halves, 4);
}

TEST(RowKernels, MeansOfEveryQuotient) {
    std::vector<std::uint32_t> sums(4 * 256);
    std::vector<Span> spans;
    for (std::uint32_t i = 0; i < 256; ++i) {
        spans.push_back({i, 1});
    }
    for (std::uint32_t count = 1; count <= kMostInMean; count += count < 300 ? 1 : 97) {
        for (std::uint32_t i = 0; i < 256; ++i) {
            const std::uint32_t whole = i * count;
            const std::uint32_t most = 255 * count;
            const std::uint32_t near[] = {whole, std::min(whole + 1, most), std::max(whole, 1u) - 1,
                                          std::min(whole + count - 1, most)};
            std::copy(std::begin(near), std::end(near), sums.begin() + i * 4);
        }
        ExpectSame(sums.size(), [&](auto& set, auto* to) {
            set.averageSpans(sums.data(), spans.data(), spans.size(), count, to);
        });
    }
}

TEST(RowKernels, CubicSumsOfEveryLength) {
    Random random(3);
    for (const std::uint32_t step :
         {97u, 5u, 0u}) {  // noise, gradients, whose sums are whole, and flat parts
        Bytes pixels = random.Fill((2 * kMostPixels + 3) * 4);
        for (std::size_t i = 4; i < pixels.size() && step < 97; ++i) {
            pixels[i] = static_cast<std::uint8_t>(i % 80 < 4 ? pixels[i] : pixels[i - 4] + step);
        }
        for (std::size_t count = 0; count <= kMostPixels; ++count) {
            ExpectSame(count * 4, [&](auto& set, auto* to) {
                std::vector<float> even(kMostPixels * 4 + 4), odd = even, all(pixels.size());
                set.widenPairs(pixels.data(), count, even.data(), odd.data());
                set.widenBytes(pixels.data(), pixels.size(), all.data());
                const float *e = even.data(), *o = odd.data(), *a = all.data();
                const float* runs[] = {e, a, o, o, a + 4, e, e + 4, a + 8, o + 4};
                set.cubicBytes(runs, count, to);
            });
        }
    }
}

TEST(RowKernels, HeightsOfEverySumAndNormalsOfEverySlope) {
    Bytes pixels;
    for (std::uint32_t sum = 0; sum <= 765; ++sum) {
        const std::uint32_t red = std::min(sum, 255u);
        const std::uint32_t green = std::min(sum - red, 255u);
        for (const std::uint32_t channel : {red, green, sum - red - green, 9u}) {
            pixels.push_back(static_cast<std::uint8_t>(channel));
        }
    }
    ExpectSame(766 * 2, [&](auto& set, auto* to) {
        std::vector<std::int16_t> heights(766);
        set.heights(pixels.data(), heights.size(), heights.data());
        std::memcpy(to, heights.data(), heights.size() * 2);
    });
    std::vector<std::int16_t> slopes(2041);
    std::iota(slopes.begin(), slopes.end(), std::int16_t{-1020});
    const std::vector<std::int16_t> flat(slopes.size(), 0);
    const std::int16_t* lines[] = {flat.data() + 1, slopes.data() + 1, flat.data() + 1};
    for (const float nz : {1.0f, -0.1f, 10.0f, 1e-9f, std::numeric_limits<float>::infinity()}) {
        for (std::uint32_t kernel = 1; kernel <= 4; ++kernel) {
            const std::size_t count = slopes.size() - 2 - kernel;
            ExpectSame(count * 4, [&](auto& set, auto* to) { set.normals(kernel, lines, count, nz, to); });
        }
    }
}

}  // namespace
}  // namespace texconv_test
