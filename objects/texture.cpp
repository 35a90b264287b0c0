#include "objects/texture.h"

#include <GLES2/gl2ext.h>

#include <cstdlib>

#include "graphics/class_container.h"
#include "texconv/qonvert.h"

namespace zorvan {
namespace {

// How GL takes a texture format. Block formats have an internal format alone, formats that GL does not
// take nothing.
struct UploadFormat {
    GLenum internal;
    GLenum format;
    GLenum type;
};

constexpr UploadFormat kUploadFormats[TextureFormat::kCount] = {
    {GL_RGB, GL_RGB, GL_UNSIGNED_SHORT_5_6_5},
    {GL_RGBA, GL_RGBA, GL_UNSIGNED_SHORT_5_5_5_1},
    {GL_RGBA, GL_RGBA, GL_UNSIGNED_SHORT_4_4_4_4},
    {},
    {GL_RGB, GL_RGB, GL_UNSIGNED_BYTE},
    {GL_RGBA, GL_RGBA, GL_UNSIGNED_BYTE},
    {GL_RGBA, GL_RGBA, GL_UNSIGNED_BYTE},
    {GL_RGBA, GL_RGBA, GL_UNSIGNED_BYTE},
    {GL_ATC_RGB_AMD, 0, 0},
    {GL_ATC_RGBA_EXPLICIT_ALPHA_AMD, 0, 0},
};

// What a texture format is to the converter, and what compression makes of it.
struct Compression {
    uint32_t format;
    uint32_t source, destination;  // TQonvertFormat
    uint32_t compressedFormat;
};

constexpr Compression kCompressions[] = {
    {TextureFormat::Rgb565, FMT_RGB565, FMT_ATITC_RGB, TextureFormat::AtcRgb},
    {TextureFormat::Rgba5551, FMT_RGBA5551, FMT_ATITC_RGBA_EXPLICIT, TextureFormat::AtcRgbaExplicitAlpha},
    {TextureFormat::Rgba4444, FMT_RGBA4444, FMT_ATITC_RGBA_EXPLICIT, TextureFormat::AtcRgbaExplicitAlpha},
    {TextureFormat::Rgb888, FMT_RGB888, FMT_ATITC_RGB, TextureFormat::AtcRgb},
    {TextureFormat::Rgba8888, FMT_RGBA8888, FMT_ATITC_RGBA_EXPLICIT, TextureFormat::AtcRgbaExplicitAlpha},
};

Compression const* FindCompression(uint32_t format) {
    for (Compression const& compression : kCompressions) {
        if (compression.format == format) {
            return &compression;
        }
    }
    return nullptr;
}

// Uploads one level of rows without padding.
void UploadRows(UploadFormat const& gl, GLint level, uint32_t bytesPerPixel, TextureLevel const& image,
                void const* data) {
    const bool unaligned = image.width * bytesPerPixel % 4 != 0;
    if (unaligned) {
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    }
    glTexImage2D(GL_TEXTURE_2D, level, static_cast<GLint>(gl.internal), static_cast<GLsizei>(image.width),
                 static_cast<GLsizei>(image.height), 0, gl.format, gl.type, data);
    if (unaligned) {
        glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    }
}

// False for a format that GL does not take.
bool UploadLevel(Texture& texture, uint32_t index) {
    const uint32_t format = texture.format.Get();
    const UploadFormat gl = format < TextureFormat::kCount ? kUploadFormats[format] : UploadFormat{};
    if (gl.internal == 0) {
        return false;
    }
    const TextureLevel image = texture.levels[index];
    void const* data = texture.pixels.data + image.offset;
    const auto level = static_cast<GLint>(index);
    if (gl.format != 0) {
        UploadRows(gl, level, texture.GetBytesPerPixel(), image, data);
    } else {
        glCompressedTexImage2D(GL_TEXTURE_2D, level, gl.internal, static_cast<GLsizei>(image.width),
                               static_cast<GLsizei>(image.height), 0, static_cast<GLsizei>(image.size), data);
    }
    glGetError();  // clears the flag: a level that GL refuses is left out
    return true;
}

void SetSampling(uint32_t levelCount) {
    // GL refuses the mipmap filter for magnification and keeps its own, which is linear.
    const GLint filter = levelCount > 1 ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR;
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
}

// Converts source into a buffer that malloc makes; false when the converter or malloc fails.
bool Convert(TQonvertImage& source, TQonvertImage& destination) {
    if (Qonvert(&source, &destination) != 0) {
        return false;
    }
    const uint32_t size = destination.nDataSize;
    destination.pData = static_cast<uint8_t*>(std::malloc(size));
    // The buffer of a failed conversion is not freed.
    if (destination.pData == nullptr || Qonvert(&source, &destination) != 0) {
        return false;
    }
    // The converter had no memory to work in, and left the buffer as it was.
    if (destination.nDataSize != size) {
        std::free(destination.pData);
        return false;
    }
    return true;
}

}  // namespace

template class ClassContainerT<TextureGL>;

TextureGL::TextureGL() = default;

TextureGL::~TextureGL() {
    ReleaseGLTexture();
}

char const* TextureGL::GetClassName() {
    return "TextureGL";
}

ClassId TextureGL::GetClassId() {
    return MakeClassId(u"TextureGL");
}

uint32_t TextureGL::IsKindOf(ClassId id) {
    return id == MakeClassId(u"TextureGL") || id == MakeClassId(u"Texture");
}

bool TextureGL::CreateGLTexture() {
    if (pixels.data == nullptr) {
        return false;
    }
    ReleaseGLTexture();
    glGenTextures(1, &name_);
    glBindTexture(GL_TEXTURE_2D, name_);
    SetSampling(levels.Count());
    for (uint32_t i = 0; i < levels.Count(); ++i) {
        if (!UploadLevel(*this, i)) {
            return false;
        }
    }
    ReleasePixelStore();
    return true;
}

GLuint TextureGL::GetGLTexture() {
    if (name_ == 0) {
        CreateGLTexture();
    }
    return name_;
}

void TextureGL::ReleaseGLTexture() {
    if (name_ != 0) {
        glDeleteTextures(1, &name_);
        name_ = 0;
    }
}

bool TextureGL::Compress() {
    return CompressTextureAti(*this);
}

bool CompressTextureAti(TextureGL& texture) {
    const uint32_t format = texture.format.Get();
    Compression const* compression = FindCompression(format);
    if (compression == nullptr || texture.pixels.data == nullptr) {
        return false;
    }
    TQonvertImage source{};
    source.nWidth = static_cast<uint32_t>(texture.width.Get());
    source.nHeight = static_cast<uint32_t>(texture.height.Get());
    source.nFormat = compression->source;
    source.nDataSize = texture.pixels.size;
    source.pData = texture.pixels.data;
    TQonvertImage destination{};
    destination.nWidth = source.nWidth;
    destination.nHeight = source.nHeight;
    destination.nFormat = compression->destination;

    texture.format.Set(compression->compressedFormat);
    if (!Convert(source, destination)) {
        texture.format.Set(format);
        return false;
    }
    texture.ReleasePixelStore();
    texture.pixels.data = destination.pData;
    texture.pixels.size = destination.nDataSize;
    return true;
}

}  // namespace zorvan
