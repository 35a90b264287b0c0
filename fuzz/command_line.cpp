#include "fuzz/command_line.h"

#include <algorithm>

namespace zorvan::fuzz {

std::vector<std::string> WordsOf(std::string_view text) {
    std::vector<std::string> words;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        // A word of the system ends at a byte of 0.
        std::string word(text.substr(0, std::min(text.find('\0'), end)));
        std::replace(word.begin(), word.end(), '/', '_');
        words.push_back(std::move(word));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

}  // namespace zorvan::fuzz
