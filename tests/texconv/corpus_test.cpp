// Digests of many conversions: every compiler, processor and set of kernels must give the same bytes.
#include <cmath>

#include "tests/texcompress/test_images.h"
#include "tests/texconv/support.h"

namespace texconv_test {
namespace {

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
    return {width, height, FMT_RGBA32F, BytesOf(values)};
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
        image.Words().nStride = (info.bitsPerPixel * width + 7) / 8 + random.Next() % 7;
    }
    if (random.Next() % 3 == 0) {
        for (const auto word : {&TFormatFlags::nMaskRed, &TFormatFlags::nMaskGreen, &TFormatFlags::nMaskBlue,
                                &TFormatFlags::nMaskAlpha}) {
            const std::uint32_t bits = random.Next() % 10;
            const std::uint32_t holes = random.Next() % 4 == 0 ? random.Next() : ~0u;
            image.Words().*word = (((1u << bits) - 1) & holes) << (random.Next() % 32);
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
    const std::uint32_t filters[] = {0, 1, 2, 3, 4, 6};
    TestImage destination(newWidth, newHeight, to);
    TFormatFlags& flags = destination.Words();
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
    Bytes all;
    Random random(to);
    for (const FormatInfo& from : kFormats) {
        for (std::uint32_t kind = 0; kind < kPictures; ++kind) {
            const Bytes bytes = Conversion(random, kind, from.code, to);
            all.insert(all.end(), bytes.begin(), bytes.end());
        }
    }
    return zorvan::texcompress::Digest(all.data(), all.size());
}

TEST(Corpus, DigestsAreTheSameEverywhere) {
    const std::uint64_t digests[] = {
        0x506646F7C581DB46, 0x3DD45951172D84BD, 0x171BB6F7C644182C, 0x15859F82939ABBAB, 0xC3CC40BCB82DB320,
        0x0A7717E28EBEBF26, 0x50E71D6EE875CFBF, 0x6517141029601F5E, 0x4D9119730274FDD8, 0xEFDE1C70EEE72F35,
        0xC7324B2A26C9D785, 0x5AD9FC47F80589A8, 0x6571C9DF4A23DF8F, 0x159C59E711B534D2, 0xC86CF9FD48F040E5,
        0x90B2E9AA1AF432C5, 0xA7DA45237682B835, 0xE51A0852B466A840, 0xF15AACEC488008BF, 0xF94D68EB2175ED4B,
        0xD530B87F64EF0105, 0x18B8C667C285BE35, 0x59468285E068B0C2, 0x3D2F769E4782C2B9, 0x4E2301B0262EF231,
        0x182F23CAB4B719E8, 0x99F88DD1E3ED13BB, 0x724E0EBB589EED6B, 0x1D14CAC84B9088E0, 0xD81FC97A40900EB4,
        0x59ED6C6226E4D0A6, 0x7D06AD1696B8BF48, 0xC85438CBE378C823, 0xE898B37C2FC49915, 0xF51884E6D3017151,
        0x734DAF4160759BAC, 0x44E8B0027E38CD37, 0x56089017CA1B2F11, 0x03298EFB487D564A, 0xF16F92E8B7462B9A};
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
        std::uint32_t kind, format, width, height;
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
            const bool floats = FindFormat(row.format)->IsFloat();
            TestImage destination(row.width, row.height, row.format);
            const Bytes bytes =
                Convert(InFormat(Picture(row.kind, 300, 301), 300, 301, floats ? FMT_RGBA32F : FMT_RGBA8888),
                        destination);
            EXPECT_EQ(zorvan::texcompress::Digest(bytes.data(), bytes.size()), row.digest) << row.width;
        }
    });
}

}  // namespace
}  // namespace texconv_test
