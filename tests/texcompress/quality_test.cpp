// PSNR of every encoder on natural-looking images: the table of docs/codecs.md, line by line.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <sstream>

#include "codec_calls.h"

namespace zorvan::texcompress {
namespace {

// PSNR in dB over the channels that the encoder keeps.
double Psnr(const Codec& codec, const TestImage& image) {
    const std::vector<uint8_t> decoded =
        Decode(codec, image.width, image.height, Encode(codec, SourceOf(image)));
    const size_t pixels = image.pixels.size() / 4;
    const size_t channels = std::strlen(codec.channels);
    double sum = 0;
    for (size_t i = 0; i < pixels * channels; ++i) {
        const size_t pixel = i / channels;
        sum += std::pow(
            image.pixels[4 * pixel + i % channels] - decoded[codec.PixelBytes() * pixel + i % channels], 2);
    }
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(pixels * channels) / sum);
}

TEST(Quality, IsAsDocumented) {
    std::ostringstream document;
    document << std::ifstream(ZORVAN_CODECS_DOCUMENT).rdbuf();
    const std::vector<TestImage> images = NaturalImages(512);
    for (const Codec& codec : kCodecs) {
        std::ostringstream line;
        line << "| " << codec.name << " | " << codec.channels << " |" << std::fixed << std::setprecision(2);
        for (const TestImage& image : images) {
            line << ' ' << Psnr(codec, image) << " |";
        }
        EXPECT_NE(document.str().find('\n' + line.str() + '\n'), std::string::npos)
            << "not in " << ZORVAN_CODECS_DOCUMENT << ":\n"
            << line.str();
    }
}

}  // namespace
}  // namespace zorvan::texcompress
