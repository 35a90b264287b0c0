// Nodes in words.
#pragma once

#include <string>

#include "core/node.h"

namespace zorvan::tool {

// As scene files name it: the plug-in's classes are called like the core's, with GL behind.
std::string ClassName(Node& node);
// Where the node stands in its scene file: "/root/children/3".
std::string NodePath(Node& node);
// All properties as one line of JSON.
std::string PropertyText(Node& node);

}  // namespace zorvan::tool
