// Scenes with every key of the format, and the examples cut small.
#include <nlohmann/json.hpp>

#include "fuzz/seeds/seeds.h"
#include "tests/core/fake_backend.h"

namespace zorvan::fuzz {

namespace {

using Json = nlohmann::ordered_json;

struct SceneSeed {
    char const* name;
    char const* text;
};

// Each of one subject, with all of its keys.
constexpr SceneSeed kScenes[] = {
    {"least", R"({"version":1,"root":{}})"},
    {"header",
     R"({"version":1,"size":[256,128],"background":[0.1,0.1,0.2,1],"camera2d":[257,129.5],"root":{}})"},
    {"group", R"({"version":1,"root":{"children":[{"class":"TransformNode","name":"g","position":[100,-1.5,0],
"rotation":[10,20,45],"scale":[1,2,0.5],"origin":[1,2,3],"opacity":0.5,"transferMode":36,"depth":true,"masks":2,
"children":[{"class":"Sprite","transferMode":"none","masks":0}]}]}})"},
    {"sprite",
     R"({"version":1,"textures":[{"name":"dot","width":1,"height":1,"levels":[{"data":"/4AA/w=="}]}],
"root":{"children":[{"class":"Sprite","width":20,"height":10,"color":[0,1,0,0.5]},
{"class":"Sprite","texture":"dot"},{"class":"Sprite","texture":null,"width":32767}]}})"},
    {"textures", R"({"version":1,"textures":[
{"name":"a","format":"rgb565","width":2,"height":2,"usedWidth":1,"usedHeight":2,
"levels":[{"data":"//8AAAAA//8="},{"data":"74Q="}]},
{"name":"b","format":"atc-rgb","width":4,"height":4,"levels":[{"data":"AAAAAAAAAAA="}]},
{"name":"c","format":"atc-rgba-explicit","width":4,"height":4,"levels":[{"data":"AAAAAAAAAAAAAAAAAAAAAA=="}]},
{"name":"d","format":"rgba4444","width":1,"height":1,"levels":[{"data":"AAA="}]},
{"name":"e","format":"rgba5551","width":1,"height":1,"levels":[{"data":"AAA="}]},
{"name":"f","format":"rgb888","width":1,"height":1,"levels":[{"data":"AAAA"}]},
{"name":"g","format":"rgba8888-dynamic","width":1,"height":1,"levels":[{"data":"AAAAAA=="}]},
{"name":"h","format":"rgba8888-uncompressible","width":1,"height":1,"levels":[{"data":"AAAAAA=="}]}],
"root":{"children":[{"class":"Sprite","texture":"a"}]}})"},
    {"image",
     R"({"version":1,"textures":[{"name":"p","file":"dot.png","format":"rgba4444","width":8,"height":4,
"mipmaps":true},{"name":"q","file":"dot.png","compress":true}],"root":{"children":[{"class":"Sprite","texture":"p"}]}})"},
    {"text", R"({"version":1,"fonts":[{"name":"f","file":"letters.bdf","size":8,"characters":"\u20ac\u2192"}],
"root":{"children":[{"class":"Text","font":"f","string":"AVA i\tA-V\nA","color":[1,0.8,0.2,1],"box":[40,30],
"alignment":"center middle","letterSpacing":1,"lineSpacing":-2},
{"class":"Text","font":null,"string":"\ud83d\ude00","alignment":"right bottom","box":[0,0]}]}})"},
    {"bitmap-font", R"({"version":1,"textures":[{"name":"bars","width":4,"height":2,"levels":[
{"data":"AAAA/wAAAP8AAAD/AAAA//////////////////////8="}]}],"fonts":[{"name":"bars","lineHeight":3,"ascent":2,
"pages":[{"texture":"bars"}],"glyphs":[{"character":"i","rectangle":[0,0,1,1],"advance":2},
{"character":"m","page":0,"rectangle":[0,0,4,1],"advance":5,"offset":[0,-1]},{"character":"","rectangle":[0,0,1,1]}],
"kerning":[{"left":"m","right":"i","add":-1}]}],
"root":{"children":[{"class":"Text","font":"bars","string":"mi im x","box":[9,0],"alignment":"right"}]}})"},
    {"camera",
     R"({"version":1,"root":{"camera":{"class":"Camera","name":"eye","orthographic":true,"fieldOfView":45,
"horizontalFieldOfView":30,"nearPlane":0.5,"farPlane":2000,"viewRectangle":[0,0,640,480],"position":[0,0,500],
"children":[{"class":"Sprite"}]},"children":[{"class":"Camera"}]}})"},
    {"timeline",
     R"({"version":1,"root":{"length":60,"rate":25,"start":0.5,"mode":"loop","playing":true,"children":[
{"class":"Timeline","start":0.5,"length":15,"mode":"ping-pong","playing":false,"children":[
{"class":"Sprite","name":"ball","width":8,"height":8}],"tracks":[{"node":"ball","property":"position","keys":[
{"frame":0,"value":[0,0,0]},{"frame":15,"value":[100,0,0]}]}]},{"class":"Timeline","mode":"once","length":3}]}})"},
    {"tracks",
     R"({"version":1,"textures":[{"name":"dot","width":1,"height":1,"levels":[{"data":"/4AA/w=="}]}],
"root":{"length":90,"camera":{"name":"eye","viewRectangle":[0,0,4,3]},"children":[{"class":"Sprite","name":"s"}],
"tracks":[{"property":"opacity","interpolation":"smooth","keys":[{"frame":0,"value":0},{"frame":30,"value":1}]},
{"node":"s","property":"transferMode","keys":[{"frame":0,"value":"none"},{"frame":45,"value":12}]},
{"node":"s","property":"texture","keys":[{"frame":0,"value":null},{"frame":60,"value":"dot"}]},
{"node":"s","property":"color","interpolation":"linear","keys":[{"frame":1.5,"value":[0,0,0,1]}]},
{"node":"s","property":"depth","interpolation":"step","keys":[{"frame":0,"value":true}]},
{"node":"s","property":"width","keys":[{"frame":0,"value":3},{"frame":9,"value":7}]},
{"node":"eye","property":"viewRectangle","keys":[{"frame":0,"value":[0,0,1,1]},{"frame":90,"value":[0,0,2,3]}]}]}})"},
    {"shader", R"({"version":1,"shaders":[{"identifier":1234567890,"binary":"AAECAw=="}],"root":{}})"},
    {"numbers",
     R"({"version":1,"background":[-1e-3,0.1E2,32767.99999,-32768],"root":{"position":[1e4,-0.0,7.62939453125e-06]}})"},
};

// Needs a font from the packages.
constexpr SceneSeed kOutlines = {"outlines",
                                 R"({"version":1,"fonts":[{"name":"f","file":"letters.ttf","size":12}],
"root":{"children":[{"class":"Text","font":"f","string":"AVAil"}]}})"};

void AddScene(SeedFolder const& folder, std::string const& name, std::string const& text) {
    test::FakeBackend backend;
    Scene scene;
    if (!scene.Parse(text, backend.registry, name)) {
        throw std::runtime_error(scene.Error());
    }
    folder.Add("scene", name, text);
}

// Keeps the first few of each list, as a fuzzer learns little from the rest.
void Shorten(Json& json) {
    constexpr size_t kMostChildren = 4;
    for (auto& [key, value] : json.items()) {
        if (value.is_structured()) {
            Shorten(value);
        }
        if (key == "children" && value.size() > kMostChildren) {
            value.erase(value.begin() + kMostChildren, value.end());
        }
    }
}

// The names that the nodes of a tree have.
void Collect(Json const& node, std::vector<std::string>& names) {
    if (node.contains("name")) {
        names.push_back(node["name"]);
    }
    for (auto const& [key, value] : node.items()) {
        if (value.is_structured() && key != "tracks") {
            Collect(value, names);
        }
    }
}

// Tracks of nodes that are gone.
void DropTracks(Json& node) {
    for (auto& [key, value] : node.items()) {
        if (value.is_structured() && key != "tracks") {
            DropTracks(value);
        }
    }
    if (!node.is_object() || !node.contains("tracks")) {
        return;
    }
    std::vector<std::string> names;
    Collect(node, names);
    Json kept = Json::array();
    for (Json const& track : node["tracks"]) {
        if (!track.contains("node") || std::find(names.begin(), names.end(), track["node"]) != names.end()) {
            kept.push_back(track);
        }
    }
    node["tracks"] = kept;
}

// Files give way to the small ones that are there.
std::string CutExample(std::filesystem::path const& path) {
    Json scene = Json::parse(std::ifstream(path));
    for (Json& texture : scene["textures"]) {
        if (texture.contains("file")) {
            texture = {{"name", texture["name"]}, {"file", "dot.png"}};
        }
    }
    for (Json& font : scene["fonts"]) {
        if (font.contains("file")) {
            font = {{"name", font["name"]}, {"file", "letters.bdf"}, {"size", 8}};
        }
    }
    for (char const* kind : {"textures", "fonts"}) {
        if (scene[kind].is_null()) {
            scene.erase(kind);
        }
    }
    Shorten(scene);
    DropTracks(scene["root"]);
    return scene.dump();
}

}  // namespace

void AddScenes(SeedFolder const& folder, std::filesystem::path const& examples) {
    std::filesystem::current_path(folder.Files());
    for (SceneSeed const& seed : kScenes) {
        AddScene(folder, seed.name, seed.text);
    }
    if (std::filesystem::exists("letters.ttf")) {
        AddScene(folder, kOutlines.name, kOutlines.text);
    }
    for (auto const& entry : std::filesystem::directory_iterator(examples)) {
        if (entry.path().extension() == ".json") {
            AddScene(folder, "example-" + entry.path().stem().string(), CutExample(entry.path()));
        }
    }
}

}  // namespace zorvan::fuzz
