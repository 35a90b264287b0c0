// A text as drawn with GL.
#pragma once

#include "core/text.h"
#include "graphics/api.h"

namespace zorvan {

class ShaderGL;

// Sets up a program for its glyphs and has the font draw them. Masks do not apply to texts.
class ZORVAN_GL_API TextGL : public Text {
  public:
    TextGL();
    // A copy has no program until its first update.
    TextGL(TextGL const& other);
    // The program's reference is not given back: programs outlive their texts.
    ~TextGL() override;

    Node* Clone() override;
    char const* GetClassName() override;
    ClassId GetClassId() override;
    void Visit(Visitor& visitor) override;
    Node* CloneDeep() override;
    uint32_t IsKindOf(ClassId id) override;

    // Chooses the program, making it where there is none yet.
    void InternalUpdate(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta,
                        bool force) override;
    void InternalRender(GraphicsDevice& device) override;

    ShaderGL* GetGLShader();
    // Takes a reference to the new program and gives back the old one's.
    void SetGLShader(ShaderGL* program);
    // Makes and registers a program under an identifier and uses it; without success the old one stays.
    void CreateTextShader(unsigned int id, List<unsigned int> const& modes);

  private:
    [[gnu::visibility("hidden")]] void DrawString(GraphicsDevice& device);

    ShaderGL* shader = nullptr;
};

static_assert(sizeof(void*) != 4 || sizeof(TextGL) == sizeof(Text) + 4,
              "the program behind the core's fields");

}  // namespace zorvan
