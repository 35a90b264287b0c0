// Frames side by side in one picture.
#pragma once

#include "tools/zorvan/frame_output.h"

namespace zorvan::tool {

// A PNG file with room for columns x rows frames, filled row by row. Fails at once when the folder does not
// exist; a sheet of more than 16384 pixels in one direction is a usage error.
Result<std::unique_ptr<FrameOutput>> MakeSheetOutput(std::string const& path, SheetGrid const& grid);

// The frames of a sheet: spread evenly from the first to the last, at most as many as it has cells.
std::vector<uint32_t> SheetFrames(FrameRange const& frames, SheetGrid const& grid);

}  // namespace zorvan::tool
