// Damaged files are rejected with one numbered finding, before memory is taken for what they claim.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <zlib.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <new>
#include <thread>

#include "tests/qonvert/samples.h"
#include "tests/temp_folder.h"
#include "tools/qonvert/load.h"
#include "tools/qonvert/verbs.h"

namespace {
std::size_t largestRequest = 0;
std::size_t memoryLimit = SIZE_MAX;
}  // namespace

// Notes the largest piece of memory that was asked for; refuses those beyond the limit.
[[gnu::noinline]] void* operator new(std::size_t size) {
    largestRequest = std::max(largestRequest, size);
    if (void* memory = size <= memoryLimit ? std::malloc(size != 0 ? size : 1) : nullptr) {
        return memory;
    }
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace qonvert {
namespace {

// Reads a damaged file; returns the number of the finding that rejected it, or 0.
int Rejection(const char* container, const Bytes& file, const ReadOptions& options = {}) {
    Findings findings;
    try {
        FindContainer(container)->read(file, options, findings);
    } catch (const FileError& error) {
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
        const int number = static_cast<int>(error.finding().number);
        EXPECT_EQ(static_cast<int>(error.code()), number < 200 ? 3 : 5);
        return number;
    }
    return 0;
}

Bytes Sample(const char* container, std::uint32_t format, const WriteOptions& options = {}) {
    const Container& found = *FindContainer(container);
    return WriteContainer(found, NoiseTexture(format, 9, 5, found.levels ? 2 : 1), options);
}

TEST(DamagedFile, CutAnywhereIsRejectedAsDamaged) {
    const std::pair<const char*, Bytes> files[] = {
        {"ktx", Sample("ktx", FMT_RGB888)},
        {"ktx", Sample("ktx", FMT_ATITC_RGB)},
        {"dds", Sample("dds", FMT_RGBA8888)},
        {"dds", Sample("dds", FMT_3DC_XY, {.ddsNames = DdsNames::kDx10})},
        {"pkm", Sample("pkm", FMT_ETC1_RGB8)},
        {"png", Sample("png", FMT_RGBA8888)},
        {"png", Sample("png", FMT_P4_RGBA8888)},
#ifdef QONVERT_JPEG
        {"jpeg", JpegSample(17, 9, false)},
#endif
    };
    for (const auto& [container, file] : files) {
        // The picture ends with its last byte; up to there, every length is too short.
        for (std::size_t length = 0; length < file.size(); ++length) {
            const int number = Rejection(container, Part(file, 0, length));
            ASSERT_TRUE(number > 100 && number < 200) << container << " cut to " << length << ": " << number;
        }
        ASSERT_EQ(Rejection(container, file), 0);
    }
}

TEST(DamagedFile, RawSizesThatAreNoWholeLevels) {
    const ReadOptions options{.rawWidth = 4, .rawHeight = 4, .rawFormat = FMT_RGB565};
    for (const std::size_t length : {0u, 31u, 32u, 33u, 39u, 40u, 41u, 42u, 43u}) {
        const bool whole = length == 32 || length == 40 || length == 42;
        EXPECT_EQ(Rejection("raw", Bytes(length), options) == 0, whole) << length;
    }
}

struct Damage {
    const char* field;
    const char* container;
    std::uint32_t format;
    std::size_t at;  // of the little-endian word that is replaced
    // By these words, each rejected with the number of a finding.
    std::vector<std::pair<std::uint32_t, int>> words;
};

// The KTX1 sample has 28 bytes of key/value data at 64 and the size of level 0 at 92.
const Damage kDamages[] = {
    {"identifier", "ktx", FMT_RGB888, 0, {{0x20534444, 102}}},
    {"endianness", "ktx", FMT_RGB888, 12, {{0x01020300, 103}}},
    {"type", "ktx", FMT_RGB888, 16, {{0x1400, 201}}},
    {"type size", "ktx", FMT_RGB888, 20, {{4, 103}}},
    {"format", "ktx", FMT_RGB888, 24, {{0x1902, 201}}},
    {"unknown blocks", "ktx", FMT_ATITC_RGB, 28, {{0x83F1, 201}}},
    {"width", "ktx", FMT_RGB888, 36, {{0, 104}, {0xFFFFFFFF, 104}, {13, 106}, {60000, 106}}},
    {"height", "ktx", FMT_ATITC_RGB, 40, {{0x80000000, 104}}},
    {"height", "ktx", FMT_RGB888, 40, {{0, 202}}},
    {"depth", "ktx", FMT_RGB888, 44, {{2, 202}}},
    {"array elements", "ktx", FMT_RGB888, 48, {{3, 202}}},
    {"faces", "ktx", FMT_RGB888, 52, {{6, 202}, {5, 103}}},
    {"levels", "ktx", FMT_RGB888, 56, {{5, 107}, {0xFFFFFFFF, 107}, {3, 101}}},
    {"bytes of key/value data", "ktx", FMT_RGB888, 60, {{0x7FFFFFFF, 108}, {24, 108}}},
    {"bytes of a pair", "ktx", FMT_RGB888, 64, {{0xFFFFFFF0, 108}, {25, 108}, {0, 108}}},
    {"bytes of a level", "ktx", FMT_RGB888, 92, {{139, 106}, {0xFFFFFFFF, 106}}},
    {"bytes of a level", "ktx", FMT_P8_RGB888, 92, {{4, 106}}},
    {"identifier", "dds", FMT_RGBA8888, 0, {{0x58544BAB, 102}}},
    {"header size", "dds", FMT_RGBA8888, 4, {{100, 103}}},
    {"height", "dds", FMT_RGBA8888, 12, {{0, 104}, {60000, 105}}},
    {"height", "dds", FMT_ETC1_RGB8, 12, {{0xFFFFFFFF, 104}}},
    {"width", "dds", FMT_RGBA8888, 16, {{0x40000001, 104}, {65537, 104}, {65536, 105}}},
    {"levels", "dds", FMT_RGBA8888, 28, {{7, 107}}},
    {"pixel format size", "dds", FMT_RGBA8888, 76, {{24, 103}}},
    {"pixel format flags", "dds", FMT_RGBA8888, 80, {{0, 201}, {0x20, 201}}},
    {"FourCC", "dds", FMT_ATITC_RGB, 84, {{0x31545844, 201}}},
    {"bits", "dds", FMT_RGBA8888, 88, {{64, 201}, {0, 201}}},
    {"green mask", "dds", FMT_RGBA8888, 96, {{0, 201}}},
    {"cube map, volume", "dds", FMT_RGBA8888, 112, {{0x200, 202}, {0x200000, 202}}},
    {"identifier", "pkm", FMT_ETC1_RGB8, 0, {{0x204B4B50, 102}}},
    {"version and type", "pkm", FMT_ETC1_RGB8, 4, {{0x01003032, 201}, {0x01003031, 201}}},
    {"padded size", "pkm", FMT_ETC1_RGB8, 8, {{0x08000900, 103}}},
    {"real size", "pkm", FMT_ETC1_RGB8, 12, {{0x05000000, 104}, {0x05000D00, 103}}},
    {"identifier", "png", FMT_RGB888, 0, {{0, 102}}},
    {"header chunk", "png", FMT_RGB888, 16, {{0x01000000, 109}}},
};

TEST(DamagedFile, EachFieldIsChecked) {
    for (const Damage& damage : kDamages) {
        for (const auto& [word, number] : damage.words) {
            SCOPED_TRACE(std::string(damage.container) + " " + damage.field + ": " + std::to_string(word));
            Bytes file = Sample(damage.container, damage.format);
            PatchWord(file, damage.at, word);
            largestRequest = 0;
            EXPECT_EQ(Rejection(damage.container, file), number);
            EXPECT_LT(largestRequest, 4096u) << "memory taken before the size was checked";
        }
    }
}

// A PNG picture that claims other sides, with the check sum that makes them believable.
Bytes PngThatClaims(std::uint32_t width, std::uint32_t height) {
    Bytes file = Sample("png", FMT_RGB888);
    const std::size_t header = 12;  // its type, then the sides
    const auto putBigEndian = [&](std::size_t at, std::uint32_t word) {
        for (unsigned i = 0; i < 4; ++i) {
            file[at + i] = static_cast<std::uint8_t>(word >> (24 - 8 * i));
        }
    };
    putBigEndian(header + 4, width);
    putBigEndian(header + 8, height);
    putBigEndian(header + 17, static_cast<std::uint32_t>(crc32(0, file.data() + header, 17)));
    return file;
}

TEST(DamagedFile, PackedPicturesCannotClaimMoreThanTheFileCanHold) {
    EXPECT_EQ(Rejection("png", PngThatClaims(9, 5)), 0);
    EXPECT_EQ(Rejection("png", PngThatClaims(60000, 4000)), 105);
    EXPECT_EQ(Rejection("png", PngThatClaims(20000, 20000)), 104);
    EXPECT_EQ(Rejection("png", PngThatClaims(0x7FFFFFFF, 1)), 109);
    EXPECT_EQ(Rejection("png", PngThatClaims(9, 6)), 109);
#ifdef QONVERT_JPEG
    Bytes jpeg = JpegSample(17, 9, false);
    const Bytes marker = {0xFF, 0xC0};
    const auto frame = std::search(jpeg.begin(), jpeg.end(), marker.begin(), marker.end());
    ASSERT_NE(frame, jpeg.end());
    frame[5] = frame[7] = 0x3F;  // 16137 x 16145
    EXPECT_EQ(Rejection("jpeg", jpeg), 105);
    frame[5] = frame[7] = 0xFF;
    EXPECT_NE(Rejection("jpeg", jpeg), 0);
#endif
}

TEST(DamagedFile, OddButReadableFilesAreNoted) {
    const struct {
        const char* name;
        const char* container;
        std::size_t at;  // of a word, or the file's end
        std::uint32_t word;
        FindingNumber number;
    } rows[] = {
        {"internal format", "ktx", 28, 0x8C41, FindingNumber::kOddHeaderField},
        {"base format", "ktx", 32, 0x1908, FindingNumber::kOddHeaderField},
        {"levels to generate", "ktx", 56, 0, FindingNumber::kGeneratedLevels},
        {"orientation", "ktx", 83, 0x00783D53, FindingNumber::kOddKeyValue},
        {"pitch", "dds", 20, 3, FindingNumber::kOddHeaderField},
        {"bytes behind", "ktx", SIZE_MAX, 0, FindingNumber::kTrailingBytes},
        {"bytes behind", "dds", SIZE_MAX, 0, FindingNumber::kTrailingBytes},
        {"bytes behind", "png", SIZE_MAX, 0, FindingNumber::kTrailingBytes},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.container) + ": " + row.name);
        Bytes file = NoiseFile(row.container, FMT_RGB888, 4, 4);
        const std::size_t at = std::min(row.at, file.size());
        file.resize(std::max(file.size(), at + 4));
        PatchWord(file, at, row.word);
        Findings findings;
        FindContainer(row.container)->read(file, {}, findings);
        ASSERT_EQ(findings.size(), 1u);
        EXPECT_EQ(findings[0].number, row.number);
        EXPECT_EQ(findings[0].severity(), Severity::kWarning);
    }
}

TEST(HugeFile, IsReadOnlyAsFarAsItIsUnderstood) {
    constexpr std::size_t kFileBytes = std::size_t{1} << 28;
    constexpr std::size_t kMostMemory = std::size_t{3} << 20;
    const TempFolder folder;
    const std::string path = folder / "huge", pipe = folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const struct {
        const char* name;
        Bytes begin;
        bool whole;
    } rows[] = {
        {"nothing known", Bytes(12), false},
        {"PNG's signature", Part(Sample("png", FMT_RGB888), 0, 8), false},
        {"KTX's signature", Part(Sample("ktx", FMT_RGB888), 0, 12), false},
        {"a picture that is not there", Part(Sample("ktx", FMT_RGB888), 0, 40), false},
        {"DDS's signature", Part(Sample("dds", FMT_RGB888), 0, 4), false},
#ifdef QONVERT_JPEG
        {"JPEG's signature", {0xFF, 0xD8, 0xFF, 0xE0}, false},
#endif
        {"a PNG", Sample("png", FMT_RGB888), true},
        {"a KTX", Sample("ktx", FMT_RGB888), true},
        {"a KTX with a colour table", Sample("ktx", FMT_P8_RGB888), true},
        {"a DDS", Sample("dds", FMT_RGB888), true},
        {"a PKM", Sample("pkm", FMT_ETC1_RGB8), true},
    };
    for (const auto& row : rows) {
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(row.begin.data()), std::ssize(row.begin));
        std::filesystem::resize_file(path, kFileBytes);
        for (const std::string& input : {path, pipe}) {
            SCOPED_TRACE(row.name + (": " + input));
            std::jthread writer;
            int unread = 0;
            if (input == pipe) {
                writer = std::jthread([&] { unread = std::system(("cat " + path + " >" + pipe).c_str()); });
            }
            Findings findings;
            LoadedTexture loaded;
            largestRequest = 0;
            const auto load = [&] { LoadTexture(input, "", {}, findings, loaded); };
            if (row.whole) {
                EXPECT_NO_THROW(load());
                EXPECT_EQ(loaded.fileBytes, kFileBytes);
                ASSERT_EQ(findings.size(), 1u);
                EXPECT_EQ(findings[0].got, std::to_string(kFileBytes - row.begin.size()));
            } else {
                EXPECT_THROW(load(), FileError);
            }
            EXPECT_LT(largestRequest, kMostMemory);
            if (writer.joinable()) {
                writer.join();
                EXPECT_EQ(unread != 0, !row.whole);
            }
        }
    }
}

TEST(DamagedFile, FindingsAreFewAndShort) {
    Bytes pair = {215, 0, 0, 0};  // bytes of a key, its NUL, 199 bytes of value and a NUL
    for (const char c : "KTXorientation" + std::string(1, '\0') + std::string(199, 'v')) {
        pair.push_back(static_cast<std::uint8_t>(c));
    }
    pair.resize(220);
    Bytes file = Sample("ktx", FMT_RGB888);
    PatchWord(file, 60, 28 + 1000 * 220);
    for (int i = 0; i < 1000; ++i) {
        file.insert(file.begin() + 64, pair.begin(), pair.end());
    }
    Findings findings;
    EXPECT_EQ(FindContainer("ktx")->read(file, {}, findings).origin, Origin::kTopLeft);
    ASSERT_EQ(findings.size(), 20u);
    EXPECT_EQ(findings[0].got, std::string(80, 'v') + "...");
}

// What a verb's failure says.
std::string Failure(const std::string& commandLine, std::size_t limit) {
    CLI::App program;
    Session session;
    AddInfoVerb(program, session);
    AddCompareVerb(program, session);
    AddValidateVerb(program, session);
    program.parse(commandLine);
    std::string message;
    memoryLimit = limit;
    try {
        session.run();
    } catch (const ToolError& error) {
        EXPECT_EQ(error.code(), ExitCode::kRuntime);
        message = error.what();
    }
    memoryLimit = SIZE_MAX;
    return message;
}

TEST(OutOfMemory, NamesTheFile) {
    const TempFolder folder;
    const std::string path = folder / "blank.png";
    const TextureFile blank{FMT_L8, 1024, 2048, Origin::kTopLeft, "", {Bytes(2 << 20)}};
    const Bytes file = WriteContainer(*FindContainer("png"), blank, {});
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(file.data()), file.size());
    // Too little for the piece of 1 MiB that is read, and for the 2 MiB of pixels.
    for (const std::size_t limit : {100000, 1500000}) {
        for (const char* verb : {"info ", "validate "}) {
            EXPECT_EQ(Failure(verb + path, limit), path + ": out of memory");
        }
        EXPECT_EQ(Failure("compare " + path + " " + path, limit), path + ": out of memory");
    }
    // And too little for comparing them with all channels.
    EXPECT_EQ(Failure("compare " + path + " " + path, 3000000), path + ", " + path + ": out of memory");
}

TEST(OutOfMemory, PassesThroughLibpng) {
    const TextureFile noise = NoiseTexture(FMT_RGBA8888, 512, 512);
    memoryLimit = noise.levels.front().size();  // the file is larger
    EXPECT_THROW(WriteContainer(*FindContainer("png"), noise, {}), std::bad_alloc);
    memoryLimit = SIZE_MAX;
}

}  // namespace
}  // namespace qonvert
