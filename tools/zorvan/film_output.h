// Frames as a film, made by the program ffmpeg.
#pragma once

#include <memory>
#include <string>

#include "tools/zorvan/frame_output.h"

namespace zorvan::tool {

// Whether a file of this name is a film: .gif, .mp4 or .webm, in small or capital letters.
bool IsFilmName(std::string const& path);

// The file is either the old or the whole new one. Failures: Unsupported when there is no ffmpeg on the
// path, Io when the folder does not exist.
Result<std::unique_ptr<FrameOutput>> MakeFilmOutput(std::string const& path, uint32_t framesPerSecond);

}  // namespace zorvan::tool
