// Texts with their fonts, and what brackets a drawing: camera, depth and masks, above all those of timelines.
#include "objects/text.h"

#include "objects/font.h"
#include "objects/timeline.h"
#include "tests/plugin/fixture.h"

namespace zorvan {
namespace {

using Color = ColorT<RealFixed>;

// Logs how the text calls the font; draws all the same.
class LoggingFont : public FontGL {
  public:
    void DrawString(GraphicsDevice& device, MStringT<wchar_t> const& text, Color const& color,
                    int letterSpacing, int lineSpacing) override {
        log = {color.red.raw, color.green.raw, color.blue.raw, color.alpha.raw, letterSpacing, lineSpacing};
        FontGL::DrawString(device, text, color, letterSpacing, lineSpacing);
    }
    void DrawString(GraphicsDevice&, MStringT<wchar_t> const&, Color const& color,
                    SizeT<RealFixed> const& box, int alignment, int letterSpacing, int lineSpacing) override {
        log = {color.alpha.raw, box.width.raw >> 16, box.height.raw >> 16,
               alignment,       letterSpacing,       lineSpacing};
    }
    std::vector<int> log;
};

class TextTest : public RecordedTest {
  protected:
    TextTest() {
        for (const int side : {2, 4, 8}) {  // textures 201 to 203
            const RefT<TextureGL> page = MakeTexture(TextureFormat::Rgba8888, side, side);
            page->GetGLTexture();
            font->AddPage(page.Get());
        }
        font->AddGlyph('a',
                       {5, 7, 2, RealFixed{10}, RealFixed{20}, RealFixed{30}, RealFixed{40}, {}, {}, {}});
        EXPECT_TRUE(font->Initialize());
        text->font.Set(RefT<Font>(font.Get()));
        TakeLog();
    }
    // The two passes of a glyph, for locations of the position and of the colour; a program may know no
    // texture coordinates.
    static std::string Glyph(std::string const& position, std::string const& color, bool coordinates) {
        const std::string calls =
            "VertexAttribPointer(@, 3, FIXED, 0, 0, *); EnableVertexAttribArray(@); BindTexture(TEXTURE_2D, "
            "203); " +
            std::string(coordinates
                            ? "VertexAttribPointer(1, 2, FIXED, 0, 0, *); EnableVertexAttribArray(1); "
                            : "") +
            "Uniform4f($, 0.5, 0.25, 1, 1); BlendFunc(0, ONE_MINUS_SRC_COLOR); %; Uniform4f($, 0.5, 0.25, 1, "
            "0.75); BlendFunc(SRC_ALPHA, 1); %; " +
            (coordinates ? "DisableVertexAttribArray(1); " : "") + "DisableVertexAttribArray(@)";
        const std::string draw = "DrawArrays(5, 0, 4, @[0 0 0 0 458752 0 327680 0 0 327680 458752 0]" +
                                 std::string(coordinates ? " 1[10 40 10 20 30 40 30 20])" : ")");
        return Replaced(Calls(Replaced(calls, "%", draw), color), "@", position);
    }

    RefT<LoggingFont> font{new LoggingFont};
    RefT<TextGL> text = Make<TextGL>(
        "{'font': null, 'string': 'a', 'color': [0.5, 0.25, 1, 0.75], 'letterSpacing': 7, "
        "'lineSpacing': 3, 'box': [50, 60], 'alignment': 'right'}");
};

TEST_F(TextTest, TwoPassesPerGlyph) {
    text->hasBox.Set(false);
    EXPECT_EQ(Draw(*text), "");
    Update(*text);
    EXPECT_EQ(TakeLog(), Built(2));
    EXPECT_EQ(text->GetGLShader()->identifier.Get(), 0x798081F5u);
    device->PushCamera2D(Real(640), Real(480));
    EXPECT_EQ(Draw(*text), Calls("UseProgram(2); UniformMatrix4fv(3, 1, 0, [205 0 0 0 0 -273 0 0 0 0 -65536 "
                                 "0 -65536 65536 0 65536]); ") +
                               Glyph("0", "4", true));
    // A glyph takes the first of the programs that are drawn with; outside a text there is none.
    ShaderGL first, second;
    std::tie(first.positionAttribute, first.colorUniform) = std::tuple(6, 7);
    EXPECT_TRUE(device->shaders.IsEmpty());
    font->RenderGlyph(*device, font->FindGlyph('a'), {}, text->color.Get());
    EXPECT_EQ(TakeLog(), "");
    device->shaders.Append(&first);
    device->shaders.Append(&second);
    font->RenderGlyph(*device, font->FindGlyph('a'), {}, text->color.Get());
    EXPECT_EQ(TakeLog(), Glyph("6", "7", false));
}

// The larger of alpha and opacity (opacity when equal) loses its lowest bit.
TEST_F(TextTest, FontGetsColourAndLayout) {
    const RefT<TransformNode> group(new TransformNode);
    group->Attach(text.Get());
    constexpr int kProducts[][3] = {{0x10000, 0x10000, 0x10000}, {0x10000, 0x8000, 0x8000},
                                    {0x10001, 0x10000, 0x10000}, {0x10000, 0x10001, 0x10000},
                                    {0xFFFF, 0x10000, 0xFFFF},   {0xFFFF, 0xFFFF, 0xFFFD}};
    for (auto const& [alpha, opacity, product] : kProducts) {
        text->color.Set({RealFixed{1}, RealFixed{2}, RealFixed{3}, RealFixed{alpha}});
        group->opacity.Set(RealFixed{opacity});
        for (const bool box : {false, true}) {
            text->hasBox.Set(box);
            Update(*group);
            group->Render(*device);
            EXPECT_EQ(font->log, box ? (std::vector<int>{product, 50, 60, TextAlignment::Right, 7, 3})
                                     : (std::vector<int>{1, 2, 3, product, 7, 3}));
        }
    }
}

TEST_F(TextTest, ProgramsAreSharedByModes) {
    const RefT<TextGL> copy(static_cast<TextGL*>(text->Clone()));
    Update(*text);
    EXPECT_EQ(RefT<TextGL>(static_cast<TextGL*>(text->Clone()))->GetGLShader(), nullptr);
    Update(*copy);
    EXPECT_EQ(copy->GetGLShader(), text->GetGLShader());
    text->transferMode.Set(29);
    Update(*text);
    EXPECT_EQ(TakeLog(), Built(2) + "\n" + Built(3, 3));
}

// Logs the operations that bracket a drawing among the calls of GL, then does them.
class LoggingDevice : public GraphicsDeviceGL {
  public:
    void PushMasks(List<Mask*>& masks) override { Log("PushMasks", masks.Count()); }
    void PopMasks(List<Mask*>& masks) override { Log("PopMasks", masks.Count()); }
    void PushCamera(Camera* camera) override {
        recording_gl::Append("PushCamera", camera->name);
        GraphicsDeviceGL::PushCamera(camera);
    }
    void PopCamera() override {
        recording_gl::Append("PopCamera", cameras.Last()->name);
        GraphicsDeviceGL::PopCamera();
    }
    void PushCameraDepth(bool depth) override {
        GraphicsDeviceGL::PushCameraDepth(Log("PushCameraDepth", depth));
    }
    void PopCameraDepth(bool depth) override {
        GraphicsDeviceGL::PopCameraDepth(Log("PopCameraDepth", depth));
    }
    void SetCameraDepth(bool depth) override {
        GraphicsDeviceGL::SetCameraDepth(Log("SetCameraDepth", depth));
    }

  private:
    template <typename T>
    T Log(char const* name, T value) {
        recording_gl::Append(name, std::to_string(value));
        return value;
    }
};

class BracketTest : public RecordedTest {
  protected:
    BracketTest() : RecordedTest(new LoggingDevice) {}
};

// Each timeline pushes its camera, its depth and its masks, draws its subtree, and takes them back in
// reverse.
TEST_F(BracketTest, NestedTimelines) {
    const auto root = Make<TransformNode>(R"({'children': [
        {'class': 'Timeline', 'masks': 2, 'children': [
            {'class': 'Sprite'},
            {'class': 'Timeline', 'depth': true, 'children': [
                {'class': 'Timeline', 'depth': true, 'masks': 1, 'children': [
                    {'class': 'Sprite', 'depth': true, 'masks': 3}],
                 'camera': {'name': 'inner', 'orthographic': true, 'viewRectangle': [0, 0, 8, 1]}}]},
            {'class': 'Sprite', 'depth': true}],
         'camera': {'name': 'outer', 'orthographic': true, 'viewRectangle': [0, 0, 4, 1]}},
        {'class': 'Sprite', 'depth': true}]})");
    Update(*root);
    const auto sprite = [](std::string const& depth, std::string const& masks, int scale) {
        return "SetCameraDepth(" + depth + "); PushMasks(" + masks +
               "); UseProgram(2); UniformMatrix4fv(3, 1, 0, [" + std::to_string(scale) +
               "]); VertexAttribPointer(0, 3, FIXED, 0, 0, *); EnableVertexAttribArray(0); "
               "BlendEquation(FUNC_ADD); BlendFunc(SRC_ALPHA, ONE_MINUS_SRC_ALPHA); Uniform4f(4, 1, 1, 1, "
               "1); DrawArrays(5, 0, 4, 0[0]); DisableVertexAttribArray(0); PopMasks(" +
               masks + "); ";
    };
    // Below the outer timeline depth means its camera or the inner one's, beside it the default camera. An
    // orthographic one scales by 2 / width.
    constexpr int kOuter = 65536 / 2, kInner = 65536 / 4;
    const int defaultScale = device->defaultCamera->GetProjectionMatrix()[0].raw;
    EXPECT_EQ(Brief(Draw(*root)) + "\n",
              Calls("PushCamera(outer); PushCameraDepth(0); SetCameraDepth(0); PushMasks(2); " +
                    sprite("0", "0", kOuter) +
                    "PushCameraDepth(1); SetCameraDepth(1); PushCamera(inner); PushCameraDepth(1); "
                    "SetCameraDepth(1); PushMasks(1); " +
                    sprite("1", "3", kInner) +
                    "PopMasks(1); PopCameraDepth(1); PopCamera(inner); PopCameraDepth(1); " +
                    sprite("1", "0", kOuter) + "PopMasks(2); PopCameraDepth(0); PopCamera(outer); " +
                    sprite("1", "0", defaultScale)));
}

// A sprite puts its masks even around a program that cannot be used; a text knows none.
TEST_F(BracketTest, UnusablePrograms) {
    script.linkError = "never";
    const RefT<ShaderGL> broken(new ShaderGL);
    const RefT<SpriteGL> sprite = MakeSprite(1, 1, ", 'depth': true, 'masks': 1");
    const auto text = Make<TextGL>("{'font': null, 'depth': true, 'masks': 1}");
    EXPECT_EQ(Draw(*sprite), "");
    sprite->SetGLShader(broken.Get());
    text->SetGLShader(broken.Get());
    EXPECT_EQ(broken->references, 3);
    const auto drawn = [&](Node& node) {
        return Replaced(Draw(node), "eglGetProcAddress(\"glProgramBinaryOES\")\n", "");
    };
    const std::string failing =
        "CreateProgram(); ProgramBinaryOES($, 0x8740, null, 0); GetError(); GetProgramiv($, LINK_STATUS, *); "
        "GetProgramInfoLog($, 1024, *, *); DeleteProgram($)";
    EXPECT_EQ(drawn(*sprite), Calls("SetCameraDepth(1); PushMasks(1); " + failing + "; PopMasks(1)", "2"));
    EXPECT_EQ(drawn(*text), Calls("SetCameraDepth(1); " + failing, "3"));
    sprite->SetGLShader(nullptr);
    text->SetGLShader(nullptr);
    EXPECT_EQ(broken->references, 1);
    script.linkError.reset();
    Update(*text);
    const std::string usable = Draw(*text);
    EXPECT_NE(usable.find("UseProgram"), std::string::npos);
    EXPECT_EQ(usable.find("Masks"), std::string::npos);
}

}  // namespace
}  // namespace zorvan
