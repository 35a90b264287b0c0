// Texts with their fonts, and timelines.
#include "objects/text.h"

#include "objects/font.h"
#include "objects/timeline.h"
#include "tests/plugin/fixture.h"

namespace zorvan {
namespace {

// Logs how the text calls the font; draws all the same.
class LoggingFont : public FontGL {
  public:
    void DrawString(GraphicsDevice& device, MStringT<wchar_t> const& text, ColorT<RealFixed> const& color,
                    int letterSpacing, int lineSpacing) override {
        log = testing::PrintToString(std::array{letterSpacing, lineSpacing});
        drawn = color;
        FontGL::DrawString(device, text, color, letterSpacing, lineSpacing);
    }
    void DrawString(GraphicsDevice& device, MStringT<wchar_t> const& text, ColorT<RealFixed> const& color,
                    SizeT<RealFixed> const& box, int alignment, int letterSpacing, int lineSpacing) override {
        log = testing::PrintToString(std::array{box.width.raw >> 16, alignment, letterSpacing, lineSpacing});
        drawn = color;
        FontGL::DrawString(device, text, color, box, alignment, letterSpacing, lineSpacing);
    }
    std::string log;
    ColorT<RealFixed> drawn;
};

class TextTest : public RecordedTest {
  protected:
    TextTest() {
        font->AddPage(MakeTexture(TextureFormat::Rgba8888, 4, 4).Get());
        font->AddPage(MakeTexture(TextureFormat::Rgba8888, 8, 8).Get());
        font->AddGlyph(
            'a', {5, 7, 1, RealFixed{10}, RealFixed{20}, RealFixed{30}, RealFixed{40}, {}, {}, Real(6)});
        EXPECT_TRUE(font->Initialize());
        text->font.Set(RefT<Font>(font.Get()));
        text->string.Set(L"a");
        text->color.Set({RealFixed{0x8000}, RealFixed{0x4000}, Real(1), RealFixed{0xC000}});
    }

    RefT<LoggingFont> font{new LoggingFont};
    RefT<TextGL> text{new TextGL};
};

TEST_F(TextTest, TwoPassesPerGlyph) {
    text->Render(*device);
    EXPECT_EQ(Taken(), "");
    Update(*text);
    EXPECT_EQ(Taken(), kBuild);
    EXPECT_EQ(text->GetGLShader()->identifier.Get(), 0x798081F5u);
    MakeTexture(0, 1, 1)->GetGLTexture();  // takes name 201
    text->Render(*device);                 // uploads the page
    Taken();
    text->Render(*device);
    const std::vector<recording_gl::Call> calls = recording_gl::TakeCalls();
    EXPECT_EQ(TextsOf(calls),
              Calls("glUseProgram(2); glUniformMatrix4fv(3, 1, 0, *); "
                    "glVertexAttribPointer(0, 3, GL_FIXED, 0, 0, *); glEnableVertexAttribArray(0); "
                    "glBindTexture(GL_TEXTURE_2D, 202); "
                    "glVertexAttribPointer(1, 2, GL_FIXED, 0, 0, *); glEnableVertexAttribArray(1); "
                    "glUniform4f(4, 0.5, 0.25, 1, 1); glBlendFunc(GL_ZERO, GL_ONE_MINUS_SRC_COLOR); "
                    "glDrawArrays(GL_TRIANGLE_STRIP, 0, 4); glUniform4f(4, 0.5, 0.25, 1, 0.75); "
                    "glBlendFunc(GL_SRC_ALPHA, GL_ONE); glDrawArrays(GL_TRIANGLE_STRIP, 0, 4); "
                    "glDisableVertexAttribArray(1); glDisableVertexAttribArray(0)"));
    constexpr int32_t kW = 5 << 16;
    constexpr int32_t kH = 7 << 16;
    const std::map<uint32_t, std::vector<int32_t>> arrays = {{0, {0, 0, 0, 0, kH, 0, kW, 0, 0, kW, kH, 0}},
                                                             {1, {10, 40, 10, 20, 30, 40, 30, 20}}};
    ASSERT_EQ(calls.size(), 15u);
    EXPECT_EQ(calls[9].arrays, arrays);
    EXPECT_EQ(calls[12].arrays, arrays);
    EXPECT_TRUE(device->shaders.IsEmpty());
}

TEST_F(TextTest, FontGetsColourAndLayout) {
    text->letterSpacing.Set(2);
    text->lineSpacing.Set(3);
    text->alignment.Set(4);
    text->box.Set({Real(50), Real(60)});
    // The larger of alpha and opacity (opacity when equal) loses its lowest bit.
    struct Case {
        int32_t alpha, opacity, product;
    };
    constexpr Case kCases[] = {{0x10000, 0x10000, 0x10000}, {0x10000, 0x8000, 0x8000},
                               {0x10001, 0x10000, 0x10000}, {0x10000, 0x10001, 0x10000},
                               {0xFFFF, 0x10000, 0xFFFF},   {0xFFFF, 0xFFFF, 0xFFFD}};
    for (Case const& c : kCases) {
        ColorT<RealFixed> color = text->color.Get();
        color.alpha = RealFixed{c.alpha};
        text->color.Set(color);
        text->opacity.Set(RealFixed{c.opacity});
        text->hasBox.Set(c.opacity == 0x8000);
        Update(*text);
        text->Render(*device);
        color.alpha = RealFixed{c.product};
        EXPECT_EQ(font->drawn, color) << c.alpha << ' ' << c.opacity;
        EXPECT_EQ(font->log, text->hasBox.Get() ? "{ 50, 4, 2, 3 }" : "{ 2, 3 }");
    }
}

TEST_F(TextTest, ProgramsAreSharedByModes) {
    RefT<TextGL> other(new TextGL);
    Update(*text);
    Update(*other);
    EXPECT_EQ(other->GetGLShader(), text->GetGLShader());
    Taken();
    text->transferMode.Set(29);
    Update(*text);
    EXPECT_NE(other->GetGLShader(), text->GetGLShader());
    EXPECT_EQ(recording_gl::Calls()[5].text, "glShaderSource(106, 3, *, null)");
    RefT<TextGL> copy(static_cast<TextGL*>(text->Clone()));
    EXPECT_EQ(copy->GetGLShader(), nullptr);
    EXPECT_EQ(copy->string.Get(), text->string.Get());
}

TEST_F(TextTest, UnusableProgramDrawsNothing) {
    Traces traces;
    RefT<ShaderGL> broken(new ShaderGL);
    text->SetGLShader(broken.Get());
    script.linkError = "never";
    text->Render(*device);
    EXPECT_EQ(font->log, "");
    // A font drawn outside a text has no program.
    Taken();
    script.linkError.reset();
    font->RenderGlyph(*device, font->FindGlyph('a'), {}, {});
    EXPECT_EQ(Taken(), "");
    text->SetGLShader(nullptr);
}

class LoggingNode : public TransformNode {
  protected:
    void InternalRender(GraphicsDevice& device) override {
        static_cast<LoggingDevice&>(device).log += "child; ";
    }
};

TEST(TimelineGL, BracketsItsSubtree) {
    for (const bool camera : {false, true}) {
        for (const bool mask : {false, true}) {
            LoggingDevice device;
            RefT<TimelineGL> timeline(new TimelineGL);
            timeline->Attach(new LoggingNode);
            timeline->depth.Set(camera);
            if (camera) {
                timeline->SetCamera(new CameraGL);
            }
            if (mask) {
                timeline->AddMask(new Mask);
            }
            timeline->Render(device);
            const std::string inner = mask ? "PushMasks 1; child; PopMasks 1; " : "child; ";
            EXPECT_EQ(device.log,
                      camera ? "PushCamera; PushCameraDepth 1; SetCameraDepth 1; " + inner +
                                   "PopCameraDepth 1; PopCamera; "
                             : "PushCameraDepth 0; SetCameraDepth 0; " + inner + "PopCameraDepth 0; ");
        }
    }
}

}  // namespace
}  // namespace zorvan
