// How DDS files name the pixel formats.
#pragma once

#include <cstdint>

#include "texconv/qonvert.h"
#include "tools/qonvert/container.h"

namespace qonvert {

constexpr std::uint32_t FourCc(const char (&text)[5]) {
    std::uint32_t word = 0;
    for (unsigned i = 0; i < 4; ++i) {
        word |= std::uint32_t{static_cast<unsigned char>(text[i])} << (8 * i);
    }
    return word;
}

struct DdsFourCc {
    std::uint32_t code;
    std::uint32_t fourCc;
    DdsNames names;      // that write this row
    bool swappedHalves;  // red half first, against the codec's green first
};

// Read in full; the first row of a code that fits the chosen names is written.
inline constexpr DdsFourCc kDdsFourCcs[] = {
    {FMT_ATITC_RGB, FourCc("ATC "), DdsNames::kAti, false},
    {FMT_ATITC_RGBA_EXPLICIT, FourCc("ATCA"), DdsNames::kAti, false},
    {FMT_ATITC_RGBA_EXPLICIT, FourCc("ATCE"), DdsNames::kAti, false},
    {FMT_ATITC_RGBA_INTERPOLATED, FourCc("ATCI"), DdsNames::kAti, false},
    {FMT_ETC1_RGB8, FourCc("ETC1"), DdsNames::kAti, false},
    {FMT_3DC_X, FourCc("ATI1"), DdsNames::kAti, false},
    {FMT_3DC_X, FourCc("BC4U"), DdsNames::kBc, false},
    {FMT_3DC_XY, FourCc("ATI2"), DdsNames::kAti, false},
    {FMT_3DC_XY, FourCc("BC5U"), DdsNames::kBc, true},
};

struct DdsDxgi {
    std::uint32_t code;
    std::uint32_t dxgi;
    const char* name;  // without DXGI_FORMAT_
    bool swappedHalves;
};

inline constexpr DdsDxgi kDdsDxgis[] = {
    {FMT_RGBA8888, 28, "R8G8B8A8_UNORM", false}, {FMT_BGRA8888, 87, "B8G8R8A8_UNORM", false},
    {FMT_RGB565, 85, "B5G6R5_UNORM", false},     {FMT_A8, 65, "A8_UNORM", false},
    {FMT_3DC_X, 80, "BC4_UNORM", false},         {FMT_3DC_XY, 83, "BC5_UNORM", true},
};

}  // namespace qonvert
