// Textures in scene data.
#include <algorithm>
#include <cstring>
#include <filesystem>

#include "core/image_file.h"
#include "core/picture_cache.h"
#include "core/pixel_format.h"
#include "core/texture.h"

namespace zorvan {
namespace {

constexpr auto kLargestSide = static_cast<int32_t>(kLargestImageSide);

// From the largest side down to 1.
constexpr uint32_t kMostLevels = 15;

// By format number; empty for the one that holds no image.
constexpr char const* kFormatNames[TextureFormat::kCount] = {
    "rgb565",           "rgba5551", "rgba4444",         "", "rgb888", "rgba8888-uncompressible", "rgba8888",
    "rgba8888-dynamic", "atc-rgb",  "atc-rgba-explicit"};

std::string FormatList() {
    std::string list;
    for (std::string_view name : kFormatNames) {
        if (!name.empty()) {
            list += (list.empty() ? "" : ", ") + std::string(name);
        }
    }
    return list;
}

bool ReadFormat(Deserializer& reader, uint32_t& format) {
    std::string name;
    if (!reader.Read("format", name)) {
        return !reader.Failed();
    }
    for (uint32_t i = 0; i < TextureFormat::kCount; ++i) {
        if (!name.empty() && name == kFormatNames[i]) {
            format = i;
            return true;
        }
    }
    reader.Fail("format", "got \"" + name + "\", expected one of " + FormatList());
    return false;
}

bool ReadSide(Deserializer& reader, char const* key, int32_t largest, int32_t& side) {
    if (reader.Read(key, side) && (side < 1 || side > largest)) {
        reader.Fail(key, "got " + std::to_string(side) + ", expected 1 to " + std::to_string(largest));
    }
    return !reader.Failed();
}

uint32_t HalfSide(uint32_t side, uint32_t level) {
    return std::max(side >> level, 1u);
}

// One name for all that lead to the same file.
std::string SameFile(std::string const& path) {
    if (path.find('\0') != std::string::npos) {
        return path;  // no file's, but the system would cut it to one
    }
    std::error_code unknown;
    const std::filesystem::path same = std::filesystem::canonical(path, unknown);
    return unknown ? path : same.string();
}

// The system refuses what the budget allowed.
bool FailAllocation(Deserializer& reader) {
    reader.Budget().MarkExhausted();
    reader.Fail(nullptr, "out of memory for the pixels");
    return false;
}

}  // namespace

char const* TextureFormatName(uint32_t format) {
    return format < TextureFormat::kCount ? kFormatNames[format] : "";
}

bool Texture::Load(Deserializer& reader) {
    uint32_t newFormat = TextureFormat::Rgba8888;
    reader.Read("name", name);
    reader.Read("compress", compress_);
    if (!ReadFormat(reader, newFormat)) {
        return false;
    }
    format.Set(newFormat);
    loadedFormat_ = newFormat;
    return (reader.Read("file", file_) ? LoadFile(reader) : LoadLevels(reader) && CompressLoaded(reader)) &&
           !reader.Failed();
}

bool Texture::CompressLoaded(Deserializer& reader) {
    if (!compress_) {
        return true;
    }
    const uint32_t plain = pixels.size;
    // The converter works on a copy in 8-bit channels, and the result lies beside it.
    MemoryClaim working(reader.Budget());
    if (!working.Take(LevelBytes() + uint64_t{8} * static_cast<uint32_t>(width.Get()) *
                                         static_cast<uint32_t>(height.Get()))) {
        reader.Fail("compress", reader.Budget().Refusal("the compression"));
        return false;
    }
    if (!Compress()) {
        reader.Fail("compress", "got the format " + std::string(kFormatNames[loadedFormat_]) +
                                    ", expected one that can be compressed");
        return false;
    }
    reader.Budget().GiveBack(plain > pixels.size ? plain - pixels.size : 0);
    return true;
}

bool Texture::LoadFile(Deserializer& reader) {
    if (!IsPlainFormat(format.Get())) {
        reader.Fail("format", "got a block format, expected a plain one for an image file");
        return false;
    }
    reader.Read("mipmaps", mipmaps_);
    if (mipmaps_ && compress_) {
        reader.Fail("mipmaps", "got both \"mipmaps\" and \"compress\", expected at most one of them");
        return false;
    }
    const std::string path = reader.ResolvePath(file_);
    PictureCache& pictures = reader.Pictures();
    const std::string same = SameFile(path);
    SizeT<int32_t> size;
    std::string error;
    if (!pictures.ReadSize(same, size, error)) {
        reader.Fail("file", path + ": " + error);
        return false;
    }
    if (!LoadSizes(reader, size, size)) {
        return false;
    }
    if (width.Get() < size.width || height.Get() < size.height) {
        reader.Fail(width.Get() < size.width ? "width" : "height",
                    "got less than the image, expected at least " + std::to_string(size.width) + "x" +
                        std::to_string(size.height) + " pixels");
        return false;
    }
    std::string key;
    for (int32_t part : {width.Get(), height.Get(), static_cast<int32_t>(loadedFormat_), int32_t{mipmaps_},
                         int32_t{compress_}}) {
        key += std::to_string(part) + " ";
    }
    key += same;
    if (Texture* twin = pictures.FindTexture(key)) {
        return SharePixels(*twin) || FailAllocation(reader);
    }
    if (!PackFile(reader, same) || !CompressLoaded(reader)) {
        return false;
    }
    pictures.AddTexture(key, *this);
    return true;
}

bool Texture::PackFile(Deserializer& reader, std::string const& path) {
    if (!reader.TakeMemory(nullptr, LevelBytes(), PixelsText())) {
        return false;
    }
    std::string error;
    const RefT<PictureCache::Picture> picture = reader.Pictures().Read(path, error);
    if (!picture) {
        reader.Fail("file", path + ": " + error);
        return false;
    }
    const auto w = static_cast<uint32_t>(width.Get());
    const auto h = static_cast<uint32_t>(height.Get());
    if (!SizePixelStore(static_cast<uint32_t>(LevelBytes()))) {
        return FailAllocation(reader);
    }
    if (!mipmaps_) {
        PackPadded(picture->image, format.Get(), w, h, pixels.data);
        return levels.Append({w, h, 0, pixels.size}) || FailAllocation(reader);
    }
    // The padded picture and a halved one.
    MemoryClaim working(reader.Budget());
    if (!working.Take(uint64_t{5} * w * h)) {
        reader.Fail(nullptr, reader.Budget().Refusal(PixelsText() + " while they are halved"));
        return false;
    }
    PackLevels(PadImage(picture->image, w, h));
    return true;
}

uint64_t Texture::LevelBytes() const {
    uint64_t bytes = 0;
    for (uint32_t level = 0; level < kMostLevels; ++level) {
        const uint32_t w = HalfSide(static_cast<uint32_t>(width.Get()), level);
        const uint32_t h = HalfSide(static_cast<uint32_t>(height.Get()), level);
        bytes += TextureDataSize(format.Get(), w, h);
        if (!mipmaps_ || (w == 1 && h == 1)) {
            break;
        }
    }
    return bytes;
}

std::string Texture::PixelsText() const {
    return std::to_string(width.Get()) + "x" + std::to_string(height.Get()) + " pixels";
}

void Texture::PackLevels(Image image) {
    uint32_t offset = 0;
    for (bool last = false; !last; image = HalveImage(image)) {
        const uint32_t size = TextureDataSize(format.Get(), image.width, image.height);
        PackPadded(image, format.Get(), image.width, image.height, pixels.data + offset);
        levels.Append({image.width, image.height, offset, size});
        offset += size;
        last = image.width == 1 && image.height == 1;
    }
}

bool Texture::LoadSizes(Deserializer& reader, SizeT<int32_t> stored, SizeT<int32_t> used) {
    if (!ReadSide(reader, "width", kLargestSide, stored.width) ||
        !ReadSide(reader, "height", kLargestSide, stored.height)) {
        return false;
    }
    if (stored.width == 0 || stored.height == 0) {
        reader.Fail(nullptr, "got a texture without \"width\" and \"height\", expected its stored size");
        return false;
    }
    used.width = used.width == 0 ? stored.width : used.width;
    used.height = used.height == 0 ? stored.height : used.height;
    if (!ReadSide(reader, "usedWidth", stored.width, used.width) ||
        !ReadSide(reader, "usedHeight", stored.height, used.height)) {
        return false;
    }
    if (uint64_t{static_cast<uint32_t>(stored.width)} * static_cast<uint32_t>(stored.height) >
        kMostImagePixels) {
        reader.Fail("width", "got " + std::to_string(stored.width) + "x" + std::to_string(stored.height) +
                                 " pixels, expected at most " + std::to_string(kMostImagePixels));
        return false;
    }
    width.Set(stored.width);
    height.Set(stored.height);
    usedWidth.Set(used.width);
    usedHeight.Set(used.height);
    return true;
}

bool Texture::LoadLevels(Deserializer& reader) {
    if (!LoadSizes(reader, {}, {})) {
        return false;
    }
    if (!reader.Enter("levels")) {
        reader.Fail(nullptr, "got a texture without \"file\" and \"levels\", expected one of them");
        return false;
    }
    std::vector<uint8_t> bytes;
    List<TextureLevel> table;
    const uint32_t count = reader.Count();
    if (count > kMostLevels) {
        reader.Fail(nullptr, "got " + std::to_string(count) + " levels, expected at most " +
                                 std::to_string(kMostLevels));
    }
    for (uint32_t i = 0; i < count && reader.Enter(i); ++i) {
        LoadLevel(reader, i, bytes, table);
        reader.Leave();
    }
    if (count == 0) {
        reader.Fail(nullptr, "got no levels, expected at least one");
    }
    reader.Leave();
    return !reader.Failed() && TakePixels(reader, bytes, table);
}

bool Texture::LoadLevel(Deserializer& reader, uint32_t index, std::vector<uint8_t>& bytes,
                        List<TextureLevel>& table) {
    std::vector<uint8_t> data;
    if (!reader.Read("data", data)) {
        reader.Fail(nullptr, "got a level without \"data\", expected its bytes in base64");
        return false;
    }
    const uint32_t w = HalfSide(static_cast<uint32_t>(width.Get()), index);
    const uint32_t h = HalfSide(static_cast<uint32_t>(height.Get()), index);
    const uint32_t size = TextureDataSize(format.Get(), w, h);
    if (data.size() != size) {
        reader.Fail("data", "got " + std::to_string(data.size()) + " bytes, expected " +
                                std::to_string(size) + " for " + std::to_string(w) + "x" + std::to_string(h) +
                                " pixels");
        return false;
    }
    // Twice: until all levels are there they lie beside the pixel store.
    if (!reader.TakeMemory("data", uint64_t{2} * size,
                           std::to_string(w) + "x" + std::to_string(h) + " pixels")) {
        return false;
    }
    table.Append({w, h, static_cast<uint32_t>(bytes.size()), size});
    bytes.insert(bytes.end(), data.begin(), data.end());
    return true;
}

bool Texture::TakePixels(Deserializer& reader, std::vector<uint8_t> const& bytes,
                         List<TextureLevel> const& table) {
    if (!SizePixelStore(static_cast<uint32_t>(bytes.size()))) {
        return FailAllocation(reader);
    }
    std::memcpy(pixels.data, bytes.data(), bytes.size());
    reader.Budget().GiveBack(bytes.size());
    levels = table;
    return true;
}

void Texture::Save(Serializer& writer) {
    if (!name.empty()) {
        writer.Write("name", name);
    }
    const bool isFile = !file_.empty();
    const uint32_t saved = isFile ? loadedFormat_ : format.Get();
    writer.Write("format", TextureFormatName(saved));
    writer.Write("width", width.Get());
    writer.Write("height", height.Get());
    writer.Write("usedWidth", usedWidth.Get());
    writer.Write("usedHeight", usedHeight.Get());
    if (isFile) {
        writer.Write("file", file_);
        writer.Write("mipmaps", mipmaps_);
        writer.Write("compress", compress_);
    } else if (pixels.data != nullptr) {
        SaveLevels(writer);
    }
}

void Texture::SaveLevels(Serializer& writer) {
    writer.BeginArray("levels");
    for (TextureLevel const& level : levels) {
        uint8_t const* begin = pixels.data + level.offset;
        writer.BeginObject(nullptr);
        writer.Write("data", std::vector<uint8_t>(begin, begin + level.size));
        writer.EndObject();
    }
    writer.EndArray();
}

}  // namespace zorvan
