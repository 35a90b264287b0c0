// Every failure is one line, its documented exit code, and nothing left behind.
#include <signal.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/qonvert/tool.h"
#include "texfile/unfinished.h"
#include "tools/common/printable.h"

namespace qonvert {
namespace {

class Failure : public QonvertTest {
  protected:
    Failure() {
        WritePicture("a.png", 8, 8);
        WritePicture("taken.png", 8, 8);
        WritePicture("sub/a.png", 8, 8);
        Bytes ktx = NoiseFile("ktx", FMT_ETC1_RGB8, 8, 8);
        Write("etc.ktx", ktx);
        Write("cut.ktx", Part(ktx, 0, 100));
        PatchWord(ktx, 36, 0x7FFFFFFF);
        Write("huge.ktx", ktx);
        Write("short.pkm", std::string("PKM 1"));
        Write("noise.dds", Noise(300, 3));
        Write("noise", Noise(300, 4));
        Write("half.png", Part(NoiseFile("png", FMT_RGB888, 8, 8), 0, 100));
        Write("empty.png", Bytes{});
        Write("lost.txt", std::string("no.png\n"));
        Write("px.raw", Noise(30, 5));
        WritePicture("wide.png", 20, 20);
        WritePicture("long.png", 100, 32767);
        Write("zero.txt", std::string("a.png\r\n\nb\0.png\n", 15));
        std::filesystem::create_symlink("/dev/null", Path("planted.ktx"));
        std::filesystem::create_symlink("loop.ktx", Path("loop.ktx"));
    }
};

// Longer ends of lines.
const std::string kScale = "--scale takes WxH or N%, for example 64x64 or 50%; got ";
const std::string kStrength = "--strength takes 0.1 to 1000, or as much below 0, in steps of 0.1";
const std::string kMips = "--mips takes a number of levels from 1; got ";
const std::string kNoContainer = " names no container; --container does, with png, ktx, dds, pkm or raw";
const std::string kUnknown = "error 110: container: got unknown first bytes, expected one of png, ...";
const std::string kHuge =
    "huge.ktx: error 104: size of the picture: got 2147483647 x 8, expected sides up to 65536 and up to "
    "268435456 pixels";
const std::string kImpossible = " is not possible; sides are 1 to 65536, with up to 26843545";
const std::string kImpossibleBytes = kImpossible + "6 pixels";
const std::string kImpossibleFloats = kImpossible + "5 pixels";
const std::string kOneTable =
    "a.png: ktx holds one colour table for all levels, and these levels differ in theirs; write one level, "
    "or dds or raw in another format";

const std::string kLong = "convert a.png " + std::string(300, 'n') + ".ktx";
const std::string kTooLong = std::string(300, 'n') + ".ktx: File name too long";

const FailureRow kRows[] = {
    // Usage.
    {"", 1, "a verb is needed: convert, info, compare, validate, formats (--help shows how)"},
    {"transmogrify", 1,
     "no verb is called \"transmogrify\"; there are convert, info, compare, validate, formats"},
    {"convert", 1, "an input and an output are needed, or --out-dir"},
    {"convert a.png", 1, "an input and an output are needed, or --out-dir"},
    {"convert a.png b.ktx --formt rgb565", 1,
     "The following argument was not expected: --formt (--help shows how)"},
    {"convert a.png b.ktx -f rgb56", 1,
     "no format is called \"rgb56\"; the nearest are RGB565, RGB16F, RGB888"},
    {"convert a.png b.ktx -f etc", 1,
     "no format is called \"etc\"; the nearest are ETC1_RGB8, ATITC_RGB, ATITC_RGBA_EXPLICIT"},
    {"convert a.png b.ktx -f RGBA888", 1,
     "no format is called \"RGBA888\"; the nearest are RGBA8888, RGB888, RGBA32F"},
    {"convert a.png b.ktx -f FMT_", 1, "no format is called \"FMT_\"; the nearest are L8, A8, ATITC_RGB"},
    {"convert a.png b.xyz", 1, "b.xyz" + kNoContainer},
    {"convert a.png -", 1, "standard output" + kNoContainer},
    {"convert a.png b.ktx --container zip", 1, "no container is called \"zip\"; there are png, ..."},
    {"convert a.png b.ktx --scale 0x8", 1, kScale + "\"0x8\""},
    {"convert a.png b.ktx --scale 8", 1, kScale + "\"8\""},
    {"convert a.png b.ktx --scale -50%", 1, kScale + "\"-50%\""},
    {"convert a.png b.ktx --scale 50% --filter lanczos", 1,
     "--filter: lanczos not in {box,cubic,four,point} (--help shows how)"},
    {"convert a.png b.ktx --filter box", 1, "--filter requires --scale (--help shows how)"},
    {"convert a.png b.ktx --wrap", 1, "--wrap requires --normal-map (--help shows how)"},
    {"convert a.png b.ktx --normal-map sobel --strength 0", 1, kStrength},
    {"convert a.png b.ktx --normal-map sobel --strength 1e99", 1, kStrength},
    {"convert a.png b.ktx --mips=0", 1, kMips + "\"0\""},
    {"convert a.png b.ktx --mips=many", 1, kMips + "\"many\""},
    {"convert a.png b.ktx --threads many", 1, "Could not convert: --threads = many (--help shows how)"},
    {"convert px.raw b.ktx", 1, "px.raw: a headerless file needs --raw WxH:FORMAT"},
    {"convert px.raw b.ktx --raw 8x8", 1, "--raw takes WxH:FORMAT, for example 64x64:RGB565; got \"8x8\""},
    {"convert px.raw b.ktx --raw 8x8:rgb", 1,
     "no format is called \"rgb\"; the nearest are RGB888, RGB565, RGB32F"},
    {"convert a.png etc.ktx b.dds", 1, "2 inputs for the one output b.dds; --out-dir takes several"},
    {"convert a.png sub/a.png --out-dir new", 1, "a.png and sub/a.png would both become new/a.ktx"},
    {"convert - --out-dir new <a.png", 1, "standard input has no name for a directory; give an output file"},
    {"compare - - <a.png", 1, "only one of the files can be standard input"},
    {"info a.png --container zip", 1, "a.png: no container is called \"zip\"; there are png, ..."},
    {"compare a.png a.png --min-psnr nan", 1, "--min-psnr takes a number of dB; got nan"},
    {"compare a.png", 1, "B is required (--help shows how)"},
    {"info", 1, "FILE is required (--help shows how)"},
    // Input and output.
    {"convert none.png b.ktx", 2, "none.png: No such file or directory"},
    {"convert a.png taken.png", 2, "taken.png: exists; --overwrite replaces it"},
    {"convert a.png nowhere/b.ktx", 2, "nowhere/b.ktx: No such file or directory"},
    {"convert a.png etc.ktx/b.ktx", 2, "etc.ktx/b.ktx: Not a directory"},
    {"convert a.png loop.ktx", 2, "loop.ktx: Too many levels of symbolic links"},
    {"convert a.png loop.ktx --overwrite", 2, "loop.ktx: Too many levels of symbolic links"},
    {kLong.c_str(), 2, kTooLong},
    {"convert @none.txt --out-dir new", 2, "none.txt: No such file or directory"},
    {"convert @zero.txt --out-dir sub", 2,
     "zero.txt: line 3: got a name with a zero byte, expected none in it"},
    {"convert @/dev/zero --out-dir sub", 2, "/dev/zero: got more than 16777216 bytes"},
    {"convert @lost.txt --out-dir sub", 2, "no.png: No such file or directory"},
    {"convert a.png --out-dir etc.ktx", 2, "etc.ktx: Not a directory"},
    {"convert \"$(printf 'x\\ny\\033[2J')\" b.ktx", 2, "x\\x0ay\\x1b[2J: No such file or directory"},
    {"convert sub b.ktx", 2, "sub: got a folder, expected a file"},
    {"convert a.png /dev/full --container ktx --overwrite", 2, "/dev/full: No space left on device"},
    {"convert a.png planted.ktx --overwrite", 2,
     "planted.ktx: got a link to a device, a pipe or a socket, expected its own name"},
    {"info none.png", 2, "none.png: No such file or directory"},
    {"info etc.ktx >/dev/full", 2, "standard output: cannot write: No space left on device"},
    {"compare a.png taken.png --diff taken.png", 2, "taken.png: exists; --overwrite replaces it"},
    // Descriptor 9 is a pipe whose reader has gone.
    {"info etc.ktx >&9", 2, "standard output: cannot write: Broken pipe"},
    {"formats --json >&9", 2, "standard output: cannot write: Broken pipe"},
    {"convert a.png - --container png >&9", 2, "standard output: Broken pipe"},
    {"compare a.png taken.png --min-psnr 99 >&9", 2, "standard output: cannot write: Broken pipe"},
    // Bad files.
    {"convert huge.ktx b.dds", 3, kHuge},
    {"convert cut.ktx b.dds", 3, "cut.ktx: error 105: level 0: got 4 bytes left in the file, expected 32"},
    {"convert short.pkm b.ktx", 3, "short.pkm: error 101: version: got 1 bytes left in the file, expected 2"},
    {"convert noise.dds b.ktx", 3, "noise.dds: error 102: identifier: got 0xc7df8c3c, expected \"DDS \""},
    {"convert noise b.ktx", 3, "noise: " + kUnknown},
    {"convert half.png b.ktx", 3,
     "half.png: error 109: PNG data: got the file ends early, expected a whole picture"},
    {"convert empty.png b.ktx", 3, "empty.png: error 101: identifier: got 0 bytes, expected 8"},
    {"info /dev/zero", 3, "/dev/zero: " + kUnknown},
    {"convert - b.ktx <empty.png", 3, "standard input: " + kUnknown},
    {"convert px.raw b.ktx --raw 8x8:rgb565", 3,
     "px.raw: error 105: level 0: got 30 bytes left in the file, expected 128"},
    {"convert px.raw b.ktx --raw 7x4:l8", 3,
     "px.raw: error 105: level 1: got 2 bytes left in the file, expected 6"},
    {"info huge.ktx", 3, kHuge},
    {"compare a.png huge.ktx", 3, kHuge},
    // Not supported.
    {"convert a.png b.png -f etc1_rgb8", 5,
     "a.png: png cannot carry ETC1_RGB8; these can: ktx, dds, pkm, raw"},
    {"convert a.png b.png -f rgba32f", 5, "a.png: png cannot carry RGBA32F; these can: ktx, raw"},
    {"convert a.png b.dds -f p4_rgb565", 5, "a.png: dds cannot carry P4_RGB565; these can: png, ktx, raw"},
    {"convert a.png b.ktx -f p1_rgba8888", 5, "a.png: ktx cannot carry P1_RGBA8888; these can: png, raw"},
    {"convert a.png b.ktx -f l24a8", 5, "a.png: ktx cannot carry L24A8; these can: dds, raw"},
    {"convert a.png b.pkm -f rgb565", 5, "a.png: pkm cannot carry RGB565; these can: ktx, dds, raw"},
    {"convert a.png b.png -f p1_rgba8888 --mips", 5,
     "a.png: png holds one level; ktx, dds and raw hold more"},
    {"convert a.png b.ktx -f p8_rgb888 --mips", 5, kOneTable},
    {"convert a.png b.jpg", 5, "a.png: jpeg is only read, not written"},
    {"convert a.png b.dds --assign-origin bottom-left", 5, "a.png: dds records no origin; ktx does"},
    // Sizes that nobody would read, some before the input is looked at.
    {"convert none.png b.ktx --scale 65537x1", 5, "none.png: a picture of 65537 x 1" + kImpossibleBytes},
    {"convert none.png b.ktx --scale 16385x16384 -f l8", 5,
     "none.png: a picture of 16385 x 16384" + kImpossibleBytes},
    {"convert none.png b.ktx --scale 16384x16384 -f rgba32f", 5,
     "none.png: a picture of 16384 x 16384" + kImpossibleFloats},
    {"convert none.png b.pkm --scale 65533x4", 5,
     "none.png: pkm holds sides up to 65532 pixels, got 65533 x 4"},
    {"convert wide.png b.raw --scale 100000% --normal-map sobel -f p1_rgba8888 --mips", 5,
     "wide.png: a picture of 20000 x 20000" + kImpossibleBytes},
    {"convert long.png b.pkm --scale 200%", 5,
     "long.png: pkm holds sides up to 65532 pixels, got 200 x 65534"},
};

TEST_F(Failure, IsOneLineItsExitCodeAndNoFile) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(dup2(ends[1], 9), 9);
    close(ends[0]);
    close(ends[1]);
    ExpectFailures(kRows);
    close(9);
}

TEST(Printable, LeavesATerminalAlone) {
    const struct {
        std::string text, shown;
    } rows[] = {
        {"a b~", "a b~"},
        {"\x1b[2J\n\x7f", "\\x1b[2J\\x0a\\x7f"},
        {std::string(1, '\0'), "\\x00"},
        {"\u00a0\u00e9\u05d0\u200f\u20ac\U0001f600", "\u00a0\u00e9\u05d0\u200f\u20ac\U0001f600"},
        {"\u0080\u009b31m", "\\xc2\\x80\\xc2\\x9b31m"},  // C1, which terminals may obey
        {"\x9b\xe9t\xe9", "\\x9b\\xe9t\\xe9"},           // Latin-1
        {"\u2028\u202egnp\u2066", "\\xe2\\x80\\xa8\\xe2\\x80\\xaegnp\\xe2\\x81\\xa6"},
        {"\xc0\x9b\xe0\x82\x9b", "\\xc0\\x9b\\xe0\\x82\\x9b"},  // longer than need be
        {"\xed\xa0\x80\xf4\x90\x80\x80\xff", "\\xed\\xa0\\x80\\xf4\\x90\\x80\\x80\\xff"},
        {"\xe2\x82", "\\xe2\\x82"},
        {"\xe2\x1b\x82", "\\xe2\\x1b\\x82"},
    };
    for (const auto& [text, shown] : rows) {
        EXPECT_EQ(tools::Printable(text), shown);
    }
    EXPECT_EQ(tools::PrintableJson("{\n\"\u009b\u00e9\u202e\": 1}"), "{\n\"\\u009b\u00e9\\u202e\": 1}");
}

TEST_F(Failure, EndsWithoutUnfinishedFiles) {
    const std::vector<std::string> before = Names();
    const auto begin = [this] {
        texfile::RemoveUnfinishedAtTheEnd();
        texfile::BeginUnfinished(Path("part"), [this] {
            Write("part", Bytes(9));
            return true;
        });
    };
    const auto beSignalled = [] {
        for (kill(getpid(), SIGTERM);;) {
            pause();
        }
    };
    EXPECT_EXIT((begin(), std::exit(255)), testing::ExitedWithCode(255), "");
    EXPECT_EQ(Names(), before);
    EXPECT_EXIT((begin(), beSignalled()), testing::KilledBySignal(SIGTERM), "");
    EXPECT_EQ(Names(), before);
}

}  // namespace
}  // namespace qonvert
