// Programs from source and from binaries, and what is traced when they fail.
#include <GLES2/gl2.h>

#include "tests/plugin/fixture.h"

namespace zorvan {
namespace {

class ShaderTest : public RecordedTest {
  protected:
    const SolidVertexShaderSource vertex;
    const SolidFragmentShaderSource fragment{List<unsigned int>()};
    Traces traces;
};

TEST_F(ShaderTest, CompileBuildsAndLooksUpLocations) {
    ShaderGL shader;
    EXPECT_EQ(shader.program, 0u);
    ASSERT_TRUE(shader.Compile(vertex, fragment));
    std::vector<recording_gl::Call> const calls = recording_gl::TakeCalls();
    EXPECT_EQ(TextsOf(calls), kBuild);
    EXPECT_EQ(calls[1].strings, Lines{vertex[0]});
    EXPECT_EQ(calls[5].strings, Lines{fragment[0]});
    EXPECT_EQ((std::array{shader.positionAttribute, shader.texCoordAttribute, shader.baseTextureUniform,
                          shader.modelViewProjUniform, shader.colorUniform}),
              (std::array{0, -1, -1, 3, 4}));

    EXPECT_TRUE(shader.Use());
    EXPECT_EQ(shader.GetGLShader(), 2u);
    shader.ReleaseGLShader();
    EXPECT_EQ(shader.program, 0u);
    shader.ReleaseGLShader();
    EXPECT_EQ(Taken(), Calls("glUseProgram(2); glDeleteProgram(2)"));
    EXPECT_TRUE(traces.Take().empty());
}

TEST_F(ShaderTest, FragmentsStaySeparateStrings) {
    List<unsigned int> modes;
    modes.Append(5);
    modes.Append(4);
    const SolidFragmentShaderSource several(modes);
    RefT<ShaderGL> shader(ShaderGL::Create(vertex, several));
    ASSERT_TRUE(shader);
    EXPECT_EQ(shader->references, 1);
    EXPECT_EQ(recording_gl::Calls()[5].text, "glShaderSource(104, 4, *, null)");
    EXPECT_EQ(recording_gl::Calls()[5].strings, (Lines{several[0], several[1], "", several[3]}));
    Taken();
    shader = {};
    EXPECT_EQ(Taken(), "glDeleteProgram(2)");
}

// A shader that does not compile is traced with its log and its source; the link is tried all the same, with
// 0 in the shader's place.
TEST_F(ShaderTest, CompileFailures) {
    const std::string longLog(2000, 'x');
    struct Case {
        std::optional<std::string> vertexError, fragmentError;
        std::string linkLog;
    };
    const Case cases[] = {{"bad vertex", {}, "%s is no %% %n"}, {{}, "100%", "other"}, {"a", longLog, "c"}};
    for (Case const& c : cases) {
        recording_gl::Reset();
        script.vertexError = c.vertexError;
        script.fragmentError = c.fragmentError;
        script.linkError = c.linkLog;
        EXPECT_EQ(ShaderGL::Create(vertex, fragment), nullptr);

        std::string calls;
        std::string attached;
        std::string deleted;
        Lines texts;
        for (const bool isVertex : {true, false}) {
            const std::string shader = isVertex ? "101" : "102";
            std::optional<std::string> const& error = isVertex ? c.vertexError : c.fragmentError;
            calls += Replaced(
                "glCreateShader($t); glShaderSource($s, 1, *, null); glCompileShader($s); "
                "glGetShaderiv($s, GL_COMPILE_STATUS, *); ",
                "$s", shader);
            calls = Replaced(calls, "$t", isVertex ? "GL_VERTEX_SHADER" : "GL_FRAGMENT_SHADER");
            attached += "glAttachShader(1, " + (error ? "0" : shader) + "); ";
            deleted += "glDeleteShader(" + (error ? "0" : shader) + "); ";
            if (error) {
                calls += "glGetShaderInfoLog(" + shader + ", 1024, *, *); glDeleteShader(" + shader + "); ";
                texts.insert(
                    texts.end(),
                    {"Shader compile error [" + error->substr(0, 1023) + "]",
                     isVertex ? "hVertexShader = CompileGLShader(GL_VERTEX_SHADER, shaderVertex)\n"
                              : "hFragmentShader = CompileGLShader(GL_FRAGMENT_SHADER, shaderFragment)\n",
                     "*** Shader Source ****************************************\n",
                     isVertex ? vertex[0] : fragment[0], std::string(58, '*') + '\n'});
            }
        }
        texts.push_back(c.linkLog);
        EXPECT_EQ(Taken(), Calls(calls + "glCreateProgram(); " + attached + "glLinkProgram(1); " + deleted +
                                 "glGetProgramiv(1, GL_LINK_STATUS, *); "
                                 "glGetProgramInfoLog(1, 1024, *, *); glDeleteProgram(1)"));
        EXPECT_EQ(traces.Take(), texts);
    }
}

TEST_F(ShaderTest, RefusedObjectsAreNotTraced) {
    script.refuseShaders = true;
    ShaderGL shader;
    EXPECT_EQ(shader.CompileGLShader(GL_VERTEX_SHADER, vertex), 0u);
    script.refusePrograms = true;
    EXPECT_FALSE(shader.CreateGLShader());
    EXPECT_EQ(Taken(), Calls("glCreateShader(GL_VERTEX_SHADER); glCreateProgram()"));
    EXPECT_TRUE(traces.Take().empty());
}

// A program from a binary is built on first use. The process's first build fetches the entry point, later
// ones never do.
TEST_F(ShaderTest, Binaries) {
    const std::string upload = "glCreateProgram(); glProgramBinaryOES($p, 0x8740, *, 5); glGetError()";
    const std::string status = upload + "; glGetProgramiv($p, GL_LINK_STATUS, *); ";
    const std::string built = status + kLookUp + "; glUseProgram($p)";
    const std::string failed = status + "glGetProgramInfoLog($p, 1024, *, *); glDeleteProgram($p)";
    // How two uses in a row go. After a GL error the handle stays: the call that failed says so, the next one
    // takes it for a program.
    struct Case {
        std::optional<std::string> linkError;
        std::deque<uint32_t> errors;
        std::array<bool, 2> used;
        std::array<GLuint, 2> program;
        std::array<std::string, 2> calls;
        Lines traced;
    };
    const Case cases[] = {
        {{}, {}, {true, true}, {2, 2}, {built, "glUseProgram(2)"}, {}},
        {"no such format",
         {},
         {false, false},
         {0, 0},
         {failed, Replaced(failed, "$p", "3")},
         {"no such format"}},
        {{}, {GL_INVALID_ENUM}, {false, true}, {2, 2}, {upload, "glUseProgram(2)"}, {}},
    };
    for (Case const& c : cases) {
        recording_gl::Reset();
        glCreateProgram();
        script.linkError = c.linkError;
        script.errors["glProgramBinaryOES"] = c.errors;
        EmptyReader reader;
        reader.numbers["identifier"] = 0x1234;
        reader.blobs["binary"] = {1, 2, 3, 4, 5};
        ShaderGL shader;
        EXPECT_TRUE(shader.Load(reader));
        EXPECT_EQ(shader.identifier.Get(), 0x1234u);
        EXPECT_EQ(Taken(), "glCreateProgram()");
        for (size_t i = 0; i < 2; ++i) {
            EXPECT_EQ(shader.Use(), c.used[i]);
            EXPECT_EQ(shader.program, c.program[i]);
            for (recording_gl::Call const& call : recording_gl::Calls()) {
                EXPECT_TRUE(!call.text.starts_with("glProgramBinaryOES") ||
                            call.bytes == reader.blobs["binary"]);
            }
            EXPECT_EQ(Replaced(Taken(), "eglGetProcAddress(\"glProgramBinaryOES\")\n", ""),
                      Calls(Replaced(c.calls[i], "$p", "2")));
            EXPECT_EQ(traces.Take(), c.traced);
        }
        EXPECT_EQ(recording_gl::AddressLookups(), 1);
        // Released with a lost context, the program is built again from the binary.
        if (c.linkError == std::nullopt) {
            shader.ReleaseGLShader();
            EXPECT_TRUE(shader.Use());
            EXPECT_EQ(shader.texCoordAttribute, 1);
            EXPECT_EQ(Taken(), Calls("glDeleteProgram(2); " + Replaced(built, "$p", "3")));
        }
    }
}

}  // namespace
}  // namespace zorvan
