// Images, conversions and captured messages for the converter's tests.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "texcompress/instruction_set.h"
#include "texconv/image.h"

namespace texconv_test {

using Bytes = std::vector<std::uint8_t>;
using namespace QXTextureConverter;

// A descriptor with its own pixels and, once touched, its own flags.
class TestImage {
  public:
    TestImage(std::uint32_t width, std::uint32_t height, std::uint32_t format, Bytes data = {})
        : m_data(std::move(data)), m_image{width, height, format, nullptr, 0, nullptr} {}

    TFormatFlags& Flags() {
        m_image.pFormatFlags = &m_flags;
        return m_flags;
    }
    TestImage& With(std::uint32_t TFormatFlags::*word, std::uint32_t value) {
        Flags().*word = value;
        return *this;
    }
    // Room for the format's size, every byte `fill`.
    TestImage& Allocate(std::uint8_t fill = 0) {
        m_data.assign(Size(), fill);
        return *this;
    }
    std::uint32_t Size() {
        CImage query(nullptr, nullptr);
        return query.ImgSize(&m_image);
    }
    TQonvertImage* Get() {
        m_image.pData = m_data.empty() ? nullptr : m_data.data();
        m_image.nDataSize = static_cast<std::uint32_t>(m_data.size());
        return &m_image;
    }
    std::uint32_t DataSize() const { return m_image.nDataSize; }
    Bytes& Data() { return m_data; }

  private:
    Bytes m_data;
    TFormatFlags m_flags{};
    TQonvertImage m_image;
};

// The messages of one call, in order.
template <typename Call>
std::vector<std::string> MessagesOf(const Call& call) {
    testing::internal::CaptureStderr();
    call();
    const std::string text = testing::internal::GetCapturedStderr();
    const std::string prefix = "QXTextureConverter error: ";
    const std::string suffix = " \n";
    std::vector<std::string> messages;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t end = text.find(suffix, at);
        if (text.compare(at, prefix.size(), prefix) != 0 || end == std::string::npos) {
            ADD_FAILURE() << "not a message line: " << text.substr(at);
            break;
        }
        messages.push_back(text.substr(at + prefix.size(), end - at - prefix.size()));
        at = end + suffix.size();
    }
    return messages;
}

// The pixels after a conversion that must print nothing.
inline Bytes Convert(TestImage& source, TestImage& destination) {
    EXPECT_EQ(MessagesOf([&] { EXPECT_EQ(Qonvert(source.Get(), destination.Get()), 0u); }),
              std::vector<std::string>{});
    return destination.Data();
}

inline Bytes Convert(TestImage source, std::uint32_t format) {
    const TQonvertImage& from = *source.Get();
    TestImage destination(from.nWidth, from.nHeight, format);
    return Convert(source, destination.Allocate(0xEE));
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

inline Bytes FloatBytes(const std::vector<float>& values) {
    Bytes bytes(values.size() * 4);
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

inline Bytes HalfBytes(const std::vector<std::uint16_t>& values) {
    Bytes bytes(values.size() * 2);
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

}  // namespace texconv_test
