// Visibility of the plug-in's symbols: everything is hidden unless marked here and listed in
// graphics/exports.map.
#pragma once

#define ZORVAN_GL_API __attribute__((visibility("default")))
