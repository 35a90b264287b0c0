#include "tools/qonvert/difference.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>

#include "texconv/format_table.h"

namespace qonvert {

using QXTextureConverter::FindFormat;
using QXTextureConverter::FormatInfo;

namespace {

constexpr const char* kChannelNames[] = {"R", "G", "B", "A"};

bool IsDeep(const FormatInfo& info) {
    return info.IsFloat() || IsWideLuminance(info.code);
}

Bytes WideLuminanceToFloat(const Picture& picture, const FormatInfo& info) {
    const std::size_t pixelBytes = info.bitsPerPixel / 8;
    Bytes out(std::size_t{picture.width} * picture.height * 16);
    for (std::size_t i = 0; i < picture.bytes.size() / pixelBytes; ++i) {
        std::uint32_t word = 0;
        for (std::size_t b = 0; b < pixelBytes; ++b) {
            word |= std::uint32_t{picture.bytes[i * pixelBytes + b]} << (8 * b);
        }
        const auto luminance = static_cast<float>(static_cast<double>(word & info.masks.red) /
                                                  static_cast<double>(info.masks.red));
        const float alpha = info.alpha ? static_cast<float>(word >> 24) / 255.0f : 1.0f;
        const float pixel[4] = {luminance, luminance, luminance, alpha};
        std::memcpy(out.data() + 16 * i, pixel, sizeof pixel);
    }
    return out;
}

// Four channels a pixel, bytes or floats; missing alpha is opaque.
Bytes Unpack(const Picture& picture, bool deep) {
    const FormatInfo& info = *FindFormat(picture.format);
    if (IsWideLuminance(info.code)) {
        return WideLuminanceToFloat(picture, info);
    }
    Bytes pixels = ConvertPicture(picture, deep ? FMT_RGBA32F : FMT_RGBA8888, picture.width, picture.height);
    if (info.IsFloat() && !info.alpha) {
        const float opaque = 1.0f;
        for (std::size_t at = 12; at < pixels.size(); at += 16) {
            std::memcpy(pixels.data() + at, &opaque, sizeof opaque);
        }
    }
    return pixels;
}

// Difference of one sample; equal infinities and two NaNs do not differ, and a NaN against a number
// differs without limit.
double SampleDifference(float a, float b) {
    if (a == b || (std::isnan(a) && std::isnan(b))) {
        return 0;
    }
    const double difference = std::abs(double{a} - double{b});
    return std::isnan(difference) ? std::numeric_limits<double>::infinity() : difference;
}

template <typename T>
T SampleAt(const Bytes& pixels, std::size_t index) {
    T sample;
    std::memcpy(&sample, pixels.data() + index * sizeof(T), sizeof sample);
    return sample;
}

std::uint8_t ToByte(double difference, double peak) {
    return static_cast<std::uint8_t>(std::lround(std::min(difference / peak, 1.0) * 255));
}

template <typename T>
void Accumulate(const Bytes& a, const Bytes& b, Difference& result, bool wantPicture) {
    const std::size_t channels = result.alpha ? 4 : 3;
    const std::size_t pixels = a.size() / (4 * sizeof(T));
    if (wantPicture) {
        result.picture.reserve(pixels * 3);
    }
    for (std::size_t i = 0; i < pixels; ++i) {
        double difference[4] = {};
        for (std::size_t c = 0; c < channels; ++c) {
            difference[c] = SampleDifference(static_cast<float>(SampleAt<T>(a, 4 * i + c)),
                                             static_cast<float>(SampleAt<T>(b, 4 * i + c)));
            result.channels[c].squares += difference[c] * difference[c];
            result.channels[c].largest = std::max(result.channels[c].largest, difference[c]);
        }
        for (std::size_t c = 0; wantPicture && c < 3; ++c) {
            result.picture.push_back(ToByte(std::max(difference[c], difference[3]), result.peak));
        }
    }
    for (std::size_t c = 0; c < channels; ++c) {
        result.channels[c].samples = static_cast<double>(pixels);
        result.together.squares += result.channels[c].squares;
        result.together.samples += result.channels[c].samples;
        result.together.largest = std::max(result.together.largest, result.channels[c].largest);
    }
}

nlohmann::ordered_json ToJson(const ChannelDifference& channel, double peak) {
    const double psnr = channel.psnr(peak);
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    // JSON has no infinity: null stands for equal samples.
    json["psnr"] = std::isfinite(psnr) ? nlohmann::ordered_json(psnr) : nlohmann::ordered_json(nullptr);
    json["largestError"] = channel.largest;
    return json;
}

std::string ErrorText(double error) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", error);
    return text;
}

std::string PsnrText(double psnr) {
    if (std::isinf(psnr)) {
        return psnr > 0 ? "inf" : "-inf";
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", psnr);
    return text;
}

}  // namespace

double ChannelDifference::psnr(double peak) const {
    if (squares == 0) {
        return std::numeric_limits<double>::infinity();
    }
    return 10 * std::log10(peak * peak / (squares / samples));
}

Difference Measure(const Picture& a, const Picture& b, bool wantPicture) {
    const FormatInfo& infoA = *FindFormat(a.format);
    const FormatInfo& infoB = *FindFormat(b.format);
    const bool deep = IsDeep(infoA) || IsDeep(infoB);
    Difference result;
    result.peak = deep ? 1 : 255;
    result.alpha = infoA.alpha || infoB.alpha;
    const Bytes pixelsA = Unpack(a, deep);
    const Bytes pixelsB = Unpack(b, deep);
    if (deep) {
        Accumulate<float>(pixelsA, pixelsB, result, wantPicture);
    } else {
        Accumulate<std::uint8_t>(pixelsA, pixelsB, result, wantPicture);
    }
    return result;
}

nlohmann::ordered_json ToJson(const Difference& difference) {
    nlohmann::ordered_json json = nlohmann::ordered_json::object();
    json["equal"] = difference.equal();
    json["peak"] = difference.peak;
    json["channels"] = nlohmann::ordered_json::object();
    for (std::size_t c = 0; c < (difference.alpha ? 4u : 3u); ++c) {
        json["channels"][kChannelNames[c]] = ToJson(difference.channels[c], difference.peak);
    }
    json["together"] = ToJson(difference.together, difference.peak);
    return json;
}

std::string ToText(const Difference& difference) {
    const std::size_t channels = difference.alpha ? 4 : 3;
    std::string text = "PSNR";
    for (std::size_t c = 0; c < channels; ++c) {
        text += std::string(c == 0 ? " " : ", ") + kChannelNames[c] + " " +
                PsnrText(difference.channels[c].psnr(difference.peak));
    }
    text += ", together " + PsnrText(difference.together.psnr(difference.peak)) + " dB; largest error";
    for (std::size_t c = 0; c < channels; ++c) {
        text += std::string(" ") + kChannelNames[c] + " " + ErrorText(difference.channels[c].largest) + ",";
    }
    text += " together " + ErrorText(difference.together.largest);
    return text;
}

}  // namespace qonvert
