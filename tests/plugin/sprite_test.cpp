// Sprites: geometry, choice of programs, and the calls of a draw.
#include "tests/plugin/fixture.h"

namespace zorvan {
namespace {

class SpriteTest : public RecordedTest {
  protected:
    // The key of the program after an update.
    uint32_t Key(SpriteGL& sprite) {
        Update(sprite);
        return sprite.GetGLShader()->identifier.Get();
    }
    SpriteGL& Child(Node const& node, uint32_t i = 0) {
        return static_cast<SpriteGL&>(*node.GetChildren()[i]);
    }
    // The texture coordinates that a node is drawn with; empty without.
    std::string Coordinates(Node& node) {
        std::smatch match;
        const std::string log = Draw(node);
        return std::regex_search(log, match, std::regex(" 1\\[(.*)\\]\\)")) ? match[1].str() : "";
    }

    const RefT<TextureGL> texture = MakeTexture(TextureFormat::Rgba8888, 64, 32);
};

constexpr uint32_t kSolidKey = 0x0B17F47F, kSpriteKey = 0x54AA6783, kNestedKey = 0xC002A115;

TEST_F(SpriteTest, SolidDraw) {
    const auto group = Make<TransformNode>(
        "{'opacity': 0.5, 'children': [{'class': 'Sprite', 'width': 100, 'height': 50, 'color': [0.5, 0.25, "
        "1, 0.75], 'position': [7, 9, 0]}]}");
    device->PushCamera2D(Real(640), Real(480));
    device->cameras[0]->position.Set({Real(5), Real(6), Real(0)});
    Update(*device->cameras[0]);
    EXPECT_EQ(Draw(*group), "");  // no program before the first update
    Update(*group);
    Update(*group);
    EXPECT_EQ(TakeLog(), Built(2));
    // From (7, 9) less the camera's (5, 6), in steps of 205 = 2 / 639 and -273 = -2 / 479 from the upper left
    // corner.
    EXPECT_EQ(
        Draw(*group),
        Calls(
            "UseProgram(2); UniformMatrix4fv(3, 1, 0, [205 0 0 0 0 -273 0 0 0 0 -65536 0 -65126 64717 0 "
            "65536]); VertexAttribPointer(0, 3, FIXED, 0, 0, *); "
            "EnableVertexAttribArray(0); BlendEquation(FUNC_ADD); BlendFunc(SRC_ALPHA, ONE_MINUS_SRC_ALPHA); "
            "Uniform4f(4, 0.5, 0.25, 1, 0.375); DrawArrays(5, 0, 4, 0[0 0 0 0 3276800 0 6553600 0 0 6553600 "
            "3276800 0]); DisableVertexAttribArray(0)"));
}

// Its own colour does not count. The first draw uploads. Loaded coordinates stay until a texture is set.
TEST_F(SpriteTest, TexturedDraw) {
    const auto group = Make<TransformNode>(
        "{'opacity': 0.5, 'children': [{'class': 'Sprite', 'width': 8, 'height': 4, 'color': [0.5, 0.25, 1, "
        "0.75], 'transferMode': 6, 'texture': 't'}]}",
        texture.Get());
    Child(*group).Load(*std::make_unique<EmptyReader>());
    Update(*group);
    device->PushCamera2D(Real(640), Real(480));
    const std::string first = Brief(Draw(*group)), bind = "BindTexture(TEXTURE_2D, 201)";
    const std::string expected = Calls(
        "UseProgram(2); UniformMatrix4fv(3, 1, 0, [205]); VertexAttribPointer(0, 3, FIXED, 0, 0, *); "
        "EnableVertexAttribArray(0); BlendEquation(FUNC_ADD); BlendFunc(ONE_MINUS_DST_COLOR, 1); $; "
        "VertexAttribPointer(1, 2, FIXED, 0, 0, *); EnableVertexAttribArray(1); Uniform4f(4, 1, 1, 1, 0.5); "
        "DrawArrays(5, 0, 4, 0[0] 1[6]); DisableVertexAttribArray(1); DisableVertexAttribArray(0)",
        bind);
    EXPECT_EQ(first.substr(0, first.find("GenTextures")) + first.substr(first.rfind(bind)), expected);
    EXPECT_EQ(Brief(Draw(*group)), expected);
    EXPECT_EQ(Coordinates(*group), "6 65536 6 6 65536 65536 65536 6");
}

TEST_F(SpriteTest, TextureCoordinatesFollowTheUsedPart) {
    const RefT<SpriteGL> sprite = MakeSprite(8, 4);
    texture->usedWidth.Set(21);
    texture->usedHeight.Set(31);
    sprite->SetTexture(texture.Get());
    const std::string scaled = "0 63488 0 0 21504 63488 21504 0";  // 31 / 32 and 21 / 64
    EXPECT_EQ(Key(*sprite), kSpriteKey);
    EXPECT_EQ(Coordinates(*sprite), scaled);
    // Without a texture the coordinates stay, and the program changes.
    sprite->SetTexture(nullptr);
    EXPECT_EQ(Key(*sprite), kSolidKey);
    EXPECT_EQ(Coordinates(*sprite), "");
    sprite->Sprite::SetTexture(texture.Get());
    EXPECT_EQ(Key(*sprite), kSpriteKey);
    EXPECT_EQ(Coordinates(*sprite), scaled);
    // A stored size of zero does not trap.
    texture->width.Set(0);
    sprite->SetTexture(texture.Get());
    EXPECT_EQ(Coordinates(*sprite), "0 63488 0 0 0 63488 0 0");
}

// One program for each chain of transfer modes and kind of sprite, shared through the registry.
TEST_F(SpriteTest, Programs) {
    const auto outer = Make<TransformNode>(
        Replaced("{'transferMode': 5, 'children': [{'class': 'TransformNode', 'children': [$, $]}, $]}", "$",
                 "{'class': 'Sprite', 'transferMode': 29}"));
    Node& inner = *outer->GetChildren()[0];
    SpriteGL &solid = Child(inner), &textured = Child(inner, 1);
    textured.SetTexture(texture.Get());
    Update(*outer);
    EXPECT_EQ(TakeLog(), Built(2, 4) + "\n" + Built(3));
    EXPECT_EQ(textured.GetGLShader(), Shader::Find(kNestedKey));
    EXPECT_EQ(textured.GetGLShader()->identifier.Get(), kNestedKey);
    EXPECT_EQ(solid.GetGLShader(), Child(*outer, 1).GetGLShader());
    EXPECT_EQ(solid.GetGLShader()->references, 3);  // the registry's and the sprites'
    EXPECT_TRUE(device->transferModes.IsEmpty() && device->effectKeys.IsEmpty());
    // Moving out of the groups changes the program.
    const RefT<SpriteGL> moved(&textured);
    inner.Detach(moved.Get());
    moved->transferMode.Set(kNoTransferMode);
    EXPECT_EQ(Key(*moved), kSpriteKey);
    EXPECT_EQ(Shader::Find(kNestedKey)->references, 1);
}

// It is tried again on each update; meanwhile an old program stays.
TEST_F(SpriteTest, FailedPrograms) {
    const RefT<SpriteGL> sprite = MakeSprite(1, 1);
    script.linkError = "no";
    Update(*sprite);
    Update(*sprite);
    EXPECT_EQ(traces.Take(), (Lines{"no", "no"}));
    EXPECT_EQ(sprite->GetGLShader(), nullptr);
    EXPECT_EQ(Shader::Find(kSolidKey), nullptr);
    script.linkError.reset();
    EXPECT_EQ(Key(*sprite), kSolidKey);
    script.linkError = "no";
    sprite->SetTexture(texture.Get());
    EXPECT_EQ(Key(*sprite), kSolidKey);
}

// A load that fails makes no geometry, one that succeeds does, as often as it runs.
TEST_F(SpriteTest, CopiesHaveNeitherGeometryNorProgram) {
    const RefT<SpriteGL> sprite =
        MakeSprite(3, 4, ", 'texture': 't', 'children': [{'class': 'Sprite'}]", texture.Get());
    Update(*sprite);
    const RefT<SpriteGL> copy(static_cast<SpriteGL*>(sprite->CloneDeep()));
    EXPECT_EQ(RefT<Node>(sprite->Clone())->GetChildren().Count(), 0u);
    EXPECT_EQ(copy->GetChildren().Count(), 1u);
    EXPECT_EQ(copy->GetGLShader(), nullptr);
    EXPECT_EQ(copy->GetTexture(), sprite->GetTexture());
    Update(*copy);
    EXPECT_EQ(copy->GetGLShader(), sprite->GetGLShader());
    EmptyReader failing, reader;
    for (const int width : {-1, 3}) {
        EXPECT_EQ(Draw(*copy).find("DrawArrays"), std::string::npos);
        copy->width.Set(width);
        EXPECT_EQ(copy->Load(width < 0 ? failing : reader), width > 0);
    }
    EXPECT_TRUE(copy->Load(reader));
    copy->SetTexture(copy->GetTexture());
    EXPECT_EQ(Coordinates(*copy), "0 65536 0 0 65536 65536 65536 0");
}

}  // namespace
}  // namespace zorvan
