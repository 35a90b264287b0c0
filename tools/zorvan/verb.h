// The verbs of the program. Each adds itself to the command line and says what to run.
#pragma once

#include <functional>

#include "tools/zorvan/result.h"

namespace CLI {
class App;
}

namespace zorvan::tool {

struct Verb {
    CLI::App* command;  // owned by the program's command line
    std::function<Status()> run;
    // Whether the options fit together, before anything is opened; `run` asks first. May be empty.
    std::function<Status()> check = {};
};

// zorvan render SCENE OUT: frames of a scene into PNG files, a film or a stream.
Verb AddRenderVerb(CLI::App& program);
// zorvan info SCENE: what is in a scene file.
Verb AddInfoVerb(CLI::App& program);
// zorvan bench SCENE: how fast a scene updates and renders.
Verb AddBenchVerb(CLI::App& program);
// zorvan view SCENE: a scene in a window.
Verb AddViewVerb(CLI::App& program);

}  // namespace zorvan::tool
