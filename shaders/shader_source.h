// Generated shader texts.
#pragma once

#include "core/list.h"
#include "core/mstring.h"
#include "graphics/api.h"

namespace zorvan {

// One shader as an ordered list of text fragments. They point at constant texts; the list never copies
// or frees them. A fragment that cannot be appended is missing, and the shader then does not compile.
class ZORVAN_GL_API ShaderSource : public List<char const*> {
  public:
    ShaderSource();
    ShaderSource(ShaderSource const&) = default;
    ShaderSource& operator=(ShaderSource const&) = default;
    virtual ~ShaderSource();

    // Traces the whole text between two banners.
    void Trace() const;
    // Writes the fragments one after another. False when the file cannot be opened or written; a partly
    // written file stays.
    bool Save(MStringT<wchar_t> const& path);
};

static_assert(sizeof(void*) != 4 || sizeof(ShaderSource) == 4 + 12,
              "virtual table, then the list's pointer, count and capacity");

class ZORVAN_GL_API SpriteVertexShaderSource : public ShaderSource {
  public:
    SpriteVertexShaderSource();
    ~SpriteVertexShaderSource() override;
};

class ZORVAN_GL_API SolidVertexShaderSource : public ShaderSource {
  public:
    SolidVertexShaderSource();
    ~SolidVertexShaderSource() override;
};

class ZORVAN_GL_API TextVertexShaderSource : public ShaderSource {
  public:
    TextVertexShaderSource();
    ~TextVertexShaderSource() override;
};

// The fragment sources take the transfer modes in force, innermost last. Solid colours and texts run
// the snippets of all of them and skip numbers above 36; sprites take the shader of the last one alone.

class ZORVAN_GL_API SpriteFragmentShaderSource : public ShaderSource {
  public:
    explicit SpriteFragmentShaderSource(List<unsigned int> const& modes);
    ~SpriteFragmentShaderSource() override;
};

class ZORVAN_GL_API SolidFragmentShaderSource : public ShaderSource {
  public:
    explicit SolidFragmentShaderSource(List<unsigned int> const& modes);
    ~SolidFragmentShaderSource() override;
};

class ZORVAN_GL_API TextFragmentShaderSource : public ShaderSource {
  public:
    explicit TextFragmentShaderSource(List<unsigned int> const& modes);
    ~TextFragmentShaderSource() override;
};

}  // namespace zorvan
