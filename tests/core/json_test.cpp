#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "core/base64.h"
#include "core/json_reader.h"
#include "core/json_writer.h"
#include "tests/core/fake_backend.h"

namespace zorvan::test {
namespace {

class JsonTest : public testing::Test {
  protected:
    FakeBackend backend;
    JsonReader reader{backend.registry};
};

// With as few decimals as read back to the value.
std::string Shortest(double raw) {
    for (int digits = 0;; ++digits) {
        const double unit = std::pow(10, digits);
        const double value = std::floor(std::abs(raw / 65536) * unit + 0.5) / unit;
        if (std::floor(value * 65536 + 0.5) == std::abs(raw)) {
            char text[32];
            std::snprintf(text, sizeof(text), "%s%.*f", raw < 0 ? "-" : "", digits, value);
            return text;
        }
    }
}

TEST_F(JsonTest, NumbersAreShortAndReadBackBitForBit) {
    std::vector<RealFixed> numbers = {RealFixed::FromRaw(INT32_MAX)};
    for (int64_t raw = INT32_MIN; raw <= INT32_MAX; raw += raw < -70000 || raw > 70000 ? 65521 : 1) {
        numbers.push_back(RealFixed::FromRaw(static_cast<int32_t>(raw)));
        ASSERT_EQ(DecimalText(numbers.back()), Shortest(static_cast<double>(raw)));
    }
    const auto count = static_cast<uint32_t>(numbers.size());
    JsonWriter writer;
    writer.Write("n", numbers.data(), count);
    ASSERT_TRUE(reader.Parse(writer.Text()));
    std::vector<RealFixed> back(count);
    ASSERT_TRUE(reader.Read("n", back.data(), count)) << reader.Error();
    EXPECT_EQ(back, numbers);
}

TEST_F(JsonTest, NumbersBecomeTheNearest) {
    RealFixed values[5];
    ASSERT_TRUE(reader.Parse(R"({"v": [0.000007, 0.000008, -0.000008, 1e2, 32767.99999]})"));
    EXPECT_TRUE(reader.Read("v", values, 5));
    constexpr int32_t kRaw[5] = {0, 1, -1, 100 << 16, INT32_MAX};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(values[i].raw, kRaw[i]);
    }
}

TEST_F(JsonTest, ElementsAreEnteredInAnyOrder) {
    ASSERT_TRUE(reader.Parse(R"({"list": [{"i": 0}, {"i": 1}], "none": "none"})"));
    ASSERT_TRUE(reader.Enter("list"));
    for (int index : {1, 0, 1}) {
        int32_t i = -1;
        ASSERT_TRUE(reader.Enter(static_cast<uint32_t>(index)) && reader.Read("i", i));
        EXPECT_EQ(i, index);
        reader.Leave();
    }
    EXPECT_FALSE(reader.Enter(2u));
    reader.Leave();
    uint32_t none = 0;
    EXPECT_TRUE(reader.Read("none", none) && none == 0xFFFFFFFFu);
    EXPECT_FALSE(reader.Read("missing", none));
    EXPECT_TRUE(reader.Finish()) << reader.Error();
}

TEST_F(JsonTest, KeepsTheFirstErrorAndReadsNothingAfterIt) {
    ASSERT_TRUE(reader.Parse("{\"a\": [{}, 7],\n\"b\": 2}", "a.json"));
    int32_t b = 0;
    ASSERT_TRUE(reader.Enter("a"));
    reader.Fail(nullptr, "first");
    reader.Fail(nullptr, "second");
    EXPECT_FALSE(reader.Enter(0u) || reader.Enter(1u));
    reader.Leave();
    EXPECT_FALSE(reader.Has("b") || reader.Read("b", b) || reader.Finish());
    EXPECT_EQ(reader.Error(), "a.json:1:7: /a: first");
}

TEST(Base64, MatchesKnownTexts) {
    std::vector<uint8_t> back;
    const std::pair<std::string, char const*> cases[] = {
        {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="}, {"\xFB\xFF", "+/8="}};
    for (auto const& [plain, text] : cases) {
        const std::vector<uint8_t> bytes(plain.begin(), plain.end());
        EXPECT_EQ(EncodeBase64(bytes), text);
        EXPECT_TRUE(DecodeBase64(text, back));
        EXPECT_EQ(back, bytes);
    }
    for (auto broken :
         {"Z", "Zg=", "Zg", "Z===", "Zh==", "Zo==", "Zm9=", "Zm 9", "====", "Zg==Zg==", "Zm9v-_"}) {
        EXPECT_FALSE(DecodeBase64(broken, back)) << broken;
    }
}

}  // namespace
}  // namespace zorvan::test
