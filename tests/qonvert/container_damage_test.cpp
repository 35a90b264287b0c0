// Damaged files are rejected with one numbered finding, before memory is taken for what they claim.
#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>

#include "tests/qonvert/samples.h"

namespace {
std::atomic<std::size_t> largestRequest{0};
}

// Notes the largest piece of memory that was asked for.
[[gnu::noinline]] void* operator new(std::size_t size) {
    std::size_t seen = largestRequest.load();
    while (size > seen && !largestRequest.compare_exchange_weak(seen, size)) {
    }
    if (void* memory = std::malloc(size != 0 ? size : 1)) {
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

using QXTextureConverter::kFormats;

// Reads a damaged file; returns the number of the finding that rejected it, or 0.
int Rejection(const char* container, const Bytes& file, const ReadOptions& options = {}) {
    Findings findings;
    try {
        FindContainer(container)->read(file, options, findings);
    } catch (const FileError& error) {
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
        EXPECT_EQ(static_cast<int>(error.code()),
                  error.finding().number < FindingNumber::kUnsupportedFormat ? 3 : 5);
        return static_cast<int>(error.finding().number);
    }
    return 0;
}

Bytes Sample(const char* container, std::uint32_t format, WriteOptions options = {}) {
    const Container& found = *FindContainer(container);
    return WriteContainer(found, NoiseTexture(format, 9, 5, found.levels ? 2 : 1), options);
}

TEST(DamagedFile, CutAnywhereIsRejectedAsDamaged) {
    const struct {
        const char* container;
        Bytes file;
    } rows[] = {
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
    for (const auto& row : rows) {
        // The picture ends with its last byte; up to there, every length is too short.
        for (std::size_t length = 0; length < row.file.size(); ++length) {
            const int number = Rejection(row.container, Bytes(row.file.begin(), row.file.begin() + length));
            ASSERT_TRUE(number > 100 && number < 200)
                << row.container << " cut to " << length << " bytes gave " << number;
        }
        ASSERT_EQ(Rejection(row.container, row.file), 0);
    }
}

TEST(DamagedFile, RawSizesThatAreNoWholeLevels) {
    const ReadOptions options{.rawWidth = 4, .rawHeight = 4, .rawFormat = FMT_RGB565};
    for (const std::size_t length : {0u, 31u, 33u, 39u, 41u, 43u}) {
        EXPECT_NE(Rejection("raw", Bytes(length), options), 0) << length;
    }
    for (const std::size_t length : {32u, 40u, 42u}) {
        EXPECT_EQ(Rejection("raw", Bytes(length), options), 0) << length;
    }
}

struct Damage {
    const char* name;
    const char* container;
    std::uint32_t format;
    std::size_t at;  // of the little-endian word that is replaced
    std::uint32_t word;
    int number;
};

// The KTX1 sample has 28 bytes of key/value data at 64 and the size of level 0 at 92.
const Damage kDamages[] = {
    {"ktx identifier", "ktx", FMT_RGB888, 0, 0x20534444, 102},
    {"ktx endianness", "ktx", FMT_RGB888, 12, 0x01020300, 103},
    {"ktx type", "ktx", FMT_RGB888, 16, 0x1400, 201},
    {"ktx type size", "ktx", FMT_RGB888, 20, 4, 103},
    {"ktx format", "ktx", FMT_RGB888, 24, 0x1902, 201},
    {"ktx unknown blocks", "ktx", FMT_ATITC_RGB, 28, 0x83F1, 201},
    {"ktx width 0", "ktx", FMT_RGB888, 36, 0, 104},
    {"ktx width absurd", "ktx", FMT_RGB888, 36, 0xFFFFFFFF, 104},
    {"ktx width wrong", "ktx", FMT_RGB888, 36, 13, 106},
    {"ktx width large", "ktx", FMT_RGB888, 36, 60000, 106},
    {"ktx height absurd", "ktx", FMT_ATITC_RGB, 40, 0x80000000, 104},
    {"ktx height 0", "ktx", FMT_RGB888, 40, 0, 202},
    {"ktx volume", "ktx", FMT_RGB888, 44, 2, 202},
    {"ktx array", "ktx", FMT_RGB888, 48, 3, 202},
    {"ktx cube map", "ktx", FMT_RGB888, 52, 6, 202},
    {"ktx faces", "ktx", FMT_RGB888, 52, 5, 103},
    {"ktx too many levels", "ktx", FMT_RGB888, 56, 5, 107},
    {"ktx levels absurd", "ktx", FMT_RGB888, 56, 0xFFFFFFFF, 107},
    {"ktx more levels than data", "ktx", FMT_RGB888, 56, 3, 101},
    {"ktx key/value data overlong", "ktx", FMT_RGB888, 60, 0x7FFFFFFF, 108},
    {"ktx key/value data cut", "ktx", FMT_RGB888, 60, 24, 108},
    {"ktx pair overlong", "ktx", FMT_RGB888, 64, 0xFFFFFFF0, 108},
    {"ktx pair one byte too long", "ktx", FMT_RGB888, 64, 25, 108},
    {"ktx pair without key", "ktx", FMT_RGB888, 64, 0, 108},
    {"ktx level size small", "ktx", FMT_RGB888, 92, 139, 106},
    {"ktx level size absurd", "ktx", FMT_RGB888, 92, 0xFFFFFFFF, 106},
    {"ktx level size of a palette", "ktx", FMT_P8_RGB888, 92, 4, 106},
    {"dds identifier", "dds", FMT_RGBA8888, 0, 0x58544BAB, 102},
    {"dds header size", "dds", FMT_RGBA8888, 4, 100, 103},
    {"dds height 0", "dds", FMT_RGBA8888, 12, 0, 104},
    {"dds height absurd", "dds", FMT_ETC1_RGB8, 12, 0xFFFFFFFF, 104},
    {"dds height large", "dds", FMT_RGBA8888, 12, 60000, 105},
    {"dds width absurd", "dds", FMT_RGBA8888, 16, 0x40000001, 104},
    {"dds both sides large", "dds", FMT_RGBA8888, 16, 65536, 105},
    {"dds too many levels", "dds", FMT_RGBA8888, 28, 7, 107},
    {"dds pixel format size", "dds", FMT_RGBA8888, 76, 24, 103},
    {"dds pixel format flags", "dds", FMT_RGBA8888, 80, 0, 201},
    {"dds palette", "dds", FMT_RGBA8888, 80, 0x20, 201},
    {"dds FourCC", "dds", FMT_ATITC_RGB, 84, 0x31545844, 201},
    {"dds bits", "dds", FMT_RGBA8888, 88, 64, 201},
    {"dds bits 0", "dds", FMT_RGBA8888, 88, 0, 201},
    {"dds without a green mask", "dds", FMT_RGBA8888, 96, 0, 201},
    {"dds cube map", "dds", FMT_RGBA8888, 112, 0x200, 202},
    {"dds volume", "dds", FMT_RGBA8888, 112, 0x200000, 202},
    {"pkm identifier", "pkm", FMT_ETC1_RGB8, 0, 0x204B4B50, 102},
    {"pkm version and type", "pkm", FMT_ETC1_RGB8, 4, 0x01003032, 201},
    {"pkm type", "pkm", FMT_ETC1_RGB8, 4, 0x01003031, 201},
    {"pkm padded size", "pkm", FMT_ETC1_RGB8, 8, 0x08000900, 103},
    {"pkm width 0", "pkm", FMT_ETC1_RGB8, 12, 0x05000000, 104},
    {"pkm real size", "pkm", FMT_ETC1_RGB8, 12, 0x05000D00, 103},
    {"png identifier", "png", FMT_RGB888, 0, 0, 102},
    {"png header chunk", "png", FMT_RGB888, 16, 0x01000000, 109},
};

TEST(DamagedFile, EachFieldIsChecked) {
    for (const Damage& damage : kDamages) {
        SCOPED_TRACE(damage.name);
        Bytes file = Sample(damage.container, damage.format);
        PatchWord(file, damage.at, damage.word);
        largestRequest = 0;
        EXPECT_EQ(Rejection(damage.container, file), damage.number);
        EXPECT_LT(largestRequest.load(), 4096u) << "memory taken before the size was checked";
    }
}

// The sides of a PNG picture, with the check sum that makes them believable.
Bytes PngThatClaims(std::uint32_t width, std::uint32_t height) {
    Bytes file = Sample("png", FMT_RGB888);
    const std::size_t header = 12;  // its type, then the sides
    for (unsigned i = 0; i < 4; ++i) {
        file[header + 4 + i] = static_cast<std::uint8_t>(width >> (24 - 8 * i));
        file[header + 8 + i] = static_cast<std::uint8_t>(height >> (24 - 8 * i));
    }
    const auto sum = static_cast<std::uint32_t>(crc32(0, file.data() + header, 17));
    for (unsigned i = 0; i < 4; ++i) {
        file[header + 17 + i] = static_cast<std::uint8_t>(sum >> (24 - 8 * i));
    }
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
        std::size_t at;
        std::uint32_t word;
        FindingNumber number;
    } rows[] = {
        {"internal format", "ktx", 28, 0x8C41, FindingNumber::kOddHeaderField},
        {"base format", "ktx", 32, 0x1908, FindingNumber::kOddHeaderField},
        {"levels to generate", "ktx", 56, 0, FindingNumber::kGeneratedLevels},
        {"orientation", "ktx", 83, 0x00783D53, FindingNumber::kOddKeyValue},
        {"pitch", "dds", 20, 3, FindingNumber::kOddHeaderField},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Container& container = *FindContainer(row.container);
        Bytes file = WriteContainer(container, NoiseTexture(FMT_RGB888, 4, 4), {});
        PatchWord(file, row.at, row.word);
        Findings findings;
        container.read(file, {}, findings);
        ASSERT_EQ(findings.size(), 1u);
        EXPECT_EQ(findings[0].number, row.number);
        EXPECT_EQ(findings[0].severity(), Severity::kWarning);
    }
}

TEST(DamagedFile, BytesAfterThePictureAreNoted) {
    for (const char* name : {"ktx", "dds", "png"}) {
        const Container& container = *FindContainer(name);
        Bytes file = WriteContainer(container, NoiseTexture(FMT_RGB888, 4, 4), {});
        file.resize(file.size() + 3);
        Findings findings;
        container.read(file, {}, findings);
        ASSERT_EQ(findings.size(), 1u) << name;
        EXPECT_EQ(findings[0].number, FindingNumber::kTrailingBytes) << name;
    }
}

TEST(DamagedFile, NoiseBehindTheIdentifierNeverReadsAsATexture) {
    for (const Container& container : Containers()) {
        if (container.write == nullptr || container.name == "raw") {
            continue;
        }
        const Bytes whole = WriteContainer(
            container, NoiseTexture(container.name == "pkm" ? FMT_ETC1_RGB8 : FMT_RGB888, 4, 4), {});
        for (std::uint32_t seed = 1; seed <= 200; ++seed) {
            Bytes file = Noise(300, seed);
            std::copy_n(whole.begin(), std::min<std::size_t>(12, whole.size()), file.begin());
            EXPECT_NE(Rejection(container.name.data(), file), 0) << container.name << " " << seed;
        }
    }
}

}  // namespace
}  // namespace qonvert
