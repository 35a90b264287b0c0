// make_examples FOLDER: writes the images of the example scenes into FOLDER/images, and the generated
// scenes into FOLDER.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "core/image_file.h"
#include "examples/generator/art.h"
#include "examples/generator/scenes.h"

namespace {

using namespace zorvan::examples;
using zorvan::Image;

// Writes files into one folder until the first failure.
class Writer {
  public:
    explicit Writer(std::filesystem::path folder) : folder_(std::move(folder)) {
        std::error_code error;
        std::filesystem::create_directories(folder_ / "images", error);
    }

    void Picture(std::string const& name, Image const& image) {
        const std::string path = folder_ / "images" / name;
        if (error_.empty()) {
            const std::string error = zorvan::WritePng(path, image);
            error_ = error.empty() ? "" : path + ": " + error;
        }
    }

    void Text(std::string const& name, std::string const& text) {
        const std::filesystem::path path = folder_ / name;
        if (error_.empty() && !(std::ofstream(path, std::ios::binary) << text << std::flush)) {
            error_ = path.string() + ": cannot write";
        }
    }

    std::string const& Error() const { return error_; }

  private:
    std::filesystem::path folder_;
    std::string error_;
};

void WriteAll(Writer& writer) {
    writer.Picture("dusk-lake.png", DuskLake());
    writer.Picture("sun-glow.png", SunGlow());
    writer.Picture("sailing-boat.png", SailingBoat());
    writer.Picture("mode-sheet.png", ModeSheet());
    writer.Picture("blended-disc.png", BlendedDisc());
    writer.Picture("starry-room.png", StarryRoom());
    for (int i = 0; i < kPaneColors; ++i) {
        writer.Picture("pane-" + std::to_string(i) + ".png", GlassPane(i));
    }
    for (int i = 0; i < kStarColors; ++i) {
        writer.Picture("star-" + std::to_string(i) + ".png", Star(i));
    }
    writer.Text("transfer-modes.json", TransferModesScene());
    writer.Text("camera.json", CameraScene());
    writer.Text("crowd.json", CrowdScene());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_examples FOLDER\n");
        return 1;
    }
    Writer writer(argv[1]);
    WriteAll(writer);
    if (!writer.Error().empty()) {
        std::fprintf(stderr, "make_examples: %s\n", writer.Error().c_str());
        return 2;
    }
    return 0;
}
