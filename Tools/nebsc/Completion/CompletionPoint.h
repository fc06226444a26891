// CompletionPoint.h - what the argument can be that the user is typing.
//
//     completionPointOf({"push", "origin", "ma"})   // a value of the parameter BRANCHES: "ma"
#pragma once

#include <span>
#include <string>

#include "CommandLine/CommandLineParser.h"

namespace neb::nebsc {

struct CompletionPoint {
    enum class Kind {
        /// Nothing can be completed.
        nothing,
        /// A command that `before` accepts.
        command,
        /// An option that `before` accepts.
        option,
        /// A value of `parameter`.
        value,
    };

    /// The state before the argument.
    CommandLineParser before;
    /// The text to complete: the argument, or the part after `head`.
    std::string text{};
    Kind kind = Kind::nothing;
    const Parameter* parameter = nullptr;
    /// The part of the argument before the value: "--branch=".
    std::string head{};
};

/// Finds the point from the arguments after "nebsc", without the shell's quotes. The last one is
/// being typed and may be empty. Reads neither the repository nor files.
[[nodiscard]] CompletionPoint completionPointOf(std::span<const std::string> arguments);

/// Returns whether the arguments before the point request help for a command instead of running it.
[[nodiscard]] bool isForHelp(const CompletionPoint& point);

}  // namespace neb::nebsc
