#include "core/json_writer.h"

#include "core/base64.h"
#include "core/font.h"
#include "core/json.h"
#include "core/texture.h"

namespace zorvan {
namespace {

constexpr uint32_t kIndent = 2;

template <typename T>
std::string ResourceName(RefT<T> const& resource) {
    return resource ? json::Quote(resource->name) : "null";
}

}  // namespace

std::string DecimalText(RealFixed value) {
    const bool negative = value.raw < 0;
    const uint64_t raw = negative ? 0 - static_cast<uint64_t>(value.raw) : static_cast<uint64_t>(value.raw);
    // Five decimals are finer than the value's step, so the loop always ends by then.
    uint64_t unit = 1;
    uint64_t decimal = 0;
    uint32_t digits = 0;
    for (;; ++digits, unit *= 10) {
        decimal = (raw * unit + 32768) >> 16;
        // Reading rounds to the nearest raw value; twice the distance must be below one.
        const int64_t distance = static_cast<int64_t>(decimal * 65536) - static_cast<int64_t>(raw * unit);
        if (2 * (distance < 0 ? -distance : distance) < static_cast<int64_t>(unit)) {
            break;
        }
    }
    std::string text = negative ? "-" : "";
    text += std::to_string(decimal / unit);
    if (digits > 0) {
        const std::string fraction = std::to_string(decimal % unit);
        text += "." + std::string(digits - fraction.size(), '0') + fraction;
    }
    return text;
}

JsonWriter::JsonWriter() = default;

void JsonWriter::Begin(char const* key) {
    text_ += first_ ? "\n" : ",\n";
    text_.append(size_t{depth_} * kIndent, ' ');
    first_ = false;
    if (key != nullptr) {
        text_ += json::Quote(key) + ": ";
    }
}

void JsonWriter::End(char bracket) {
    --depth_;
    if (!first_) {
        text_ += "\n";
        text_.append(size_t{depth_} * kIndent, ' ');
    }
    text_ += bracket;
    first_ = false;
}

void JsonWriter::Write(char const* key, bool value) {
    Begin(key);
    text_ += value ? "true" : "false";
}

void JsonWriter::Write(char const* key, int32_t value) {
    Begin(key);
    text_ += std::to_string(value);
}

void JsonWriter::Write(char const* key, uint32_t value) {
    Begin(key);
    text_ += value == UINT32_MAX ? "\"none\"" : std::to_string(value);
}

void JsonWriter::Write(char const* key, RealFixed value) {
    Begin(key);
    text_ += DecimalText(value);
}

void JsonWriter::Write(char const* key, RealFixed const* values, uint32_t count) {
    Begin(key);
    text_ += "[";
    for (uint32_t i = 0; i < count; ++i) {
        text_ += (i == 0 ? "" : ", ") + DecimalText(values[i]);
    }
    text_ += "]";
}

void JsonWriter::Write(char const* key, std::string const& value) {
    Begin(key);
    text_ += json::Quote(value);
}

void JsonWriter::Write(char const* key, MStringT<wchar_t> const& value) {
    Write(key, ToUtf8(value));
}

void JsonWriter::Write(char const* key, std::vector<uint8_t> const& blob) {
    Begin(key);
    text_ += "\"" + EncodeBase64(blob) + "\"";
}

void JsonWriter::Write(char const* key, RefT<Texture> const& texture) {
    Begin(key);
    text_ += ResourceName(texture);
}

void JsonWriter::Write(char const* key, RefT<Font> const& font) {
    Begin(key);
    text_ += ResourceName(font);
}

void JsonWriter::BeginObject(char const* key) {
    Begin(key);
    text_ += "{";
    ++depth_;
    first_ = true;
}

void JsonWriter::EndObject() {
    End('}');
}

void JsonWriter::BeginArray(char const* key) {
    Begin(key);
    text_ += "[";
    ++depth_;
    first_ = true;
}

void JsonWriter::EndArray() {
    End(']');
}

std::string JsonWriter::Text() const {
    return text_ + "\n}\n";
}

}  // namespace zorvan
