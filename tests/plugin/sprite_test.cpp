// Sprites: geometry, choice of programs, and the calls of a draw.
#include "objects/sprite.h"

#include <GLES2/gl2.h>

#include "tests/plugin/fixture.h"

namespace zorvan {
namespace {

using recording_gl::Call;

class SpriteTest : public RecordedTest {
  protected:
    std::vector<Call> Draw(Node& node) {
        Taken();
        node.Render(*device);
        return recording_gl::TakeCalls();
    }
    // The arrays at the only draw of a node.
    std::map<uint32_t, std::vector<int32_t>> DrawnArrays(Node& node) {
        for (Call& call : Draw(node)) {
            if (call.text == "glDrawArrays(GL_TRIANGLE_STRIP, 0, 4)") {
                return call.arrays;
            }
        }
        return {};
    }
    // The key of the program after an update.
    uint32_t Key(SpriteGL& sprite) {
        Update(sprite);
        return sprite.GetGLShader()->identifier.Get();
    }
    static RefT<TransformNode> Group(uint32_t mode) {
        RefT<TransformNode> group(new TransformNode);
        group->transferMode.Set(mode);
        return group;
    }
    static void Color(SpriteGL& sprite) {
        sprite.color.Set({RealFixed{0x8000}, RealFixed{0x4000}, Real(1), RealFixed{0xC000}});
        sprite.opacity.Set(RealFixed{0x8000});
    }
};

constexpr uint32_t kSolidKey = 0x0B17F47F;
constexpr uint32_t kSpriteKey = 0x54AA6783;

TEST_F(SpriteTest, SolidDraw) {
    RefT<SpriteGL> sprite = MakeSprite(100, 50);
    Color(*sprite);
    sprite->position.Set({Real(7), Real(9), Real(0)});
    device->PushCamera2D(Real(640), Real(480));
    EXPECT_TRUE(Draw(*sprite).empty());  // no program before the first update
    Update(*sprite);
    EXPECT_EQ(Taken(), kBuild);
    Update(*sprite);
    EXPECT_EQ(Taken(), "");

    const std::vector<Call> calls = Draw(*sprite);
    EXPECT_EQ(TextsOf(calls),
              Calls("glUseProgram(2); glUniformMatrix4fv(3, 1, 0, *); "
                    "glVertexAttribPointer(0, 3, GL_FIXED, 0, 0, *); glEnableVertexAttribArray(0); "
                    "glBlendEquation(GL_FUNC_ADD); glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA); "
                    "glUniform4f(4, 0.5, 0.25, 1, 0.375); glDrawArrays(GL_TRIANGLE_STRIP, 0, 4); "
                    "glDisableVertexAttribArray(0)"));
    const Matrix4T<RealFixed> mvp =
        sprite->GetWorldMatrix() * device->GetViewMatrix() * device->GetProjectionMatrix();
    ASSERT_EQ(calls[1].floats.size(), 16u);
    for (size_t i = 0; i < 16; ++i) {
        EXPECT_EQ(calls[1].floats[i], static_cast<float>(mvp.m[i].raw) / 65536.0f) << i;
    }
    constexpr int32_t kW = 100 << 16;
    constexpr int32_t kH = 50 << 16;
    EXPECT_EQ(calls[7].arrays,
              (std::map<uint32_t, std::vector<int32_t>>{{0, {0, 0, 0, 0, kH, 0, kW, 0, 0, kW, kH, 0}}}));
}

TEST_F(SpriteTest, TexturedDraw) {
    RefT<SpriteGL> sprite = MakeSprite(8, 4);
    RefT<TextureGL> texture = MakeTexture(TextureFormat::Rgba8888, 4, 4);
    sprite->Sprite::SetTexture(texture.Get());  // the core's: the loaded coordinates stay
    Color(*sprite);
    sprite->transferMode.Set(6);
    Update(*sprite);
    EXPECT_EQ(Taken(), kBuild);
    // The first draw uploads.
    const std::string bind = "glBindTexture(GL_TEXTURE_2D, 201)";
    const std::string first = TextsOf(Draw(*sprite));
    const std::string expected = Calls(
        "glUseProgram(2); glUniformMatrix4fv(3, 1, 0, *); glVertexAttribPointer(0, 3, GL_FIXED, 0, 0, *); "
        "glEnableVertexAttribArray(0); glBlendEquation(GL_FUNC_ADD); "
        "glBlendFunc(GL_ONE_MINUS_DST_COLOR, GL_ONE); glBindTexture(GL_TEXTURE_2D, 201); "
        "glVertexAttribPointer(1, 2, GL_FIXED, 0, 0, *); glEnableVertexAttribArray(1); "
        "glUniform4f(4, 1, 1, 1, 0.5); glDrawArrays(GL_TRIANGLE_STRIP, 0, 4); "
        "glDisableVertexAttribArray(1); glDisableVertexAttribArray(0)");
    EXPECT_EQ(first.substr(0, first.find("glGenTextures")) + first.substr(first.rfind(bind)), expected);
    EXPECT_NE(first.find("glTexImage2D"), std::string::npos);
    EXPECT_EQ(TextsOf(Draw(*sprite)), expected);
    EXPECT_EQ(DrawnArrays(*sprite)[1], (std::vector<int32_t>{6, 65536, 6, 6, 65536, 65536, 65536, 6}));
}

TEST_F(SpriteTest, TextureCoordinatesFollowTheUsedPart) {
    RefT<SpriteGL> sprite = MakeSprite(8, 4);
    RefT<TextureGL> texture = MakeTexture(TextureFormat::Rgba8888, 64, 32);
    texture->usedWidth.Set(21);
    texture->usedHeight.Set(31);
    sprite->SetTexture(texture.Get());
    constexpr int32_t kU = (21 << 16) / 64;
    constexpr int32_t kV = (31 << 16) / 32;
    const std::vector<int32_t> scaled = {0, kV, 0, 0, kU, kV, kU, 0};
    EXPECT_EQ(Key(*sprite), kSpriteKey);
    EXPECT_EQ(DrawnArrays(*sprite)[1], scaled);

    // Without a texture the coordinates stay, and the program changes.
    sprite->SetTexture(nullptr);
    EXPECT_EQ(Key(*sprite), kSolidKey);
    EXPECT_EQ(DrawnArrays(*sprite).count(1), 0u);
    sprite->Sprite::SetTexture(texture.Get());
    Update(*sprite);
    EXPECT_EQ(DrawnArrays(*sprite)[1], scaled);

    // A stored size of zero does not trap.
    texture->width.Set(0);
    sprite->SetTexture(texture.Get());
    EXPECT_EQ(DrawnArrays(*sprite)[1], (std::vector<int32_t>{0, kV, 0, 0, 0, kV, 0, 0}));
}

// One program for each chain of transfer modes and kind of sprite.
TEST_F(SpriteTest, Programs) {
    RefT<TransformNode> outer = Group(5);
    RefT<TransformNode> none = Group(kNoTransferMode);
    RefT<SpriteGL> solid = MakeSprite(1, 1);
    RefT<SpriteGL> textured = MakeSprite(1, 1);
    RefT<SpriteGL> again = MakeSprite(1, 1);
    textured->SetTexture(MakeTexture(TextureFormat::Rgba8888, 1, 1).Get());
    for (SpriteGL* sprite : {solid.Get(), textured.Get(), again.Get()}) {
        sprite->transferMode.Set(29);
    }
    outer->Attach(none.Get());
    none->Attach(solid.Get());
    none->Attach(textured.Get());
    outer->Attach(again.Get());
    Update(*outer);
    const std::vector<Call> calls = recording_gl::TakeCalls();
    ASSERT_EQ(calls.size(), 40u);
    EXPECT_EQ(calls[5].text, "glShaderSource(104, 4, *, null)");
    EXPECT_EQ(calls[25].text, "glShaderSource(106, 1, *, null)");
    EXPECT_NE(calls[25].strings[0].find("v_vTexCoord)*u_vColor.a;"), std::string::npos);
    EXPECT_EQ(textured->GetGLShader()->identifier.Get(), 0xC002A115u);
    EXPECT_EQ(solid->GetGLShader(), again->GetGLShader());
    EXPECT_EQ(Shader::Find(0xC002A115u), textured->GetGLShader());
    EXPECT_EQ(solid->GetGLShader()->references, 3);  // the registry's and the sprites'
    EXPECT_TRUE(device->transferModes.IsEmpty() && device->effectKeys.IsEmpty());
    // Moving out of the groups changes the program.
    none->Detach(textured.Get());
    textured->transferMode.Set(kNoTransferMode);
    EXPECT_EQ(Key(*textured), kSpriteKey);
    EXPECT_EQ(Shader::Find(0xC002A115u)->references, 1);
}

TEST_F(SpriteTest, FailedProgramIsTriedAgain) {
    Traces traces;
    RefT<SpriteGL> sprite = MakeSprite(1, 1);
    script.linkError = "no";
    Update(*sprite);
    Update(*sprite);
    EXPECT_EQ(traces.Take(), (Lines{"no", "no"}));
    EXPECT_EQ(sprite->GetGLShader(), nullptr);
    EXPECT_EQ(Shader::Find(kSolidKey), nullptr);
    script.linkError.reset();
    EXPECT_EQ(Key(*sprite), kSolidKey);
    // The old program stays in use when the new one fails.
    script.linkError = "no";
    sprite->SetTexture(MakeTexture(TextureFormat::Rgba8888, 1, 1).Get());
    EXPECT_EQ(Key(*sprite), kSolidKey);
}

// Masks and camera depth bracket a draw even when the program cannot be used.
TEST_F(SpriteTest, Bracket) {
    RefT<SpriteGL> sprite = MakeSprite(1, 1);
    sprite->depth.Set(true);
    LoggingDevice logging;
    sprite->Render(logging);
    EXPECT_EQ(logging.log, "");
    RefT<ShaderGL> broken(new ShaderGL);
    script.linkError = "never";
    Traces traces;
    sprite->SetGLShader(broken.Get());
    EXPECT_EQ(broken->references, 2);
    Taken();
    sprite->AddMask(new Mask);
    sprite->Render(logging);
    EXPECT_EQ(logging.log, "SetCameraDepth 1; PushMasks 1; PopMasks 1; ");
    const std::string calls = Taken();
    EXPECT_TRUE(calls.starts_with("glCreateProgram()\n") && calls.ends_with("\nglDeleteProgram(2)")) << calls;
    sprite->SetGLShader(nullptr);
    EXPECT_EQ(broken->references, 1);
}

TEST_F(SpriteTest, CopiesHaveNeitherGeometryNorProgram) {
    RefT<SpriteGL> sprite = MakeSprite(3, 4);
    sprite->SetTexture(MakeTexture(TextureFormat::Rgba8888, 2, 2).Get());
    sprite->Attach(MakeSprite(5, 6).Get());
    Update(*sprite);
    RefT<SpriteGL> copy(static_cast<SpriteGL*>(sprite->CloneDeep()));
    EXPECT_EQ(RefT<Node>(sprite->Clone())->GetChildren().Count(), 0u);
    ASSERT_EQ(copy->GetChildren().Count(), 1u);
    EXPECT_EQ(copy->GetGLShader(), nullptr);
    EXPECT_EQ(copy->width.Get(), 3);
    EXPECT_EQ(copy->GetTexture(), sprite->GetTexture());
    Update(*copy);
    EXPECT_EQ(copy->GetGLShader(), sprite->GetGLShader());
    EXPECT_TRUE(DrawnArrays(*copy).empty());
    // A load that fails makes no geometry, one that succeeds does; setting the texture makes the coordinates.
    EmptyReader failing;
    EmptyReader reader;
    copy->width.Set(-1);
    EXPECT_FALSE(copy->Load(failing));
    EXPECT_TRUE(DrawnArrays(*copy).empty());
    copy->width.Set(3);
    EXPECT_TRUE(copy->Load(reader));
    copy->SetTexture(copy->GetTexture());
    EXPECT_EQ(DrawnArrays(*copy)[1], (std::vector<int32_t>{0, 65536, 0, 0, 65536, 65536, 65536, 0}));
}

}  // namespace
}  // namespace zorvan
