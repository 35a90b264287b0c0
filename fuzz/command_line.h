// Command lines for the tools' parsers, made from a fuzzer's input.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zorvan::fuzz {

// One word per line. Slashes become underscores: what a parser looks up (a folder, a list of files) lies in
// the working directory, whatever the input says.
std::vector<std::string> WordsOf(std::string_view text);

}  // namespace zorvan::fuzz
