// Frames as a film, made by the program ffmpeg.
#pragma once

#include <memory>
#include <string>

#include "tools/zorvan/frame_output.h"

namespace zorvan::tool {

// Whether a file of this name is a film: .gif, .mp4 or .webm, in small or capital letters.
bool IsFilmName(std::string const& path);

// The file is either the old or the whole new one, and looked over before it becomes that; a pipe, a device
// or a socket gets the film as a stream. Failures: Unsupported when there is no ffmpeg on the path, Io when
// the folder does not exist, the name cannot be a file's, or the format cannot be a stream.
Result<std::unique_ptr<FrameOutput>> MakeFilmOutput(std::string const& path, uint32_t framesPerSecond);

}  // namespace zorvan::tool
