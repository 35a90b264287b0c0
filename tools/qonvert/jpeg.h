// JPEG through libjpeg, read only: grey as FMT_L8, colour as FMT_RGB888.
#pragma once

#include "tools/qonvert/container.h"

namespace qonvert {

bool IsJpeg(ByteSpan bytes);
TextureFile ReadJpeg(ByteSource& source, const ReadOptions& options, Findings& findings);

}  // namespace qonvert
