// How KTX1 files describe the pixel formats: one row per format.
#pragma once

#include <cstdint>

#include "texconv/qonvert.h"
#include "tools/qonvert/rearrange.h"

namespace qonvert {

struct KtxFormat {
    std::uint32_t code;
    std::uint32_t type;      // glType, 0 for compressed
    std::uint32_t typeSize;  // glTypeSize
    std::uint32_t layout;    // glFormat, 0 for compressed
    std::uint32_t internalFormat;
    std::uint32_t base;                        // glBaseInternalFormat
    const char* name;                          // token of internalFormat
    Rearrangement fix = Rearrangement::kNone;  // from the converter's layout to GL's
};

namespace gl {
inline constexpr std::uint32_t kByte = 0x1401;
inline constexpr std::uint32_t kShort = 0x1403;
inline constexpr std::uint32_t kFloat = 0x1406;
inline constexpr std::uint32_t kHalf = 0x140B;
inline constexpr std::uint32_t kHalfOes = 0x8D61;
inline constexpr std::uint32_t kRed = 0x1903;
inline constexpr std::uint32_t kAlpha = 0x1906;
inline constexpr std::uint32_t kRgb = 0x1907;
inline constexpr std::uint32_t kRgba = 0x1908;
inline constexpr std::uint32_t kLuminance = 0x1909;
inline constexpr std::uint32_t kLuminanceAlpha = 0x190A;
inline constexpr std::uint32_t kBgra = 0x80E1;
inline constexpr std::uint32_t kRg = 0x8227;
}  // namespace gl

// The first row of a code is the one that is written, unless options choose another.
inline constexpr KtxFormat kKtxFormats[] = {
    {FMT_RGBA8888, gl::kByte, 1, gl::kRgba, 0x8058, gl::kRgba, "GL_RGBA8"},
    {FMT_RGB888, gl::kByte, 1, gl::kRgb, 0x8051, gl::kRgb, "GL_RGB8"},
    {FMT_RGB565, 0x8363, 2, gl::kRgb, 0x8D62, gl::kRgb, "GL_RGB565"},
    {FMT_RGBA5551, 0x8034, 2, gl::kRgba, 0x8057, gl::kRgba, "GL_RGB5_A1"},
    {FMT_RGBA4444, 0x8033, 2, gl::kRgba, 0x8056, gl::kRgba, "GL_RGBA4"},
    {FMT_LA88, gl::kByte, 1, gl::kLuminanceAlpha, 0x8045, gl::kLuminanceAlpha, "GL_LUMINANCE8_ALPHA8",
     Rearrangement::kSwapPairs},
    {FMT_L8, gl::kByte, 1, gl::kLuminance, 0x8040, gl::kLuminance, "GL_LUMINANCE8"},
    {FMT_A8, gl::kByte, 1, gl::kAlpha, 0x803C, gl::kAlpha, "GL_ALPHA8"},
    {FMT_BGRA8888, gl::kByte, 1, gl::kBgra, 0x93A1, gl::kBgra, "GL_BGRA8_EXT"},
    {FMT_L16, gl::kShort, 2, gl::kLuminance, 0x8042, gl::kLuminance, "GL_LUMINANCE16"},
    {FMT_P4_RGB888, 0, 1, 0, 0x8B90, gl::kRgb, "GL_PALETTE4_RGB8_OES", Rearrangement::kSwapNibbles},
    {FMT_P4_RGBA8888, 0, 1, 0, 0x8B91, gl::kRgba, "GL_PALETTE4_RGBA8_OES", Rearrangement::kSwapNibbles},
    {FMT_P4_RGB565, 0, 1, 0, 0x8B92, gl::kRgb, "GL_PALETTE4_R5_G6_B5_OES", Rearrangement::kSwapNibbles},
    {FMT_P4_RGBA4444, 0, 1, 0, 0x8B93, gl::kRgba, "GL_PALETTE4_RGBA4_OES", Rearrangement::kSwapNibbles},
    {FMT_P4_RGBA5551, 0, 1, 0, 0x8B94, gl::kRgba, "GL_PALETTE4_RGB5_A1_OES", Rearrangement::kSwapNibbles},
    {FMT_P8_RGB888, 0, 1, 0, 0x8B95, gl::kRgb, "GL_PALETTE8_RGB8_OES"},
    {FMT_P8_RGBA8888, 0, 1, 0, 0x8B96, gl::kRgba, "GL_PALETTE8_RGBA8_OES"},
    {FMT_P8_RGB565, 0, 1, 0, 0x8B97, gl::kRgb, "GL_PALETTE8_R5_G6_B5_OES"},
    {FMT_P8_RGBA4444, 0, 1, 0, 0x8B98, gl::kRgba, "GL_PALETTE8_RGBA4_OES"},
    {FMT_P8_RGBA5551, 0, 1, 0, 0x8B99, gl::kRgba, "GL_PALETTE8_RGB5_A1_OES"},
    {FMT_ATITC_RGB, 0, 1, 0, 0x8C92, gl::kRgb, "GL_ATC_RGB_AMD"},
    {FMT_ATITC_RGBA_EXPLICIT, 0, 1, 0, 0x8C93, gl::kRgba, "GL_ATC_RGBA_EXPLICIT_ALPHA_AMD"},
    {FMT_ATITC_RGBA_INTERPOLATED, 0, 1, 0, 0x87EE, gl::kRgba, "GL_ATC_RGBA_INTERPOLATED_ALPHA_AMD"},
    {FMT_ETC1_RGB8, 0, 1, 0, 0x8D64, gl::kRgb, "GL_ETC1_RGB8_OES"},
    {FMT_3DC_X, 0, 1, 0, 0x8DBB, gl::kRed, "GL_COMPRESSED_RED_RGTC1"},
    {FMT_3DC_XY, 0, 1, 0, 0x8DBD, gl::kRg, "GL_COMPRESSED_RG_RGTC2", Rearrangement::kSwapHalves},
    {FMT_3DC_X, 0, 1, 0, 0x87F9, gl::kRed, "GL_3DC_X_AMD"},
    {FMT_3DC_XY, 0, 1, 0, 0x87FA, gl::kRg, "GL_3DC_XY_AMD"},
    {FMT_RGBA32F, gl::kFloat, 4, gl::kRgba, 0x8814, gl::kRgba, "GL_RGBA32F"},
    {FMT_RGB32F, gl::kFloat, 4, gl::kRgb, 0x8815, gl::kRgb, "GL_RGB32F"},
    {FMT_LA32F, gl::kFloat, 4, gl::kLuminanceAlpha, 0x8819, gl::kLuminanceAlpha, "GL_LUMINANCE_ALPHA32F_ARB"},
    {FMT_L32F, gl::kFloat, 4, gl::kLuminance, 0x8818, gl::kLuminance, "GL_LUMINANCE32F_ARB"},
    {FMT_A32F, gl::kFloat, 4, gl::kAlpha, 0x8816, gl::kAlpha, "GL_ALPHA32F_ARB"},
    {FMT_RGBA16F, gl::kHalf, 2, gl::kRgba, 0x881A, gl::kRgba, "GL_RGBA16F"},
    {FMT_RGB16F, gl::kHalf, 2, gl::kRgb, 0x881B, gl::kRgb, "GL_RGB16F"},
    {FMT_LA16F, gl::kHalf, 2, gl::kLuminanceAlpha, 0x881F, gl::kLuminanceAlpha, "GL_LUMINANCE_ALPHA16F_ARB"},
    {FMT_L16F, gl::kHalf, 2, gl::kLuminance, 0x881E, gl::kLuminance, "GL_LUMINANCE16F_ARB"},
    {FMT_A16F, gl::kHalf, 2, gl::kAlpha, 0x881C, gl::kAlpha, "GL_ALPHA16F_ARB"},
};

}  // namespace qonvert
