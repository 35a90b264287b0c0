// Texts with their fonts, and timelines.
#include "objects/text.h"

#include "objects/font.h"
#include "objects/timeline.h"
#include "tests/plugin/fixture.h"

namespace zorvan {
namespace {

using recording_gl::Call;

// Logs how the text calls the font; draws all the same.
class LoggingFont : public FontGL {
  public:
    void DrawString(GraphicsDevice& device, MStringT<wchar_t> const& text, ColorT<RealFixed> const& color,
                    int letterSpacing, int lineSpacing) override {
        log.push_back("free " + std::to_string(letterSpacing) + ' ' + std::to_string(lineSpacing));
        colors.push_back(color);
        FontGL::DrawString(device, text, color, letterSpacing, lineSpacing);
    }
    void DrawString(GraphicsDevice& device, MStringT<wchar_t> const& text, ColorT<RealFixed> const& color,
                    SizeT<RealFixed> const& box, int alignment, int letterSpacing, int lineSpacing) override {
        log.push_back("boxed " + std::to_string(box.width.raw >> 16) + ' ' + std::to_string(alignment) + ' ' +
                      std::to_string(letterSpacing) + ' ' + std::to_string(lineSpacing));
        colors.push_back(color);
        FontGL::DrawString(device, text, color, box, alignment, letterSpacing, lineSpacing);
    }
    Lines log;
    std::vector<ColorT<RealFixed>> colors;
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
    void Update() { text->Update(*device, RealFixed{}); }

    RefT<LoggingFont> font{new LoggingFont};
    RefT<TextGL> text{new TextGL};
};

TEST_F(TextTest, TwoPassesPerGlyph) {
    text->Render(*device);
    EXPECT_TRUE(Taken().empty());
    Update();
    EXPECT_EQ(Taken(), BuildLines(kNextProgram, kNextShader));
    EXPECT_EQ(text->GetGLShader()->identifier.Get(), 0x798081F5u);
    static_cast<TextureGL*>(MakeTexture(0, 1, 1).Get())->GetGLTexture();  // takes name 201
    Taken();
    text->Render(*device);
    std::vector<Call> calls = recording_gl::TakeCalls();
    Lines lines;
    std::vector<std::map<uint32_t, std::vector<int32_t>>> draws;
    for (Call const& call : calls) {
        lines.push_back(call.text);
        if (!call.arrays.empty()) {
            draws.push_back(call.arrays);
        }
    }
    ASSERT_GT(lines.size(), 11u);
    const auto upload = std::find(lines.begin(), lines.end(), "glGenTextures(1, *)");
    ASSERT_NE(upload, lines.end());
    lines.erase(upload, std::find(upload, lines.end(), "glGetError()") + 1);
    EXPECT_EQ(lines, (Lines{"glUseProgram(2)", "glUniformMatrix4fv(3, 1, 0, *)",
                            "glVertexAttribPointer(0, 3, GL_FIXED, 0, 0, *)", "glEnableVertexAttribArray(0)",
                            "glBindTexture(GL_TEXTURE_2D, 202)",
                            "glVertexAttribPointer(1, 2, GL_FIXED, 0, 0, *)", "glEnableVertexAttribArray(1)",
                            "glUniform4f(4, 0.5, 0.25, 1, 1)", "glBlendFunc(GL_ZERO, GL_ONE_MINUS_SRC_COLOR)",
                            "glDrawArrays(GL_TRIANGLE_STRIP, 0, 4)", "glUniform4f(4, 0.5, 0.25, 1, 0.75)",
                            "glBlendFunc(GL_SRC_ALPHA, GL_ONE)", "glDrawArrays(GL_TRIANGLE_STRIP, 0, 4)",
                            "glDisableVertexAttribArray(1)", "glDisableVertexAttribArray(0)"}));
    constexpr int32_t kW = 5 << 16;
    constexpr int32_t kH = 7 << 16;
    const std::map<uint32_t, std::vector<int32_t>> arrays = {{0, {0, 0, 0, 0, kH, 0, kW, 0, 0, kW, kH, 0}},
                                                             {1, {10, 40, 10, 20, 30, 40, 30, 20}}};
    EXPECT_EQ(draws, (std::vector{arrays, arrays}));
    EXPECT_TRUE(device->shaders.IsEmpty());
}

TEST_F(TextTest, FontGetsColourAndLayout) {
    text->letterSpacing.Set(2);
    text->lineSpacing.Set(3);
    text->alignment.Set(4);
    text->box.Set({Real(50), Real(60)});
    struct Case {
        int32_t alpha, opacity, product;
    };
    // The larger of alpha and opacity (opacity when equal) loses its lowest bit.
    constexpr Case kCases[] = {{0x10000, 0x10000, 0x10000}, {0x10000, 0x8000, 0x8000},
                               {0x10001, 0x10000, 0x10000}, {0x10000, 0x10001, 0x10000},
                               {0xFFFF, 0x10000, 0xFFFF},   {0xFFFF, 0xFFFF, 0xFFFD}};
    Update();
    for (Case const& c : kCases) {
        ColorT<RealFixed> color = text->color.Get();
        color.alpha = RealFixed{c.alpha};
        text->color.Set(color);
        text->opacity.Set(RealFixed{c.opacity});
        text->hasBox.Set(c.opacity == 0x8000);
        Update();
        text->Render(*device);
        color.alpha = RealFixed{c.product};
        EXPECT_EQ(font->colors.back(), color) << c.alpha << ' ' << c.opacity;
        EXPECT_EQ(font->log.back() == "boxed 50 4 2 3", text->hasBox.Get()) << font->log.back();
        EXPECT_TRUE(text->hasBox.Get() || font->log.back() == "free 2 3") << font->log.back();
    }
}

TEST_F(TextTest, ProgramsAreSharedByModes) {
    RefT<TextGL> other(new TextGL);
    Update();
    other->Update(*device, RealFixed{});
    EXPECT_EQ(other->GetGLShader(), text->GetGLShader());
    Taken();
    text->transferMode.Set(29);
    Update();
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
    recording_gl::script.linkError = "never";
    text->Render(*device);
    EXPECT_TRUE(font->log.empty());
    // A font drawn outside a text has no program.
    Taken();
    recording_gl::script.linkError.reset();
    font->RenderGlyph(*device, font->FindGlyph('a'), {}, {});
    EXPECT_TRUE(Taken().empty());
    text->SetGLShader(nullptr);
}

// Logs the device operations and the drawing between them.
class LoggingDevice : public GraphicsDeviceGL {
  public:
    void PushMasks(List<Mask*>&) override { log.emplace_back("PushMasks"); }
    void PopMasks(List<Mask*>&) override { log.emplace_back("PopMasks"); }
    void PushCamera(Camera*) override { log.emplace_back("PushCamera"); }
    void PopCamera() override { log.emplace_back("PopCamera"); }
    void PushCameraDepth(bool depth) override {
        log.push_back(depth ? "PushCameraDepth 1" : "PushCameraDepth 0");
    }
    void PopCameraDepth(bool depth) override {
        log.push_back(depth ? "PopCameraDepth 1" : "PopCameraDepth 0");
    }
    void SetCameraDepth(bool depth) override {
        log.push_back(depth ? "SetCameraDepth 1" : "SetCameraDepth 0");
    }
    Lines log;
};

class LoggingNode : public TransformNode {
  protected:
    void InternalRender(GraphicsDevice& device) override {
        static_cast<LoggingDevice&>(device).log.emplace_back("child");
    }
};

TEST(TimelineGL, BracketsItsSubtree) {
    for (const bool camera : {false, true}) {
        for (const bool mask : {false, true}) {
            LoggingDevice device;
            RefT<TimelineGL> timeline(new TimelineGL);
            RefT<LoggingNode> child(new LoggingNode);
            timeline->Attach(child.Get());
            timeline->depth.Set(camera);
            if (camera) {
                timeline->SetCamera(new CameraGL);
            }
            if (mask) {
                timeline->AddMask(new Mask);
            }
            timeline->Render(device);
            const std::string depth = camera ? " 1" : " 0";
            Lines expected = {"PushCameraDepth" + depth, "SetCameraDepth" + depth, "child",
                              "PopCameraDepth" + depth};
            if (mask) {
                expected.insert(expected.begin() + 2, "PushMasks");
                expected.insert(expected.begin() + 4, "PopMasks");
            }
            if (camera) {
                expected.insert(expected.begin(), "PushCamera");
                expected.emplace_back("PopCamera");
            }
            EXPECT_EQ(device.log, expected);
        }
    }
}

}  // namespace
}  // namespace zorvan
