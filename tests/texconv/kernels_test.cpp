// Every set of kernels against the plain one, bit for bit, at every length and alignment.
#include <algorithm>
#include <limits>

#include "tests/texconv/support.h"
#include "texconv/row_kernels.h"

namespace texconv_test {
namespace {

constexpr std::size_t kMostPixels = 40;

// What kernel(set) stores in a buffer of `size` bytes, one byte off any alignment, with guards around.
template <typename Kernel>
Bytes Stored(const RowKernels& set, std::size_t size, const Kernel& kernel) {
    Bytes buffer(size + 34, 0xCD);
    kernel(set, buffer.data() + 17);
    return buffer;
}

template <typename Kernel>
void ExpectSame(std::size_t size, const Kernel& kernel) {
    EXPECT_EQ(Stored(SelectRowKernels(), size, kernel), Stored(kScalarRowKernels, size, kernel));
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
        const auto mask = [&] { return random.Next() * random.Next() >> (random.Next() % 32); };
        layouts.push_back({{mask(), mask(), mask(), i % 3 == 0 ? 0 : mask()}, i % 5, i % 6 == 0});
    }
    const Bytes pixels = random.Fill(kMostPixels * 4 + 1);
    WithEachKernelSet([&] {
        for (std::size_t i = 0; i < layouts.size(); ++i) {
            for (std::size_t count = i % 8; count <= kMostPixels; count += i < 20 ? 1 : 8) {
                const WordLayout& layout = layouts[i];
                SCOPED_TRACE(testing::Message() << i << ' ' << count);
                ExpectSame(count * 4, [&](const RowKernels& set, std::uint8_t* to) {
                    set.unpack(layout, pixels.data() + 1, count, to);
                });
                ExpectSame(count * layout.bytes, [&](const RowKernels& set, std::uint8_t* to) {
                    set.pack(layout, pixels.data() + 1, count, to);
                });
                ExpectSame(count * 4, [&](const RowKernels& set, std::uint8_t* to) {
                    set.mirror(pixels.data() + 1, count, to);
                });
            }
        }
    });
}

TEST(RowKernels, ChannelsOfEveryValue) {
    std::vector<std::uint16_t> halves;
    Bytes bytes;
    std::vector<std::uint32_t> words;
    Random random(2);
    for (std::uint32_t i = 0; i < 65536; ++i) {
        halves.push_back(static_cast<std::uint16_t>(i));
        bytes.push_back(static_cast<std::uint8_t>(i));
        // Every sign and exponent, with the ends of the mantissas.
        const std::uint32_t mantissas[] = {0, 1, 0x7FFFFF, random.Next()};
        words.push_back(i >> 7 << 23 | (mantissas[i % 4] & 0x7FFFFF));
        words.push_back((random.Next() << 8) ^ random.Next());
    }
    const auto check = [](ChannelKernel RowKernels::*kernel, const auto& from, std::size_t toBytes) {
        const std::size_t count = from.size() - 3;
        ExpectSame(count * toBytes, [&](const RowKernels& set, std::uint8_t* to) {
            (set.*kernel)(reinterpret_cast<const std::uint8_t*>(from.data()), count, to);
        });
    };
    std::rotate(bytes.begin(), bytes.begin() + 5, bytes.end());
    WithEachKernelSet([&] {
        check(&RowKernels::floatsToBytes, words, 1);
        check(&RowKernels::halvesToBytes, halves, 1);
        check(&RowKernels::bytesToFloats, bytes, 4);
        check(&RowKernels::bytesToHalves, bytes, 2);
        check(&RowKernels::floatsToHalves, words, 2);
        check(&RowKernels::halvesToFloats, halves, 4);
    });
}

TEST(RowKernels, MeansOfEveryQuotient) {
    std::vector<std::uint32_t> sums(4 * 256);
    std::vector<Span> spans;
    for (std::uint32_t i = 0; i < 256; ++i) {
        spans.push_back({i, 1});
    }
    WithEachKernelSet([&] {
        for (std::uint32_t count = 1; count <= kMostInMean; count += count < 300 ? 1 : 97) {
            for (std::uint32_t i = 0; i < 256; ++i) {
                const std::uint32_t whole = i * count;
                const std::uint32_t most = 255 * count;
                const std::uint32_t near[] = {whole, std::min(whole + 1, most), std::max(whole, 1u) - 1,
                                              std::min(whole + count - 1, most)};
                std::copy(std::begin(near), std::end(near), sums.begin() + i * 4);
            }
            ExpectSame(sums.size(), [&](const RowKernels& set, std::uint8_t* to) {
                set.averageSpans(sums.data(), spans.data(), spans.size(), count, to);
            });
        }
    });
}

TEST(RowKernels, HeightsOfEverySumAndNormalsOfEverySlope) {
    Bytes pixels;
    for (std::uint32_t sum = 0; sum <= 765; ++sum) {
        const std::uint32_t red = std::min(sum, 255u);
        const std::uint32_t green = std::min(sum - red, 255u);
        pixels.insert(pixels.end(), {static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
                                     static_cast<std::uint8_t>(sum - red - green), 9});
    }
    std::vector<std::int16_t> slopes;
    for (std::int16_t slope = -1020; slope <= 1020; ++slope) {
        slopes.push_back(slope);
    }
    const std::vector<std::int16_t> flat(slopes.size(), 0);
    const std::int16_t* lines[] = {flat.data() + 1, slopes.data() + 1, flat.data() + 1};
    WithEachKernelSet([&] {
        ExpectSame(766 * 4, [&](const RowKernels& set, std::uint8_t* to) {
            std::vector<std::int16_t> heights(766);
            set.heights(pixels.data(), heights.size(), heights.data());
            std::memcpy(to, heights.data(), heights.size() * 2);
        });
        for (const float nz : {1.0f, -0.1f, 10.0f, 1e-9f, std::numeric_limits<float>::infinity()}) {
            for (std::uint32_t kernel = 1; kernel <= 4; ++kernel) {
                const std::size_t count = slopes.size() - 2 - kernel;
                ExpectSame(count * 4, [&](const RowKernels& set, std::uint8_t* to) {
                    set.normals(kernel, lines, count, nz, to);
                });
            }
        }
    });
}

}  // namespace
}  // namespace texconv_test
