// Ranges of properties, for every way into them.
#include <gtest/gtest.h>

#include "tests/core/fake_backend.h"

namespace zorvan::test {
namespace {

struct Row {
    char const *node, *property;
    std::vector<char const*> good;
    std::vector<std::pair<char const*, char const*>> bad;  // value, and what the error calls it
    char const* expected;
};

const Row kRows[] = {
    {"Sprite", "width", {"0", "32767"}, {{"-5", "-5"}, {"32768", "32768"}}, "0 to 32767 pixels"},
    {"Sprite", "height", {"0", "32767"}, {{"-1", "-1"}, {"100000", "100000"}}, "0 to 32767 pixels"},
    {"Sprite", "transferMode", {"0", "36", "\"none\""}, {{"37", "37"}}, "0 to 36 or \"none\""},
    {"Text", "box", {"[0, 0.5]"}, {{"[-1, 5]", "-1"}, {"[5, -0.25]", "-0.25"}}, "0 or more pixels"},
    {"Text",
     "letterSpacing",
     {"-32767", "32767"},
     {{"-40000", "-40000"}, {"32768", "32768"}},
     "-32767 to 32767 pixels"},
    {"Text", "lineSpacing", {"-32767", "32767"}, {{"-32768", "-32768"}}, "-32767 to 32767 pixels"},
    {"Timeline", "rate", {"0", "32767.5"}, {{"-1", "-1"}}, "0 or more"},
    {"Timeline", "length", {"0", "32767.5"}, {{"-0.5", "-0.5"}}, "0 or more"},
    // Without a range all that the type holds is good.
    {"Sprite", "opacity", {"-1", "2"}, {}, ""},
    {"Camera", "nearPlane", {"-32768", "32767"}, {}, ""},
    {"Timeline", "start", {"-32768", "32767"}, {}, ""},
};

// A scene with a node of the class: with a plain value of the property, or with a track of one key.
std::string SceneWith(Row const& row, std::string const& value, bool asKey) {
    const std::string kind = row.node;
    const std::string plain = asKey ? "" : ", \"" + std::string(row.property) + "\": " + value;
    const std::string node = "{\"class\": \"" + kind + "\", \"name\": \"n\"" +
                             (kind == "Text" ? ", \"font\": null" : "") + plain + "}";
    const std::string tracks = asKey ? ", \"tracks\": [{\"node\": \"n\", \"property\": \"" +
                                           std::string(row.property) +
                                           "\", \"keys\": [{\"frame\": 0, \"value\": " + value + "}]}]"
                                     : "";
    return "{\"version\": 1, \"root\": {\"children\": [" + node + "]" + tracks + "}}";
}

TEST(PropertyRange, HoldsForValuesAndKeys) {
    FakeBackend backend;
    Scene scene;
    for (Row const& row : kRows) {
        for (bool asKey : {false, true}) {
            for (char const* value : row.good) {
                EXPECT_TRUE(scene.Parse(SceneWith(row, value, asKey), backend.registry)) << scene.Error();
            }
            for (auto const& [value, got] : row.bad) {
                const std::string path = asKey ? std::string("/root/tracks/0/keys/0/value")
                                               : "/root/children/0/" + std::string(row.property);
                EXPECT_FALSE(scene.Parse(SceneWith(row, value, asKey), backend.registry))
                    << row.property << value << asKey;
                const std::string line = path + ": got " + got + ", expected " + row.expected;
                EXPECT_TRUE(scene.Error().ends_with(line)) << scene.Error() << "\n" << line;
            }
        }
    }
}

}  // namespace
}  // namespace zorvan::test
