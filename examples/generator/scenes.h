// The example scenes that are too long to write by hand, as the text of their files.
#pragma once

#include <string>

namespace zorvan::examples {

// All 37 transfer modes: on each cell of the sheet a textured sprite and a solid one with that mode.
std::string TransferModesScene();
// A spiral of tilted panes in front of a perspective camera, turning once in eight seconds.
std::string CameraScene();
// 10,000 sprites: a galaxy whose inner rings turn faster than the outer ones.
std::string CrowdScene();

}  // namespace zorvan::examples
