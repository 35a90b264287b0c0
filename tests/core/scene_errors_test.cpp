// What is wrong in a scene, and the one line that says so.
#include <gtest/gtest.h>

#include <sstream>

#include "tests/core/fake_backend.h"

namespace zorvan::test {
namespace {

// Members of a scene, or a whole text, and below it the error. See kPlaceholders for what starts with $.
constexpr char kErrors[] = R"___(
{"version": 1,$n "root": {$n  "length": 1,$n}
a.json:4:1: syntax error while parsing object key - unexpected '}'; expected string literal
{"version": 1, "version": 1}
a.json:1:27: got the key "version" again, expected each key once in an object
{"version": 1e999}
a.json:1:17: number overflow parsing '1e999'
$deep
a.json:1:201: got deeper nesting, expected at most 200 arrays and objects inside each other
{"version": 2}
a.json:1:13: /version: got a scene of another or no version, expected "version": 1
"size": [1, 1]
a.json:1:1: /: got a scene without "root", expected its timeline
"size": [0, 4]
a.json:1:24: /size: got a size out of range, expected whole numbers from 1 to 16384
"size": [4, 1.5]
a.json:1:24: /size: got a size out of range, expected whole numbers from 1 to 16384
"size": [4, 16385]
a.json:1:24: /size: got a size out of range, expected whole numbers from 1 to 16384
"camera2d": [1, 4]
a.json:1:28: /camera2d: got a size of 1 or less, expected more on both sides
"other": 1, "root": {}
a.json:1:25: /other: got the unknown key "other", expected one of background, camera2d, fonts, root, shaders, size, textures, version
"root": {"class": "Camera"}
a.json:1:34: /root/class: got another class, expected Timeline
"root": {"children": [{"class": "Sprite"}],$n "le~n/ght":$n1}
a.json:3:1: /root/le~0n~1ght: got the unknown key "le~n/ght", expected one of camera, children, class, depth, length, masks, mode, name, opacity, origin, playing, position, rate, rotation, scale, start, tracks, transferMode
"root": {"length": "a"}
a.json:1:35: /root/length: got "a", expected a number
"root": {"length": 32768}
a.json:1:35: /root/length: got 32768, expected a number from -32768 to below 32768
"root": {"rate": -1}
a.json:1:33: /root/rate: got -1, expected 0 or more
"root": {"position": [1, 2, 3, 4]}
a.json:1:37: /root/position: got an array of 4, expected an array of 3 numbers
"root": {"position": [1, [[]], 3]}
a.json:1:41: /root/position/1: got an array of 1, expected a number
"root": {"depth": 1}
a.json:1:34: /root/depth: got 1, expected true or false
"root": {"transferMode": 37}
a.json:1:41: /root/transferMode: got 37, expected 0 to 36 or "none"
"root": {"transferMode": -1}
a.json:1:41: /root/transferMode: got -1, expected a whole number from 0 to 4294967295 or "none"
"root": {"transferMode": 4294967296}
a.json:1:41: /root/transferMode: got 4294967296, expected a whole number from 0 to 4294967295 or "none"
"root": {"masks": 65}
a.json:1:34: /root/masks: got 65 masks, expected at most 64
"root": {"mode": "twice"}
a.json:1:33: /root/mode: got "twice", expected "once", "loop" or "ping-pong"
"root": {"camera": {"class": "Sprite"}}
a.json:1:45: /root/camera/class: got another class, expected Camera
"root": {"children": {}}
a.json:1:37: /root/children: got an object, expected an array
"root": {"children": [3]}
a.json:1:38: /root/children/0: got 3, expected an object
"root": {"children": [{}]}
a.json:1:38: /root/children/0: got a node without "class", expected its class name
"root": {"children": [{"class": "Sprite", "width": 40000}]}
a.json:1:67: /root/children/0/width: got 40000, expected 0 to 32767 pixels
"root": {"children": [{"class": "Sprite", "height": -1}]}
a.json:1:68: /root/children/0/height: got -1, expected 0 to 32767 pixels
"root": {"children": [{"class": "Sprite", "width": 2147483648}]}
a.json:1:67: /root/children/0/width: got 2147483648, expected a whole number from -2147483648 to 2147483647
"root": {"children": [{"class": "Sprite", "width": -2147483649}]}
a.json:1:67: /root/children/0/width: got -2147483649, expected a whole number from -2147483648 to 2147483647
"root": {"children": [{"class": "Sprite"}, {"class": "Sprite", "texture": "a name that is longer than what errors repeat"}]}
a.json:1:90: /root/children/1/texture: got a string of 45 bytes, expected the name of a texture of this scene, or null
"root": {"tracks": [{"keys": []}]}
a.json:1:36: /root/tracks/0: got a track without "property", expected the name of a property
"root": {"children": [{"class": "Text", "font": null, "name": "t"}], "tracks": [{"property": "string", "node": "t"}]}
a.json:1:109: /root/tracks/0/property: got "string", expected a property of the node that can be animated
"root": {"tracks": [{"property": "opacity", "node": "x"}]}
a.json:1:68: /root/tracks/0/node: got "x", expected the name of a node in this timeline
"root": {"tracks": [{"property": "opacity"}]}
a.json:1:36: /root/tracks/0: got a track without "keys", expected an array of them
"root": {"tracks": [{"property": "opacity", "keys": []}]}
a.json:1:68: /root/tracks/0/keys: got no keys, expected at least one
"root": {"tracks": [{"property": "opacity", "interpolation": "cubic", "keys": []}]}
a.json:1:77: /root/tracks/0/interpolation: got "cubic", expected "step", "linear" or "smooth"
"root": {"tracks": [{"property": "opacity", "keys": [{"frame": 1, "value": 1}, {"frame": 1, "value": 1}]}]}
a.json:1:105: /root/tracks/0/keys/1/frame: got a frame out of order, expected rising frames from 0
"root": {"tracks": [{"property": "opacity", "keys": [{"frame": 1}]}]}
a.json:1:69: /root/tracks/0/keys/0: got a key without "value", expected it
"root": {"tracks": [{"property": "transferMode", "keys": [{"frame": 1, "value": 40}]}]}
a.json:1:96: /root/tracks/0/keys/0/value: got 40, expected 0 to 36 or "none"
"shaders": [{"identifier": 3}]
a.json:1:28: /shaders/0: got no program, expected its bytes in base64
"textures": [{"width": 1, "height": 1}]
a.json:1:29: /textures/0: got a texture without "file" and "levels", expected one of them
"textures": [{"name": "a", "levels": []}]
a.json:1:29: /textures/0: got a texture without "width" and "height", expected its stored size
"textures": [{"format": "rgb"}]
a.json:1:40: /textures/0/format: got "rgb", expected one of rgb565, rgba5551, rgba4444, rgb888, rgba8888-uncompressible, rgba8888, rgba8888-dynamic, atc-rgb, atc-rgba-explicit
"textures": [{"width": 16385}]
a.json:1:39: /textures/0/width: got 16385, expected 1 to 16384
"textures": [{"width": 0}]
a.json:1:39: /textures/0/width: got 0, expected 1 to 16384
"textures": [{"width": 16384, "height": 16384}]
a.json:1:39: /textures/0/width: got 16384x16384 pixels, expected at most 67108864
"textures": [{"width": 4, "height": 4, "usedWidth": 5}]
a.json:1:68: /textures/0/usedWidth: got 5, expected 1 to 4
"textures": [{"width": 1, "height": 1, "levels": []}]
a.json:1:65: /textures/0/levels: got no levels, expected at least one
"textures": [{"width": 1, "height": 1, "levels": [{},{},{},{},{},{},{},{},{},{},{},{},{},{},{},{}]}]
a.json:1:65: /textures/0/levels: got 16 levels, expected at most 15
"textures": [{"width": 1, "height": 1, "levels": [{}]}]
a.json:1:66: /textures/0/levels/0: got a level without "data", expected its bytes in base64
"textures": [{"width": 1, "height": 1, "levels": [{"data": "A"}]}]
a.json:1:75: /textures/0/levels/0/data: got text that is no base64, expected groups of four of A-Z a-z 0-9 + / with = at the end
"textures": [{"width": 1, "height": 1, "levels": [{"data": "AAAA"}]}]
a.json:1:75: /textures/0/levels/0/data: got 3 bytes, expected 4 for 1x1 pixels
"textures": [{"width": 1, "height": 1, "levels": [{"data": "AAAAAAAA"}]}]
a.json:1:75: /textures/0/levels/0/data: got 6 bytes, expected 4 for 1x1 pixels
"textures": [{"width": 1, "height": 1, "levels": [{"data": "AAAAAA=="}]}]
a.json:1:29: /textures/0: got no name, expected a name that no other texture has
"textures": [$page, $page]
a.json:1:136: /textures/1/name: got "p" again, expected a name that no other texture has
"textures": [{"name": "a", "file": "missing.png"}]
a.json:1:51: /textures/0/file: missing.png: No such file or directory
"textures": [{"name": "a", "format": "atc-rgb", "file": "a.png"}]
a.json:1:53: /textures/0/format: got a block format, expected a plain one for an image file
"textures": [{"name": "a", "mipmaps": true, "compress": true, "file": "a.png"}]
a.json:1:54: /textures/0/mipmaps: got both "mipmaps" and "compress", expected at most one of them
"textures": [{"format": "rgb565", "compress": true, "width": 1, "height": 1, "levels": [{"data": "AAA="}]}]
a.json:1:62: /textures/0/compress: got the format rgb565, expected one that can be compressed
"fonts": [{"size": 12}]
a.json:1:26: /fonts/0: got a font without "file" and "pages", expected one of them
"fonts": [{"file": "f", "size": 0}]
a.json:1:48: /fonts/0/size: got 0, expected 1 to 512 pixels
"fonts": [{"lineHeight": 4, "ascent": 3, "pages": []}]
a.json:1:66: /fonts/0/pages: got no pages, expected at least one
"fonts": [{"lineHeight": 4, "ascent": 3, "pages": [{"texture": null}]}]
a.json:1:67: /fonts/0/pages/0: got a page without "texture", expected the name of a texture
"textures": [$page], "fonts": [{$font, "glyphs": [{"character": "a", "page": 1}]}]
a.json:1:249: /fonts/0/glyphs/0/page: got 1, expected 0 to 0
"textures": [$page], "fonts": [{$font, "glyphs": [{"character": "bc"}]}]
a.json:1:236: /fonts/0/glyphs/0/character: got "bc", expected one character
"textures": [$page], "fonts": [{$font, "glyphs": [{"character": ""}]}]
a.json:1:222: /fonts/0/glyphs/0: got a glyph without "rectangle", expected its place on the page
"textures": [$page], "fonts": [{$font, "glyphs": [{"character": "a", "rectangle": [1, 1, 5, 1]}]}]
a.json:1:254: /fonts/0/glyphs/0/rectangle: got a rectangle outside the page or between pixels, expected whole left, top, right and bottom
"textures": [$page], "fonts": [{$font, "glyphs": [{"character": "a", "rectangle": [1, 1, 4, 2]}]}]
a.json:1:254: /fonts/0/glyphs/0/rectangle: got a rectangle outside the page or between pixels, expected whole left, top, right and bottom
"textures": [$page], "fonts": [{$font, "glyphs": [{"character": "a", "rectangle": [1, 1, 3.5, 1]}]}]
a.json:1:254: /fonts/0/glyphs/0/rectangle: got a rectangle outside the page or between pixels, expected whole left, top, right and bottom
"textures": [$page], "fonts": [{$font, "kerning": [{"left": "a", "right": "b"}]}]
a.json:1:223: /fonts/0/kerning/0: got a pair without "left", "right" and "add", expected all of them
"root": {"children": [{"class": "Text"}]}
a.json:1:38: /root/children/0: got a text without "font", expected the name of a font
"root": {"children": [{"class": "Text", "font": null, "alignment": "justify"}]}
a.json:1:83: /root/children/0/alignment: got "justify", expected left, center or right, and top, middle or bottom, such as "center middle"
"root": {"children": [{"class": "Text", "font": null, "box": [-1, 5]}]}
a.json:1:77: /root/children/0/box: got -1, expected 0 or more pixels
"root": {"children": [{"class": "Text", "font": null, "letterSpacing": -40000}]}
a.json:1:87: /root/children/0/letterSpacing: got -40000, expected -32767 to 32767 pixels)___";

const std::pair<std::string, std::string> kPlaceholders[] = {
    {"$n", "\n"},
    {"$deep", std::string(250, '[')},
    {"$page",
     R"({"name": "p", "width": 4, "height": 1, "format": "rgb565", "levels": [{"data": "AAAAAAAAAAA="}]})"},
    {"$font", R"("name": "f", "lineHeight": 4, "ascent": 3, "pages": [{"texture": "p"}])"}};

TEST(SceneErrors, AreOneLineWithPlaceGotAndExpected) {
    FakeBackend backend;
    Scene scene;
    scene.root = new FakeTimeline;
    const RefT<Timeline> before = scene.root;
    std::istringstream lines(kErrors + 1);
    for (std::string text, error; std::getline(lines, text) && std::getline(lines, error);) {
        if (text[0] == '"') {
            text = "{\"version\": 1, " + text + "}";
        }
        for (auto const& [name, value] : kPlaceholders) {
            for (size_t at = 0; (at = text.find(name, at)) != text.npos; at += value.size()) {
                text.replace(at, name.size(), value);
            }
        }
        EXPECT_FALSE(scene.Parse(text, backend.registry, "a.json")) << text;
        EXPECT_EQ(scene.Error(), error) << text;
        EXPECT_EQ(scene.root, before) << "the scene from before still stands";
    }
    ClassRegistry empty;
    EXPECT_FALSE(scene.Parse(R"({"version": 1, "root": {}})", empty));
    EXPECT_EQ(scene.Error(), "<memory>:1:24: /root: got \"Timeline\", for which no back end is loaded");
}

}  // namespace
}  // namespace zorvan::test
