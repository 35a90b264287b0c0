#include "examples/generator/scenes.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <vector>

#include "examples/generator/art.h"

namespace zorvan::examples {
namespace {

using Json = nlohmann::ordered_json;

// Arrays of one element are written as Json::array({element}): compilers disagree on {element} alone.

// Short numbers keep the files readable.
double Round(double value) {
    return std::round(value * 1000) / 1000;
}

Json Vector(double x, double y, double z) {
    return {Round(x), Round(y), Round(z)};
}

Json Texture(std::string const& name, std::string const& file) {
    return {{"name", name}, {"file", "images/" + file}};
}

Json Sprite(int width, int height, Json const& position) {
    return {{"class", "Sprite"}, {"width", width}, {"height", height}, {"position", position}};
}

Json TexturedSprite(std::string const& texture, int width, int height, Json const& position) {
    Json sprite = Sprite(width, height, position);
    sprite["texture"] = texture;
    return sprite;
}

Json Group(std::string const& name, Json const& children) {
    return {{"class", "TransformNode"}, {"name", name}, {"children", children}};
}

// A camera whose y axis points down, as on a screen: it looks along the z axis.
Json ScreenCamera(int width, int height, double fieldOfView, double tilt, Json const& position) {
    return {{"class", "Camera"},
            {"position", position},
            {"rotation", {180 + tilt, 0, 0}},
            {"fieldOfView", fieldOfView},
            {"nearPlane", 10},
            {"farPlane", 1600},
            {"viewRectangle", {0, 0, width, height}}};
}

// Turns a node about one axis (0 x, 1 y, 2 z) by a number of degrees over a number of frames.
Json Turn(std::string const& node, int axis, double degrees, int frames) {
    Json end = {0, 0, 0};
    end[static_cast<size_t>(axis)] = Round(degrees);
    return {{"node", node},
            {"property", "rotation"},
            {"keys", {{{"frame", 0}, {"value", {0, 0, 0}}}, {{"frame", frames}, {"value", end}}}}};
}

// One line for each element of an array that holds objects; everything else on the line of its key.
void Write(std::string& text, Json const& value, size_t indent) {
    const std::string margin(indent, ' ');
    if (value.is_array() && !value.empty() && value.front().is_object()) {
        text += "[\n";
        for (size_t i = 0; i < value.size(); ++i) {
            text += margin + "  ";
            Write(text, value[i], indent + 2);
            text += i + 1 < value.size() ? ",\n" : "\n";
        }
        text += margin + "]";
    } else if (value.is_object() && value.dump().size() > 200) {
        text += "{\n";
        size_t left = value.size();
        for (auto const& [key, member] : value.items()) {
            text += margin + "  \"" + key + "\": ";
            Write(text, member, indent + 2);
            text += --left > 0 ? ",\n" : "\n";
        }
        text += margin + "}";
    } else {
        text += value.dump();
    }
}

std::string ToText(Json const& scene) {
    std::string text;
    Write(text, scene, 0);
    return text + "\n";
}

}  // namespace

std::string TransferModesScene() {
    constexpr double kColor[4] = {1, 0.42, 0.16, 0.6};
    Json children =
        Json::array({TexturedSprite("sheet", kModeSheetWidth, kModeSheetHeight, Vector(0, 0, 0))});
    for (int mode = 0; mode < 37; ++mode) {
        const Point center = ModeCellCenter(mode);
        Json disc = TexturedSprite("disc", 96, 96, Vector(center.x - 48, center.y - 56, 0));
        disc["transferMode"] = mode;
        Json bar = Sprite(92, 10, Vector(center.x - 46, center.y + 22, 0));
        bar["color"] = kColor;
        bar["transferMode"] = mode;
        children.push_back(disc);
        children.push_back(bar);
    }
    return ToText({{"version", 1},
                   {"size", {kModeSheetWidth, kModeSheetHeight}},
                   {"camera2d", {kModeSheetWidth, kModeSheetHeight}},
                   {"textures", {Texture("sheet", "mode-sheet.png"), Texture("disc", "blended-disc.png")}},
                   {"root", {{"children", children}}}});
}

std::string CameraScene() {
    constexpr int kPanes = 84;
    constexpr int kPerTurn = 20;
    constexpr int kFrames = 240;
    Json textures = Json::array({Texture("room", "starry-room.png")});
    for (int i = 0; i < kPaneColors; ++i) {
        textures.push_back(Texture("pane" + std::to_string(i), "pane-" + std::to_string(i) + ".png"));
    }
    Json panes = Json::array();
    for (int i = 0; i < kPanes; ++i) {
        const double along = static_cast<double>(i) / (kPanes - 1);
        const double turn = static_cast<double>(i) / kPerTurn;
        const double radius = 110 + 90 * along;
        const double angle = 2 * M_PI * turn;
        Json pane =
            TexturedSprite("pane" + std::to_string(i * kPaneColors / kPanes), 64, 96,
                           Vector(radius * std::sin(angle), -238 + 372 * along, -radius * std::cos(angle)));
        pane["origin"] = {32, 48, 0};
        pane["rotation"] = Vector(14, -360 * turn, 0);
        pane["transferMode"] = 4;
        panes.push_back(pane);
    }
    const Json timeline = {{"class", "Timeline"},
                           {"name", "spin"},
                           {"length", kFrames},
                           {"rate", 30},
                           {"camera", ScreenCamera(800, 500, 46, -14, Vector(0, -240, -740))},
                           {"tracks", Json::array({Turn("spiral", 1, 360, kFrames)})},
                           {"children", Json::array({Group("spiral", panes)})}};
    return ToText({{"version", 1},
                   {"size", {800, 500}},
                   {"camera2d", {800, 499}},
                   {"textures", textures},
                   {"root", {{"children", {TexturedSprite("room", 800, 500, Vector(0, 0, 0)), timeline}}}}});
}

std::string CrowdScene() {
    constexpr int kRings = 100;
    constexpr int kPerRing = 100;
    constexpr int kStars = kRings * kPerRing;
    constexpr int kFrames = 1800;
    constexpr double kRadius = 470;
    Json textures = Json::array();
    for (int i = 0; i < kStarColors; ++i) {
        textures.push_back(Texture("star" + std::to_string(i), "star-" + std::to_string(i) + ".png"));
    }
    Json rings = Json::array();
    Json tracks = Json::array();
    for (int ring = 0; ring < kRings; ++ring) {
        Json stars = Json::array();
        for (int i = ring * kPerRing; i < (ring + 1) * kPerRing; ++i) {
            // The golden angle spreads the stars evenly; the arms are where they are large and bright.
            const double out = std::pow((i + 0.5) / kStars, 0.62);
            const double angle = i * 2.399963229728653;
            const double arm = 0.5 + 0.5 * std::cos(2 * (angle - 4.2 * std::log(out + 0.08)));
            const double bright = std::pow(arm, 2.2) * (1 - 0.55 * out) + 0.8 * std::exp(-out * 8);
            const double chance = Noise(i, 1);
            const double size = 0.45 + 0.75 * bright * (0.6 + 0.8 * chance) + (chance > 0.993 ? 0.9 : 0.0);
            const double bulge = 36 * std::exp(-out * 7) + 8;
            const int color = std::min(kStarColors - 1, static_cast<int>(out * 5.2 + 1.3 * Noise(i, 2)));
            Json star = TexturedSprite("star" + std::to_string(color), 16, 16,
                                       Vector(kRadius * out * std::cos(angle),
                                              kRadius * out * std::sin(angle), bulge * (Noise(i, 3) - 0.5)));
            star["origin"] = {8, 8, 0};
            star["scale"] = Vector(size, size, 1);
            star["opacity"] = Round(std::fmin(1, 0.3 + 0.8 * bright));
            star["transferMode"] = 4;
            stars.push_back(star);
        }
        const std::string name = "ring" + std::to_string(ring);
        rings.push_back(Group(name, stars));
        tracks.push_back(Turn(name, 2, 360 * (0.5 + 2.5 / (1 + ring / 25.0)), kFrames));
    }
    Json galaxy = Group("galaxy", rings);
    galaxy["rotation"] = {-58, 12, 0};
    const Json timeline = {
        {"class", "Timeline"}, {"name", "turning"},
        {"length", kFrames},   {"rate", 30},
        {"mode", "ping-pong"}, {"camera", ScreenCamera(1280, 720, 46, 0, Vector(0, 62, -860))},
        {"tracks", tracks},    {"children", Json::array({galaxy})}};
    return ToText({{"version", 1},
                   {"size", {1280, 720}},
                   {"background", {0.016, 0.02, 0.05, 1}},
                   {"textures", textures},
                   {"root", timeline}});
}

}  // namespace zorvan::examples
