// An image in memory on its way to the graphics device.
#pragma once

#include <string>

#include "core/api.h"
#include "core/image.h"
#include "core/list.h"
#include "core/property.h"
#include "core/referenced.h"

namespace zorvan {

// Core texture formats. Rows are stored bottom-up, without padding.
struct TextureFormat {
    enum Enum : uint32_t {
        Rgb565 = 0,
        Rgba5551 = 1,
        Rgba4444 = 2,
        Reserved = 3,  // not uploadable
        Rgb888 = 4,
        Rgba8888Uncompressible = 5,  // as 6, but never compressed
        Rgba8888 = 6,
        Rgba8888Dynamic = 7,  // as 6, but never compressed
        AtcRgb = 8,
        AtcRgbaExplicitAlpha = 9,
    };
    static constexpr uint32_t kCount = 10;
};

// One mipmap level inside the pixel store; offset and size in bytes.
struct TextureLevel {
    uint32_t width, height, offset, size;
    bool operator==(TextureLevel const&) const = default;
};

// The bytes of all levels. With an owner they are the owner's, and other textures may show them as well;
// otherwise they come from malloc.
struct PixelStore {
    uint8_t* data = nullptr;
    uint32_t size = 0;
    Referenced* owner = nullptr;
};

// The order of the virtual operations is part of the binary interface with the plug-in.
class ZORVAN_CORE_API Texture : public Referenced {
  public:
    Texture();
    ~Texture() override;

    // Compresses the pixel store for the device; false when the format cannot be compressed.
    virtual bool Compress() = 0;
    // Writes the image file's name where there is one, otherwise the pixels: only the file once the
    // pixels went to the device.
    virtual void Save(Serializer& writer);
    // Reads format, sizes and pixels, from inline data or an image file; compresses on request.
    virtual bool Load(Deserializer& reader);

    // Whether Save writes all that Load needs.
    bool CanSave() const { return !file_.empty() || pixels.data != nullptr; }

    // Of one pixel of the format: 2, 3 or 4; 1 for the block formats.
    uint32_t GetBytesPerPixel();
    // Makes the pixel store bytes long, with undefined contents, and empties the level table. False
    // when out of memory.
    bool SizePixelStore(uint32_t bytes);
    // Makes the pixel store this texture's own, by a copy where it has an owner: to be called before its
    // bytes are changed in place. False when out of memory.
    bool OwnPixels();
    // Drops the pixel store: gives an owner's reference back, frees memory of our own.
    void ReleasePixelStore();

    PropertyList properties;
    PropertyT<uint32_t> format;
    // The image as it is stored, in pixels: level 0 of the pixel store.
    PropertyT<int32_t> width;
    PropertyT<int32_t> height;
    // The part of it that sprites show, from the bottom left corner of the stored image.
    PropertyT<int32_t> usedWidth;
    PropertyT<int32_t> usedHeight;

    PixelStore pixels;
    List<TextureLevel> levels;

    // Under which the scene's nodes refer to this texture.
    std::string name;

  private:
    // After a change to or from a block format the level table must describe the other data.
    void FormatChanged(uint32_t const& newFormat);

    bool LoadSizes(Deserializer& reader, SizeT<int32_t> stored, SizeT<int32_t> used);
    bool LoadFile(Deserializer& reader);
    // Takes over a texture's pixels, levels and format, so that both share the bytes; false when out of
    // memory.
    bool SharePixels(Texture& other);
    // Of all levels in the present format and size, in bytes.
    uint64_t LevelBytes() const;
    std::string PixelsText() const;
    void PackLevels(Image image);
    bool PackFile(Deserializer& reader, std::string const& path);
    bool CompressLoaded(Deserializer& reader);
    bool LoadLevels(Deserializer& reader);
    bool LoadLevel(Deserializer& reader, uint32_t index, std::vector<uint8_t>& bytes,
                   List<TextureLevel>& table);
    bool TakePixels(Deserializer& reader, std::vector<uint8_t> const& bytes, List<TextureLevel> const& table);
    void SaveLevels(Serializer& writer);

    // What Save writes and Load read.
    std::string file_;
    bool mipmaps_ = false;
    bool compress_ = false;
    uint32_t loadedFormat_ = TextureFormat::Rgba8888;
    List<TextureLevel> plainLevels_;
};

// As scene files write it; "" for Reserved and beyond.
ZORVAN_CORE_API char const* TextureFormatName(uint32_t format);

// Bytes of a stored image of a format; sizes that do not fit into 32 bits give 0.
ZORVAN_CORE_API uint32_t TextureDataSize(uint32_t format, uint32_t width, uint32_t height);

}  // namespace zorvan
