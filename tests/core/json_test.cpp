#include <gtest/gtest.h>

#include "core/base64.h"
#include "core/json_reader.h"
#include "core/json_writer.h"
#include "tests/core/fake_backend.h"

namespace zorvan::test {
namespace {

TEST(Json, NumbersReadBackBitForBit) {
    FakeBackend backend;
    std::vector<RealFixed> numbers;
    for (int64_t raw = INT32_MIN; raw <= INT32_MAX; raw += raw < -70000 || raw > 70000 ? 65521 : 1) {
        numbers.push_back(RealFixed::FromRaw(static_cast<int32_t>(raw)));
    }
    numbers.push_back(RealFixed::FromRaw(INT32_MAX));
    const auto count = static_cast<uint32_t>(numbers.size());
    JsonWriter writer;
    writer.Write("n", numbers.data(), count);
    JsonReader reader(backend.registry);
    ASSERT_TRUE(reader.Parse(writer.Text()));
    std::vector<RealFixed> back(count);
    ASSERT_TRUE(reader.Read("n", back.data(), count)) << reader.Error();
    EXPECT_EQ(back, numbers);
}

TEST(Json, NumbersAreShortAndTheNearest) {
    FakeBackend backend;
    const struct {
        char const* text;
        int32_t raw;
        bool written;
    } cases[] = {{"0", 0, true},
                 {"1", 0x10000, true},
                 {"-1.5", -0x18000, true},
                 {"0.1", 6554, true},
                 {"0.00002", 1, true},
                 {"-32768", INT32_MIN, true},
                 {"90.05", 0x10000 * 90 + 3277, true},
                 {"0.33333", 21845, true},
                 {"0.000007", 0, false},
                 {"0.000008", 1, false},
                 {"-0.000008", -1, false},
                 {"1e2", 100 << 16, false},
                 {"1E-9", 0, false},
                 {"32767.99999", INT32_MAX, false},
                 {"-0", 0, false}};
    for (auto const& row : cases) {
        JsonReader reader(backend.registry);
        RealFixed value;
        EXPECT_TRUE(reader.Parse(std::string("{\"v\": ") + row.text + "}") && reader.Read("v", value));
        EXPECT_EQ(value.raw, row.raw) << row.text;
        EXPECT_EQ(DecimalText(RealFixed::FromRaw(row.raw)) == row.text, row.written) << row.text;
    }
}

TEST(Json, ValuesReadBack) {
    FakeBackend backend;
    const std::string text = "tab\t\"quotes\" \\ \xE2\x82\xAC \x01";
    JsonWriter writer;
    writer.Write("bool", true);
    writer.Write("int", INT32_MIN);
    writer.Write("uint", 4294967294u);
    writer.Write("none", 0xFFFFFFFFu);
    writer.Write("text", text);
    writer.Write("wide", FromUtf8(text));
    writer.Write("literal", "text");
    writer.BeginArray("list");
    for (int i = 0; i < 2; ++i) {
        writer.BeginObject(nullptr);
        writer.Write("i", i);
        writer.EndObject();
    }
    writer.EndArray();
    JsonReader reader(backend.registry);
    ASSERT_TRUE(reader.Parse(writer.Text())) << reader.Error();
    bool b = false;
    int32_t i = 0;
    uint32_t u = 0, none = 0;
    std::string t, literal;
    MStringT<wchar_t> wide;
    EXPECT_TRUE(reader.Read("bool", b) && reader.Read("int", i) && reader.Read("uint", u) &&
                reader.Read("none", none) && reader.Read("text", t) && reader.Read("wide", wide) &&
                reader.Read("literal", literal));
    EXPECT_EQ(std::tie(i, u, none, b), std::make_tuple(INT32_MIN, 4294967294u, 0xFFFFFFFFu, true));
    EXPECT_EQ(std::tie(t, literal), std::make_tuple(text, "text"));
    EXPECT_EQ(ToUtf8(wide), text);
    ASSERT_TRUE(reader.Enter("list"));
    ASSERT_EQ(reader.Count(), 2u);
    for (int index : {1, 0, 1}) {
        ASSERT_TRUE(reader.Enter(static_cast<uint32_t>(index)) && reader.Read("i", i));
        EXPECT_EQ(i, index);
        reader.Leave();
    }
    EXPECT_FALSE(reader.Enter(2u));
    reader.Leave();
    EXPECT_FALSE(reader.Read("missing", b));
    EXPECT_TRUE(reader.Finish()) << reader.Error();
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
    for (auto broken : {"Z", "Zg=", "Zg", "Z===", "Zh==", "Zm9=", "Zm 9", "====", "Zg==Zg==", "Zm9v-_"}) {
        EXPECT_FALSE(DecodeBase64(broken, back)) << broken;
    }
}

// What a broken scene says. The place is "line:column".
TEST(Json, NamesPlacePathAndExpectation) {
    const std::string node = R"({"children": [{"class": "Sprite", )";
    // The root of a scene whose first line is the header.
    const std::pair<std::string, std::string> cases[] = {
        {"", "2:1: syntax error while parsing value - unexpected end of input"},
        {"{\n \"length\": 1,\n}", "4:1: syntax error while parsing object key - unexpected '}'"},
        {R"({"length": 1, "length": 2})", "2:25: got the key \"length\" again, expected each key once"},
        {R"({"length": 1e999})", "2:16: number overflow parsing '1e999'"},
        {R"([])", "2:1: /root: got an array of 0, expected an object"},
        {R"({"lenght": 1})", "2:12: /root/lenght: got the unknown key \"lenght\", expected one of camera"},
        {R"({"length": "a"})", "2:12: /root/length: got \"a\", expected a number"},
        {R"({"length": 32768})", "2:12: /root/length: got 32768, expected a number from"},
        {R"({"length": -1})", "2:12: /root/length: got a negative number, expected 0 or more"},
        {R"({"position": [1, 2]})", "2:14: /root/position: got an array of 2, expected an array of 3"},
        {R"({"position": [1, [[]], 3]})", "2:18: /root/position/1: got an array of 1, expected"},
        {R"({"depth": 1})", "2:11: /root/depth: got 1, expected true or false"},
        {R"({"transferMode": 37})", "2:18: /root/transferMode: got 37, expected 0 to 36 or \"none\""},
        {R"({"transferMode": 1.5})", "2:18: /root/transferMode: got 1.5, expected a whole number from 0"},
        {R"({"masks": 65})", "2:11: /root/masks: got 65 masks, expected at most 64"},
        {R"({"mode": "twice"})", "2:10: /root/mode: got \"twice\", expected \"once\""},
        {R"({"class": "Texture"})", "2:11: /root/class: got \"Texture\", expected TransformNode"},
        {R"({"camera": {"class": "Sprite"}})",
         "2:22: /root/camera/class: got another class, expected Camera"},
        {R"({"children": {}})", "2:14: /root/children: got an object, expected an array"},
        {R"({"children": [{}]})", "2:15: /root/children/0: got a node without \"class\""},
        {node + "\"width\": 40000}]}", "2:44: /root/children/0/width: got 40000, expected 0 to 32767 pixels"},
        {node + "\"width\": 9999999999}]}",
         "2:44: /root/children/0/width: got 9999999999, expected a whole number from -2147483648"},
        {node + "\"texture\": \"t\"}]}", "2:46: /root/children/0/texture: got \"t\", expected the"},
        {node + "\"a/~b\": 1}]}", "2:43: /root/children/0/a~1~0b: got the unknown key"},
        {R"({"tracks": [{"keys": []}]})", "2:13: /root/tracks/0: got a track without \"property\""},
        {R"({"tracks": [{"property": "name"}]})",
         "2:26: /root/tracks/0/property: got \"name\", expected a property"},
        {R"({"tracks": [{"property": "opacity", "node": "x"}]})",
         "2:45: /root/tracks/0/node: got \"x\", expected the name of a node"},
        {R"({"tracks": [{"property": "opacity"}]})", "2:13: /root/tracks/0: got a track without \"keys\""},
        {R"({"tracks": [{"property": "opacity", "keys": []}]})", "2:45: /root/tracks/0/keys: got no keys"},
        {R"({"tracks": [{"property": "opacity", "interpolation": "cubic", "keys": []}]})",
         "2:54: /root/tracks/0/interpolation: got \"cubic\""},
        {R"({"tracks": [{"property": "opacity", "keys": [{"frame": 1, "value": 1}, {"frame": 1, "value": 1}]}]})",
         "2:82: /root/tracks/0/keys/1/frame: got a frame out of order"},
        {R"({"tracks": [{"property": "opacity", "keys": [{"frame": 1}]}]})",
         "2:46: /root/tracks/0/keys/0: got a key without \"value\""},
        {R"({"tracks": [{"property": "transferMode", "keys": [{"frame": 1, "value": 40}]}]})",
         "2:73: /root/tracks/0/keys/0/value: got 40, expected 0 to 36 or \"none\""},
        {std::string(250, '['), "2:200: got deeper nesting, expected at most 200"},
    };
    FakeBackend backend;
    for (auto const& [root, error] : cases) {
        Scene scene;
        const std::string text = "{\"version\": 1, \"root\":\n" + root + (root.empty() ? "" : "}");
        EXPECT_FALSE(scene.Parse(text, backend.registry, "a.json")) << root;
        EXPECT_EQ(scene.Error().substr(0, error.size() + 7), "a.json:" + error) << root;
        EXPECT_FALSE(scene.root);
    }
}

}  // namespace
}  // namespace zorvan::test
