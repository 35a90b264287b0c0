#include "shaders/transfer_modes.h"

#include "shaders/joined_text.h"

namespace zorvan {
namespace {

// Snippets.
constexpr char kNothing[] = "";
constexpr char kPremultiply[] = "\tvOutColor.rgb *= vOutColor.a;\n";
constexpr char kSquareAlpha[] = "\tvOutColor.a *= vOutColor.a;\n";

template <size_t N>
constexpr auto SpriteShader(char const (&body)[N]) {
    return JoinText(kFragmentHeader,
                    "uniform vec4 u_vColor;\n"
                    "uniform sampler2D u_sBaseTexture;\n"
                    "varying vec2 v_vTexCoord;\n"
                    "void main()\n"
                    "{\n"
                    "\t",
                    body,
                    "\n"
                    "}\n");
}

constexpr auto kTintedText = SpriteShader("gl_FragColor = texture2D(u_sBaseTexture, v_vTexCoord)*u_vColor;");
constexpr auto kFadedText = SpriteShader("gl_FragColor = texture2D(u_sBaseTexture, v_vTexCoord)*u_vColor.a;");
constexpr auto kPlainText = SpriteShader("gl_FragColor = texture2D(u_sBaseTexture, v_vTexCoord);");
constexpr char const* kTinted = kTintedText.data();
constexpr char const* kFaded = kFadedText.data();
constexpr char const* kPlain = kPlainText.data();

struct TransferMode {
    BlendFactors factors;
    GLenum equation;
    char const* snippet;
    char const* spriteShader;
};

constexpr TransferMode kModes[] = {
    // clang-format off
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 0
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 1
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 2
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 3
    {{GL_SRC_ALPHA, GL_ONE}, GL_FUNC_ADD, kNothing, kTinted},  // 4
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kPremultiply, kFaded},  // 5
    {{GL_ONE_MINUS_DST_COLOR, GL_ONE}, GL_FUNC_ADD, kPremultiply, kFaded},  // 6
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 7
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 8
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 9
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 10
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 11
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 12
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 13
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 14
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 15
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 16
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 17
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 18
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 19
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 20
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 21
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 22
    {{GL_DST_COLOR, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kPlain},  // 23
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 24
    {{GL_ONE_MINUS_DST_COLOR, GL_ONE_MINUS_SRC_COLOR}, GL_FUNC_ADD, kPremultiply, kFaded},  // 25
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 26
    {{GL_DST_COLOR, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 27
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 28
    {{GL_SRC_ALPHA, GL_ONE}, GL_FUNC_ADD, kSquareAlpha, kFaded},  // 29
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 30
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 31
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 32
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 33
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 34
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 35
    {{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, GL_FUNC_ADD, kNothing, kTinted},  // 36
    // clang-format on
};
static_assert(std::size(kModes) == kTransferModeCount);

template <typename T>
constexpr TransferModeTable<T> Column(T TransferMode::*member) {
    TransferModeTable<T> column{};
    for (size_t mode = 0; mode < column.size(); ++mode) {
        column[mode] = kModes[mode].*member;
    }
    return column;
}

}  // namespace

constexpr TransferModeTable<BlendFactors> eTransferModeBlendFunc = Column(&TransferMode::factors);
constexpr TransferModeTable<GLenum> eTransferModeBlendEquation = Column(&TransferMode::equation);
constexpr TransferModeTable<char const*> szTransferModeShaderSources = Column(&TransferMode::snippet);
constexpr TransferModeTable<char const*> szSpriteTransferModeShaderSources =
    Column(&TransferMode::spriteShader);
constexpr char const* szSpriteDefaultShaderSource = kTinted;

}  // namespace zorvan
