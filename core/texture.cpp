#include "core/texture.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace zorvan {
namespace {

void RegisterTexture(void* owner) {
    auto& texture = *static_cast<Texture*>(owner);
    texture.properties.Add("format", texture.format);
    texture.properties.Add("width", texture.width);
    texture.properties.Add("height", texture.height);
    texture.properties.Add("usedWidth", texture.usedWidth);
    texture.properties.Add("usedHeight", texture.usedHeight);
}

bool IsBlockFormat(uint32_t format) {
    return format == TextureFormat::AtcRgb || format == TextureFormat::AtcRgbaExplicitAlpha;
}

// Memory of malloc that several textures share.
class PixelBlock final : public Referenced {
  public:
    explicit PixelBlock(uint8_t* data) : data_(data) {}
    ~PixelBlock() override { std::free(data_); }

  private:
    uint8_t* data_;
};

uint32_t BytesPerPixel(uint32_t format) {
    constexpr uint8_t kBytes[TextureFormat::kCount] = {2, 2, 2, 4, 3, 4, 4, 4, 1, 1};
    return format < TextureFormat::kCount ? kBytes[format] : 4;
}

}  // namespace

Texture::Texture()
    : properties(this, &RegisterTexture),
      format(properties, TextureFormat::Rgba8888),
      width(properties),
      height(properties),
      usedWidth(properties),
      usedHeight(properties) {
    using Handler = detail::member_function<detail::callable<void(uint32_t const&)>, Texture*,
                                            void (Texture::*)(uint32_t const&)>;
    auto* handler = new (std::nothrow) Handler(this, &Texture::FormatChanged);
    if (handler != nullptr && !format.changed.Add(handler)) {
        delete handler;
    }
}

Texture::~Texture() {
    ReleasePixelStore();
}

uint32_t Texture::GetBytesPerPixel() {
    return BytesPerPixel(format.Get());
}

bool Texture::SizePixelStore(uint32_t bytes) {
    // One byte at least: a null pointer means that there are no pixels.
    void* data = std::malloc(bytes > 0 ? bytes : 1);
    if (data == nullptr) {
        OutOfMemory::Note();
        return false;
    }
    ReleasePixelStore();
    pixels.data = static_cast<uint8_t*>(data);
    pixels.size = bytes;
    levels.Clear();
    return true;
}

bool Texture::OwnPixels() {
    if (pixels.owner == nullptr) {
        return true;
    }
    auto* data = static_cast<uint8_t*>(std::malloc(pixels.size > 0 ? pixels.size : 1));
    if (data == nullptr) {
        return false;
    }
    std::memcpy(data, pixels.data, pixels.size);
    pixels.data = data;
    Release(std::exchange(pixels.owner, nullptr));
    return true;
}

bool Texture::SharePixels(Texture& other) {
    if (other.pixels.owner == nullptr) {
        other.pixels.owner = new (std::nothrow) PixelBlock(other.pixels.data);
        if (other.pixels.owner == nullptr) {
            return false;
        }
        Retain(other.pixels.owner);
    }
    Retain(other.pixels.owner);
    ReleasePixelStore();
    format.Set(other.format.Get());
    pixels = other.pixels;
    levels = other.levels;
    plainLevels_ = other.plainLevels_;
    return true;
}

void Texture::ReleasePixelStore() {
    if (pixels.owner != nullptr) {
        pixels.data = nullptr;
        pixels.size = 0;
        Release(std::exchange(pixels.owner, nullptr));
    }
    if (pixels.data != nullptr) {
        std::free(pixels.data);
    }
    pixels.data = nullptr;
    pixels.size = 0;
    plainLevels_.Clear();  // no pixels are left for them
}

void Texture::FormatChanged(uint32_t const& newFormat) {
    if (!IsBlockFormat(newFormat)) {
        if (!plainLevels_.IsEmpty()) {
            // A compression that failed puts the format back: the plain levels still stand.
            levels = plainLevels_;
            plainLevels_.Clear();
        }
        return;
    }
    if (plainLevels_.IsEmpty()) {
        plainLevels_ = levels;
    }
    const auto w = static_cast<uint32_t>(width.Get());
    const auto h = static_cast<uint32_t>(height.Get());
    levels.Clear();
    levels.Append({w, h, 0, TextureDataSize(newFormat, w, h)});
}

uint32_t TextureDataSize(uint32_t format, uint32_t width, uint32_t height) {
    const uint64_t blocks = ((uint64_t{width} + 3) / 4) * ((uint64_t{height} + 3) / 4);
    uint64_t size = uint64_t{width} * height;
    if (format == TextureFormat::AtcRgb) {
        size = blocks * 8;
    } else if (format == TextureFormat::AtcRgbaExplicitAlpha) {
        size = blocks * 16;
    } else if (size <= UINT32_MAX) {
        size *= BytesPerPixel(format);
    }
    return size <= UINT32_MAX ? static_cast<uint32_t>(size) : 0;
}

}  // namespace zorvan
