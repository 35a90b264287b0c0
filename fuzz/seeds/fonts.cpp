// Font files: outlines from the packages' fonts, and a font of bits.
#include <memory>

#include "core/font_file.h"
#include "fuzz/seeds/seeds.h"

namespace zorvan::fuzz {

namespace {

// What the target reads before the file: a size in pixels, whether to make a font of it, four characters.
SeedInput Head(uint32_t size, bool whole) {
    SeedInput input;
    return input.Byte(size).Byte(whole ? 0 : 1).Byte('A').Byte('V').Byte('i').Byte(0xE9);
}

void AddFont(SeedFolder const& folder, std::string const& name, Bytes const& font) {
    for (uint32_t size : {9u, 24u}) {
        folder.Add("font_file", name + "-" + std::to_string(size), Head(size, false).Append(font).bytes);
    }
    folder.Add("font_file", name + "-whole", Head(12, true).Append(font).bytes);
}

// Glyphs of one bit a pixel, for the characters of a word.
std::string BitFont() {
    std::string text =
        "STARTFONT 2.1\nFONT -a-b-medium-r-normal--8-80-75-75-c-60-iso10646-1\nSIZE 8 75 75\n"
        "FONTBOUNDINGBOX 6 8 0 -2\nSTARTPROPERTIES 4\nFONT_ASCENT 6\nFONT_DESCENT 2\n"
        "CHARSET_REGISTRY \"ISO10646\"\nCHARSET_ENCODING \"1\"\nENDPROPERTIES\nCHARS 5\n";
    for (int code : {' ', 'A', 'V', 'i', '~'}) {
        text += "STARTCHAR c" + std::to_string(code) + "\nENCODING " + std::to_string(code) +
                "\nSWIDTH 600 0\nDWIDTH 6 0\nBBX 6 8 0 -2\nBITMAP\n70\n88\n88\nF8\n88\n88\n00\n00\nENDCHAR\n";
    }
    return text + "ENDFONT\n";
}

}  // namespace

void AddFonts(SeedFolder const& folder) {
    const std::string bits = BitFont();
    AddFont(folder, "bits", Bytes(bits.begin(), bits.end()));
    folder.AddFile("letters.bdf", bits);

    constexpr char const* kFonts[] = {"dejavu/DejaVuSans", "dejavu/DejaVuSansMono", "dejavu/DejaVuSerif",
                                      "liberation2/LiberationSans-Regular",
                                      "liberation2/LiberationSerif-Italic"};
    for (char const* name : kFonts) {
        const std::filesystem::path path = std::string("/usr/share/fonts/truetype/") + name + ".ttf";
        if (!std::filesystem::exists(path)) {
            std::fprintf(stderr, "make_seeds: no %s, which would be a seed\n", path.c_str());
            continue;
        }
        const Bytes font = CutFont(path, 100);
        const std::string seed = path.stem();
        AddFont(folder, seed, font);
        AddFont(folder, seed + "-small", CutFont(path, 40));
        folder.AddFile("letters.ttf", font);
        std::string error;
        if (!FontFile::Open(folder.Files() / "letters.ttf", 12, error)) {
            throw std::runtime_error(error);
        }
    }
}

}  // namespace zorvan::fuzz
