// The program as a user runs it, and other programs reading its files.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/qonvert/samples.h"
#include "tests/qonvert/tool.h"

namespace qonvert {
namespace {

using Program = ToolTest;

TEST_F(Program, SameBytesForEveryNumberOfThreads) {
    for (const char* name : {"a.png", "b.png", "c.png"}) {
        WritePicture(name, 70, 50);
    }
    ASSERT_EQ(Run("convert a.png b.png c.png -o one -f atitc_rgba_interpolated --mips --threads 1").exit, 0);
    for (const char* threads : {"2", "7", "0"}) {
        ASSERT_EQ(Run(std::string("convert a.png b.png c.png -o many -f atitc_rgba_interpolated --mips "
                                  "--overwrite --threads ") +
                      threads)
                      .exit,
                  0);
        EXPECT_TRUE(
            Shell("cmp one/a.ktx many/a.ktx && cmp one/b.ktx many/b.ktx && cmp one/c.ktx many/c.ktx"));
    }
}

TEST_F(Program, PipesThroughStandardStreams) {
    WritePicture("a.png", 9, 7);
    ASSERT_TRUE(Shell("'" QONVERT_PROGRAM "' convert - - --container ktx --format rgba8888 <a.png >b.ktx"));
    const ToolResult back = Run("convert - - --container png <b.ktx");
    EXPECT_EQ(back.exit, 0);
    EXPECT_EQ(back.out,
              std::string(reinterpret_cast<const char*>(Read("a.png").data()), Read("a.png").size()));
    EXPECT_NE(back.err.find("RGBA8888, 9 x 7"), std::string::npos);
    EXPECT_EQ(Run("compare a.png - <b.ktx").exit, 0);
}

TEST_F(Program, OriginIsRecordedMovedAndAssigned) {
    WritePicture("a.png", 8, 8);
    const auto origin = [&](const char* name) {
        return nlohmann::json::parse(Run(std::string("info --json ") + name).out)["origin"];
    };
    ASSERT_EQ(Run("convert a.png flipped.ktx --flip-y").exit, 0);
    EXPECT_EQ(origin("flipped.ktx"), "bottom-left");
    EXPECT_EQ(Run("compare a.png flipped.ktx").exit, 7);
    ASSERT_EQ(Run("convert flipped.ktx back.ktx --flip-y").exit, 0);
    EXPECT_EQ(origin("back.ktx"), "top-left");
    EXPECT_EQ(Run("compare a.png back.ktx").exit, 0);
    ASSERT_EQ(Run("convert a.png said.ktx --assign-origin bottom-left").exit, 0);
    EXPECT_EQ(origin("said.ktx"), "bottom-left");
    EXPECT_EQ(Run("compare a.png said.ktx").exit, 0);
    EXPECT_NE(Run("convert said.ktx lost.dds").err.find("--flip-y moves the rows"), std::string::npos);
}

TEST_F(Program, CompareGatesOnPsnrAndDrawsTheDifference) {
    WritePicture("a.png", 16, 16);
    ASSERT_EQ(Run("convert a.png a.ktx -f rgba4444").exit, 0);
    EXPECT_EQ(Run("compare a.png a.ktx").exit, 7);
    EXPECT_EQ(Run("compare a.png a.ktx --min-psnr 20").exit, 0);
    EXPECT_EQ(Run("compare a.png a.ktx --min-psnr 60 --diff d.png").exit, 7);
    EXPECT_EQ(nlohmann::json::parse(Run("info d.png --json").out)["format"], "RGB888");
    const auto report = nlohmann::json::parse(Run("convert a.png b.ktx -f rgba4444 --report --json").out);
    const auto compared = nlohmann::json::parse(Run("compare a.png a.ktx --json").out);
    EXPECT_EQ(report["files"][0]["report"]["channels"], compared["channels"]);
    WritePicture("small.png", 8, 8);
    EXPECT_EQ(Run("compare a.png small.png --min-psnr 1").exit, 7);
}

TEST_F(Program, EveryVerbPrintsJson) {
    WritePicture("a.png", 4, 4);
    for (const char* arguments :
         {"info a.png", "validate a.png", "formats", "compare a.png a.png", "convert a.png b.ktx"}) {
        const ToolResult result = Run(std::string(arguments) + " --json");
        EXPECT_EQ(result.exit, 0) << arguments;
        EXPECT_TRUE(nlohmann::json::accept(result.out)) << arguments;
        EXPECT_EQ(result.err, "") << arguments;
    }
    EXPECT_EQ(nlohmann::json::parse(Run("formats --json").out)["formats"].size(), 40u);
}

TEST_F(Program, HeaderlessFilesKeepTheirPixels) {
    const TextureFile texture = NoiseTexture(FMT_P4_RGB565, 7, 5);
    Write("p.raw", texture.levels.front());
    ASSERT_EQ(Run("convert p.raw p.ktx --raw 7x5:p4_rgb565").exit, 0);
    ASSERT_EQ(Run("convert p.ktx back.raw").exit, 0);
    EXPECT_EQ(Read("back.raw"), texture.levels.front());
}

TEST_F(Program, WrittenFilesHaveThePermissionsOfNewFiles) {
    WritePicture("a.png", 4, 4);
    ASSERT_TRUE(Shell("umask 027 && '" QONVERT_PROGRAM "' convert a.png b.ktx"));
    EXPECT_EQ(std::filesystem::status(Path("b.ktx")).permissions(), std::filesystem::perms{0640});
}

TEST_F(Program, ListsAndDirectories) {
    WritePicture("a.png", 4, 4);
    WritePicture("b.png", 4, 4);
    const std::string list = "a.png\r\n\nb.png\n";
    Write("l.txt", Bytes(list.begin(), list.end()));
    std::filesystem::create_directory(Path("out"));
    EXPECT_EQ(Run("convert @l.txt out --container dds").exit, 0);
    EXPECT_TRUE(Names().contains("out/a.dds") && Names().contains("out/b.dds"));
}

TEST_F(Program, DefaultFormatIsTheNearestThatTheContainerCarries) {
    WritePicture("a.png", 8, 8);
    const struct {
        const char* from;
        const char* to;
        const char* format;
    } rows[] = {
        {"a.png", "b.pkm", "ETC1_RGB8"}, {"b.pkm", "c.ktx", "ETC1_RGB8"}, {"c.ktx", "d.png", "RGB888"}};
    for (const auto& row : rows) {
        const auto json =
            nlohmann::json::parse(Run(std::string("convert --json ") + row.from + " " + row.to).out);
        EXPECT_EQ(json["files"][0]["format"], row.format) << row.to;
    }
    // Blocks went over as they were.
    const Bytes pkm = Read("b.pkm");
    const Bytes ktx = Read("c.ktx");
    EXPECT_TRUE(std::equal(pkm.begin() + 16, pkm.end(), ktx.end() - 32));
}

class IndependentReader : public ToolTest {
  protected:
    // Least PSNR of one channel between two pictures, and all of them.
    nlohmann::json Channels(const std::string& a, const std::string& b) {
        return nlohmann::json::parse(Run("compare --json " + a + " " + b).out)["channels"];
    }
};

TEST_F(IndependentReader, FfmpegReadsOurDds) {
    if (!Installed("ffmpeg")) {
        GTEST_SKIP() << "ffmpeg is not installed";
    }
    WritePicture("a.png", 36, 20);
    // Not among them: 32-bit pixels under a DX10 header, where it exchanges red and blue.
    const struct {
        const char* format;
        const char* names;
        const char* channels;  // that both readers define
        double error;          // 3Dc interpolates with other roundings
    } rows[] = {
        {"rgba8888", "ati", "RGBA", 0}, {"rgb888", "ati", "RGB", 0}, {"bgra8888", "ati", "RGBA", 0},
        {"rgb565", "ati", "RGB", 0},    {"l8", "ati", "RGB", 0},     {"la88", "ati", "RGBA", 0},
        {"3dc_x", "ati", "R", 2},       {"3dc_x", "bc", "R", 2},     {"3dc_x", "dx10", "R", 2},
        {"3dc_xy", "bc", "RG", 2},      {"3dc_xy", "dx10", "RG", 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.format) + " " + row.names);
        ASSERT_EQ(
            Run(std::string("convert a.png a.dds --overwrite --dds-names ") + row.names + " -f " + row.format)
                .exit,
            0);
        ASSERT_TRUE(Shell("ffmpeg -y -i a.dds -pix_fmt rgba theirs.png"));
        ASSERT_EQ(Run("convert a.dds ours.png --overwrite -f rgba8888").exit, 0);
        const auto channels = Channels("ours.png", "theirs.png");
        for (const char channel : std::string(row.channels)) {
            EXPECT_LE(channels[std::string(1, channel)]["largestError"], row.error) << channel;
        }
    }
}

TEST_F(IndependentReader, AstcencReadsOurKtx) {
    if (!Installed("astcenc")) {
        GTEST_SKIP() << "astcenc is not installed";
    }
    WritePicture("a.png", 40, 28);
    for (const char* format : {"rgba8888", "rgb888", "bgra8888", "l8", "la88"}) {
        SCOPED_TRACE(format);
        ASSERT_EQ(Run(std::string("convert a.png a.ktx --overwrite -f ") + format).exit, 0);
        // It reads, compresses and decompresses; the smooth picture comes back nearly as it was.
        ASSERT_TRUE(Shell("rm -f theirs.png; astcenc -tl a.ktx theirs.png 4x4 -thorough"));
        ASSERT_EQ(Run("convert a.ktx ours.png --overwrite -f rgba8888").exit, 0);
        EXPECT_EQ(Run("compare ours.png theirs.png --min-psnr 38").exit, 0)
            << Run("compare ours.png theirs.png").out;
    }
}

}  // namespace
}  // namespace qonvert
