// Whether a film that another program wrote is whole, by its structure alone: no picture is unpacked.
#pragma once

namespace zorvan::tool {

// Each reads a regular file from its start to its end in pieces of a few kilobytes, and leaves the
// descriptor's position alone. False when the file breaks off, goes on behind its end, lacks a part that
// players need, or cannot be read.

// All blocks, an image among them, and the trailer as the last byte.
bool IsWholeGif(int descriptor);
// Boxes that fill the file, with one index (moov) and data (mdat) among them.
bool IsWholeMp4(int descriptor);
// A segment of known size that ends with the file; its elements fill it, with a cluster among them.
bool IsWholeWebm(int descriptor);

}  // namespace zorvan::tool
