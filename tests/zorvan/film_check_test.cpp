// Films that are not whole, made from the smallest whole ones.
#include "tools/zorvan/film_check.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>

namespace zorvan::tool {
namespace {

using namespace std::string_literals;

bool IsWhole(bool (*check)(int), std::string const& bytes) {
    const int descriptor = memfd_create("film", 0);
    EXPECT_EQ(write(descriptor, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    const bool whole = check(descriptor);
    close(descriptor);
    return whole;
}

std::string Box(std::string const& type, std::string const& content) {
    return "\0\0\0"s + static_cast<char>(8 + content.size()) + type + content;
}

// With a size of one byte.
std::string Element(std::string const& id, std::string const& content) {
    return id + static_cast<char>(0x80 | content.size()) + content;
}

const std::string kScreen = "GIF89a\2\0\2\0\x80\0\0"s + "rgbRGB";
const std::string kPause = "\x21\xF9\4\0\0\0\0\0"s;
const std::string kPicture = ",\0\0\0\0\2\0\2\0\0"s + "\2\3abc\1;\0"s;
const std::string kOwnColors = ",\0\0\0\0\2\0\2\0\x81"s + std::string(12, 'c') + "\2\1a\0"s;

const std::string kType = Box("ftyp", "isom"), kIndex = Box("moov", "index"), kData = Box("mdat", "pictures");
const std::string kLongData = "\0\0\0\1mdat\0\0\0\0\0\0\0\x12xy"s;

const std::string kHeader = Element("\x1A\x45\xDF\xA3", "webm");
const std::string kSegment = "\x18\x53\x80\x67", kCluster = "\x1F\x43\xB6\x75";
const std::string kInfo = Element("\x15\x49\xA9\x66", "made by hand");
const std::string kPictures = Element(kCluster, std::string(90, 'p'));
const std::string kLongPictures = kCluster + "\x40\x03xyz"s;

TEST(FilmCheck, TellsWholeFilmsFromAllThatAreNot) {
    const struct {
        bool (*check)(int);
        std::string film;
    } whole[] = {
        {IsWholeGif, kScreen + kPause + kPicture + kOwnColors + ";"},
        {IsWholeMp4, kType + kIndex + kData},
        {IsWholeMp4, kType + kLongData + kIndex},
        {IsWholeWebm, kHeader + Element(kSegment, kInfo + kPictures + kLongPictures)},
        // Longer than what is looked at in one piece.
        {IsWholeMp4, kType + "\0\1\0\0mdat"s + std::string(0x10000 - 8, 'x') + kIndex},
    };
    for (auto const& [check, film] : whole) {
        EXPECT_TRUE(IsWhole(check, film));
        EXPECT_FALSE(IsWhole(check, film + ";")) << "more than the film";
        for (size_t size = 0; size < film.size(); size += size < 300 ? 1 : 997) {
            EXPECT_FALSE(IsWhole(check, film.substr(0, size))) << size << " of " << film.size();
        }
    }
    const struct {
        bool (*check)(int);
        char const* what;
        std::string film;
    } broken[] = {
        {IsWholeGif, "no image", kScreen + kPause + ";"},
        {IsWholeGif, "zeros in the middle", kScreen + std::string(9, '\0') + kPicture + ";"},
        {IsWholeGif, "another format", "PNG" + kScreen.substr(3) + kPicture + ";"},
        {IsWholeMp4, "no index", kType + kData},
        {IsWholeMp4, "no data", kType + kIndex},
        {IsWholeMp4, "two indices", kType + kIndex + kData + kIndex},
        {IsWholeMp4, "data of a size that was never filled in", kType + kIndex + "\0\0\0\0mdatpictures"s},
        {IsWholeMp4, "a size smaller than its own header", kType + kIndex + "\0\0\0\7mdat"s},
        {IsWholeMp4, "a size beyond all", kType + kIndex + "\0\0\0\1mdat\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s},
        {IsWholeWebm, "an unknown size, even where it would be the right one",
         kHeader + kSegment + "\xFF" + Element(kCluster, std::string(127 - 5, 'p'))},
        {IsWholeWebm, "a long unknown size",
         kHeader + kSegment + "\x01\xFF\xFF\xFF\xFF\xFF\xFF\xFF" + kInfo + kPictures},
        {IsWholeWebm, "no cluster", kHeader + Element(kSegment, kInfo)},
        {IsWholeWebm, "a cluster longer than its segment",
         kHeader + Element(kSegment, kInfo + kCluster + "\x85pict")},
        {IsWholeWebm, "zeros", kHeader + Element(kSegment, kInfo + kPictures + std::string(4, '\0'))},
    };
    for (auto const& [check, what, film] : broken) {
        EXPECT_FALSE(IsWhole(check, film)) << what;
    }
}

}  // namespace
}  // namespace zorvan::tool
