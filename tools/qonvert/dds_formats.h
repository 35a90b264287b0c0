// How DDS files name the pixel formats.
#pragma once

#include <cstdint>
#include <string>

#include "texconv/qonvert.h"
#include "tools/qonvert/container.h"
#include "tools/qonvert/rearrange.h"

namespace qonvert {

constexpr std::uint32_t FourCc(const char (&text)[5]) {
    std::uint32_t word = 0;
    for (unsigned i = 0; i < 4; ++i) {
        word |= std::uint32_t{static_cast<unsigned char>(text[i])} << (8 * i);
    }
    return word;
}

// Its four letters.
inline std::string FourCcText(std::uint32_t word) {
    std::string text;
    for (unsigned i = 0; i < 4; ++i) {
        text += static_cast<char>(word >> (8 * i));
    }
    return text;
}

struct DdsFourCc {
    std::uint32_t code;
    std::uint32_t fourCc;
    DdsNames names;  // that write this row
    Rearrangement change = Rearrangement::kNone;
};

// Read in full; the first row of a code that fits the chosen names is written.
inline constexpr DdsFourCc kDdsFourCcs[] = {
    {FMT_ATITC_RGB, FourCc("ATC "), DdsNames::kAti},
    {FMT_ATITC_RGBA_EXPLICIT, FourCc("ATCA"), DdsNames::kAti},
    {FMT_ATITC_RGBA_EXPLICIT, FourCc("ATCE"), DdsNames::kAti},
    {FMT_ATITC_RGBA_INTERPOLATED, FourCc("ATCI"), DdsNames::kAti},
    {FMT_ETC1_RGB8, FourCc("ETC1"), DdsNames::kAti},
    {FMT_3DC_X, FourCc("ATI1"), DdsNames::kAti},
    {FMT_3DC_X, FourCc("BC4U"), DdsNames::kBc},
    {FMT_3DC_XY, FourCc("ATI2"), DdsNames::kAti},
    {FMT_3DC_XY, FourCc("BC5U"), DdsNames::kBc, Rearrangement::kSwapHalves},
};

struct DdsDxgi {
    std::uint32_t code;
    std::uint32_t dxgi;
    const char* name;  // without DXGI_FORMAT_
    Rearrangement change = Rearrangement::kNone;
};

inline constexpr DdsDxgi kDdsDxgis[] = {
    {FMT_RGBA8888, 28, "R8G8B8A8_UNORM"}, {FMT_BGRA8888, 87, "B8G8R8A8_UNORM"},
    {FMT_RGB565, 85, "B5G6R5_UNORM"},     {FMT_A8, 65, "A8_UNORM"},
    {FMT_3DC_X, 80, "BC4_UNORM"},         {FMT_3DC_XY, 83, "BC5_UNORM", Rearrangement::kSwapHalves},
};

}  // namespace qonvert
