// What a scene holds that will not show.
#pragma once

#include <string>
#include <vector>

#include "core/scene.h"

namespace zorvan::tool {

// One line each, with the texture's name or the node's path; for a scene whose textures GL has not taken yet.
std::vector<std::string> FindProblems(Scene& scene);

}  // namespace zorvan::tool
