#include "tools/zorvan/values.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <string_view>

namespace zorvan::tool {
namespace {

// A whole number without sign that fills the text.
bool ParseWhole(std::string_view text, uint32_t most, uint32_t& value) {
    uint32_t parsed = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (error != std::errc{} || end != text.data() + text.size() || parsed > most) {
        return false;
    }
    value = parsed;
    return true;
}

// A plain decimal number (no exponent, infinity or NaN) that 16.16 can hold, rounded to the nearest step.
bool ParseFixed(std::string_view text, RealFixed& value) {
    double parsed = 0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), parsed, std::chars_format::fixed);
    if (error != std::errc{} || end != text.data() + text.size() || !(std::fabs(parsed) < 32768.0)) {
        return false;
    }
    const double raw = std::nearbyint(parsed * 65536.0);
    if (raw > 2147483647.0) {
        return false;
    }
    value = RealFixed::FromRaw(static_cast<int32_t>(raw));
    return true;
}

bool SplitAt(std::string_view text, std::string_view mark, std::string_view& left, std::string_view& right) {
    const size_t at = text.find(mark);
    if (at == std::string_view::npos) {
        return false;
    }
    left = text.substr(0, at);
    right = text.substr(at + mark.size());
    return true;
}

// A channel of 0 to 255 as 0.0 to 1.0.
RealFixed Channel(uint32_t byte) {
    return RealFixed::FromRaw(static_cast<int32_t>((byte * 65536u + 127u) / 255u));
}

template <typename T, typename Store>
CLI::Option* AddParsed(CLI::App& app, std::string const& name, std::string const& help, Store store) {
    return app.add_option_function<std::string>(
        name,
        [name, store](std::string const& text) {
            T value{};
            if (!ParseValue(text, value)) {
                throw CLI::ValidationError(name, "got '" + text + "', expected " + Expected(value));
            }
            store(value);
        },
        help);
}

}  // namespace

bool ParseValue(std::string const& text, PixelSize& value) {
    std::string_view left, right;
    uint32_t width = 0;
    uint32_t height = 0;
    if (!SplitAt(text, "x", left, right) || !ParseWhole(left, kLargestSurface, width) ||
        !ParseWhole(right, kLargestSurface, height) || width == 0 || height == 0) {
        return false;
    }
    value = {static_cast<int>(width), static_cast<int>(height)};
    return true;
}

bool ParseValue(std::string const& text, FrameRange& value) {
    std::string_view left, right;
    if (!SplitAt(text, "..", left, right)) {
        left = right = text;
    }
    return ParseWhole(left, kLargestFrame, value.first) && ParseWhole(right, kLargestFrame, value.last) &&
           value.first <= value.last;
}

bool ParseValue(std::string const& text, Camera2D& value) {
    if (text == "none") {
        value = {false, {}};
        return true;
    }
    std::string_view left, right;
    value.enabled = true;
    return SplitAt(text, "x", left, right) && ParseFixed(left, value.size.width) &&
           ParseFixed(right, value.size.height) && value.size.width > kOne<RealFixed> &&
           value.size.height > kOne<RealFixed>;
}

bool ParseValue(std::string const& text, SurfaceFormat& value) {
    constexpr struct {
        char const* name;
        SurfaceFormat format;
    } kFormats[] = {
        {"565", SurfaceFormat::Rgb565}, {"888", SurfaceFormat::Rgb888}, {"8888", SurfaceFormat::Rgba8888}};
    for (auto const& row : kFormats) {
        if (text == row.name) {
            value = row.format;
            return true;
        }
    }
    return false;
}

bool ParseValue(std::string const& text, SheetGrid& value) {
    std::string_view left, right;
    return SplitAt(text, "x", left, right) && ParseWhole(left, kMostSheetCells, value.columns) &&
           ParseWhole(right, kMostSheetCells, value.rows) && value.columns > 0 && value.rows > 0;
}

bool ParseValue(std::string const& text, RawFormat& value) {
    value = text == "y4m" ? RawFormat::Y4m : RawFormat::Rgba;
    return text == "y4m" || text == "rgba";
}

bool ParseValue(std::string const& text, ColorT<RealFixed>& value) {
    if ((text.size() != 7 && text.size() != 9) || text[0] != '#') {
        return false;
    }
    uint32_t channels[4] = {0, 0, 0, 255};
    for (size_t i = 0; 2 * i + 1 < text.size(); ++i) {
        char const* begin = text.data() + 1 + 2 * i;
        const auto [end, error] = std::from_chars(begin, begin + 2, channels[i], 16);
        if (error != std::errc{} || end != begin + 2) {
            return false;
        }
    }
    value = {Channel(channels[0]), Channel(channels[1]), Channel(channels[2]), Channel(channels[3])};
    return true;
}

bool ParseValue(std::string const& text, RealFixed& value) {
    return ParseFixed(text, value) && value.raw >= 0;
}

bool ParseValue(std::string const& text, RectangleT<int>& value) {
    std::string_view left, right, top, sides;
    uint32_t x = 0;
    uint32_t y = 0;
    PixelSize size;
    if (!SplitAt(text, ",", left, right) || !SplitAt(right, ",", top, sides) ||
        !ParseWhole(left, kLargestSurface, x) || !ParseWhole(top, kLargestSurface, y) ||
        !ParseValue(std::string(sides), size)) {
        return false;
    }
    const auto fromLeft = static_cast<int>(x);
    const auto fromTop = static_cast<int>(y);
    value = {fromLeft, fromTop, fromLeft + size.width, fromTop + size.height};
    return true;
}

bool ParseValue(std::string const& text, MemorySize& value) {
    constexpr std::string_view kUnits = "KMG";
    std::string_view digits = text;
    uint64_t unit = 1;
    if (const size_t power = digits.empty() ? std::string_view::npos : kUnits.find(digits.back());
        power != std::string_view::npos) {
        digits.remove_suffix(1);
        unit <<= 10 * (power + 1);
    }
    uint64_t count = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), count);
    if (error != std::errc{} || end != digits.data() + digits.size() || count == 0 ||
        count > UINT64_MAX / unit) {
        return false;
    }
    value.bytes = count * unit;
    return true;
}

char const* Expected(PixelSize const&) {
    return "WIDTHxHEIGHT in pixels, each 1 to 16384";
}
char const* Expected(FrameRange const&) {
    return "FIRST..LAST or one frame number, 0 to 10000000, in rising order";
}
char const* Expected(Camera2D const&) {
    return "WIDTHxHEIGHT in scene units, each above 1 and below 32768, or 'none'";
}
char const* Expected(SurfaceFormat const&) {
    return "565, 888 or 8888";
}
char const* Expected(SheetGrid const&) {
    return "COLUMNSxROWS, each 1 to 100";
}
char const* Expected(RawFormat const&) {
    return "rgba or y4m";
}
char const* Expected(ColorT<RealFixed> const&) {
    return "#rrggbb or #rrggbbaa";
}
char const* Expected(RealFixed const&) {
    return "seconds from 0 to 32767";
}
char const* Expected(RectangleT<int> const&) {
    return "X,Y,WIDTHxHEIGHT in pixels from the top left";
}
char const* Expected(MemorySize const&) {
    return "a number of bytes, or one with K, M or G behind it, such as 512M";
}

std::string ToText(PixelSize const& size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

template <typename T>
CLI::Option* AddValue(CLI::App& app, std::string const& name, T& value, std::string const& help) {
    return AddParsed<T>(app, name, help, [&value](T const& parsed) { value = parsed; });
}

template <typename T>
CLI::Option* AddValue(CLI::App& app, std::string const& name, std::optional<T>& value,
                      std::string const& help) {
    return AddParsed<T>(app, name, help, [&value](T const& parsed) { value = parsed; });
}

template CLI::Option* AddValue(CLI::App&, std::string const&, FrameRange&, std::string const&);
template CLI::Option* AddValue(CLI::App&, std::string const&, SurfaceFormat&, std::string const&);
template CLI::Option* AddValue(CLI::App&, std::string const&, RealFixed&, std::string const&);
template CLI::Option* AddValue(CLI::App&, std::string const&, std::optional<PixelSize>&, std::string const&);
template CLI::Option* AddValue(CLI::App&, std::string const&, std::optional<MemorySize>&, std::string const&);
template CLI::Option* AddValue(CLI::App&, std::string const&, std::optional<Camera2D>&, std::string const&);
template CLI::Option* AddValue(CLI::App&, std::string const&, std::optional<SheetGrid>&, std::string const&);
template CLI::Option* AddValue(CLI::App&, std::string const&, std::optional<RectangleT<int>>&,
                               std::string const&);
template CLI::Option* AddValue(CLI::App&, std::string const&, std::optional<RawFormat>&, std::string const&);
template CLI::Option* AddValue(CLI::App&, std::string const&, std::optional<ColorT<RealFixed>>&,
                               std::string const&);

}  // namespace zorvan::tool
