#include "tools/qonvert/command_words.h"

namespace qonvert {

namespace {

bool IsNumber(const std::string& word) {
    return !word.empty() && word.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace

std::vector<std::string> CommandWords(const std::vector<std::string>& arguments) {
    std::vector<std::string> words;
    for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument) {
        std::string word = *argument;
        if (word == "--mips" || word == "-m") {
            const bool counted = !words.empty() && IsNumber(words.back());
            word = "--mips=" + (counted ? words.back() : "all");
            if (counted) {
                words.pop_back();
            }
        }
        words.push_back(word);
    }
    return words;
}

}  // namespace qonvert
