// Files of every container and format, and pictures of every kind of PNG and JPEG.
#include <array>

#include "fuzz/seeds/seeds.h"
#include "texconv/format_table.h"
#include "tools/qonvert/container.h"

namespace zorvan::fuzz {

namespace {

using qonvert::Container;
using qonvert::Findings;
using qonvert::Origin;
using qonvert::ReadOptions;
using qonvert::TextureFile;
using qonvert::WriteOptions;

TextureFile MakeTexture(uint32_t format, uint32_t width, uint32_t height, uint32_t levels, Origin origin) {
    TextureFile texture{format, width, height, origin, "", {}};
    const QXTextureConverter::FormatInfo& info = *QXTextureConverter::FindFormat(format);
    const Bytes table = SeedInput().Noise(qonvert::TableBytes(format), 7).bytes;
    for (uint32_t i = 0; i < levels; ++i) {
        const uint32_t w = qonvert::LevelSide(width, i);
        const uint32_t h = qonvert::LevelSide(height, i);
        Bytes level = SeedInput().Noise(qonvert::PictureBytes(format, w, h), format + i).bytes;
        // Levels share one colour table, and bits behind the last index are 0.
        std::copy(table.begin(), table.end(), level.begin());
        if (const uint32_t used = w * h * info.bitsPerPixel % 8; info.IsPalette() && used != 0) {
            level.back() &= static_cast<uint8_t>((1u << used) - 1);
        }
        texture.levels.push_back(std::move(level));
    }
    return texture;
}

// The reader's input: what stands before the file, where it begins with a description.
void AddRaw(SeedFolder const& folder, uint32_t row, TextureFile const& texture) {
    SeedInput input;
    input.Byte(row).Byte(0).Byte(texture.width).Byte(0).Byte(texture.height);
    size_t size = 0;
    for (Bytes const& level : texture.levels) {
        size += level.size();
    }
    input.Word(static_cast<uint32_t>(size));
    for (Bytes const& level : texture.levels) {
        input.Append(level);
    }
    folder.Add("read_raw", texture.encoding + "-" + std::to_string(texture.levels.size()), input.bytes);
}

void AddReader(SeedFolder const& folder, Container const& container, std::string const& name,
               Bytes const& file) {
    const std::string target = "read_" + std::string(container.name);
    if (container.name == "png") {
        folder.Add(target, name, SeedInput().Byte(0).Append(file).bytes);
    } else {
        folder.Add(target, name, file);
    }
}

void AddWritten(SeedFolder const& folder, Container const& container, TextureFile const& texture,
                WriteOptions const& options, std::string const& name) {
    if (!container.carries(texture.format, options)) {
        return;
    }
    const Bytes file = container.write(texture, options);
    Findings findings;
    const TextureFile again = container.read(file, {}, findings);
    // PNG widens some colour tables.
    if (again.format == texture.format && again.levels != texture.levels) {
        throw std::runtime_error(std::string(container.name) + " " + name + ": does not come back");
    }
    AddReader(folder, container, name, file);
}

void AddFormat(SeedFolder const& folder, Container const& container, uint32_t row) {
    const QXTextureConverter::FormatInfo& info = QXTextureConverter::kFormats[row];
    const std::string name = info.name + 4;
    if (container.name == "raw") {
        for (uint32_t levels : {1u, 3u}) {
            TextureFile texture = MakeTexture(info.code, 6, 5, levels, Origin::kUnstated);
            texture.encoding = name;
            AddRaw(folder, row, texture);
        }
        return;
    }
    constexpr std::array<Origin, 3> kOrigins = {Origin::kUnstated, Origin::kTopLeft, Origin::kBottomLeft};
    const Origin origin = container.origin ? kOrigins[row % 3] : Origin::kUnstated;
    AddWritten(folder, container, MakeTexture(info.code, 6, 5, 1, origin), {}, name);
    if (container.levels) {
        AddWritten(folder, container, MakeTexture(info.code, 8, 4, 4, origin), {}, name + "-levels");
    }
    constexpr WriteOptions kOther[] = {{.ddsNames = qonvert::DdsNames::kBc, .ktxAmdTokens = true},
                                       {.ddsNames = qonvert::DdsNames::kDx10},
                                       {.pngDeepFloats = true}};
    for (size_t i = 0; i < std::size(kOther); ++i) {
        // A float that PNG rounds does not come back.
        if ((container.name == "png") == kOther[i].pngDeepFloats && (i < 2 || info.code == FMT_L16)) {
            AddWritten(folder, container, MakeTexture(info.code, 4, 4, 1, origin), kOther[i],
                       name + "-other" + std::to_string(i));
        }
    }
}

void AddPictures(SeedFolder const& folder) {
    // Types 0 grey, 2 colour, 3 indexed, 4 grey with alpha, 6 colour with alpha.
    constexpr PngKind kKinds[] = {{0, 1, false}, {0, 2, true},  {0, 4, false}, {0, 8, true},  {0, 16, false},
                                  {2, 8, false}, {2, 8, true},  {2, 16, true}, {3, 1, true},  {3, 2, false},
                                  {3, 4, true},  {3, 8, false}, {4, 8, false}, {4, 16, true}, {6, 8, false},
                                  {6, 8, true},  {6, 16, false}};
    for (PngKind const& kind : kKinds) {
        const std::string name = "png-" + std::to_string(kind.type) + "-" + std::to_string(kind.depth) +
                                 (kind.interlaced ? "-interlaced" : "");
        const Bytes seed = SeedInput().Byte(0).Append(PngFile(kind, 9, 7)).bytes;
        folder.Add("read_png", name, seed);
        folder.Add("image", name, seed);
    }
    for (const auto& [name, grey, progressive] : {std::tuple{"jpeg-grey", true, false},
                                                  {"jpeg-color", false, false},
                                                  {"jpeg-progressive", false, true}}) {
        const Bytes file = JpegFile(17, 9, grey, progressive);
        if (!file.empty()) {
            folder.Add("read_jpeg", name, file);
            folder.Add("image", name, SeedInput().Byte(0).Append(file).bytes);
        }
    }
    folder.AddFile("dot.png", PngFile({6, 8, false}, 3, 2));
    folder.AddFile("dot.jpg", JpegFile(4, 4, false, false));
}

// PNG files whose chunks the target builds.
void AddBuiltPng(SeedFolder const& folder) {
    for (uint32_t kind = 0; kind < 30; ++kind) {
        SeedInput input;
        input.Byte(1).Byte(kind).Byte(7).Byte(5);
        // Depth and colour type, interlacing, then a colour table, a transparent colour and pixels.
        input.Byte(kind % 5).Byte(kind / 5 % 5).Byte(kind);
        input.Byte(1).Byte(0).Byte(48).Noise(48, kind).Byte(1).Byte(6).Noise(6, kind);
        input.Word(600).Noise(600, kind + 1);
        folder.Add("read_png", "built-" + std::to_string(kind), input.bytes);
        folder.Add("image", "built-" + std::to_string(kind), input.bytes);
    }
}

}  // namespace

SeedInput& SeedInput::Noise(size_t count, uint32_t seed) {
    for (size_t i = 0; i < count; ++i) {
        seed = seed * 1664525u + 1013904223u;
        Byte(seed >> 24);
    }
    return *this;
}

void AddContainers(SeedFolder const& folder) {
    for (Container const& container : qonvert::Containers()) {
        for (uint32_t row = 0; container.write != nullptr && row < QXTextureConverter::kFormats.size();
             ++row) {
            AddFormat(folder, container, row);
        }
    }
    AddPictures(folder);
    AddBuiltPng(folder);
}

}  // namespace zorvan::fuzz
