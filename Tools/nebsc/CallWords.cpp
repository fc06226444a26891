#include "CallWords.h"

#include <algorithm>

namespace neb::nebsc {

namespace {

constexpr char shield = '\x1f';

}  // namespace

CallWords readCallWords(int argc, const char* const* argv) {
    std::vector<std::string> typed(argv + std::min(argc, 1), argv + argc);
    if (!typed.empty() && typed.front() == "help") {
        typed.erase(typed.begin());
        typed.emplace_back("--help");
    }
    CallWords call;
    for (const std::string& word : typed) {
        if (call.countBehindDashes) {
            call.words.push_back(shield + word);
            ++*call.countBehindDashes;
        } else if (word == "--") {
            call.countBehindDashes = 0;
        } else {
            call.words.push_back(word.starts_with('[') || word.starts_with(shield) ? shield + word
                                                                                   : word);
        }
    }
    return call;
}

bool isShielded(const std::string& word) {
    return word.starts_with(shield);
}

std::string unshielded(const std::string& word) {
    return isShielded(word) ? word.substr(1) : word;
}

std::string withoutShields(std::string text) {
    std::erase(text, shield);
    return text;
}

}  // namespace neb::nebsc
