#include <CLI/CLI.hpp>

#include "tools/zorvan/verb.h"
#include "tools/zorvan/view.h"

namespace zorvan::tool {
namespace {

constexpr char const* kFooter =
    "Examples:\n"
    "  zorvan view hello.json\n"
    "  zorvan view timelines.json --size 1280x960 --time 2.5 --paused\n"
    "\n"
    "Keys:\n"
    "  Space           pause, go on          . ,             one frame on, one back\n"
    "  Right Left      a second on, back     Shift           with these: ten seconds\n"
    "  Home 0 ... 9    the start, tenths     [ ] Backspace   slower, faster, normal speed\n"
    "  + -  wheel      zoom                  w a s d  drag   move the camera\n"
    "  r               camera as at first    o               overlay on and off\n"
    "  F5              load again            F12             screenshot into the working folder\n"
    "  q Esc           quit                  click           what is there\n"
    "\n"
    "The scene is loaded again whenever its file, an image or a font of it changes; while it has an error,\n"
    "the old one stays. Zooming and moving are for scenes with a camera2d.";

}  // namespace

Verb AddViewVerb(CLI::App& program) {
    CLI::App* command = program.add_subcommand("view", "Shows a scene in a window");
    auto options = std::make_shared<ViewOptions>();
    command->add_option("SCENE", options->stage.scene, "Scene file (JSON)")->required();
    AddValue(*command, "--time", options->time, "Start at this time, in seconds; default 0");
    command->add_flag("--paused", options->paused, "Start paused");
    options->stage.AddToViewer(*command);
    command->footer(kFooter);
    return {command, [options] { return View(*options); }};
}

}  // namespace zorvan::tool
