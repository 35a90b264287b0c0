#include "texcompress/atitc_search.h"

#include <algorithm>

#include "texcompress/texcompress.h"

namespace zorvan::texcompress {
namespace {

// A candidate is kept only below this error, the square of 255 for each pixel.
constexpr uint32_t kErrorLimit = 16 * 255 * 255;

struct Candidate {
    Regions regions;
    bool blackTrick = false;
};

BlockColors CandidateColors(const Candidate& candidate, uint32_t format) {
    return CandidateColors(candidate.regions, candidate.blackTrick, format);
}

Candidate MakeCandidate(const RgbTile& pixels, uint32_t mask) {
    Candidate candidate;
    candidate.regions = CalcRegionColors(pixels, mask);
    candidate.blackTrick = ApplyBlackTrickIfHelpful(candidate.regions);
    return candidate;
}

LuminanceTile LuminancesOf(const RgbTile& pixels) {
    LuminanceTile luminance;
    std::transform(pixels.begin(), pixels.end(), luminance.begin(),
                   [](const Rgb& pixel) { return static_cast<int>(Luminance(pixel)); });
    return luminance;
}

Candidate SearchSplits(const RgbTile& pixels, uint32_t format) {
    const LuminanceTile luminance = LuminancesOf(pixels);
    LuminanceTile sorted = luminance;
    std::sort(sorted.begin(), sorted.end());

    Candidate best;
    uint32_t bestError = kErrorLimit;
    for (size_t h = kTilePixels - 1; h >= 1; --h) {
        for (size_t l = 0; l < h; ++l) {
            const Candidate candidate = MakeCandidate(
                pixels, CollatePixelsIntoRegions2(luminance, sorted[l], sorted[(l + h) / 2], sorted[h]));
            const BlockColors colors = CandidateColors(candidate, format);
            const uint32_t error =
                CalcBlockMSE(candidate.regions.mask, colors.color0, colors.color1, pixels, format);
            if (error < bestError) {
                bestError = error;
                best = candidate;
            }
        }
    }
    return best;
}

// The mask after CheckPixelRegionAssignment with the candidate's own palette; true if it is new.
bool RefineMask(const RgbTile& pixels, const Candidate& candidate, uint32_t format, uint32_t& mask) {
    const BlockColors colors = CandidateColors(candidate, format);
    Palette palette;
    SetDecoderColors(colors.color0, colors.color1, palette, format);
    mask = candidate.regions.mask;
    return CheckPixelRegionAssignment(pixels, palette, candidate.blackTrick, mask);
}

uint32_t NearestEntry(const Rgb& pixel, const Palette& palette) {
    uint32_t best = 0;
    uint32_t bestError = ErrSquared(pixel, palette[0]);
    for (uint32_t i = 1; i < palette.size(); ++i) {
        const uint32_t error = ErrSquared(pixel, palette[i]);
        if (error < bestError) {
            bestError = error;
            best = i;
        }
    }
    return best;
}

}  // namespace

BlockColors CandidateColors(const Regions& regions, bool blackTrick, uint32_t format) {
    const auto& colors = regions.colors;
    if (format == TXC_FORMAT_ATC) {
        return {Color888To1555(blackTrick ? colors[2] : colors[0], blackTrick), Color888To565(colors[3])};
    }
    if (blackTrick) {
        return {Color888To565(colors[3]), Color888To565(colors[2])};
    }
    return {Color888To565(colors[0]), Color888To565(colors[3])};
}

uint32_t CalcBlockMSE(uint32_t indexWord, uint32_t color0, uint32_t color1, const RgbTile& pixels,
                      uint32_t format) {
    RgbTile decoded;
    DecodeRGBBlock(decoded, indexWord, color0, color1, format);
    uint32_t error = 0;
    for (size_t k = 0; k < pixels.size(); ++k) {
        error += ErrSquared(pixels[k], decoded[k]);
    }
    return error;
}

bool CheckPixelRegionAssignment(const RgbTile& pixels, const Palette& palette, bool blackTrick,
                                uint32_t& mask) {
    uint32_t nearest = 0;
    std::array<uint32_t, 4> counts{};
    for (uint32_t k = 0; k < kTilePixels; ++k) {
        const uint32_t entry = NearestEntry(pixels[k], palette);
        nearest |= entry << (2 * k);
        ++counts[entry];
    }
    const bool usable = counts[3] > 0 && (counts[0] > 0 || counts[3] == kTilePixels || blackTrick);
    if (nearest == mask || !usable) {
        return false;
    }
    mask = nearest;
    return true;
}

uint32_t EncodeRGBBlock(const RgbTile& pixels, uint32_t* color0, uint32_t* color1, uint32_t format) {
    Candidate result = SearchSplits(pixels, format);
    uint32_t mask;
    if (RefineMask(pixels, result, format, mask)) {
        const Candidate refined = MakeCandidate(pixels, mask);
        if (refined.blackTrick == result.blackTrick) {
            result = refined;
        }
    }
    const BlockColors colors = CandidateColors(result, format);
    *color0 = colors.color0;
    *color1 = colors.color1;
    return result.regions.mask;
}

uint32_t atiEncodeRGBBlockATITC(const RgbTile& pixels, uint32_t* color0, uint32_t* color1) {
    return EncodeRGBBlock(pixels, color0, color1, TXC_FORMAT_ATC);
}

uint32_t EncodeRGBBlockFast(const RgbTile& pixels, uint32_t* color0, uint32_t* color1, uint32_t format,
                            uint32_t* error) {
    const LuminanceTile luminance = LuminancesOf(pixels);
    const auto [lowest, highest] = std::minmax_element(luminance.begin(), luminance.end());
    const float quarter = static_cast<float>(*highest - *lowest) * 0.25f;
    const float t1 = static_cast<float>(*lowest) + quarter;
    const float t2 = t1 + quarter;
    const float t3 = static_cast<float>(*highest) - quarter;

    // A flat block has all pixels in region 3 and so neither black to gain from nor a better mask.
    Candidate result;
    result.regions = CalcRegionColors(pixels, CollatePixelsIntoRegions(luminance, t1, t2, t3));
    if (result.regions.counts[3] < static_cast<int>(kTilePixels)) {
        result.blackTrick = ApplyBlackTrickIfHelpful(result.regions);
        uint32_t mask;
        if (RefineMask(pixels, result, format, mask)) {
            result = MakeCandidate(pixels, mask);
        }
    }
    const BlockColors colors = CandidateColors(result, format);
    *color0 = colors.color0;
    *color1 = colors.color1;
    *error = CalcBlockMSE(result.regions.mask, colors.color0, colors.color1, pixels, format);
    return result.regions.mask;
}

}  // namespace zorvan::texcompress
