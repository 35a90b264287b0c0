// The words of the command line.
#pragma once

#include <string>
#include <vector>

namespace qonvert {

// The words behind the program's name as CLI11 wants them: in reverse, with "--mips" and a number behind it
// in one word, so that it does not take a file for its value.
std::vector<std::string> CommandWords(const std::vector<std::string>& arguments);

}  // namespace qonvert
