// Visibility of the plug-in's symbols: everything is hidden unless marked here and listed in
// graphics/exports.map. Helpers among the private members of a marked class are marked hidden again.
#pragma once

#define ZORVAN_GL_API __attribute__((visibility("default")))
