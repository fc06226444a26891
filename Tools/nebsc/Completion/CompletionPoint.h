// CompletionPoint.h - what the word is that a person is typing, by the words before it.
//
//     completionPointOf({"push", "origin", "ma"})   // the value "ma" of push's LOCAL:THERE
//
// No repository and no file is looked at. The words are those behind "nebsc", without the shell's
// quotes; the last one is being typed, and may be empty.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "CommandLine/Command.h"

namespace neb::nebsc {

struct CompletionPoint {
    enum class Kind {
        /// Nothing belongs there.
        nothing,
        /// The name of one of `commands`.
        command,
        /// An option: one of the command's or of all calls.
        option,
        /// The value of `parameter`.
        value,
    };

    Kind kind = Kind::nothing;
    /// The command that the words before name; absent without one.
    const Command* command = nullptr;
    /// The commands of which one may be named here.
    std::span<const Command* const> commands{};
    /// Whether "help" stands in front of them: the command is named, and not called.
    bool isForHelp = false;
    /// The folders that the call starts in, each relative to the one before it.
    std::vector<std::string> folders{};
    const Parameter* parameter = nullptr;
    /// What stands before the value in the same word: "--branch=".
    std::string head{};
    /// What of the word, or of the value behind the head, is there already.
    std::string text{};
    /// The command's words before that are told by their place.
    std::vector<std::string> formerWords{};
    /// The options that stand in the call already.
    std::vector<const Parameter*> formerOptions{};
};

[[nodiscard]] CompletionPoint completionPointOf(std::span<const std::string> words);

/// The spellings of an option: "-m" and "--message" of "-m,--message".
[[nodiscard]] std::vector<std::string_view> spellingsOf(const Parameter& option);

/// What every call understands, the help too.
[[nodiscard]] std::vector<const Parameter*> optionsOf(const Command* command);

}  // namespace neb::nebsc
