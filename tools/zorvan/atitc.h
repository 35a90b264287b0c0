// ATITC textures on drivers that do not know them.
#pragma once

#include <string>

#include "core/scene.h"
#include "tools/zorvan/plugin.h"
#include "tools/zorvan/result.h"

namespace zorvan::tool {

bool IsAtitc(Texture const& texture);

// One line on standard error where the scene has such textures and GL's extensions do not name them: they
// draw black then, and --decode-atitc helps.
void WarnOfAtitc(Scene const& scene, std::string const& glExtensions);

// Unpacks those textures to RGB888 and RGBA8888 with the plug-in's own decoder. For scenes that GL has not
// seen yet. Failures: Unsupported for a plug-in without the decoder, Runtime when it refuses a texture.
Status DecodeAtitc(Scene& scene, Plugin const& plugin);

}  // namespace zorvan::tool
