// What each transfer mode means to GL. The tables have a row for each of the core's 37 modes.
#pragma once

#include <GLES2/gl2.h>

#include <array>

#include "core/transfer_mode.h"

namespace zorvan {

struct BlendFactors {
    GLenum source, destination;
};

template <typename T>
using TransferModeTable = std::array<T, kTransferModeCount>;

// For glBlendFunc and glBlendEquation.
extern TransferModeTable<BlendFactors> const eTransferModeBlendFunc;
extern TransferModeTable<GLenum> const eTransferModeBlendEquation;
// Statements spliced into the fragment shaders of solid sprites and texts; may be empty.
extern TransferModeTable<char const*> const szTransferModeShaderSources;
// Whole fragment shaders of textured sprites.
extern TransferModeTable<char const*> const szSpriteTransferModeShaderSources;

// The fragment shader of textured sprites without a transfer mode.
extern char const* const szSpriteDefaultShaderSource;

}  // namespace zorvan
