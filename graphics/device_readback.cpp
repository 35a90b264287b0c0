// What the device tells about the finished picture: its pixels, and where points of the scene lie in it.
#include <GLES2/gl2.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "graphics/device.h"
#include "graphics/math.h"
#include "objects/texture.h"

namespace zorvan {
namespace {

struct FreeDeleter {
    void operator()(uint8_t* bytes) const { std::free(bytes); }
};
using Scratch = std::unique_ptr<uint8_t, FreeDeleter>;

// A rectangle in GL's window coordinates.
struct Window {
    int x, y, width, height;

    // Bytes of its pixels; more than 32 bits hold for absurd sizes. Two negative sides, which GL refuses,
    // count like positive ones.
    uint64_t Bytes(uint32_t bytesPerPixel) const {
        const int64_t pixels = static_cast<int64_t>(width) * height;
        return pixels < 0 || pixels > UINT32_MAX ? UINT64_MAX : static_cast<uint64_t>(pixels) * bytesPerPixel;
    }
};

GLint ColorBits() {
    GLint sum = 0;
    for (GLenum channel : {GL_RED_BITS, GL_GREEN_BITS, GL_BLUE_BITS}) {
        GLint bits = 0;
        glGetIntegerv(channel, &bits);
        sum += bits;
    }
    return sum;
}

// Pixels as tightly packed rows.
void Read(Window const& window, GLenum format, uint8_t* pixels) {
    const bool unaligned = format == GL_RGB && window.width % 4 != 0;
    if (unaligned) {
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
    }
    glReadPixels(window.x, window.y, window.width, window.height, format, GL_UNSIGNED_BYTE, pixels);
    if (unaligned) {
        glPixelStorei(GL_PACK_ALIGNMENT, 4);
    }
}

// Four bytes per pixel into a store of any size: what does not fit is cut.
bool ReadRgba(Window const& window, Texture& texture) {
    const uint64_t needed = window.Bytes(4);
    if (needed <= texture.pixels.size) {
        Read(window, GL_RGBA, texture.pixels.data);
        return glGetError() == GL_NO_ERROR;
    }
    const auto size = static_cast<size_t>(std::min<uint64_t>(needed, SIZE_MAX));
    const Scratch scratch(static_cast<uint8_t*>(std::calloc(size, 1)));
    if (scratch == nullptr) {
        return false;
    }
    Read(window, GL_RGBA, scratch.get());
    std::memcpy(texture.pixels.data, scratch.get(), texture.pixels.size);
    return glGetError() == GL_NO_ERROR;
}

// Three bytes per pixel. GL need not offer this layout for reading; then alpha is dropped here.
bool ReadRgb(Window const& window, Texture& texture) {
    Read(window, GL_RGB, texture.pixels.data);
    GLenum error = glGetError();
    if (error != GL_INVALID_OPERATION) {
        return error == GL_NO_ERROR;
    }
    // The error may be an earlier call's, which makes the read-back fail. Only the layout's refusal,
    // which comes again, is worked around.
    Read(window, GL_RGB, texture.pixels.data);
    if (glGetError() != GL_INVALID_OPERATION) {
        return false;
    }
    const Scratch scratch(static_cast<uint8_t*>(std::calloc(static_cast<size_t>(window.Bytes(4)) + 1, 1)));
    if (scratch == nullptr) {
        return false;
    }
    Read(window, GL_RGBA, scratch.get());
    error = glGetError();
    uint8_t const* from = scratch.get();
    for (uint32_t to = 0; to + 3 <= texture.pixels.size; to += 3, from += 4) {
        std::copy_n(from, 3, texture.pixels.data + to);
    }
    return error == GL_NO_ERROR;
}

}  // namespace

uint32_t GraphicsDeviceGL::ReadPixels(RectangleT<int> const& area, Texture** out) {
    Texture* texture = *out;
    if (texture == nullptr) {
        texture = new (std::nothrow) TextureGL;
        if (texture == nullptr) {
            return 0;
        }
    }
    const auto [width, height] = SizeOf(area);
    texture->width.Set(width);
    texture->height.Set(height);
    texture->usedWidth.Set(width);
    texture->usedHeight.Set(height);

    const GLint colorBits = ColorBits();
    if (colorBits == 16) {
        texture->format.Set(TextureFormat::Rgba8888);
    } else if (colorBits == 24) {
        texture->format.Set(TextureFormat::Rgb888);
    }

    // GL counts rows from the bottom.
    const int top = WrappingSubtract(SizeOf(viewport_).height, area.top);
    const Window window{area.left, WrappingSubtract(top, height), width, height};
    const uint64_t bytes = window.Bytes(texture->GetBytesPerPixel());
    if (bytes > UINT32_MAX || !texture->SizePixelStore(static_cast<uint32_t>(bytes))) {
        delete texture;
        return 0;
    }
    std::memset(texture->pixels.data, 0, texture->pixels.size);
    if (!(colorBits == 24 ? ReadRgb(window, *texture) : ReadRgba(window, *texture))) {
        return 0;
    }
    texture->levels.Append(
        {static_cast<uint32_t>(width), static_cast<uint32_t>(height), 0, texture->pixels.size});
    *out = texture;
    return 1;
}

Vector2T<DoubleRealFixed> GraphicsDeviceGL::ProjectCoordinate(Matrix4T<RealFixed> const& world,
                                                              Vector4T<RealFixed> const& point) {
    const Vector4T<RealFixed> clip = world * (GetViewMatrix() * GetProjectionMatrix()) * point;
    const int64_t reciprocal = Reciprocal(clip.w);
    const Vector4T<DoubleRealFixed> normalized{TimesReciprocal(clip.x, reciprocal),
                                               TimesReciprocal(clip.y, reciprocal),
                                               TimesReciprocal(clip.z, reciprocal), kOne<DoubleRealFixed>};

    const int halfWidth = SizeOf(viewport_).width >> 1;
    const int halfHeight = SizeOf(viewport_).height >> 1;
    Matrix4T<DoubleRealFixed> toWindow;
    SetIdentity(toWindow);
    toWindow[0] = DoubleRealFixed::FromInt(halfWidth);
    toWindow[5] = DoubleRealFixed::FromInt(-halfHeight);
    toWindow[12] = DoubleRealFixed::FromInt(WrappingAdd(viewport_.left, halfWidth));
    toWindow[13] = DoubleRealFixed::FromInt(WrappingAdd(viewport_.top, halfHeight));
    const Vector4T<DoubleRealFixed> window = toWindow * normalized;
    return {window.x, window.y};
}

}  // namespace zorvan
