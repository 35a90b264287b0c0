// Digests of many conversions: every compiler and processor must give the same bytes.
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

// A picture with gradients and noise, as floats that stay within 0 .. 1.25 so that wrapping
// conversions are among the results.
TestImage FloatPicture(std::uint32_t width, std::uint32_t height) {
    Random random(width * 131 + height);
    std::vector<float> values;
    for (std::uint32_t i = 0; i < width * height * 4; ++i) {
        values.push_back(static_cast<float>((i * 7 + random.Next() % 160) % 1280) / 1024.0f);
    }
    return {width, height, FMT_RGBA32F, FloatBytes(values)};
}

struct DigestRow {
    std::uint32_t format;
    std::uint64_t digest;
};

// Source formats from every class but the compressed ones, whose codecs have digests of their own.
std::uint64_t DigestOf(std::uint32_t format) {
    Digest digest;
    const std::uint32_t sources[] = {FMT_RGBA8888,    FMT_RGB565,  FMT_LA88, FMT_P8_RGB888,
                                     FMT_P4_RGBA5551, FMT_RGBA32F, FMT_LA16F};
    for (const std::uint32_t from : sources) {
        for (std::uint32_t filter = 0; filter <= 6; ++filter) {
            if (filter == 5) {
                continue;
            }
            TestImage picture = FloatPicture(23 + filter, 19);
            TestImage source(23 + filter, 19, from);
            Convert(picture, source.Allocate());
            TestImage destination(filter % 2 == 0 ? 31 : 11, 13 + filter, format);
            TFormatFlags& flags = destination.Flags();
            flags.nScaleFilter = filter;
            flags.nMirrorX = filter & 1;
            flags.nFlipY = filter & 2;
            flags.nBumpmap = filter % 4;
            flags.nBumpmapHeight = 5 + 7 * filter;
            flags.nBumpmapWrap = filter & 2;
            digest.Add(Convert(source, destination.Allocate(0xEE)));
        }
    }
    return digest.Value();
}

TEST(Corpus, DigestsAreTheSameEverywhere) {
    const DigestRow rows[] = {
        {FMT_RGBA8888, 0x3EDEA24E2178973D},    {FMT_RGB888, 0xE87FB617F1B61A8A},
        {FMT_RGB565, 0x68A661A0B9DD7DBD},      {FMT_RGBA4444, 0x0E1E1DB37886AFA2},
        {FMT_LA88, 0xB24AAC4E95F355DB},        {FMT_L8, 0x328CEFD2F2FDFEFE},
        {FMT_P8_RGBA8888, 0x4E182CCC0F71EF4E}, {FMT_P8_RGBA5551, 0x29BA0A0C41F92795},
        {FMT_P8_RGB565, 0x6D8EEC834F03A4BC},   {FMT_P4_RGB888, 0xF021DF0C2ABBA27A},
        {FMT_P4_RGBA4444, 0x1C042FE13584DDDC}, {FMT_P4_RGB565, 0x998E684973B81BFB},
        {FMT_P1_RGBA8888, 0x116D190E6C7D3688}, {FMT_RGB32F, 0xD78C1FE5B8151F04},
        {FMT_L32F, 0x358BDC89CD27BD14},        {FMT_RGBA16F, 0x01E1A6D4261C5BAC},
        {FMT_LA16F, 0x8A1669974E561DED},       {FMT_A16F, 0x995D89A3D53D685F},
        {FMT_L16, 0x05131C2249D16695},         {FMT_L24A8, 0x617352239BE45386},
    };
    for (const DigestRow& row : rows) {
        EXPECT_EQ(DigestOf(row.format), row.digest) << FindFormat(row.format)->name;
    }
}

}  // namespace
}  // namespace texconv_test
