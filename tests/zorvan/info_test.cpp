// zorvan info, and the program's own explanations. Needs no EGL.
#include <nlohmann/json.hpp>

#include "tests/zorvan/run_tool.h"

namespace zorvan::tool {
namespace {

using Json = nlohmann::json;

class Info : public ToolTest {};

TEST_F(Info, HelpNamesVerbsAndExamples) {
    const ToolRun all = RunTool({"--help"});
    EXPECT_EQ(all.code, 0);
    EXPECT_EQ(all.err, "");
    for (std::string verb : {"render", "view", "info", "bench"}) {
        EXPECT_NE(all.out.find(verb), std::string::npos);
        const ToolRun one = RunTool({verb, "--help"});
        EXPECT_EQ(one.code, 0);
        EXPECT_NE(one.out.find("Examples:\n  zorvan " + verb), std::string::npos) << one.out;
    }
    const ToolRun version = RunTool({"--version"});
    EXPECT_EQ(version.code, 0);
    EXPECT_EQ(version.out, "zorvan " ZORVAN_VERSION "\n");
}

TEST_F(Info, CountsNodesByClass) {
    const std::string scene = File("scene.json", R"({"version": 1, "textures": [
        {"name": "t", "format": "rgb565", "width": 2, "height": 1, "levels": [{"data": "AAAAAA=="}]}],
        "root": {"name": "top", "camera": {"class": "Camera"}, "children": [
            {"class": "TransformNode", "children": [
                {"class": "Sprite", "width": 3, "height": 4, "texture": "t", "transferMode": 4},
                {"class": "Sprite", "width": 5, "height": 6}]},
            {"class": "Timeline", "tracks": [{"property": "opacity", "keys": [{"frame": 0, "value": 1}]}]}]}})");
    const ToolRun run = RunTool({"info", scene, "--json"});
    ASSERT_EQ(run.code, 0) << run.err;
    const Json json = Json::parse(run.out, nullptr, false);
    ASSERT_FALSE(json.is_discarded()) << run.out;
    EXPECT_EQ(json["counts"], Json::parse(R"({"nodes": 6, "groups": 1, "sprites": 2, "texts": 0,
        "timelines": 2, "cameras": 1, "tracks": 1, "depth": 3})"));
    EXPECT_EQ(json["texture_bytes"], 4);
    EXPECT_EQ(json["textures"][0]["format"], "rgb565");
    EXPECT_EQ(json["textures"][0]["stored"], "2x1");
    Json const& sprite = json["tree"]["children"][0]["children"][0];
    EXPECT_EQ(sprite["class"], "Sprite");
    EXPECT_EQ(sprite["size"], "3x4");
    EXPECT_EQ(sprite["texture"], "t");
    EXPECT_EQ(sprite["transferMode"], 4);
    EXPECT_TRUE(json["tree"]["children"][0]["children"][1]["texture"].is_null());
}

TEST_F(Info, TreeShowsLimitedChildren) {
    const std::string scene = File("scene.json", R"({"version": 1, "root": {"children": [
        {"class": "TransformNode", "name": "first"}, {"class": "TransformNode", "name": "second"},
        {"class": "TransformNode", "name": "third"}]}})");
    const std::string two = RunTool({"info", scene, "--children", "2"}).out;
    EXPECT_NE(two.find("second"), std::string::npos);
    EXPECT_EQ(two.find("third"), std::string::npos);
    EXPECT_NE(two.find("and 1 more"), std::string::npos);
    EXPECT_NE(RunTool({"info", scene}).out.find("third"), std::string::npos);
}

TEST_F(Info, ReadsHundredThousandNodes) {
    std::string text = R"({"version": 1, "root": {"children": [)";
    for (int i = 0; i < 99'999; ++i) {
        text += (i == 0 ? "" : ",\n");
        text += R"({"class": "Sprite", "width": 16, "height": 16, "position": [)" + std::to_string(i % 1280) +
                ", " + std::to_string(i / 1280) + ", 0], \"color\": [1, 0.5, 0.25, 1]}";
    }
    const ToolRun run = RunTool({"info", File("scene.json", text + "]}}"), "--children", "1"});
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_NE(run.out.find("100000 nodes, 2 deep: 99999 sprites"), std::string::npos) << run.out;
}

TEST_F(Info, WarnsOfWhatWillNotShow) {
    const std::string scene = File("scene.json", R"({"version": 1, "background": [1, 1, 1, 1], "textures": [
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
    const ToolRun run = RunTool({"info", scene, "--json"});
    ASSERT_EQ(run.code, 0) << run.err;
    const Json json = Json::parse(run.out, nullptr, false);
    ASSERT_FALSE(json.is_discarded()) << run.out;
    const char* starts[] = {
        "texture 'chain' has 2 of 3 mip levels",       "texture 'atitc' is atc-rgb",
        "/root/children/0: a sprite of 0x4 pixels",    "/root/children/2: text without a font",
        "/root/children/3: text in black never shows", "/root/children/4: text that is opaque never shows"};
    ASSERT_EQ(json["warnings"].size(), std::size(starts)) << json["warnings"];
    for (size_t i = 0; i < std::size(starts); ++i) {
        const std::string warning = json["warnings"][i];
        EXPECT_EQ(warning.rfind(starts[i], 0), 0u) << warning;
    }
    EXPECT_NE(RunTool({"info", scene}).out.find("\nwarning: texture 'chain'"), std::string::npos);
    EXPECT_EQ(RunTool({"info", Example("hello.json")}).out.find("warning"), std::string::npos);
}

}  // namespace
}  // namespace zorvan::tool
