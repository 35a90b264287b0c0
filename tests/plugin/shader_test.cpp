// Programs from source and from binaries, and what is traced when they fail.
#include <GLES2/gl2.h>

#include "tests/plugin/fixture.h"

namespace zorvan {
namespace {

using recording_gl::script;

class ShaderTest : public RecordedTest {
  protected:
    const SolidVertexShaderSource vertex;
    const SolidFragmentShaderSource fragment{List<unsigned int>()};
    Traces traces;

    // What a shader object that does not compile calls in place of its last query.
    static void FailShader(Lines& lines, int shader, bool vertexShader) {
        const std::string s = std::to_string(shader);
        const auto at = lines.begin() + (vertexShader ? 4 : lines[4] == "glCreateProgram()" ? 4 : 8);
        lines.insert(at, {"glGetShaderInfoLog(" + s + ", 1024, *, *)", "glDeleteShader(" + s + ")"});
    }
    static void ReplaceAll(Lines& lines, std::string const& from, std::string const& to) {
        for (std::string& line : lines) {
            line = line == from ? to : line;
        }
    }
    // The calls of a failed link in place of the look-up of the five locations.
    static void FailLink(Lines& lines, int program) {
        const std::string p = std::to_string(program);
        lines.resize(lines.size() - 5);
        AppendLines(lines, {"glGetProgramInfoLog(" + p + ", 1024, *, *)", "glDeleteProgram(" + p + ")"});
    }
    static Lines SourceTrace(ShaderSource const& source) {
        return {"*** Shader Source ****************************************\n", source[0],
                std::string(58, '*') + '\n'};
    }
};

TEST_F(ShaderTest, CompileBuildsAndLooksUpLocations) {
    ShaderGL shader;
    EXPECT_EQ(shader.program, 0u);
    ASSERT_TRUE(shader.Compile(vertex, fragment));
    std::vector<recording_gl::Call> const calls = recording_gl::TakeCalls();
    Lines lines;
    for (recording_gl::Call const& call : calls) {
        lines.push_back(call.text);
    }
    EXPECT_EQ(lines, BuildLines(kNextProgram, kNextShader));
    EXPECT_EQ(calls[1].strings, Lines{vertex[0]});
    EXPECT_EQ(calls[5].strings, Lines{fragment[0]});
    EXPECT_EQ(shader.program, 2u);
    EXPECT_EQ(shader.positionAttribute, 0);
    EXPECT_EQ(shader.texCoordAttribute, -1);
    EXPECT_EQ(shader.baseTextureUniform, -1);
    EXPECT_EQ(shader.modelViewProjUniform, 3);
    EXPECT_EQ(shader.colorUniform, 4);

    EXPECT_TRUE(shader.Use());
    EXPECT_EQ(shader.GetGLShader(), 2u);
    shader.ReleaseGLShader();
    EXPECT_EQ(shader.program, 0u);
    shader.ReleaseGLShader();
    EXPECT_EQ(Taken(), (Lines{"glUseProgram(2)", "glDeleteProgram(2)"}));
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
    recording_gl::TakeCalls();
    shader = {};
    EXPECT_EQ(Taken(), Lines{"glDeleteProgram(2)"});
}

// A shader that does not compile is traced with its log and its source; the link is tried all the same.
TEST_F(ShaderTest, CompileFailures) {
    struct Case {
        std::optional<std::string> vertexError, fragmentError;
        std::string linkLog;
    };
    const std::string longLog(2000, 'x');
    const Case cases[] = {{"bad vertex", {}, "%s is no %% %n"}, {{}, "100%", "other"}, {"a", longLog, "c"}};
    for (Case const& c : cases) {
        recording_gl::Reset();
        script.vertexError = c.vertexError;
        script.fragmentError = c.fragmentError;
        script.linkError = c.linkLog;
        EXPECT_EQ(ShaderGL::Create(vertex, fragment), nullptr);

        Lines lines = BuildLines(1, 101);
        Lines texts;
        if (c.fragmentError) {
            FailShader(lines, 102, false);
            ReplaceAll(lines, "glAttachShader(1, 102)", "glAttachShader(1, 0)");
        }
        if (c.vertexError) {
            FailShader(lines, 101, true);
            ReplaceAll(lines, "glAttachShader(1, 101)", "glAttachShader(1, 0)");
            texts = {"Shader compile error [" + *c.vertexError + "]",
                     "hVertexShader = CompileGLShader(GL_VERTEX_SHADER, shaderVertex)\n"};
            AppendLines(texts, SourceTrace(vertex));
        }
        if (c.fragmentError) {
            AppendLines(texts, {"Shader compile error [" + c.fragmentError->substr(0, 1023) + "]",
                                "hFragmentShader = CompileGLShader(GL_FRAGMENT_SHADER, shaderFragment)\n"});
            AppendLines(texts, SourceTrace(fragment));
        }
        FailLink(lines, 1);
        // The deletions after the link name what compiled, and 0 for what did not.
        const auto link = std::find(lines.begin(), lines.end(), "glLinkProgram(1)");
        ASSERT_NE(link, lines.end());
        link[1] = c.vertexError ? "glDeleteShader(0)" : "glDeleteShader(101)";
        link[2] = c.fragmentError ? "glDeleteShader(0)" : "glDeleteShader(102)";
        texts.push_back(c.linkLog);
        EXPECT_EQ(Taken(), lines);
        EXPECT_EQ(traces.Take(), texts);
    }
}

TEST_F(ShaderTest, RefusedObjectsAreNotTraced) {
    script.refuseShaders = true;
    ShaderGL shader;
    EXPECT_EQ(shader.CompileGLShader(GL_VERTEX_SHADER, vertex), 0u);
    EXPECT_EQ(Taken(), Lines{"glCreateShader(GL_VERTEX_SHADER)"});
    script.refusePrograms = true;
    EXPECT_FALSE(shader.CreateGLShader());
    EXPECT_EQ(Taken(), Lines{"glCreateProgram()"});
    EXPECT_TRUE(traces.Take().empty());
}

class BinaryTest : public ShaderTest {
  protected:
    BinaryTest() {
        EmptyReader reader;
        reader.numbers["identifier"] = 0x1234;
        reader.blobs["binary"] = {1, 2, 3, 4, 5};
        EXPECT_TRUE(shader->Load(reader));
        EXPECT_EQ(shader->identifier.Get(), 0x1234u);
        EXPECT_TRUE(Taken().empty());
    }
    // A build of the process's first binary fetches the entry point; later ones never do.
    Lines TakenAfterFetch() {
        Lines lines = Taken();
        std::erase(lines, "eglGetProcAddress(\"glProgramBinaryOES\")");
        EXPECT_EQ(recording_gl::AddressLookups(), 1);
        return lines;
    }
    static Lines UploadLines(std::string const& p) {
        return {"glCreateProgram()", "glProgramBinaryOES(" + p + ", 0x8740, *, 5)", "glGetError()"};
    }

    RefT<ShaderGL> shader{new ShaderGL};
};

TEST_F(BinaryTest, BuildsOnFirstUse) {
    EXPECT_TRUE(shader->Use());
    EXPECT_EQ(recording_gl::AddressLookups(), 1);
    for (recording_gl::Call const& call : recording_gl::Calls()) {
        if (call.text.starts_with("glProgramBinaryOES")) {
            EXPECT_EQ(call.bytes, (std::vector<uint8_t>{1, 2, 3, 4, 5}));
        }
    }
    Lines expected = UploadLines("2");
    const Lines build = BuildLines(2, 103);
    expected.insert(expected.end(), build.end() - 6, build.end());
    expected.push_back("glUseProgram(2)");
    EXPECT_EQ(TakenAfterFetch(), expected);
    EXPECT_EQ(shader->texCoordAttribute, 1);

    // Released with a lost context, the program is built again from the binary, without another fetch.
    shader->ReleaseGLShader();
    EXPECT_TRUE(shader->Use());
    expected.insert(expected.begin(), "glDeleteProgram(2)");
    for (std::string& line : expected) {
        if (const size_t at = line.find("(2"); at != std::string::npos && line != "glDeleteProgram(2)") {
            line[at + 1] = '3';
        }
    }
    EXPECT_EQ(Taken(), expected);
}

TEST_F(BinaryTest, LinkFailureIsTriedAgain) {
    script.linkError = "no such format";
    for (const std::string p : {"2", "3"}) {
        EXPECT_FALSE(shader->Use());
        Lines expected = UploadLines(p);
        AppendLines(expected, {"glGetProgramiv(" + p + ", GL_LINK_STATUS, *)",
                               "glGetProgramInfoLog(" + p + ", 1024, *, *)", "glDeleteProgram(" + p + ")"});
        EXPECT_EQ(TakenAfterFetch(), expected);
        EXPECT_EQ(shader->program, 0u);
        EXPECT_EQ(traces.Take(), Lines{"no such format"});
    }
}

// After a GL error the handle stays: the call that failed says so, the next one takes it for a program.
TEST_F(BinaryTest, GLErrorKeepsTheHandle) {
    script.errors["glProgramBinaryOES"] = {GL_INVALID_ENUM};
    EXPECT_FALSE(shader->Use());
    EXPECT_EQ(TakenAfterFetch(), UploadLines("2"));
    EXPECT_EQ(shader->program, 2u);
    EXPECT_EQ(shader->GetGLShader(), 2u);
    EXPECT_TRUE(shader->Use());
    EXPECT_EQ(Taken(), Lines{"glUseProgram(2)"});
    EXPECT_TRUE(traces.Take().empty());
}

}  // namespace
}  // namespace zorvan
