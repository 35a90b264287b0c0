// The generated GLSL texts and the 37-row tables of transfer modes.
#include "shaders/shader_source.h"

#include <GLES2/gl2.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "shaders/transfer_modes.h"
#include "tests/plugin/traces.h"

namespace zorvan {
namespace {

using Strings = std::vector<std::string>;

// One text without the tabs that pad its lines.
std::string Unpadded(std::string const& text) {
    std::string result;
    for (const char c : text) {
        if (c == '\n') {
            result.erase(result.find_last_not_of('\t') + 1);
        }
        result += c;
    }
    return result;
}

Strings Texts(ShaderSource const& source) {
    Strings texts;
    for (uint32_t i = 0; i < source.Count(); ++i) {
        texts.push_back(Unpadded(source[i]));
    }
    return texts;
}

List<unsigned int> Modes(std::initializer_list<unsigned int> modes) {
    List<unsigned int> list;
    for (const unsigned int mode : modes) {
        list.Append(mode);
    }
    return list;
}

const std::string kVertexBody = R"(void main()
{
    vec4 pos = u_mModelViewProj * a_vPosition;
    gl_Position = pos / pos.w;
)";
const std::string kHeader = R"(#ifdef GL_FRAGMENT_PRECISION_HIGH
   precision highp float;
#else
   precision mediump float;
#endif
uniform vec4 u_vColor;
)";
const std::string kSolidHeader = kHeader + "\nvoid main()\n{\n";
const std::string kSampler = "uniform sampler2D u_sBaseTexture;\nvarying vec2 v_vTexCoord;\n";
const std::string kTextHeader = kHeader + kSampler + "\nvoid main()\n{\n";
const std::string kTextHead = kTextHeader + R"(    vec4 l_vFontColor = texture2D(u_sBaseTexture, v_vTexCoord);
    l_vFontColor.a = 1.0;
    vec4 vInColor = l_vFontColor*u_vColor;
    vec4 vOutColor = gl_FragColor;
)";
const std::string kTextTail = "    gl_FragColor = gl_FragColor*(1.0-u_vColor.a)+vOutColor*u_vColor.a;\n}\n";
const std::string kPremultiply = "\tvOutColor.rgb *= vOutColor.a;\n";
const std::string kSquareAlpha = "\tvOutColor.a *= vOutColor.a;\n";

std::string SpriteFragment(std::string const& factor) {
    return kHeader + kSampler + "void main()\n{\n\tgl_FragColor = texture2D(u_sBaseTexture, v_vTexCoord)" +
           factor + ";\n}\n";
}

TEST(ShaderSource, VertexTexts) {
    EXPECT_EQ(Texts(SpriteVertexShaderSource()), Strings{R"(attribute vec4 a_vPosition;
attribute vec2 a_vTexCoord;
uniform mat4    u_mModelViewProj;
varying vec2    v_vTexCoord;
)" + kVertexBody + "    v_vTexCoord = a_vTexCoord;\n}\n"});
    EXPECT_EQ(Texts(TextVertexShaderSource()), Strings{R"(attribute vec4 a_vPosition;
attribute vec2 a_vTexCoord;
varying vec2    v_vTexCoord;

uniform mat4    u_mModelViewProj;

)" + kVertexBody + "    v_vTexCoord = a_vTexCoord;\n}\n"});
    EXPECT_EQ(
        Texts(SolidVertexShaderSource()),
        Strings{"attribute vec4 a_vPosition;\nuniform mat4 u_mModelViewProj;\n\n" + kVertexBody + "}\n"});
}

// Solid and text programs gather the snippets of all modes; a sprite's looks at the last one alone.
TEST(ShaderSource, FragmentTextsFollowTheModes) {
    struct Case {
        std::initializer_list<unsigned int> modes;
        Strings snippets;
        std::string sprite;
    };
    const Case cases[] = {
        {{0xFFFFFFFFu}, {}, "*u_vColor"},
        {{4}, {""}, "*u_vColor"},
        {{5, 29}, {kPremultiply, kSquareAlpha}, "*u_vColor.a"},
        {{37, 6, 100, 23}, {kPremultiply, ""}, ""},
        {{23, 0xFFFFFFFFu}, {""}, "*u_vColor"},
    };
    for (Case const& c : cases) {
        const auto between = [&c](std::string const& head, std::string const& tail) {
            Strings texts = c.snippets;
            texts.insert(texts.begin(), head);
            texts.push_back(tail);
            return texts;
        };
        const List<unsigned int> modes = Modes(c.modes);
        SCOPED_TRACE(testing::PrintToString(std::vector<unsigned int>(c.modes)));
        EXPECT_EQ(
            Texts(SolidFragmentShaderSource(modes)),
            between(kSolidHeader + "    vec4 vOutColor = u_vColor;\n", "    gl_FragColor = vOutColor;\n}\n"));
        EXPECT_EQ(Texts(TextFragmentShaderSource(modes)), between(kTextHead, kTextTail));
        EXPECT_EQ(Texts(SpriteFragmentShaderSource(modes)), Strings{SpriteFragment(c.sprite)});
    }
    EXPECT_EQ(Texts(SolidFragmentShaderSource({})),
              Strings{kSolidHeader + "    gl_FragColor = u_vColor;\n}\n"});
    EXPECT_EQ(
        Texts(TextFragmentShaderSource({})),
        Strings{kTextHeader + "    gl_FragColor = texture2D(u_sBaseTexture, v_vTexCoord)*u_vColor;\n}\n"});
    EXPECT_EQ(Texts(SpriteFragmentShaderSource({})), Strings{SpriteFragment("*u_vColor")});
}

TEST(TransferModes, EveryRow) {
    struct Row {
        GLenum source = GL_SRC_ALPHA, destination = GL_ONE_MINUS_SRC_ALPHA;
        std::string snippet, sprite = "*u_vColor";
    };
    const std::map<unsigned int, Row> exceptions = {
        {4, {GL_SRC_ALPHA, GL_ONE, "", "*u_vColor"}},
        {5, {GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, kPremultiply, "*u_vColor.a"}},
        {6, {GL_ONE_MINUS_DST_COLOR, GL_ONE, kPremultiply, "*u_vColor.a"}},
        {23, {GL_DST_COLOR, GL_ONE_MINUS_SRC_ALPHA, "", ""}},
        {25, {GL_ONE_MINUS_DST_COLOR, GL_ONE_MINUS_SRC_COLOR, kPremultiply, "*u_vColor.a"}},
        {27, {GL_DST_COLOR, GL_ONE_MINUS_SRC_ALPHA, "", "*u_vColor"}},
        {29, {GL_SRC_ALPHA, GL_ONE, kSquareAlpha, "*u_vColor.a"}},
    };
    ASSERT_EQ(std::size(eTransferModeBlendFunc), 37u);
    ASSERT_EQ(std::size(eTransferModeBlendEquation), 37u);
    ASSERT_EQ(std::size(szTransferModeShaderSources), 37u);
    ASSERT_EQ(std::size(szSpriteTransferModeShaderSources), 37u);
    for (unsigned int mode = 0; mode < 37; ++mode) {
        const auto found = exceptions.find(mode);
        const Row row = found == exceptions.end() ? Row{} : found->second;
        SCOPED_TRACE(mode);
        EXPECT_EQ(eTransferModeBlendFunc[mode].source, row.source);
        EXPECT_EQ(eTransferModeBlendFunc[mode].destination, row.destination);
        EXPECT_EQ(eTransferModeBlendEquation[mode], static_cast<GLenum>(GL_FUNC_ADD));
        EXPECT_EQ(Unpadded(szTransferModeShaderSources[mode]), row.snippet);
        EXPECT_EQ(Unpadded(szSpriteTransferModeShaderSources[mode]), SpriteFragment(row.sprite));
    }
}

// The list grows to the next multiple of 8 above its count.
TEST(ShaderSource, GrowsByEights) {
    const SolidFragmentShaderSource source(Modes({5, 5, 5, 5, 5, 5, 5}));
    EXPECT_EQ(source.Count(), 9u);
    EXPECT_EQ(source.Capacity(), 16u);
    EXPECT_EQ(SolidVertexShaderSource().Capacity(), 8u);
}

TEST(ShaderSource, TracesItsFragmentsAndSavesThem) {
    SolidFragmentShaderSource source(Modes({29}));
    Traces traces;
    source.Trace();
    EXPECT_EQ(traces.Take(), (Strings{"*** Shader Source ****************************************\n",
                                      source[0], source[1], source[2], std::string(58, '*') + '\n'}));
    const auto path =
        std::filesystem::temp_directory_path() /
        ("shader_source_test_" + std::to_string(testing::UnitTest::GetInstance()->random_seed()));
    ASSERT_TRUE(source.Save(MStringT<wchar_t>(path.wstring())));
    std::ifstream file(path, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}),
              std::string(source[0]) + source[1] + source[2]);
    std::filesystem::remove(path);
    EXPECT_FALSE(source.Save(MStringT<wchar_t>(L"/no/such/folder/source")));
    if (std::filesystem::exists("/dev/full")) {
        EXPECT_FALSE(source.Save(MStringT<wchar_t>(L"/dev/full")));
    }
}

}  // namespace
}  // namespace zorvan
