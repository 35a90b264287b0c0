// Images, conversions and captured messages for the converter's tests.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "texcompress/instruction_set.h"
#include "texconv/image.h"

namespace texconv_test {

using Bytes = std::vector<std::uint8_t>;
using Messages = std::vector<std::string>;
using namespace QXTextureConverter;

// The words of TFormatFlags, so that a case names only those that it sets.
struct Flags {
    std::uint32_t stride = 0;
    std::uint32_t red = 0, green = 0, blue = 0, alpha = 0;  // masks
    std::uint32_t mirrorX = 0, flipY = 0;
    std::uint32_t fast = 0;
    std::uint32_t filter = 0;
    std::uint32_t bumpmap = 0, bumpHeight = 0, bumpWrap = 0;
    std::uint32_t mode = 0;

    operator TFormatFlags() const { return std::bit_cast<TFormatFlags>(*this); }
};

// A descriptor with its own pixels and, if given, flags.
class TestImage {
  public:
    TestImage(std::uint32_t width, std::uint32_t height, std::uint32_t format, Bytes data = {},
              const std::optional<Flags>& flags = {})
        : m_data(std::move(data)), m_flags(flags), m_image{width, height, format, nullptr, 0, nullptr} {}

    TFormatFlags& Words() { return m_flags ? *m_flags : m_flags.emplace(); }
    // Room for the format's size, every byte `fill`.
    TestImage& Allocate(std::uint8_t fill = 0) {
        m_data.assign(Size(), fill);
        return *this;
    }
    std::uint32_t Size() { return CImage(nullptr, nullptr).ImgSize(Get()); }
    TQonvertImage* Get() {
        m_image.pFormatFlags = m_flags ? &*m_flags : nullptr;
        m_image.pData = m_data.empty() ? nullptr : m_data.data();
        m_image.nDataSize = static_cast<std::uint32_t>(m_data.size());
        return &m_image;
    }
    std::uint32_t DataSize() const { return m_image.nDataSize; }
    Bytes& Data() { return m_data; }

  private:
    Bytes m_data;
    std::optional<TFormatFlags> m_flags;
    TQonvertImage m_image;
};

// The messages of one call, in order.
template <typename Call>
Messages MessagesOf(const Call& call) {
    testing::internal::CaptureStderr();
    call();
    std::istringstream text(testing::internal::GetCapturedStderr());
    const std::string prefix = "QXTextureConverter error: ";
    Messages messages;
    for (std::string line; std::getline(text, line);) {
        const bool isMessage = line.starts_with(prefix) && line.ends_with(' ');
        EXPECT_TRUE(isMessage) << line;
        messages.push_back(isMessage ? line.substr(prefix.size(), line.size() - prefix.size() - 1) : line);
    }
    return messages;
}

// The pixels after a conversion that must print nothing; every byte of a destination without room is 0xEE
// before.
inline Bytes Convert(TestImage source, TestImage& destination) {
    if (destination.Data().empty()) {
        destination.Allocate(0xEE);
    }
    EXPECT_EQ(MessagesOf([&] { EXPECT_EQ(Qonvert(source.Get(), destination.Get()), 0u); }), Messages{});
    return destination.Data();
}

inline Bytes Convert(TestImage source, std::uint32_t format) {
    TestImage destination(source.Get()->nWidth, source.Get()->nHeight, format);
    return Convert(std::move(source), destination);
}

// Calls test() with every set of kernels that this machine can run.
template <typename Test>
void WithEachKernelSet(const Test& test) {
    using namespace zorvan::texcompress;
    const InstructionSet before = SelectedInstructionSet();
    for (std::size_t i = 0; i < InstructionSetCount(); ++i) {
        const auto set = static_cast<InstructionSet>(i);
        SelectInstructionSet(set);
        SCOPED_TRACE(InstructionSetName(set));
        test();
    }
    SelectInstructionSet(before);
}

struct ConversionCase {
    const char* what;
    TestImage source;
    TestImage destination;
    Bytes result;
};

inline void ExpectConversions(const std::vector<ConversionCase>& cases) {
    WithEachKernelSet([&] {
        for (const ConversionCase& c : cases) {
            TestImage destination = c.destination;
            EXPECT_EQ(Convert(c.source, destination), c.result) << c.what;
        }
    });
}

// Reproducible bytes.
class Random {
  public:
    explicit Random(std::uint32_t seed) : m_state(seed) {}
    std::uint32_t Next() {
        m_state = m_state * 1664525u + 1013904223u;
        return m_state >> 8;
    }
    Bytes Fill(std::size_t size) {
        Bytes bytes(size);
        for (std::uint8_t& byte : bytes) {
            byte = static_cast<std::uint8_t>(Next());
        }
        return bytes;
    }

  private:
    std::uint32_t m_state;
};

template <typename Value>
Bytes BytesOf(const std::vector<Value>& values) {
    Bytes bytes(values.size() * sizeof(Value));
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

// All values of 16 bits.
inline std::vector<std::uint16_t> EveryWord() {
    std::vector<std::uint16_t> words(65536);
    std::iota(words.begin(), words.end(), std::uint16_t{0});
    return words;
}

}  // namespace texconv_test
