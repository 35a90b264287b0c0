// The containers that the tool reads and writes, as one table.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/qonvert/byte_source.h"
#include "tools/qonvert/finding.h"
#include "tools/qonvert/texture_file.h"

namespace qonvert {

// Samples deeper than 8 bits can be taken in more than one way.
enum class DeepSamples : std::uint8_t { kTopByte, kFloat, kLuminance16 };

struct ReadOptions {
    DeepSamples deepSamples = DeepSamples::kTopByte;
    // A headerless picture's description.
    std::uint32_t rawWidth = 0;
    std::uint32_t rawHeight = 0;
    std::uint32_t rawFormat = 0;
};

// How DDS names its formats.
enum class DdsNames : std::uint8_t {
    kAti,   // ATI1 and ATI2
    kBc,    // BC4U and BC5U
    kDx10,  // the DX10 header, where DXGI has the format
};

struct WriteOptions {
    DdsNames ddsNames = DdsNames::kAti;
    bool ktxAmdTokens = false;   // 3Dc in KTX1 with the AMD tokens in place of the RGTC ones
    bool pngDeepFloats = false;  // float formats as PNG with 16 bits per channel
};

struct Container {
    std::string_view name;
    std::vector<std::string_view> extensions;  // lower case, without the dot
    bool levels;                               // holds more than one mip level
    bool origin;                               // records where the first row lies
    std::uint32_t largestSide;                 // pixels
    bool (*recognises)(ByteSpan bytes);        // by its first bytes
    bool (*carries)(std::uint32_t format, const WriteOptions& options);
    // Throws FileError; notes what is odd but readable in `findings`.
    TextureFile (*readFrom)(ByteSource& source, const ReadOptions& options, Findings& findings);
    // Null where the container is only read. Throws ToolError.
    Bytes (*write)(const TextureFile& texture, const WriteOptions& options);

    // readFrom a file in memory.
    TextureFile read(ByteSpan bytes, const ReadOptions& options, Findings& findings) const {
        MemorySource source(bytes);
        return readFrom(source, options, findings);
    }
};

std::span<const Container> Containers();

// By name or extension, without regard to case; null when there is none.
const Container* FindContainer(std::string_view nameOrExtension);
// The same; throws ToolError (usage), with the list of containers, when there is none.
const Container& NamedContainer(std::string_view nameOrExtension);
// By the extension of a path; null when it has none or an unknown one.
const Container* ContainerOfPath(std::string_view path);
// By the first bytes; null when none recognises them.
const Container* ContainerOfBytes(ByteSpan bytes);

// "png, ktx, dds": all of them, and those that can carry a format.
std::string ContainerNames();
std::string ContainersThatCarry(std::uint32_t format, const WriteOptions& options);

// Refuses a format that the container cannot carry, with the list of those that can.
void CheckCarries(const Container& container, std::uint32_t format, const WriteOptions& options);
// Refuses a picture with sides that the container cannot hold.
void CheckSides(const Container& container, std::uint32_t width, std::uint32_t height);
// Both checks, then writes.
Bytes WriteContainer(const Container& container, const TextureFile& texture, const WriteOptions& options);

}  // namespace qonvert
