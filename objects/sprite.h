// A sprite as drawn with GL.
#pragma once

#include "core/sprite.h"
#include "graphics/api.h"

namespace zorvan {

class ShaderGL;

// Draws a triangle strip of four corners, filled with the sprite's colour or its texture. Its program
// depends on the transfer modes in force and on whether it has a texture; the blend state on its own
// transfer mode.
class ZORVAN_GL_API SpriteGL : public Sprite {
  public:
    SpriteGL();
    // A copy has no geometry until it is loaded, and no program until its first update.
    SpriteGL(SpriteGL const& other);
    // The program's reference is not given back: programs outlive their sprites.
    ~SpriteGL() override;

    Node* Clone() override;
    char const* GetClassName() override;
    ClassId GetClassId() override;
    void Visit(Visitor& visitor) override;
    Node* CloneDeep() override;
    uint32_t IsKindOf(ClassId id) override;

    // Makes the geometry from the loaded size.
    bool Load(Deserializer& reader) override;
    // Chooses the program, making it where there is none yet.
    void InternalUpdate(GraphicsDevice& device, RealFixed const& time, RealFixed const& delta,
                        bool force) override;
    // A sprite without a program or without geometry draws nothing.
    void InternalRender(GraphicsDevice& device) override;
    // Scales the texture coordinates to the texture's used part; null leaves them.
    void SetTexture(Texture* texture) override;

    ShaderGL* GetGLShader();
    // Takes a reference to the new program and gives back the old one's.
    void SetGLShader(ShaderGL* program);
    // Make and register a program under an identifier and use it; without success the old one stays.
    void CreateSpriteShader(unsigned int id, List<unsigned int> const& modes);
    void CreateSolidShader(unsigned int id, List<unsigned int> const& modes);

  private:
    [[gnu::visibility("hidden")]] void Draw(ShaderGL const& program);

    // Corners in pixels and their texture coordinates, in the order of the strip.
    List<Vector3T<RealFixed>> vertices;
    List<Vector2T<RealFixed>> texCoords;
    ShaderGL* shader = nullptr;
};

static_assert(sizeof(void*) != 4 || sizeof(SpriteGL) == sizeof(Sprite) + 2 * 12 + 4,
              "two lists and the program behind the core's fields");

}  // namespace zorvan
