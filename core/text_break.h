// Which characters separate words and lines.
#pragma once

#include <cstdint>

namespace zorvan {

// Line feed, carriage return, next line, line and paragraph separator.
constexpr bool IsLineBreak(uint32_t c) {
    return c == '\n' || c == '\r' || c == 0x85 || c == 0x2028 || c == 0x2029;
}

// White space at which a line may break; the no-break spaces are not among them.
constexpr bool IsBreakingSpace(uint32_t c) {
    return c == ' ' || c == '\t' || c == 0x1680 || (c >= 0x2000 && c <= 0x200B && c != 0x2007) ||
           c == 0x205F || c == 0x3000;
}

// Controls and format characters that neither show nor take room.
constexpr bool IsInvisible(uint32_t c) {
    return (c < 0x20 && c != '\t') || (c >= 0x7F && c <= 0x9F) || c == 0xAD || (c >= 0x200B && c <= 0x200F) ||
           (c >= 0x202A && c <= 0x202E) || (c >= 0x2060 && c <= 0x206F) || (c >= 0xFE00 && c <= 0xFE0F) ||
           c == 0xFEFF || (c >= 0xE0000 && c <= 0xE0FFF);
}

// Hyphens and dashes.
constexpr bool IsHyphen(uint32_t c) {
    return c == '-' || c == 0x2010 || c == 0x2013 || c == 0x2014;
}

// Scripts written without spaces, whose lines break between any two characters.
constexpr bool IsIdeographic(uint32_t c) {
    return (c >= 0x2E80 && c <= 0x9FFF && c != 0x3000) || (c >= 0xA000 && c <= 0xA4CF) ||
           (c >= 0xAC00 && c <= 0xD7A3) || (c >= 0xF900 && c <= 0xFAFF) || (c >= 0xFF00 && c <= 0xFF60) ||
           (c >= 0x20000 && c <= 0x3FFFD);
}

// Their punctuation: what must not begin a line, and what must not end one.
constexpr bool IsClosing(uint32_t c) {
    return c == 0x3001 || c == 0x3002 || c == 0xFF0C || c == 0xFF0E || c == 0xFF01 || c == 0xFF1F ||
           c == 0xFF1A || c == 0xFF1B || (c >= 0x3009 && c <= 0x3011 && (c & 1) != 0) || c == 0xFF09;
}
constexpr bool IsOpening(uint32_t c) {
    return (c >= 0x3008 && c <= 0x3010 && (c & 1) == 0) || c == 0xFF08;
}

// Whether a line may break between two letters of a word.
constexpr bool BreaksBetween(uint32_t before, uint32_t c) {
    if (IsClosing(c) || IsOpening(before)) {
        return false;
    }
    return IsHyphen(before) ? !IsHyphen(c) : IsIdeographic(before) || IsIdeographic(c);
}

}  // namespace zorvan
