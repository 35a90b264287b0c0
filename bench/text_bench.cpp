// A page of 5,000 glyphs, drawn by a text node (update and render) and by a bare loop that issues the same
// GL calls from precomputed arrays. The two take turns frame by frame; medians are compared.
#include <GLES2/gl2.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "bench/allocation_count.h"
#include "bench/gl_context.h"
#include "core/class_registry.h"
#include "graphics/device.h"
#include "graphics/plugin.h"
#include "objects/font.h"
#include "objects/text.h"
#include "objects/texture.h"
#include "shaders/shader.h"

namespace zorvan::bench {
namespace {

constexpr int kSurface = 1024;
constexpr size_t kGlyphs = 5000;
constexpr int kFontSize = 12;
constexpr char const* kFontFile = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

// What one glyph hands to GL.
struct Quad {
    Vector3T<RealFixed> corners[4];
    Vector2T<RealFixed> coordinates[4];
    GLuint page;
};

// Draws, or keeps what it would draw.
class CapturingFont final : public FontGL {
  public:
    void RenderGlyph(GraphicsDevice& device, Glyph const* glyph, Vector2T<RealFixed> const& at,
                     ColorT<RealFixed> const& color) override {
        const RealFixed right = at.x + RealFixed::FromInt(glyph->width);
        const RealFixed bottom = at.y + RealFixed::FromInt(glyph->height);
        auto& page = static_cast<TextureGL&>(Page(static_cast<uint32_t>(glyph->page)));
        quads.push_back({{{at.x, at.y, {}}, {at.x, bottom, {}}, {right, at.y, {}}, {right, bottom, {}}},
                         {{glyph->uLeft, glyph->vBottom},
                          {glyph->uLeft, glyph->vTop},
                          {glyph->uRight, glyph->vBottom},
                          {glyph->uRight, glyph->vTop}},
                         page.GetGLTexture()});
        FontGL::RenderGlyph(device, glyph, at, color);
    }
    std::vector<Quad> quads;
};

template <typename F>
RefT<F> OpenFont(ClassRegistry& registry) {
    RefT<F> font(new F);
    std::string error;
    if (!font->LoadFile(registry, kFontFile, kFontSize, error) || !font->Initialize()) {
        std::fprintf(stderr, "%s\n", error.c_str());
        std::exit(EXIT_FAILURE);
    }
    return font;
}

// Words of various lengths with kGlyphs letters in all.
MStringT<wchar_t> PageOfWords() {
    std::wstring text;
    uint32_t random = 1;
    size_t letters = 0;
    while (letters < kGlyphs) {
        random = random * 1664525u + 1013904223u;
        const size_t word = std::min<size_t>(random >> 29 | 2, kGlyphs - letters);
        for (size_t i = 0; i < word; ++i) {
            random = random * 1664525u + 1013904223u;
            text += static_cast<wchar_t>(L'a' + (random >> 16) % 26);
        }
        letters += word;
        text += L' ';
    }
    return MStringT<wchar_t>(text);
}

RefT<TextGL> MakeText(Font* font) {
    RefT<TextGL> text(new TextGL);
    text->font.Set(RefT<Font>(font));
    text->string.Set(PageOfWords());
    text->hasBox.Set(true);
    text->box.Set({RealFixed::FromInt(kSurface), RealFixed{}});
    return text;
}

void DrawText(GraphicsDeviceGL& device, TextGL& text) {
    text.Update(device, RealFixed{});
    text.Render(device);
}

void DrawBare(ShaderGL const& shader, GLfloat const* matrix, std::vector<Quad> const& quads) {
    const auto position = static_cast<GLuint>(shader.positionAttribute);
    const auto coordinate = static_cast<GLuint>(shader.texCoordAttribute);
    glUseProgram(shader.program);
    glUniformMatrix4fv(shader.modelViewProjUniform, 1, GL_FALSE, matrix);
    for (Quad const& quad : quads) {
        glVertexAttribPointer(position, 3, GL_FIXED, GL_FALSE, 0, quad.corners);
        glEnableVertexAttribArray(position);
        glBindTexture(GL_TEXTURE_2D, quad.page);
        glVertexAttribPointer(coordinate, 2, GL_FIXED, GL_FALSE, 0, quad.coordinates);
        glEnableVertexAttribArray(coordinate);
        glUniform4f(shader.colorUniform, 1.0f, 1.0f, 1.0f, 1.0f);
        glBlendFunc(GL_ZERO, GL_ONE_MINUS_SRC_COLOR);
        glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
        glUniform4f(shader.colorUniform, 1.0f, 1.0f, 1.0f, 1.0f);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE);
        glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
        glDisableVertexAttribArray(coordinate);
        glDisableVertexAttribArray(position);
    }
}

struct Measured {
    std::vector<double> seconds;
    uint64_t allocations = 0;

    template <typename Draw>
    void Frame(Draw&& draw) {
        const uint64_t before = AllocationCount();
        const auto start = std::chrono::steady_clock::now();
        draw();
        FinishDrawing();
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
        allocations = AllocationCount() - before;
        seconds.push_back(passed.count());
    }
    double Median() {
        std::sort(seconds.begin(), seconds.end());
        return seconds[seconds.size() / 2];
    }
};

void Print(char const* name, Measured& measured, size_t glyphs) {
    const double median = measured.Median();
    std::printf("%-10s %9.3f ms/frame %12.0f glyphs/s %8.1f ns/glyph %8llu allocations/frame\n", name,
                median * 1e3, static_cast<double>(glyphs) / median,
                median * 1e9 / static_cast<double>(glyphs),
                static_cast<unsigned long long>(measured.allocations));
}

int Run(int frames) {
    if (!MakeContextCurrent(kSurface, kSurface)) {
        return EXIT_FAILURE;
    }
    ClassRegistry registry;
    Initialize(&registry);
    GraphicsDeviceGL device;
    device.Initialize(nullptr, DeviceFormat::Rgba8888, {kSurface, kSurface});
    device.PushCamera2D(RealFixed::FromInt(kSurface + 1), RealFixed::FromInt(kSurface + 1));

    RefT<CapturingFont> capturing = OpenFont<CapturingFont>(registry);
    DrawText(device, *MakeText(capturing.Get()));
    const RefT<FontGL> font = OpenFont<FontGL>(registry);
    const RefT<TextGL> text = MakeText(font.Get());
    DrawText(device, *text);
    const Matrix4T<RealFixed> product =
        text->GetWorldMatrix() * device.GetViewMatrix() * device.GetProjectionMatrix();
    GLfloat matrix[16];
    std::transform(product.m, product.m + 16, matrix, [](RealFixed element) { return element.ToFloat(); });

    Measured engine, bare;
    for (int i = 0; i < frames; ++i) {
        engine.Frame([&] { DrawText(device, *text); });
        bare.Frame([&] { DrawBare(*text->GetGLShader(), matrix, capturing->quads); });
    }
    std::printf("%zu glyphs, %d frames\n", capturing->quads.size(), frames);
    Print("text node", engine, capturing->quads.size());
    Print("bare loop", bare, capturing->quads.size());
    const double extra = engine.Median() - bare.Median();
    std::printf("ratio %.3f, %.1f ns of our own per glyph\n", engine.Median() / bare.Median(),
                extra * 1e9 / static_cast<double>(capturing->quads.size()));
    return EXIT_SUCCESS;
}

}  // namespace
}  // namespace zorvan::bench

// Usage: text_gl_bench [FRAMES] or text_cpu_bench [FRAMES]
int main(int count, char** arguments) {
    return zorvan::bench::Run(count > 1 ? std::max(std::atoi(arguments[1]), 1) : 15);
}
