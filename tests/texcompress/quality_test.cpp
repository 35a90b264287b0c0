// PSNR of every encoder on natural-looking images, against the table of docs/codecs.md.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>

#include "codec_calls.h"

namespace zorvan::texcompress {
namespace {

constexpr uint32_t kSize = 512;
constexpr double kTolerance = 0.01;  // dB
constexpr const char* kBegin = "<!-- quality table: written by texcompress_quality_test -->\n";
constexpr const char* kEnd = "<!-- end of quality table -->\n";

/// PSNR in dB over the channels that the encoder keeps.
double Psnr(const EncoderCase& encoder, const TestImage& image) {
    uint32_t status;
    const std::vector<uint8_t> decoded = Decode(encoder, image, Encode(encoder, image, status));
    const size_t pixels = image.pixels.size() / 4;
    const size_t bytes = decoded.size() / pixels;
    const size_t channels = std::strlen(encoder.channels);
    uint64_t sum = 0;
    for (size_t i = 0; i < pixels; ++i) {
        for (size_t c = 0; c < channels; ++c) {
            const int difference = image.pixels[4 * i + c] - decoded[bytes * i + c];
            sum += static_cast<uint64_t>(difference * difference);
        }
    }
    return 10.0 *
           std::log10(255.0 * 255.0 * static_cast<double>(pixels * channels) / static_cast<double>(sum));
}

using Measurements = std::map<std::string, std::map<std::string, double>>;

Measurements Measure(const std::vector<TestImage>& images) {
    Measurements measurements;
    for (const EncoderCase& encoder : kEncoderCases) {
        for (const TestImage& image : images) {
            measurements[encoder.name][image.name] = Psnr(encoder, image);
        }
    }
    return measurements;
}

std::string Table(const std::vector<TestImage>& images, const Measurements& measurements) {
    std::ostringstream table;
    table << "| encoder | channels |";
    std::string rule = "|---|---|";
    for (const TestImage& image : images) {
        table << ' ' << image.name << " |";
        rule += "---|";
    }
    table << '\n' << rule << '\n' << std::fixed;
    table.precision(2);
    for (const EncoderCase& encoder : kEncoderCases) {
        table << "| " << encoder.name << " | " << encoder.channels << " |";
        for (const TestImage& image : images) {
            table << ' ' << measurements.at(encoder.name).at(image.name) << " |";
        }
        table << '\n';
    }
    return table.str();
}

/// The document in three pieces: before, within and after the table.
struct Document {
    std::string before, table, after;
};

Document ReadDocument() {
    std::ostringstream text;
    text << std::ifstream(ZORVAN_CODECS_DOCUMENT).rdbuf();
    const std::string all = text.str();
    const size_t begin = all.find(kBegin);
    const size_t end = all.find(kEnd);
    if (begin == std::string::npos || end == std::string::npos) {
        return {};
    }
    const size_t table = begin + std::strlen(kBegin);
    return {all.substr(0, table), all.substr(table, end - table), all.substr(end)};
}

/// The figures of a row "| encoder | channels | figure | ... |".
std::vector<double> Figures(const std::string& table, const std::string& encoder) {
    const size_t row = table.find("| " + encoder + " | ");
    if (row == std::string::npos) {
        return {};
    }
    std::istringstream cells(table.substr(row, table.find('\n', row) - row));
    std::vector<double> figures;
    std::string cell;
    for (int column = 0; std::getline(cells, cell, '|'); ++column) {
        if (column >= 3) {
            figures.push_back(std::atof(cell.c_str()));
        }
    }
    return figures;
}

TEST(Quality, NoEncoderFallsBelowTheDocumentedFigures) {
    const std::vector<TestImage> images = NaturalImages(kSize);
    const Measurements measured = Measure(images);
    const Document document = ReadDocument();
    ASSERT_FALSE(document.before.empty()) << "no table in " << ZORVAN_CODECS_DOCUMENT;
    if (std::getenv("ZORVAN_UPDATE_DOCS") != nullptr) {
        std::ofstream(ZORVAN_CODECS_DOCUMENT) << document.before << Table(images, measured) << document.after;
        return;
    }
    for (const EncoderCase& encoder : kEncoderCases) {
        const std::vector<double> figures = Figures(document.table, encoder.name);
        ASSERT_EQ(figures.size(), images.size()) << encoder.name;
        for (size_t i = 0; i < images.size(); ++i) {
            // The table is rounded to hundredths.
            EXPECT_GE(measured.at(encoder.name).at(images[i].name), figures[i] - kTolerance - 0.005)
                << encoder.name << ' ' << images[i].name;
        }
    }
}

TEST(Quality, TheFullSearchIsNoWorseThanTheFastEncoder) {
    for (const TestImage& image : NaturalImages(kSize / 4)) {
        EXPECT_GE(Psnr(kEncoderCases[0], image), Psnr(kEncoderCases[1], image)) << image.name;
    }
}

}  // namespace
}  // namespace zorvan::texcompress
