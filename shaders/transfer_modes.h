// What each transfer mode means to GL. The tables have a row for each of the core's 37 modes.
#pragma once

#include <GLES2/gl2.h>

namespace zorvan {

struct BlendFactors {
    GLenum source, destination;
};

// For glBlendFunc and glBlendEquation.
extern BlendFactors const eTransferModeBlendFunc[37];
extern GLenum const eTransferModeBlendEquation[37];
// Statements spliced into the fragment shaders of solid sprites and texts; may be empty.
extern char const* const szTransferModeShaderSources[37];
// Whole fragment shaders of textured sprites.
extern char const* const szSpriteTransferModeShaderSources[37];

// The fragment shader of textured sprites without a transfer mode.
extern char const* const szSpriteDefaultShaderSource;

}  // namespace zorvan
