// Films of zorvan render, made by the program ffmpeg or by one that only pretends to be it.
#include <sys/resource.h>

#include "tests/zorvan/tool.h"

namespace zorvan::tool {
namespace {

const std::string kOptions = " --frames 0..9 --fps 10 --size 64x48";

class Films : public ZorvanTest {
  protected:
    void SetUp() override {
        if (!Installed("ffmpeg") || !Installed("ffprobe")) {
            GTEST_SKIP() << "needs the program ffmpeg";
        }
        setenv("COUNT",
               "ffprobe -v error -count_frames -show_entries stream=width,height,nb_read_frames -of csv=p=0",
               1);
    }
    void TearDown() override { setenv("PATH", path_.c_str(), 1); }

    // Puts a script in front of the programs; in it, $out is the file to be written.
    void Pretend(std::string const& script) const {
        WriteText("bin/ffmpeg", "#!/bin/sh\nfor out; do :; done; out=${out#file:}\n" + script);
        std::filesystem::permissions(Path("bin/ffmpeg"), std::filesystem::perms::owner_all);
        setenv("PATH", (Path("bin") + ":" + path_).c_str(), 1);
        setenv("REAL", path_.c_str(), 1);
    }

    const std::string path_ = std::getenv("PATH");
};

TEST_F(Films, AreMadeByFfmpeg) {
    for (std::string name : {"a.gif", "a.mp4", "a.WebM"}) {
        SCOPED_TRACE(name);
        // A link is replaced, not followed.
        WriteText("other", "old");
        std::filesystem::create_symlink("other", Path(name));
        const ToolRun run = Run("render scene.json " + name + kOptions);
        ASSERT_EQ(run.code, 0) << run.err;
        EXPECT_EQ(Names(), (std::vector<std::string>{name, "other", "scene.json"}));
        EXPECT_EQ(Read("other"), "old");
        // And back: each picture replaces the one before, up to the last.
        ASSERT_TRUE(Shell("$COUNT " + name + " | grep -x 64,48,10 && ffmpeg -v error -i " + name +
                          " -update 1 last.png"));
        const uint32_t pixel = PixelAt(ReadPicture("last.png"), 48, 1);  // the green square, at 182 units
        EXPECT_GT(pixel >> 16 & 255, 180u);
        EXPECT_LT(pixel >> 24, 80u);
        ASSERT_TRUE(Shell("rm last.png " + name));
    }
}

TEST_F(Films, AreStreamsWhereNoFileIs) {
    for (std::string name : {"a.gif", "a.webm"}) {
        SCOPED_TRACE(name);
        const std::string render = "$TOOL render scene.json " + name + kOptions;
        setenv("RENDER", ("render scene.json " + name + kOptions).c_str(), 1);
        setenv("FILM", name.c_str(), 1);
        EXPECT_TRUE(
            Shell("mkfifo $FILM; cat $FILM >got & $TOOL $RENDER && wait && $COUNT got | grep -x 64,48,10 && "
                  "[ -p $FILM ] && rm $FILM"));
        // Appended to what is there, without words of ours behind it.
        EXPECT_TRUE(
            Shell("ln -s /dev/stdout $FILM && echo before >got && $TOOL $RENDER >>got && [ -L $FILM ] && "
                  "head -n 1 got | grep -x before && tail -c +8 got | $COUNT - | grep -x 64,48,10 && "
                  "! grep -a 'draw calls' got && rm got $FILM"));
        std::filesystem::create_symlink("/dev/full", Path(name));
        ExpectFailure(
            {("render scene.json " + name + kOptions).c_str(), 2,
             name + ": cannot write: got a link to a device, a pipe or a socket, expected its own name"});
    }
    ASSERT_TRUE(Shell("mkfifo a.mp4"));
    ExpectFailure(
        {"render scene.json a.mp4", 2,
         "a.mp4: cannot write: got a stream, expected a file for .mp4; .gif and .webm can be streams"});
}

TEST_F(Films, HoldNothingOfStreamsThatAreClosed) {
    EXPECT_EQ(Run("render scene.json a.webm" + kOptions + " <&- >&- 2>&-").code, 2);
    EXPECT_TRUE(Shell("$COUNT a.webm | grep -x 64,48,10"));
}

TEST_F(Films, ThatFailLeaveTheOldOne) {
    const std::string ours = "cannot write: ";
    const struct {
        char const* script;
        std::string reason;
    } rows[] = {
        {"echo first >&2; echo no such codec >&2; exit 1", "ffmpeg: no such codec"},
        {"echo '[x @ 0x1] [fatal] no such codec' >&2; echo '[error] so I end' >&2; exit 1",
         "ffmpeg: no such codec"},
        {"exit 3", "ffmpeg ended with exit code 3"},
        {"head -c 999 >$out; kill -9 $$", "ffmpeg was ended by signal 9 (Killed)"},
        {"exec <&-; sleep 0.1; exit 0", "ffmpeg took no more frames: Broken pipe"},
        // It ends well, but does not do well.
        {"cat >$out; echo \"[error] file:$out: gone\" >&2", "ffmpeg: a.EXT: gone"},
        {"cat >$out", "ffmpeg reported no error, but left a film that is not whole"},
        {"PATH=$REAL; ffmpeg \"$@\"; truncate -s -1 $out",
         "ffmpeg reported no error, but left a film that is not whole"},
    };
    for (std::string name : {"a.gif", "a.mp4", "a.webm"}) {
        WriteText(name, "old");
        for (auto const& [script, reason] : rows) {
            SCOPED_TRACE(script);
            Pretend(script);
            std::string expected = reason;
            if (const size_t at = expected.find("a.EXT"); at != std::string::npos) {
                expected.replace(at, 5, name);
            }
            ExpectFailure(
                {("render scene.json " + name + kOptions).c_str(), 2, name + ": cannot write: " + expected});
            EXPECT_EQ(Read(name), "old");
        }
    }
    // Warnings of others are no errors.
    Pretend("echo hello >&2; PATH=$REAL exec ffmpeg \"$@\"");
    EXPECT_EQ(Run("render scene.json a.gif" + kOptions).code, 0);
    WriteText("bin/ffmpeg", "no program");
    ExpectFailure(
        {"render scene.json a.gif", 2, "a.gif: cannot write: ffmpeg cannot be run: Exec format error"});
    setenv("PATH", Path("none").c_str(), 1);
    ExpectFailure({"render scene.json a.gif", 5,
                   "a.gif: films are made by the program ffmpeg, which is not on the path (Debian: ffmpeg)"});
}

TEST_F(Films, AreGivenUpAtASignal) {
    // One that takes its time: a signal breaks off the write that waits for it.
    Pretend(": >$out; exec sleep 60");
    EXPECT_TRUE(Shell(R"($TOOL render scene.json a.mp4 --frames 0..9 2>said & tool=$!
        until set -- .zorvan-*; [ -e "$1" ]; do kill -0 $tool || break; sleep 0.01; done
        kill $tool; wait $tool
        [ $? = 143 ] && grep -x 'zorvan: interrupted' said && rm said)"));
    EXPECT_EQ(Names(), (std::vector<std::string>{"bin", "bin/ffmpeg", "scene.json"}));
}

TEST_F(Films, ThatGrowBeyondALimitLeaveTheOldOne) {
    for (std::string name : {"a.gif", "a.mp4", "a.webm"}) {
        SCOPED_TRACE(name);
        const std::string command = "render scene.json " + name + kOptions;
        ASSERT_EQ(Run(command).code, 0);
        const std::string old = Read(name);
        rlimit before{};
        ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
        for (size_t limit : {size_t{256}, old.size() / 2, old.size() - 9, old.size() - 1}) {
            SCOPED_TRACE(limit);
            const rlimit lower{limit, before.rlim_max};
            ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &lower), 0);
            const ToolRun run = Run(command);
            setrlimit(RLIMIT_FSIZE, &before);
            EXPECT_EQ(run.code, 2);
            EXPECT_EQ(run.err.rfind("zorvan: " + name + ": cannot write: ffmpeg: ", 0), 0u) << run.err;
            EXPECT_EQ(run.err.find('\n') + 1, run.err.size()) << run.err;
            EXPECT_NE(run.err.find("File too large"), std::string::npos) << run.err;
            EXPECT_TRUE(Read(name) == old);
            EXPECT_EQ(Names(), (std::vector<std::string>{name, "scene.json"}));
        }
        ASSERT_TRUE(Shell("rm " + name));
    }
}

TEST_F(Films, OnFullDisksLeaveTheOldOne) {
    if (!Shell("mkdir t && unshare -rm mount -t tmpfs none t")) {
        GTEST_SKIP() << "needs the right to mount file systems";
    }
    // Tells what goes wrong, and last all exit codes.
    WriteText("steps", R"sh(
        for size; do
            mount -t tmpfs -o size=${size}k none t
            for film in a.gif a.mp4 a.webm; do
                echo old >t/$film
                "$TOOL" render camera.json t/$film --frames 0..20 --size 160x100 2>errors >said
                code=$?
                case "$code $(head -c 3 t/$film)" in
                    '2 old') [ $(wc -l <errors) = 1 ] || echo $size $film: $(cat errors) ;;
                    '0 old' | [!0]*) echo $size $film: code $code, $(cat errors) ;;
                    0*) $COUNT t/$film | grep -qx 160,100,21 || echo $size $film: not whole ;;
                esac
                [ "$(ls -A t)" = $film ] || echo $size $film: there is $(ls -A t)
                ends="$ends $code"
                rm -r t/$film
            done
            umount t
        done
        echo$ends)sh");
    std::filesystem::copy(ZORVAN_SOURCE "/examples/camera.json", Path("camera.json"));
    std::filesystem::copy(ZORVAN_SOURCE "/examples/images", Path("images"));
    ASSERT_TRUE(Shell("export TOOL; unshare -rm sh steps 8 16 32 40 64 96 256 >results 2>&1"));
    // Nothing but the codes, from all failures to all well.
    const std::string results = Read("results");
    EXPECT_EQ(results.find_first_not_of(" 02\n"), std::string::npos) << results;
    EXPECT_EQ(results.rfind("2 2 2 ", 0), 0u) << results;
    EXPECT_TRUE(results.ends_with(" 0 0 0\n")) << results;
    // A film needs no other folder.
    if (!std::string(ZORVAN_TOOL).starts_with("/tmp/")) {
        EXPECT_TRUE(
            Shell("export TOOL; unshare -rm sh -c 'mount -t tmpfs -o ro none /tmp && $TOOL render scene.json "
                  "a.gif'"));
    }
}

}  // namespace
}  // namespace zorvan::tool
