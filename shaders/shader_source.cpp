#include "shaders/shader_source.h"

#include <cstring>

#include "core/file_stream.h"
#include "core/trace.h"
#include "shaders/joined_text.h"
#include "shaders/transfer_modes.h"

namespace zorvan {
namespace {

constexpr char kSpriteVertex[] =
    "attribute vec4 a_vPosition;\n"
    "attribute vec2 a_vTexCoord;\n"
    "uniform mat4    u_mModelViewProj;\n"
    "varying vec2    v_vTexCoord;\n"
    "void main()\n"
    "{\n"
    "    vec4 pos = u_mModelViewProj * a_vPosition;\n"
    "    gl_Position = pos / pos.w;\n"
    "    v_vTexCoord = a_vTexCoord;\n"
    "}\n";

constexpr char kTextVertex[] =
    "attribute vec4 a_vPosition;\n"
    "attribute vec2 a_vTexCoord;\n"
    "varying vec2    v_vTexCoord;\n"
    "\n"
    "uniform mat4    u_mModelViewProj;\n"
    "\n"
    "void main()\n"
    "{\n"
    "    vec4 pos = u_mModelViewProj * a_vPosition;\n"
    "    gl_Position = pos / pos.w;\n"
    "    v_vTexCoord = a_vTexCoord;\n"
    "}\n";

constexpr char kSolidVertex[] =
    "attribute vec4 a_vPosition;\n"
    "uniform mat4 u_mModelViewProj;\n"
    "\n"
    "void main()\n"
    "{\n"
    "    vec4 pos = u_mModelViewProj * a_vPosition;\n"
    "    gl_Position = pos / pos.w;\n"
    "}\n";

// A fragment shader without transfer modes, or the parts around the snippets of the modes in force.
struct FragmentTexts {
    char const* complete;
    char const* head;
    char const* tail;
};

constexpr char kSolidStart[] =
    "uniform vec4 u_vColor;\n"
    "\n"
    "void main()\n"
    "{\n";
constexpr auto kSolidComplete = JoinText(kFragmentHeader, kSolidStart,
                                         "    gl_FragColor = u_vColor;\n"
                                         "}\n");
constexpr auto kSolidHead = JoinText(kFragmentHeader, kSolidStart, "    vec4 vOutColor = u_vColor;\n");
constexpr FragmentTexts kSolid = {kSolidComplete.data(), kSolidHead.data(),
                                  "    gl_FragColor = vOutColor;\n"
                                  "}\n"};

constexpr char kTextStart[] =
    "uniform vec4 u_vColor;\n"
    "uniform sampler2D u_sBaseTexture;\n"
    "varying vec2 v_vTexCoord;\n"
    "\n"
    "void main()\n"
    "{\n";
constexpr auto kTextComplete =
    JoinText(kFragmentHeader, kTextStart,
             "    gl_FragColor = texture2D(u_sBaseTexture, v_vTexCoord)*u_vColor;\n"
             "}\n");
// vInColor is unused and vOutColor starts from gl_FragColor on purpose: scenes count on this picture.
constexpr auto kTextHead = JoinText(kFragmentHeader, kTextStart,
                                    "    vec4 l_vFontColor = texture2D(u_sBaseTexture, v_vTexCoord);\n"
                                    "    l_vFontColor.a = 1.0;\n"
                                    "    vec4 vInColor = l_vFontColor*u_vColor;\n"
                                    "    vec4 vOutColor = gl_FragColor;\n");
constexpr FragmentTexts kText = {kTextComplete.data(), kTextHead.data(),
                                 "    gl_FragColor = gl_FragColor*(1.0-u_vColor.a)+vOutColor*u_vColor.a;\n"
                                 "}\n"};

void AppendFragmentShader(ShaderSource& source, FragmentTexts const& texts, List<unsigned int> const& modes) {
    if (modes.IsEmpty()) {
        source.Append(texts.complete);
        return;
    }
    source.Append(texts.head);
    for (unsigned int mode : modes) {
        if (mode < kTransferModeCount) {
            source.Append(szTransferModeShaderSources[mode]);
        }
    }
    source.Append(texts.tail);
}

}  // namespace

ShaderSource::ShaderSource() = default;
ShaderSource::~ShaderSource() = default;

void ShaderSource::Trace() const {
    Debug::Trace("*** Shader Source ****************************************\n");
    for (char const* fragment : *this) {
        Debug::Trace("%s", fragment);
    }
    Debug::Trace("**********************************************************\n");
}

bool ShaderSource::Save(MStringT<wchar_t> const& path) {
    FileStream stream;
    if (!stream.Open(path, FileMode::Write)) {
        return false;
    }
    for (char const* fragment : *this) {
        const auto length = static_cast<uint32_t>(std::strlen(fragment));
        if (stream.Write(fragment, length) < length) {
            return false;
        }
    }
    stream.Close();
    return true;
}

SpriteVertexShaderSource::SpriteVertexShaderSource() {
    Clear();
    Append(kSpriteVertex);
}
SpriteVertexShaderSource::~SpriteVertexShaderSource() = default;

SolidVertexShaderSource::SolidVertexShaderSource() {
    Clear();
    Append(kSolidVertex);
}
SolidVertexShaderSource::~SolidVertexShaderSource() = default;

TextVertexShaderSource::TextVertexShaderSource() {
    Clear();
    Append(kTextVertex);
}
TextVertexShaderSource::~TextVertexShaderSource() = default;

SpriteFragmentShaderSource::SpriteFragmentShaderSource(List<unsigned int> const& modes) {
    Clear();
    const bool hasMode = !modes.IsEmpty() && modes.Last() < kTransferModeCount;
    Append(hasMode ? szSpriteTransferModeShaderSources[modes.Last()] : szSpriteDefaultShaderSource);
}
SpriteFragmentShaderSource::~SpriteFragmentShaderSource() = default;

SolidFragmentShaderSource::SolidFragmentShaderSource(List<unsigned int> const& modes) {
    Clear();
    AppendFragmentShader(*this, kSolid, modes);
}
SolidFragmentShaderSource::~SolidFragmentShaderSource() = default;

TextFragmentShaderSource::TextFragmentShaderSource(List<unsigned int> const& modes) {
    Clear();
    AppendFragmentShader(*this, kText, modes);
}
TextFragmentShaderSource::~TextFragmentShaderSource() = default;

}  // namespace zorvan
