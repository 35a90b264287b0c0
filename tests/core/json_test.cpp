#include <gtest/gtest.h>

#include "core/base64.h"
#include "core/json_reader.h"
#include "core/json_writer.h"
#include "tests/core/fake_backend.h"

namespace zorvan::test {
namespace {

TEST(Json, NumbersReadBackBitForBit) {
    FakeBackend backend;
    JsonWriter writer;
    std::vector<RealFixed> numbers;
    for (int64_t raw = INT32_MIN; raw <= INT32_MAX; raw += 65521) {
        numbers.push_back(RealFixed::FromRaw(static_cast<int32_t>(raw)));
    }
    for (int32_t raw = -70000; raw <= 70000; ++raw) {
        numbers.push_back(RealFixed::FromRaw(raw));
    }
    numbers.push_back(RealFixed::FromRaw(INT32_MAX));
    const auto count = static_cast<uint32_t>(numbers.size());
    writer.Write("n", numbers.data(), count);
    JsonReader reader(backend.registry);
    ASSERT_TRUE(reader.Parse(writer.Text()));
    std::vector<RealFixed> back(count);
    ASSERT_TRUE(reader.Read("n", back.data(), count)) << reader.Error();
    EXPECT_EQ(back, numbers);
}

TEST(Json, NumbersAreShort) {
    const std::pair<int32_t, char const*> cases[] = {
        {0, "0"},       {0x10000, "1"},        {-0x18000, "-1.5"}, {6554, "0.1"},
        {1, "0.00002"}, {INT32_MIN, "-32768"}, {21845, "0.33333"}, {0x10000 * 90 + 3277, "90.05"}};
    for (auto const& [raw, text] : cases) {
        EXPECT_EQ(DecimalText(RealFixed::FromRaw(raw)), text);
    }
}

TEST(Json, ReadsTheNearestNumber) {
    FakeBackend backend;
    const std::pair<char const*, int32_t> cases[] = {{"0.000007", 0},
                                                     {"0.000008", 1},
                                                     {"-0.000008", -1},
                                                     {"1e2", 100 << 16},
                                                     {"32767.99999", INT32_MAX},
                                                     {"-32768", INT32_MIN},
                                                     {"1E-9", 0},
                                                     {"-0", 0}};
    for (auto const& [text, raw] : cases) {
        JsonReader reader(backend.registry);
        reader.Parse(std::string("{\"v\": ") + text + "}");
        RealFixed value;
        EXPECT_TRUE(reader.Read("v", value)) << reader.Error();
        EXPECT_EQ(value.raw, raw) << text;
    }
}

TEST(Json, ValuesReadBack) {
    FakeBackend backend;
    const std::string text = "tab\t\"quotes\" \\ \xE2\x82\xAC \x01";
    const std::vector<uint8_t> blob = {0, 255, 62, 63, 1};
    JsonWriter writer;
    writer.Write("bool", true);
    writer.Write("int", INT32_MIN);
    writer.Write("uint", 4294967294u);
    writer.Write("none", 0xFFFFFFFFu);
    writer.Write("text", text);
    writer.Write("wide", FromUtf8(text));
    writer.Write("literal", "text");
    writer.Write("blob", blob);
    writer.BeginArray("list");
    writer.BeginObject(nullptr);
    writer.EndObject();
    writer.BeginArray(nullptr);
    writer.EndArray();
    writer.EndArray();
    JsonReader reader(backend.registry);
    ASSERT_TRUE(reader.Parse(writer.Text())) << reader.Error();
    bool b = false;
    int32_t i = 0;
    uint32_t u = 0;
    uint32_t none = 0;
    std::string t, literal;
    MStringT<wchar_t> wide;
    std::vector<uint8_t> bytes;
    EXPECT_TRUE(reader.Read("bool", b) && reader.Read("int", i) && reader.Read("uint", u) &&
                reader.Read("none", none) && reader.Read("text", t) && reader.Read("wide", wide) &&
                reader.Read("literal", literal) && reader.Read("blob", bytes));
    EXPECT_TRUE(b);
    EXPECT_EQ(i, INT32_MIN);
    EXPECT_EQ(u, 4294967294u);
    EXPECT_EQ(none, 0xFFFFFFFFu);
    EXPECT_EQ(t, text);
    EXPECT_EQ(ToUtf8(wide), text);
    EXPECT_EQ(literal, "text");
    EXPECT_EQ(bytes, blob);
    ASSERT_TRUE(reader.Enter("list"));
    ASSERT_EQ(reader.Count(), 2u);
    for (uint32_t index : {1u, 0u, 1u}) {
        ASSERT_TRUE(reader.Enter(index));
        reader.Leave();
    }
    EXPECT_FALSE(reader.Enter(2u));
    reader.Leave();
    EXPECT_FALSE(reader.Read("missing", b));
    EXPECT_TRUE(reader.Finish()) << reader.Error();
}

TEST(Base64, MatchesKnownTexts) {
    const std::pair<std::string, std::string> cases[] = {
        {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="}, {"\xFB\xFF", "+/8="}};
    for (auto const& [plain, text] : cases) {
        std::vector<uint8_t> bytes(plain.begin(), plain.end());
        EXPECT_EQ(EncodeBase64(bytes), text);
        std::vector<uint8_t> back;
        EXPECT_TRUE(DecodeBase64(text, back));
        EXPECT_EQ(back, bytes);
    }
    std::vector<uint8_t> bytes;
    for (char const* broken :
         {"Z", "Zg=", "Zg", "Z===", "Zh==", "Zm9=", "Zm 9", "====", "Zg==Zg==", "Zm9v-_"}) {
        EXPECT_FALSE(DecodeBase64(broken, bytes)) << broken;
    }
}

// What a broken scene says. The place is "line:column".
TEST(Json, NamesPlacePathAndExpectation) {
    struct Case {
        std::string root;  // of a scene whose first line is the header
        std::string error;
    };
    const std::string node = R"({"class": "Sprite", )";
    const Case cases[] = {
        {"", "2:1: syntax error while parsing value - unexpected end of input"},
        {"{\n \"length\": 1,\n}", "4:1: syntax error while parsing object key - unexpected '}'"},
        {R"({"length": 1, "length": 2})", "2:25: got the key \"length\" again, expected each key once"},
        {R"({"length": 1e999})", "2:16: number overflow parsing '1e999'"},
        {R"([])", "2:1: /root: got an array of 0, expected an object"},
        {R"(7)", "2:1: /root: got 7, expected an array or an object"},
        {R"({"lenght": 1})",
         "2:12: /root/lenght: got the unknown key \"lenght\", expected one of camera, children, class"},
        {R"({"length": "a"})", "2:12: /root/length: got \"a\", expected a number"},
        {R"({"length": 32768})",
         "2:12: /root/length: got 32768, expected a number from -32768 to below 32768"},
        {R"({"length": -1})", "2:12: /root/length: got a negative number, expected 0 or more"},
        {R"({"opacity": null})", "2:13: /root/opacity: got null, expected a number"},
        {R"({"position": [1, 2]})",
         "2:14: /root/position: got an array of 2, expected an array of 3 numbers"},
        {R"({"position": [1, [[]], 3]})", "2:18: /root/position/1: got an array of 1, expected a number"},
        {R"({"depth": 1})", "2:11: /root/depth: got 1, expected true or false"},
        {R"({"transferMode": 37})", "2:18: /root/transferMode: got 37, expected 0 to 36 or \"none\""},
        {R"({"transferMode": -1})", "2:18: /root/transferMode: got -1, expected a whole number from 0"},
        {R"({"transferMode": 1.5})", "2:18: /root/transferMode: got 1.5, expected a whole number from 0"},
        {R"({"masks": 65})", "2:11: /root/masks: got 65 masks, expected at most 64"},
        {R"({"mode": "twice"})",
         "2:10: /root/mode: got \"twice\", expected \"once\", \"loop\" or \"ping-pong\""},
        {R"({"class": "Sprite"})", "2:11: /root/class: got another class, expected Timeline"},
        {R"({"class": "Texture"})", "2:11: /root/class: got \"Texture\", expected TransformNode, Timeline"},
        {R"({"camera": {"class": "Sprite"}})",
         "2:22: /root/camera/class: got another class, expected Camera"},
        {R"({"children": {}})", "2:14: /root/children: got an object, expected an array"},
        {R"({"children": ["a"]})", "2:15: /root/children/0: got \"a\", expected an object"},
        {R"({"children": [{}]})",
         "2:15: /root/children/0: got a node without \"class\", expected its class name"},
        {"{\"children\": [" + node + "\"width\": 40000}]}",
         "2:44: /root/children/0/width: got 40000, expected 0 to 32767 pixels"},
        {"{\"children\": [" + node + "\"width\": 9999999999}]}",
         "2:44: /root/children/0/width: got 9999999999, expected a whole number from -2147483648"},
        {"{\"children\": [" + node + "\"texture\": \"t\"}]}",
         "2:46: /root/children/0/texture: got \"t\", expected the name of a texture"},
        {"{\"children\": [" + node + "\"a/~b\": 1}]}", "2:43: /root/children/0/a~1~0b: got the unknown key"},
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
         "2:46: /root/tracks/0/keys/0: a key needs a value"},
        {R"({"tracks": [{"property": "transferMode", "keys": [{"frame": 1, "value": 40}]}]})",
         "2:73: /root/tracks/0/keys/0/value: got 40, expected 0 to 36 or \"none\""},
        {std::string(250, '['), "2:200: got deeper nesting, expected at most 200"},
    };
    FakeBackend backend;
    for (Case const& c : cases) {
        Scene scene;
        const std::string text = "{\"version\": 1, \"root\":\n" + c.root + (c.root.empty() ? "" : "}");
        EXPECT_FALSE(scene.Parse(text, backend.registry, "a.json")) << c.root;
        EXPECT_EQ(scene.Error().substr(0, c.error.size() + 7), "a.json:" + c.error) << c.root;
        EXPECT_FALSE(scene.root);
    }
}

TEST(Json, KeepsTheFirstError) {
    FakeBackend backend;
    JsonReader reader(backend.registry);
    reader.Parse(R"({"a": 1, "b": 2, "c": []})");
    bool value = false;
    EXPECT_FALSE(reader.Read("a", value));
    const std::string first = reader.Error();
    EXPECT_FALSE(reader.Read("b", value));
    EXPECT_FALSE(reader.Enter("c"));
    reader.Fail(nullptr, "later");
    EXPECT_FALSE(reader.Finish());
    EXPECT_EQ(reader.Error(), first);
}

}  // namespace
}  // namespace zorvan::test
