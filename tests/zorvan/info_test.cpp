// zorvan info, and the program's own explanations. Needs no EGL.
#include "tests/zorvan/tool.h"

namespace zorvan::tool {
namespace {

class Info : public ZorvanTest {
  protected:
    std::string Print(std::string const& arguments) const {
        const ToolRun run = Run(arguments);
        EXPECT_EQ(run.code, 0) << run.err;
        EXPECT_EQ(run.err, "");
        return run.out;
    }
};

TEST_F(Info, HelpNamesVerbsAndExamples) {
    const std::string all = Print("--help");
    for (std::string verb : {"render", "view", "info", "bench"}) {
        EXPECT_NE(all.find("\n  " + verb + " "), std::string::npos) << verb;
        EXPECT_NE(Print(verb + " --help").find("Examples:\n  zorvan " + verb), std::string::npos) << verb;
    }
    EXPECT_EQ(Print("--version"), "zorvan " ZORVAN_VERSION "\n");
}

TEST_F(Info, CountsNodesByClassAndShowsTheTree) {
    WriteText("scene.json", R"({"version": 1, "textures": [
        {"name": "t", "format": "rgb565", "width": 2, "height": 1, "levels": [{"data": "AAAAAA=="}]}],
        "root": {"name": "top", "camera": {"class": "Camera"}, "children": [
            {"class": "TransformNode", "children": [
                {"class": "Sprite", "width": 3, "height": 4, "texture": "t", "transferMode": 4},
                {"class": "Sprite", "width": 5, "height": 6}]},
            {"class": "Timeline", "tracks": [{"property": "opacity", "keys": [{"frame": 0, "value": 1}]}]}]}})");
    const auto json = Json("info scene.json");
    EXPECT_EQ(json["counts"], nlohmann::json::parse(R"({"nodes": 6, "groups": 1, "sprites": 2, "texts": 0,
        "timelines": 2, "cameras": 1, "tracks": 1, "depth": 3})"));
    EXPECT_EQ(json["texture_bytes"], 4);
    EXPECT_EQ(json["textures"][0]["format"], "rgb565");
    EXPECT_EQ(json["textures"][0]["stored"], "2x1");
    EXPECT_EQ(json["tree"]["children"][0]["children"][0], nlohmann::json::parse(R"({"class": "Sprite",
        "size": "3x4", "texture": "t", "transferMode": 4})"));
    EXPECT_TRUE(json["tree"]["children"][0]["children"][1]["texture"].is_null());
    EXPECT_NE(Print("info scene.json --children 1").find("└─ and 1 more\n"), std::string::npos);
    EXPECT_EQ(Print("info scene.json").find("more"), std::string::npos);
    // Names from outside neither end a line early nor speak to a terminal.
    WriteText("a\x1b.json", R"({"version": 1, "root": {"name": "a\u0000b\u001bc"}})");
    const std::string named = Print("info 'a\x1b.json'");
    EXPECT_TRUE(named.starts_with("a\\x1b.json\n"));
    EXPECT_NE(named.find("name a\\x00b\\x1bc  length"), std::string::npos) << named;
}

TEST_F(Info, ReadsHundredThousandNodes) {
    std::string text = R"({"version": 1, "root": {"children": [)";
    for (int i = 0; i < 99'999; ++i) {
        text += (i == 0 ? "" : ",\n");
        text += R"({"class": "Sprite", "width": 16, "height": 16, "position": [)" + std::to_string(i % 1280) +
                R"(, 0, 0], "color": [1, 0.5, 0.25, 1]})";
    }
    WriteText("scene.json", text + "]}}");
    EXPECT_NE(Print("info scene.json --children 1").find("100000 nodes, 2 deep: 99999 sprites"),
              std::string::npos);
}

TEST_F(Info, WarnsOfWhatWillNotShow) {
    EXPECT_EQ(Print("info scene.json").find("warning"), std::string::npos);
    WriteText("scene.json", R"({"version": 1, "background": [1, 1, 1, 1], "textures": [
        {"name": "chain", "format": "rgb565", "width": 4, "height": 1, "levels": [
            {"data": "AAAAAAAAAAA="}, {"data": "AAAAAA=="}]},
        {"name": "whole", "format": "rgb565", "width": 2, "height": 1, "levels": [
            {"data": "AAAAAA=="}, {"data": "AAA="}]},
        {"name": "atitc", "format": "atc-rgb", "width": 4, "height": 4, "levels": [{"data": "AAAAAAAAAAA="}]}],
        "fonts": [{"name": "f", "lineHeight": 3, "ascent": 2, "pages": [{"texture": "whole"}]}], "root": {"children": [
            {"class": "Sprite", "width": 0, "height": 4},
            {"class": "Sprite", "width": 1, "height": 4, "color": [0, 0, 0, 1]},
            {"class": "Text", "font": null, "string": "a"},
            {"class": "Text", "font": "f", "string": "a", "color": [0, 0, 0, 0.5]},
            {"class": "Text", "font": "f", "string": "a"},
            {"class": "TransformNode", "opacity": 0.5, "children": [
                {"class": "Text", "font": "f", "string": "a"}]}]}})");
    const std::string text = Print("info scene.json");
    EXPECT_EQ(text.substr(text.find("warning:")),
              R"(warning: texture 'chain' has 2 of 3 mip levels: it draws black
warning: texture 'atitc' is atc-rgb: it draws black on drivers that lack GL_AMD_compressed_ATC_texture, unless --decode-atitc unpacks it
warning: /root/children/0: a sprite of 0x4 pixels draws nothing
warning: /root/children/2: text without a font draws nothing
warning: /root/children/3: text in black never shows: text adds light
warning: /root/children/4: text that is opaque never shows on the scene's white background
)");
}

}  // namespace
}  // namespace zorvan::tool
