// Where finished frames go.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/image.h"
#include "tools/zorvan/result.h"
#include "tools/zorvan/values.h"

namespace zorvan::tool {

class FrameOutput {
  public:
    virtual ~FrameOutput() = default;
    virtual Status Write(uint32_t number, Image const& frame) = 0;
    // After the last frame.
    virtual Status Finish() = 0;
};

// ".png" of a path, in lower case.
std::string LowerExtension(std::string const& path);

// A failure when the folder of a file to be written does not exist.
Status CheckFolder(std::string const& path);
// The same for a PNG file, and when its name does not end so: a picture never replaces the scene by accident.
Status CheckPngName(std::string const& path);

// PNG files, each either the old or the whole new one. The path may hold one %d or %0Nd for the frame's
// number, and must when there is more than one frame. Fails at once, before anything is drawn, when the
// folder does not exist.
Result<std::unique_ptr<FrameOutput>> MakePngOutput(std::string const& path, FrameRange const& frames);

// Frames one after the other on standard output: bare RGBA bytes, or Y4M (4:4:4, BT.601, video range).
std::unique_ptr<FrameOutput> MakeStreamOutput(RawFormat format, uint32_t framesPerSecond);

}  // namespace zorvan::tool
