// Digests of many conversions: every compiler, processor and set of kernels must give the same bytes.
#include <cmath>

#include "tests/texconv/support.h"

namespace texconv_test {
namespace {

class Digest {
  public:
    void Add(const Bytes& bytes) {
        for (const std::uint8_t byte : bytes) {
            m_hash = (m_hash ^ byte) * 1099511628211ull;
        }
    }
    std::uint64_t Value() const { return m_hash; }

  private:
    std::uint64_t m_hash = 14695981039346656037ull;
};

constexpr std::uint32_t kPictures = 5;

// Noise, gradients, one colour, an alpha ramp over few colours, and floats that no byte has: negative, above
// 1 (which wraps), huge and without a value.
TestImage Picture(std::uint32_t kind, std::uint32_t width, std::uint32_t height) {
    Random random(kind * 977 + width * 131 + height);
    std::vector<float> values;
    for (std::uint32_t i = 0; i < width * height; ++i) {
        const auto x = static_cast<float>(i % width);
        const auto y = static_cast<float>(i % 41);
        for (std::uint32_t c = 0; c < 4; ++c) {
            const auto noise = static_cast<float>(random.Next() % 1024) / 1023.0f;
            const float odd[] = {-0.5f, 1.3f, 70000.0f, 6e9f, INFINITY, NAN, 1e-6f, noise};
            const float kinds[] = {noise, (x * static_cast<float>(c + 1) + y) / 200.0f + noise / 64.0f, 0.4f,
                                   c == 3 ? x / 40.0f : static_cast<float>(i % 5) / 5.0f,
                                   odd[random.Next() % std::size(odd)]};
            values.push_back(kinds[kind]);
        }
    }
    return {width, height, FMT_RGBA32F, FloatBytes(values)};
}

TestImage InFormat(TestImage picture, std::uint32_t width, std::uint32_t height, std::uint32_t format) {
    TestImage image(width, height, format);
    Qonvert(picture.Get(), image.Allocate().Get());
    return image;
}

// Now and then rows with padding and channels anywhere in the word, with holes, sharing bits or wide.
void Disturb(Random& random, std::uint32_t width, std::uint32_t format, TestImage& image) {
    const FormatInfo& info = *FindFormat(format);
    if (info.formatClass == FormatClass::kPlain && random.Next() % 3 == 0) {
        image.Flags().nStride = (info.bitsPerPixel * width + 7) / 8 + random.Next() % 7;
    }
    if (random.Next() % 3 == 0) {
        for (const auto word : {&TFormatFlags::nMaskRed, &TFormatFlags::nMaskGreen, &TFormatFlags::nMaskBlue,
                                &TFormatFlags::nMaskAlpha}) {
            const std::uint32_t bits = random.Next() % 10;
            const std::uint32_t holes = random.Next() % 4 == 0 ? random.Next() : ~0u;
            image.Flags().*word = (((1u << bits) - 1) & holes) << (random.Next() % 32);
        }
    }
}

// One conversion of a picture of any size and kind, with options of any value.
Bytes Conversion(Random& random, std::uint32_t kind, std::uint32_t from, std::uint32_t to) {
    const std::uint32_t width = 1 + random.Next() % 40;
    const std::uint32_t height = 1 + random.Next() % 24;
    const bool scaled = random.Next() % 2 != 0;
    const std::uint32_t newWidth = scaled ? 1 + random.Next() % 40 : width;
    const std::uint32_t newHeight = scaled ? 1 + random.Next() % 24 : height;
    TestImage source = InFormat(Picture(kind, width, height), width, height, from);
    Disturb(random, width, from, source);
    source.Data().resize(source.Size(), 0x5A);
    TestImage destination(newWidth, newHeight, to);
    TFormatFlags& flags = destination.Flags();
    const std::uint32_t filters[] = {0, 1, 2, 3, 4, 6};
    flags.nScaleFilter = filters[random.Next() % std::size(filters)];
    flags.nMirrorX = random.Next() % 2;
    flags.nFlipY = random.Next() % 2;
    flags.nBumpmap = random.Next() % 2 * (random.Next() % 5);
    flags.nBumpmapHeight = random.Next() % 30 - 3;
    flags.nBumpmapWrap = random.Next() % 2;
    flags.nFastCompress = 1;
    flags.nMode = 1;  // the fast encoder may complain
    Disturb(random, newWidth, to, destination);
    Qonvert(source.Get(), destination.Allocate(0xEE).Get());
    return destination.Data();
}

std::uint64_t DigestOf(std::uint32_t to) {
    Digest digest;
    Random random(to);
    for (const FormatInfo& from : kFormats) {
        for (std::uint32_t kind = 0; kind < kPictures; ++kind) {
            digest.Add(Conversion(random, kind, from.code, to));
        }
    }
    return digest.Value();
}

TEST(Corpus, DigestsAreTheSameEverywhere) {
    const std::uint64_t digests[] = {
        0x66AFE2EE21E9785C, 0x52BC708564060AB6, 0x9E757CF9A429DEB7, 0x425F3C199DCC5FAA, 0xA34F15378D5D0E8B,
        0xFFB5155209B7975F, 0xD234EBC57CBA37DD, 0xB0CB73FB95399ECA, 0x607E6C2903F958A1, 0x428C3222DBEB80DF,
        0xC7B6F3EFCD09D192, 0xE76028B8A54CC551, 0x8E77B307C1B44B62, 0xABA9A61D59977F9F, 0xA22FF6DBFEBEF677,
        0x1AFA2CE2BBDECD3F, 0x27BC7B1BADC84BF8, 0x5B98ECF1C1CF2F73, 0xFB58EC66C54A3EBB, 0x957149E572B58B2C,
        0xFD4E8D620FB2D505, 0x05C7FB1D8C1ABDBA, 0xD3686CD471C3C6BF, 0xCADF514EBAFC6986, 0x6115FF90760411F7,
        0x32F520A18D3A5911, 0x634CD856230D571F, 0xB0EE12F0DBD1FCAB, 0xD2C79D83927352A5, 0x24AE9C9AC749AFDF,
        0xC6C3039D764D72FA, 0x37F08141BDC9E17E, 0x623C92D3FAC5A35B, 0x850291F2DF0D6E1B, 0xB1C9A60014E889F3,
        0xB39DD7BB3BDFE8E1, 0xBCBBD14F264FD9AA, 0xF68CA25984030DA1, 0xA402C18167617F9A, 0x53DC3866A1125D62};
    static_assert(std::size(digests) == kFormats.size());
    const auto usual = zorvan::texcompress::SelectedInstructionSet();
    WithEachKernelSet([&] {
        for (std::size_t i = 0; i < kFormats.size(); ++i) {
            // The codecs take most of the time, and their kernels have tests of their own.
            if (kFormats[i].IsCompressed() && zorvan::texcompress::SelectedInstructionSet() != usual) {
                continue;
            }
            EXPECT_EQ(DigestOf(kFormats[i].code), digests[i]) << kFormats[i].name;
        }
    });
}

// Pictures of more colours than the histogram holds, and sums of more pixels than 16 bits count.
TEST(Corpus, DigestsOfLargePicturesAreTheSame) {
    struct Row {
        std::uint32_t kind;
        std::uint32_t format;
        std::uint32_t width;
        std::uint32_t height;
        std::uint64_t digest;
    };
    const Row rows[] = {{0, FMT_P8_RGBA8888, 300, 301, 0x62C5D17F7544CED0},
                        {1, FMT_P8_RGBA4444, 300, 301, 0x36E301B79D9BA899},
                        {3, FMT_P4_RGB888, 300, 301, 0x7E83820B12AB23DD},
                        {0, FMT_RGBA8888, 1, 1, 0x1C8A7142F8891636},
                        {1, FMT_RGBA8888, 3, 2, 0xCF0A7FD5AE03F7D4},
                        {4, FMT_RGBA32F, 2, 1, 0xB9E7322DEB9A5665}};
    WithEachKernelSet([&] {
        for (const Row& row : rows) {
            TestImage source = InFormat(Picture(row.kind, 300, 301), 300, 301,
                                        FindFormat(row.format)->IsFloat() ? FMT_RGBA32F : FMT_RGBA8888);
            TestImage destination(row.width, row.height, row.format);
            Digest digest;
            digest.Add(Convert(source, destination.Allocate()));
            EXPECT_EQ(digest.Value(), row.digest) << FindFormat(row.format)->name << ' ' << row.width;
        }
    });
}

}  // namespace
}  // namespace texconv_test
