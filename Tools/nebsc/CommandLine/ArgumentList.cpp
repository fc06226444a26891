#include "CommandLine/ArgumentList.h"

#include <algorithm>

#include "CommandLine/CommandLine.h"

namespace neb::nebsc {

namespace {

constexpr char shield = '\x1f';

/// Whether the option of all commands has its value in the word behind it.
bool takesNextWord(const std::string& option) {
    const auto rows = commonParameters();
    return std::any_of(rows.begin(), rows.end(), [&option](const Parameter& row) {
        return row.name == option && row.takes != Takes::nothing;
    });
}

/// Takes the folders out of the words in front of the command, and returns its position.
std::size_t takeFolders(std::vector<std::string>& words, std::vector<std::string>& folders) {
    std::size_t i = 0;
    while (i < words.size() && words[i].starts_with('-') && words[i] != "--") {
        const auto word = words.begin() + static_cast<std::ptrdiff_t>(i);
        if (*word == folderOption && i + 1 < words.size()) {
            folders.push_back(*(word + 1));
            words.erase(word, word + 2);
        } else if (word->starts_with(folderOption) && *word != folderOption) {
            folders.push_back(word->substr(folderOption.size()));
            words.erase(word);
        } else {
            i += takesNextWord(*word) ? 2 : 1;
        }
    }
    return i;
}

}  // namespace

ArgumentList readArgumentList(int argc, const char* const* argv) {
    std::vector<std::string> typed(argv + std::min(argc, 1), argv + argc);
    ArgumentList call;
    const std::size_t command = takeFolders(typed, call.folders);
    if (command < typed.size() && typed[command] == "help") {
        typed.erase(typed.begin() + static_cast<std::ptrdiff_t>(command));
        typed.emplace_back("--help");
    }
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
