// What the fuzzers start from: small inputs that their targets read as something whole.
#pragma once

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tools/qonvert/texture_file.h"

namespace zorvan::fuzz {

using qonvert::Bytes;

// The corpora, a folder for each target, and the files that inputs may name.
class SeedFolder {
  public:
    explicit SeedFolder(std::filesystem::path root) : root_(std::move(root)) {}

    // Into the corpus of the target fuzz_TARGET. Throws std::runtime_error when the file cannot be written.
    template <typename Container>
    void Add(std::string const& target, std::string const& name, Container const& bytes) const {
        Write("fuzz_" + target, name, {reinterpret_cast<char const*>(std::data(bytes)), std::size(bytes)});
    }
    // Into the folder in which the targets run.
    template <typename Container>
    void AddFile(std::string const& name, Container const& bytes) const {
        Write("files", name, {reinterpret_cast<char const*>(std::data(bytes)), std::size(bytes)});
    }
    std::filesystem::path Files() const { return root_ / "files"; }

  private:
    void Write(std::string const& folder, std::string const& name, std::string_view bytes) const {
        std::filesystem::create_directories(root_ / folder);
        const std::filesystem::path path = root_ / folder / name;
        std::ofstream file(path, std::ios::binary);
        file << bytes;
        if (!file.flush()) {
            throw std::runtime_error(path.string() + ": cannot be written");
        }
    }

    std::filesystem::path root_;
};

// What FuzzInput takes apart, put together.
class SeedInput {
  public:
    SeedInput& Byte(uint32_t value) {
        bytes.push_back(static_cast<uint8_t>(value));
        return *this;
    }
    SeedInput& Word(uint32_t value) {
        for (int shift = 0; shift < 32; shift += 8) {
            Byte(value >> shift);
        }
        return *this;
    }
    template <typename Container>
    SeedInput& Append(Container const& more) {
        bytes.insert(bytes.end(), std::begin(more), std::end(more));
        return *this;
    }
    // Reproducible bytes.
    SeedInput& Noise(size_t count, uint32_t seed);

    Bytes bytes;
};

// Small pictures as files of other programs' kinds.
struct PngKind {
    int type;   // PNG_COLOR_TYPE_*
    int depth;  // bits of a sample
    bool interlaced;
};
Bytes PngFile(PngKind const& kind, uint32_t width, uint32_t height);
// Empty in builds without JPEG.
Bytes JpegFile(uint32_t width, uint32_t height, bool grey, bool progressive);

// The first `glyphs` glyphs of a TrueType file as a font of its own, with a few kerning pairs.
Bytes CutFont(std::string const& path, uint32_t glyphs);

// Each throws std::runtime_error when a seed is not what its target reads, or cannot be written.
void AddContainers(SeedFolder const& folder);
void AddConversions(SeedFolder const& folder);
void AddFonts(SeedFolder const& folder);
// Needs the files of the others. `examples` is the folder of the example scenes.
void AddScenes(SeedFolder const& folder, std::filesystem::path const& examples);
void AddTools(SeedFolder const& folder);

}  // namespace zorvan::fuzz
