// ArgumentList.h - the words of a call, so that CLI11 can take them.
//
// CLI11 takes a word in brackets for a list where more than one word may stand, though a file may
// be called "[a]"; and it forgets "--" behind the first of many words. So a word that is no option,
// whatever it looks like, is shielded: it is given a beginning of its own, and loses it when it is
// read.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace neb::nebsc {

struct ArgumentList {
    /// The values of the options "-C" in front of the command.
    std::vector<std::string> folders;
    /// The others behind "nebsc", in order, without the "--"; shielded where they need it. "help
    /// log" has become "log --help".
    std::vector<std::string> words;
    /// How many of them stood behind "--"; absent without a "--".
    std::optional<std::size_t> countBehindDashes;
};

/// As main() has them.
[[nodiscard]] ArgumentList readArgumentList(int argc, const char* const* argv);

[[nodiscard]] bool isShielded(const std::string& word);
/// The word as it was typed.
[[nodiscard]] std::string unshielded(const std::string& word);
/// A text that holds words, as they were typed.
[[nodiscard]] std::string withoutShields(std::string text);

}  // namespace neb::nebsc
