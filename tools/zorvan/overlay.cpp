#include "tools/zorvan/overlay.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <vector>

#include "core/text.h"

namespace zorvan::tool {
namespace {

namespace fs = std::filesystem;

// Best first.
constexpr std::array kFontNames = {
    "DejaVuSans.ttf",       "LiberationSans-Regular.ttf", "NotoSans-Regular.ttf",    "FreeSans.ttf",
    "OpenSans-Regular.ttf", "Roboto-Regular.ttf",         "NotoSansMono-Regular.ttf"};

// Width and height of the overlay in pixels; a camera of these units fits them exactly.
constexpr int kWidth = 512, kHeight = 256;

std::vector<fs::path> FontFolders() {
    std::vector<fs::path> folders;
    if (char const* home = std::getenv("HOME"); home != nullptr) {
        folders = {fs::path(home) / ".local/share/fonts", fs::path(home) / ".fonts"};
    }
    char const* data = std::getenv("XDG_DATA_DIRS");
    std::istringstream shared(data == nullptr || *data == 0 ? "/usr/local/share:/usr/share" : data);
    for (std::string folder; std::getline(shared, folder, ':');) {
        folders.push_back(fs::path(folder) / "fonts");
    }
    return folders;
}

// Two panels with a text each: figures at the top, an error below.
constexpr char const* kScene = R"({"version": 1, "root": {"children": [
    {"class": "Sprite", "name": "panel", "width": 350, "height": 46, "color": [0, 0, 0, 0.65]},
    {"class": "Text", "name": "text", "font": "font", "position": [8, 5, 0], "lineSpacing": 1},
    {"class": "Sprite", "name": "errorPanel", "width": 512, "height": 70, "position": [0, 50, 0],
     "color": [0.1, 0, 0, 0.8]},
    {"class": "Text", "name": "error", "font": "font", "position": [8, 55, 0], "box": [496, 0],
     "color": [1, 0.6, 0.5, 1]}]}})";

}  // namespace

std::string FindOverlayFont() {
    std::string best;
    size_t bestRank = kFontNames.size();
    for (fs::path const& folder : FontFolders()) {
        std::error_code error;
        fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied, error);
        for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
            const std::string name = entry->path().filename();
            for (size_t rank = 0; rank < bestRank; ++rank) {
                if (name == kFontNames[rank]) {
                    bestRank = rank;
                    best = entry->path();
                }
            }
        }
    }
    return best;
}

std::unique_ptr<Overlay> Overlay::Create(Stage& stage, std::string const& fontPath) {
    std::unique_ptr<Overlay> overlay(new Overlay(stage));
    return overlay->Load(fontPath) ? std::move(overlay) : nullptr;
}

bool Overlay::Load(std::string const& fontPath) {
    if (fontPath.empty()) {
        return false;
    }
    nlohmann::json scene = nlohmann::json::parse(kScene);
    // No absolute path is joined to a folder.
    scene["fonts"] = {{{"name", "font"}, {"file", fs::absolute(fontPath)}, {"size", 14}}};
    return scene_.Parse(scene.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace),
                        stage_.GetLoaded().GetRegistry(), "overlay");
}

Node* Overlay::Find(char const* name) {
    for (Node* node : scene_.root->GetChildren()) {
        if (node->name == name) {
            return node;
        }
    }
    return nullptr;
}

void Overlay::SetText(char const* name, std::string const& text) {
    static_cast<Text*>(Find(name))->string.Set(FromUtf8(text));
}

void Overlay::Draw(std::string const& text, std::string const& error) {
    SetText("text", text);
    SetText("error", error);
    static_cast<TransformNode*>(Find("errorPanel"))
        ->opacity.Set(error.empty() ? RealFixed{} : kOne<RealFixed>);
    GraphicsDevice& device = stage_.GetDevice();
    // At the top left, one unit to a pixel; GL counts from the bottom.
    device.SetViewport(0, stage_.GetSize().height - kHeight, kWidth, kHeight);
    device.PushCamera2D(RealFixed::FromInt(kWidth + 1), RealFixed::FromInt(kHeight + 1));
    scene_.root->Update(device, RealFixed{});
    scene_.root->Render(device);
    device.PopCamera();
    device.SetViewport(0, 0, stage_.GetSize().width, stage_.GetSize().height);
}

}  // namespace zorvan::tool
