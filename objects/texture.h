// A texture that uploads itself to GL when it is first drawn.
#pragma once

#include <GLES2/gl2.h>

#include "core/class_id.h"
#include "core/texture.h"
#include "graphics/api.h"

namespace zorvan {

// The pixels in memory go away with the upload: a GL texture that is released cannot be made again
// unless they are loaded anew.
class ZORVAN_GL_API TextureGL : public Texture {
  public:
    TextureGL();
    ~TextureGL() override;

    // Turns the pixels in memory into ATITC blocks; see CompressTextureAti. Calls no GL.
    bool Compress() override;

    char const* GetClassName();
    ClassId GetClassId();
    uint32_t IsKindOf(ClassId id);

    // Uploads all levels. False without pixels, and for a format that GL does not take; then the GL
    // texture exists with the levels before, and the pixels stay.
    bool CreateGLTexture();
    // The GL name, made by CreateGLTexture if there is none yet; 0 when there is nothing to upload.
    GLuint GetGLTexture();
    void ReleaseGLTexture();

  private:
    GLuint name_ = 0;
};

static_assert(sizeof(void*) != 4 || sizeof(TextureGL) == sizeof(Texture) + 4,
              "the GL name behind the core's fields");

// Compresses the pixel store, taken as one image of the texture's stored size: formats 0 and 4 become 8
// (RGB), formats 1, 2 and 6 become 9 (RGB with explicit alpha). False for other formats, without pixels
// and out of memory; the texture is then as it was.
ZORVAN_GL_API bool CompressTextureAti(TextureGL& texture);

}  // namespace zorvan
