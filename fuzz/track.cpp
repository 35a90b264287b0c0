// Property values and tracks in scenes that are put together from the input: whatever loads, saves to a text
// that loads to the same, and a track's values stay between its keys'.
#include "core/track.h"

#include <vector>

#include "core/json_writer.h"
#include "fuzz/fuzz_input.h"
#include "tests/core/fake_backend.h"

namespace {

using namespace zorvan;
using fuzz::FuzzInput;
using fuzz::Require;

enum class Kind : uint8_t { Number, Vector, Color, Rectangle, Size, Whole, Mode, Truth, Texture, Text };

struct NamedProperty {
    char const* name;
    Kind kind;
};

constexpr std::array<NamedProperty, 7> kPlace = {{{"position", Kind::Vector},
                                                  {"rotation", Kind::Vector},
                                                  {"scale", Kind::Vector},
                                                  {"origin", Kind::Vector},
                                                  {"opacity", Kind::Number},
                                                  {"transferMode", Kind::Mode},
                                                  {"depth", Kind::Truth}}};
constexpr std::array<NamedProperty, 5> kSprite = {{{"width", Kind::Whole},
                                                   {"height", Kind::Whole},
                                                   {"color", Kind::Color},
                                                   {"texture", Kind::Texture},
                                                   {"masks", Kind::Whole}}};
constexpr std::array<NamedProperty, 6> kText = {{{"string", Kind::Text},
                                                 {"color", Kind::Color},
                                                 {"box", Kind::Size},
                                                 {"alignment", Kind::Text},
                                                 {"letterSpacing", Kind::Whole},
                                                 {"lineSpacing", Kind::Whole}}};
constexpr std::array<NamedProperty, 6> kCamera = {{{"orthographic", Kind::Truth},
                                                   {"horizontalFieldOfView", Kind::Number},
                                                   {"fieldOfView", Kind::Number},
                                                   {"nearPlane", Kind::Number},
                                                   {"farPlane", Kind::Number},
                                                   {"viewRectangle", Kind::Rectangle}}};
constexpr std::array<NamedProperty, 5> kTimeline = {{{"length", Kind::Number},
                                                     {"rate", Kind::Number},
                                                     {"start", Kind::Number},
                                                     {"playing", Kind::Truth},
                                                     {"mode", Kind::Text}}};

std::string Number(FuzzInput& input) {
    constexpr std::array<char const*, 8> kOdd = {"-32768",      "32767.99999", "1e3",   "-0",
                                                 "0.000007629", "32768",       "1e999", "\"1\""};
    const uint32_t choice = input.Byte();
    if (choice >= 248) {
        return input.Pick(kOdd);
    }
    return choice < 128 ? std::to_string(choice)
                        : DecimalText(RealFixed::FromRaw(static_cast<int32_t>(input.Word())));
}

std::string Numbers(FuzzInput& input, int count) {
    std::string text = "[";
    for (int i = 0; i < count; ++i) {
        text += (i > 0 ? "," : "") + Number(input);
    }
    return text + "]";
}

// Now and then of another kind than asked for.
std::string Value(FuzzInput& input, Kind kind) {
    constexpr std::array<char const*, 8> kTexts = {
        "\"center middle\"", "\"right bottom\"", "\"a\\u20acb\\n\"", "\"once\"",
        "\"ping-pong\"",     "\"loop\"",         "\"left\"",         "\"\""};
    const uint32_t choice = input.Byte();
    switch (choice < 250 ? kind : static_cast<Kind>(choice - 250)) {
        case Kind::Number:
            return Number(input);
        case Kind::Vector:
            return Numbers(input, 3);
        case Kind::Color:
        case Kind::Rectangle:
            return Numbers(input, 4);
        case Kind::Size:
            return Numbers(input, 2);
        case Kind::Whole:
            return choice < 200 ? std::to_string(input.Byte())
                                : std::to_string(static_cast<int32_t>(input.Word()));
        case Kind::Mode:
            return choice % 2 == 0 ? "\"none\"" : std::to_string(input.Byte() % 40);
        case Kind::Truth:
            return choice % 2 == 0 ? "true" : "false";
        case Kind::Texture:
            return choice % 2 == 0 ? "null" : "\"dot\"";
        case Kind::Text:
            return input.Pick(kTexts);
    }
    return "null";
}

template <size_t N>
NamedProperty PickProperty(FuzzInput& input, std::array<NamedProperty, N> const& own) {
    return input.Byte() % 2 == 0 ? input.Pick(kPlace) : input.Pick(own);
}

// Up to three properties of a node; a name that comes twice fails.
template <size_t N>
std::string Members(FuzzInput& input, std::array<NamedProperty, N> const& own) {
    std::string text;
    const uint32_t count = input.Byte() % 4;
    for (uint32_t i = 0; i < count; ++i) {
        const NamedProperty property = PickProperty(input, own);
        text += std::string(",\"") + property.name + "\":" + Value(input, property.kind);
    }
    return text;
}

template <size_t N>
std::string TrackOf(FuzzInput& input, std::string const& node, std::array<NamedProperty, N> const& own) {
    constexpr std::array<char const*, 4> kInterpolations = {"step", "linear", "smooth", ""};
    const NamedProperty property = PickProperty(input, own);
    std::string text = "{\"property\":\"" + std::string(property.name) + "\"";
    text += node.empty() ? "" : ",\"node\":\"" + node + "\"";
    const std::string interpolation = input.Pick(kInterpolations);
    text += interpolation.empty() ? "" : ",\"interpolation\":\"" + interpolation + "\"";
    text += ",\"keys\":[";
    const uint32_t keys = input.Range(1, 5);
    int64_t frame = 0;
    for (uint32_t i = 0; i < keys; ++i) {
        const uint32_t step = input.Byte();
        frame += step < 250 ? step * 4096 : static_cast<int32_t>(input.Word());
        text += std::string(i > 0 ? "," : "") +
                "{\"frame\":" + DecimalText(RealFixed::FromRaw(static_cast<int32_t>(frame))) +
                ",\"value\":" + Value(input, property.kind) + "}";
    }
    return text + "]}";
}

std::string AnyTrack(FuzzInput& input) {
    switch (input.Byte() % 5) {
        case 0:
            return TrackOf(input, "s", kSprite);
        case 1:
            return TrackOf(input, "t", kText);
        case 2:
            return TrackOf(input, "c", kCamera);
        case 3:
            return TrackOf(input, "l", kTimeline);
        default:
            return TrackOf(input, "", kTimeline);
    }
}

// Some of the nodes that tracks may name; a track of another fails.
std::string RootOf(FuzzInput& input) {
    const uint32_t nodes = input.Byte();
    std::string text = "{";
    if ((nodes & 1) != 0) {
        text += "\"camera\":{\"name\":\"c\"" + Members(input, kCamera) + "},";
    }
    text += "\"children\":[{\"class\":\"Sprite\",\"name\":\"s\"" + Members(input, kSprite) + "}";
    if ((nodes & 2) != 0) {
        text += ",{\"class\":\"Text\",\"name\":\"t\",\"font\":null" + Members(input, kText) + "}";
    }
    if ((nodes & 4) != 0) {
        text += ",{\"class\":\"Timeline\",\"name\":\"l\"" + Members(input, kTimeline) + "}";
    }
    text += "]" + Members(input, kTimeline) + ",\"tracks\":[";
    const uint32_t tracks = input.Range(0, 3);
    for (uint32_t i = 0; i < tracks; ++i) {
        text += (i > 0 ? "," : "") + AnyTrack(input);
    }
    return text + "]}";
}

RefT<Timeline> Load(std::string const& text, ClassRegistry& registry, Texture* dot) {
    JsonReader reader(registry);
    reader.AddTexture(dot);
    reader.Parse(text);
    const RefT<Node> node(LoadNode(reader, "Timeline"));
    const bool whole = reader.Finish();
    Require(whole == reader.Error().empty() && (!whole || node));
    return RefT<Timeline>(whole ? static_cast<Timeline*>(node.Get()) : nullptr);
}

std::string Save(Timeline& root) {
    JsonWriter writer;
    root.Save(writer);
    return writer.Text();
}

Node& TargetOf(Track const& track, Timeline& root) {
    if (track.nodeName.empty()) {
        return root;
    }
    if (track.nodeName == "c") {
        return *root.GetCamera();
    }
    return *test::Find<Node>(root, track.nodeName);
}

// The numbers of a property that blends, none of any other.
std::vector<RealFixed> NumbersOf(PropertyBase* property) {
    if (auto* number = dynamic_cast<PropertyT<RealFixed>*>(property)) {
        return {number->Get()};
    }
    if (auto* vector = dynamic_cast<PropertyT<Vector3T<RealFixed>>*>(property)) {
        return {vector->Get().x, vector->Get().y, vector->Get().z};
    }
    if (auto* color = dynamic_cast<PropertyT<ColorT<RealFixed>>*>(property)) {
        return {color->Get().red, color->Get().green, color->Get().blue, color->Get().alpha};
    }
    return {};
}

// On a key, between two, or anywhere.
RealFixed FrameFor(FuzzInput& input, std::vector<TrackKey> const& keys) {
    const uint32_t choice = input.Byte();
    const RealFixed key = keys[choice % keys.size()].frame;
    if (choice < 64) {
        return key;
    }
    const auto raw = static_cast<int32_t>(input.Word());
    return RealFixed::FromRaw(choice < 224 ? key.raw - (raw & 0xFFFFF) : raw);
}

void RequireBetweenKeys(Track track, Timeline& root, FuzzInput& input) {
    PropertyBase* property = TargetOf(track, root).GetProperties().Find(track.propertyName);
    for (int i = 0; i < 4; ++i) {
        track.Apply(FrameFor(input, track.keys));
        const std::vector<RealFixed> numbers = NumbersOf(property);
        for (size_t part = 0; part < numbers.size(); ++part) {
            const auto less = [part](TrackKey const& a, TrackKey const& b) {
                return a.value.numbers[part] < b.value.numbers[part];
            };
            const auto [low, high] = std::minmax_element(track.keys.begin(), track.keys.end(), less);
            Require(low->value.numbers[part] <= numbers[part] && numbers[part] <= high->value.numbers[part]);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const* data, size_t size) {
    FuzzInput input(data, size);
    test::FakeBackend backend;
    const RefT<Texture> dot(new test::FakeTexture);
    dot->name = "dot";
    const RefT<Timeline> root = Load(RootOf(input), backend.registry, dot.Get());
    if (!root) {
        return 0;
    }
    const bool saves = input.Byte() % 4 == 0;
    if (saves) {
        const std::string first = Save(*root);
        const RefT<Timeline> again = Load(first, backend.registry, dot.Get());
        Require(again && Save(*again) == first);
    }
    for (Track const& track : root->GetTracks()) {
        RequireBetweenKeys(track, *root, input);
    }
    test::FakeDevice device;
    for (int i = 0; i < 4; ++i) {
        root->Update(device, RealFixed::FromRaw(static_cast<int32_t>(input.Word())));
        root->SetFrame(RealFixed::FromRaw(static_cast<int32_t>(input.Word())));
    }
    return 0;
}
