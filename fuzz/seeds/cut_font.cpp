// Fonts of a few kilobytes out of those that are installed, which are far too large for a fuzzer.
#include <algorithm>
#include <map>

#include "core/file_bytes.h"
#include "core/font_file.h"
#include "fuzz/seeds/seeds.h"

namespace zorvan::fuzz {

namespace {

constexpr uint32_t kLastCharacter = 0x17F;

uint32_t Get16(Bytes const& bytes, size_t at) {
    return bytes.at(at) << 8 | bytes.at(at + 1);
}
uint32_t Get32(Bytes const& bytes, size_t at) {
    return Get16(bytes, at) << 16 | Get16(bytes, at + 2);
}

void Put16(Bytes& bytes, uint32_t value) {
    bytes.push_back(static_cast<uint8_t>(value >> 8));
    bytes.push_back(static_cast<uint8_t>(value));
}
void Put32(Bytes& bytes, uint32_t value) {
    Put16(bytes, value >> 16);
    Put16(bytes, value);
}

Bytes First(Bytes const& bytes, size_t count) {
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(std::min(count, bytes.size()))};
}

using Tables = std::map<std::string, Bytes>;

Tables ReadTables(Bytes const& font) {
    Tables tables;
    for (uint32_t i = 0; i < Get16(font, 4); ++i) {
        const size_t entry = 12 + size_t{16} * i;
        const std::string tag(font.begin() + entry, font.begin() + entry + 4);
        const auto begin = font.begin() + Get32(font, entry + 8);
        tables[tag] = Bytes(begin, begin + Get32(font, entry + 12));
    }
    return tables;
}

Bytes WriteTables(Tables const& tables) {
    Bytes font;
    Put32(font, 0x00010000);
    Put16(font, static_cast<uint32_t>(tables.size()));
    for (int i = 0; i < 3; ++i) {
        Put16(font, 0);  // for a quicker search
    }
    size_t offset = 12 + 16 * tables.size();
    for (auto const& [tag, bytes] : tables) {
        font.insert(font.end(), tag.begin(), tag.end());
        Put32(font, 0);  // check sum
        Put32(font, static_cast<uint32_t>(offset));
        Put32(font, static_cast<uint32_t>(bytes.size()));
        offset += (bytes.size() + 3) / 4 * 4;
    }
    for (auto const& [tag, bytes] : tables) {
        font.insert(font.end(), bytes.begin(), bytes.end());
        font.resize((font.size() + 3) / 4 * 4);
    }
    return font;
}

// Characters to glyphs, in runs of one character.
Bytes CharacterMap(FontFile const& font, uint32_t glyphs) {
    std::vector<std::pair<uint32_t, uint32_t>> entries;
    for (uint32_t c = ' '; c <= kLastCharacter; ++c) {
        const uint32_t index = font.GlyphIndex(c);
        if (index != 0 && index < glyphs) {
            entries.emplace_back(c, index);
        }
    }
    entries.emplace_back(0xFFFF, 0);
    const auto count = static_cast<uint32_t>(entries.size());
    Bytes map;
    for (uint32_t word : {0u, 1u, 3u, 1u, 0u, 12u, 4u, 16 + 8 * count, 0u, 2 * count, 0u, 0u, 0u}) {
        Put16(map, word);
    }
    for (auto const& entry : entries) {
        Put16(map, entry.first);  // ends
    }
    Put16(map, 0);
    for (auto const& entry : entries) {
        Put16(map, entry.first);  // begins
    }
    for (auto const& entry : entries) {
        Put16(map, entry.second - entry.first);
    }
    for (uint32_t i = 0; i < count; ++i) {
        Put16(map, 0);
    }
    return map;
}

Bytes Kerning(FontFile const& font) {
    constexpr std::pair<char, char> kPairs[] = {{'A', 'V'}, {'L', 'T'}, {'V', 'A'}, {'t', 'i'}};
    constexpr uint32_t kCount = std::size(kPairs);
    std::map<std::pair<uint32_t, uint32_t>, int> pairs;
    for (auto [left, right] : kPairs) {
        pairs[{font.GlyphIndex(left), font.GlyphIndex(right)}] = -300;
    }
    Bytes table;
    for (uint32_t word : {0u, 1u, 0u, 14 + 6 * kCount, 1u, kCount, 24u, 2u, 0u}) {
        Put16(table, word);
    }
    for (auto const& [pair, value] : pairs) {
        Put16(table, pair.first);
        Put16(table, pair.second);
        Put16(table, static_cast<uint32_t>(value));
    }
    return table;
}

void SetGlyphCount(Tables& tables, uint32_t glyphs) {
    const bool longPlaces = Get16(tables["head"], 50) != 0;
    Bytes& places = tables["loca"];
    const uint32_t end = longPlaces ? Get32(places, 4 * glyphs) : 2 * Get16(places, 2 * glyphs);
    places = First(places, (longPlaces ? 4 : 2) * (glyphs + 1));
    tables["glyf"] = First(tables["glyf"], end);
    const uint32_t widths = std::min(Get16(tables["hhea"], 34), glyphs);
    tables["hmtx"] = First(tables["hmtx"], 4 * widths + 2 * (glyphs - widths));
    for (auto [tag, at, value] : {std::tuple{"maxp", 4, glyphs}, {"hhea", 34, widths}}) {
        tables[tag].at(at) = static_cast<uint8_t>(value >> 8);
        tables[tag].at(at + 1) = static_cast<uint8_t>(value);
    }
}

}  // namespace

Bytes CutFont(std::string const& path, uint32_t glyphs) {
    std::string error;
    const std::unique_ptr<FontFile> font = FontFile::Open(path, 16, error);
    if (!font) {
        throw std::runtime_error(error);
    }
    Tables all = ReadTables(ReadFileBytes(path, 1u << 24).bytes);
    Tables tables;
    for (char const* tag : {"OS/2", "glyf", "head", "hhea", "hmtx", "loca", "maxp"}) {
        tables[tag] = all[tag];
    }
    SetGlyphCount(tables, glyphs);
    tables["cmap"] = CharacterMap(*font, glyphs);
    tables["kern"] = Kerning(*font);
    return WriteTables(tables);
}

}  // namespace zorvan::fuzz
