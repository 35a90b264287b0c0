// PNG through libpng: 8 and 16 bits per channel, grey, colour and indexed.
#pragma once

#include "tools/qonvert/container.h"

namespace qonvert {

bool IsPng(ByteSpan bytes);
// The 8-bit grey and colour formats, FMT_L16, every palette format (16-bit colour table entries are
// widened to 8 bits per channel), and with pngDeepFloats the float formats but alpha alone.
bool PngCarries(std::uint32_t format, const WriteOptions& options);
// Samples of 16 bits become what options.deepSamples says. Transparent colours become alpha.
TextureFile ReadPng(ByteSource& source, const ReadOptions& options, Findings& findings);
Bytes WritePng(const TextureFile& texture, const WriteOptions& options);

}  // namespace qonvert
