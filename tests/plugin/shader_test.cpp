// The texts of programs, their building from source and from binaries, and what is traced when that fails.
#include <filesystem>
#include <fstream>

#include "objects/text.h"
#include "tests/plugin/fixture.h"
#include "tests/temp_folder.h"

namespace zorvan {
namespace {

const std::string kBanner = "*** Shader Source ****************************************\n",
                  kEnd = std::string(58, '*') + '\n';

List<unsigned int> ListOf(std::vector<unsigned int> const& modes) {
    List<unsigned int> list;
    std::for_each(modes.begin(), modes.end(), [&list](unsigned int mode) { list.Append(mode); });
    return list;
}

class ShaderTest : public RecordedTest {
  protected:
    // The texts of a program: "|" ends a line, "#" a string, and "@" stands between the vertex and the
    // fragment shader. Tabs may stand before the ends of lines.
    static std::string Sources(uint32_t program) {
        const std::string texts =
            recording_gl::SourceOf(99 + 2 * program) + '@' + recording_gl::SourceOf(100 + 2 * program);
        return std::regex_replace(texts, std::regex("\t*\n"), "|");
    }
    const SolidVertexShaderSource vertex;
    const SolidFragmentShaderSource fragment{List<unsigned int>()};
};

// Solid and text programs gather the snippets of all modes, a sprite's takes the last one's text. The blend
// state follows the sprite's own mode.
TEST_F(ShaderTest, TransferModes) {
    const std::string position = "attribute vec4 a_vPosition;|", texCoord = "attribute vec2 a_vTexCoord;|";
    const std::string transform =
        "void main()|{|    vec4 pos = u_mModelViewProj * a_vPosition;|    gl_Position = pos / pos.w;|";
    const std::string pass = "    v_vTexCoord = a_vTexCoord;|}|#@";
    const std::string color =
        "#ifdef GL_FRAGMENT_PRECISION_HIGH|   precision highp float;|#else|   precision mediump "
        "float;|#endif|uniform vec4 u_vColor;|";
    const std::string sampler = "uniform sampler2D u_sBaseTexture;|varying vec2 v_vTexCoord;|";
    const std::string sample = "gl_FragColor = texture2D(u_sBaseTexture, v_vTexCoord)";
    const std::map<Snippet, std::string> snippets = {
        {Snippet::None, "#"},
        {Snippet::Premultiply, "\tvOutColor.rgb *= vOutColor.a;|#"},
        {Snippet::SquareAlpha, "\tvOutColor.a *= vOutColor.a;|#"}};
    const std::map<Shading, std::string> factors = {
        {Shading::Tinted, "*u_vColor"}, {Shading::AlphaTinted, "*u_vColor.a"}, {Shading::Plain, ""}};
    std::vector<std::vector<uint32_t>> chains = {
        {}, {kNoTransferMode}, {5, 29}, {37, 6, 100, 23}, {23, kNoTransferMode}};
    for (uint32_t mode = 0; mode < 37; ++mode) {
        chains.push_back({mode});
    }
    const RefT<SpriteGL> sprite = MakeSprite(1, 1);
    const RefT<TextGL> text(new TextGL);
    uint32_t program = 1;
    for (std::vector<uint32_t> const& chain : chains) {
        SCOPED_TRACE(testing::PrintToString(chain));
        std::string gathered = "#";
        for (const uint32_t mode : chain) {
            gathered += mode < 37 ? snippets.at(ModeOf(mode).snippet) : "";
        }
        const List<unsigned int> modes = ListOf(chain);
        sprite->CreateSolidShader(++program, modes);
        EXPECT_EQ(Sources(program), position + "uniform mat4 u_mModelViewProj;||" + transform + "}|#@" +
                                        color + "|void main()|{|    " +
                                        (chain.empty() ? "gl_FragColor = u_vColor;|}|#"
                                                       : "vec4 vOutColor = u_vColor;|" + gathered +
                                                             "    gl_FragColor = vOutColor;|}|#"));
        text->CreateTextShader(++program, modes);
        EXPECT_EQ(
            Sources(program),
            position + texCoord + "varying vec2    v_vTexCoord;||uniform mat4    u_mModelViewProj;||" +
                transform + pass + color + sampler + "|void main()|{|    " +
                (chain.empty()
                     ? sample + "*u_vColor;|}|#"
                     : "vec4 l_vFontColor = texture2D(u_sBaseTexture, v_vTexCoord);|    l_vFontColor.a = "
                       "1.0;|    vec4 vInColor = l_vFontColor*u_vColor;|    vec4 vOutColor = gl_FragColor;|" +
                           gathered +
                           "    gl_FragColor = gl_FragColor*(1.0-u_vColor.a)+vOutColor*u_vColor.a;|}|#"));
        sprite->CreateSpriteShader(++program, modes);
        const Mode last = chain.empty() ? Mode{} : ModeOf(chain.back());
        EXPECT_EQ(Sources(program), position + texCoord +
                                        "uniform mat4    u_mModelViewProj;|varying vec2    v_vTexCoord;|" +
                                        transform + pass + color + sampler + "void main()|{|\t" + sample +
                                        factors.at(last.shading) + ";|}|#");
        sprite->transferMode.Set(chain.empty() ? kNoTransferMode : chain.back());
        const std::string blend =
            recording_gl::Format(last.source) + ", " + recording_gl::Format(last.destination);
        EXPECT_NE(Draw(*sprite).find(Calls("; BlendEquation(FUNC_ADD); BlendFunc($); ", blend)),
                  std::string::npos);
    }
}

TEST_F(ShaderTest, SourcesAreTracedAndSaved) {
    SolidFragmentShaderSource source(ListOf({29}));
    source.Trace();
    EXPECT_EQ(traces.Take(), (Lines{kBanner, source[0], source[1], source[2], kEnd}));
    const TempFolder folder;
    const std::filesystem::path path = folder.Path() / "source";
    ASSERT_TRUE(source.Save(MStringT<wchar_t>(path.wstring())));
    std::ifstream file(path, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}),
              std::string(source[0]) + source[1] + source[2]);
    EXPECT_FALSE(source.Save(MStringT<wchar_t>(L"/no/such/folder/source")));
    EXPECT_FALSE(source.Save(MStringT<wchar_t>(L"/dev/full")));
}

TEST_F(ShaderTest, CompileBuildsAndLooksUpLocations) {
    RefT<ShaderGL> shader(ShaderGL::Create(vertex, fragment));
    EXPECT_EQ(TakeLog(), Built(2));
    EXPECT_EQ((std::array{shader->positionAttribute, shader->texCoordAttribute, shader->baseTextureUniform,
                          shader->modelViewProjUniform, shader->colorUniform}),
              (std::array{0, -1, -1, 3, 4}));
    EXPECT_TRUE(shader->Use());
    EXPECT_EQ(shader->GetGLShader(), 2u);
    shader->ReleaseGLShader();
    shader->ReleaseGLShader();
    EXPECT_EQ(TakeLog(), Calls("UseProgram(2); DeleteProgram(2)"));
    ASSERT_TRUE(shader->Compile(vertex, fragment));
    TakeLog();
    shader = {};
    EXPECT_EQ(TakeLog(), "DeleteProgram(3)");
    // What GL does not make is not traced.
    script.refuseObjects = true;
    ShaderGL refused;
    EXPECT_EQ(refused.CompileGLShader(GL_VERTEX_SHADER, vertex), 0u);
    EXPECT_FALSE(refused.CreateGLShader());
    EXPECT_EQ(TakeLog(), Calls("CreateShader(VERTEX_SHADER); CreateProgram()"));
    EXPECT_TRUE(traces.Take().empty());
}

// A shader that does not compile is traced with its log and its source; the link is tried all the same, with
// 0 in the shader's place.
TEST_F(ShaderTest, CompileFailures) {
    using Error = std::optional<std::string>;
    using Case = std::tuple<Error, Error, std::string>;
    const std::string tooLong(2000, 'x');
    for (auto const& [vertexError, fragmentError, linkError] :
         {Case{"bad vertex", {}, "%s is no %% %n"}, {{}, "100%", "other"}, {"a", tooLong, "c"}}) {
        recording_gl::Reset();
        script.vertexError = vertexError;
        script.fragmentError = fragmentError;
        script.linkError = linkError;
        EXPECT_EQ(ShaderGL::Create(vertex, fragment), nullptr);
        std::string calls = Replaced(Built(1), Calls(kLookUp, "1"),
                                     Calls("GetProgramInfoLog(1, 1024, *, *); DeleteProgram(1)"));
        Lines texts;
        const auto expect = [&](Error const& error, std::string const& shader, std::string const& message,
                                char const* source) {
            if (error) {
                calls = Replaced(Replaced(calls, "AttachShader(1, " + shader, "AttachShader(1, 0"),
                                 "DeleteShader(" + shader, "DeleteShader(0");
                const std::string status = Calls("GetShaderiv($, COMPILE_STATUS, *); ", shader);
                calls =
                    Replaced(calls, status,
                             status + Calls("GetShaderInfoLog($, 1024, *, *); DeleteShader($); ", shader));
                texts.insert(texts.end(), {"Shader compile error [" + error->substr(0, 1023) + "]", message,
                                           kBanner, source, kEnd});
            }
        };
        expect(vertexError, "101", "hVertexShader = CompileGLShader(GL_VERTEX_SHADER, shaderVertex)\n",
               vertex[0]);
        expect(fragmentError, "102",
               "hFragmentShader = CompileGLShader(GL_FRAGMENT_SHADER, shaderFragment)\n", fragment[0]);
        texts.push_back(linkError);
        EXPECT_EQ(TakeLog(), calls);
        EXPECT_EQ(traces.Take(), texts);
    }
}

// A program from a binary is built on first use. The process's first build fetches the entry point, later
// ones never do. After a GL error the handle stays: the use that failed says so, the next one takes it for a
// program.
TEST_F(ShaderTest, Binaries) {
    const std::string upload = "CreateProgram(); ProgramBinaryOES($, 0x8740, 5@1, 5); GetError()";
    const std::string status = upload + "; GetProgramiv($, LINK_STATUS, *); ";
    const std::string built = status + kLookUp + "; UseProgram($)";
    const std::string failed = status + "GetProgramInfoLog($, 1024, *, *); DeleteProgram($)";
    const std::optional<std::string> none, log = "no such format";
    // What two uses in a row call.
    using Case = std::tuple<std::optional<std::string>, std::deque<uint32_t>, std::string, std::string>;
    for (auto const& [linkError, errors, first, second] :
         {Case{none, {}, Calls(built, "1"), "UseProgram(1)"},
          {log, {}, Calls(failed, "1"), Calls(failed, "2")},
          {none, {GL_INVALID_ENUM}, Calls(upload, "1"), "UseProgram(1)"}}) {
        recording_gl::Reset();
        script.linkError = linkError;
        script.errors["ProgramBinaryOES"] = errors;
        EmptyReader reader;
        reader.numbers["identifier"] = 0x1234;
        reader.blobs["binary"] = {1, 2, 3, 4, 5};
        ShaderGL shader;
        EXPECT_TRUE(shader.Load(reader));
        EXPECT_EQ(shader.identifier.Get(), 0x1234u);
        EXPECT_EQ(TakeLog(), "");
        for (std::string const& expected : {first, second}) {
            EXPECT_EQ(shader.Use(), expected.find("UseProgram") != std::string::npos);
            EXPECT_EQ(shader.program, linkError ? 0u : 1u);
            EXPECT_EQ(Replaced(TakeLog(), "eglGetProcAddress(\"glProgramBinaryOES\")\n", ""), expected);
        }
        EXPECT_EQ(traces.Take(), linkError ? Lines(2, *linkError) : Lines());
        // Released with a lost context, the program is built again from the binary.
        shader.ReleaseGLShader();
        if (!linkError) {
            EXPECT_TRUE(shader.Use());
            EXPECT_EQ(shader.texCoordAttribute, 1);
            EXPECT_EQ(TakeLog(), Calls("DeleteProgram(1); ") + Calls(built, "2"));
        }
    }
    EXPECT_EQ(recording_gl::addressLookups, 1);
}

}  // namespace
}  // namespace zorvan
