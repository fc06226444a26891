// CommandOutput.h - what a command has to say, apart from how it gets out.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "NEBFoundation/NEBSourceControlError.h"
#include "Terminal/ExitStatus.h"

namespace neb::nebsc {

struct CommandOutput {
    /// Each with its line ends; empty where there is nothing to say.
    std::string standardOutput;
    std::string standardError;
    int exitStatus = exitDone;
    /// The program, as the shell takes it, through which standard output goes to the terminal.
    std::optional<std::string> pager = std::nullopt;
    /// What a program is told of the failure, which is not that of an outcome; absent as a rule.
    std::optional<NEBSourceControlError> error = std::nullopt;
};

/// A reply that is one line on standard error: "nebsc: " and the sentence, made printable. With
/// exitFailed it has the sentence as an error, too, of the class that the same failure has in the
/// outcome of a request; "unknown" unless given.
[[nodiscard]] CommandOutput refusal(std::string_view sentence, int exitStatus,
                                    std::optional<std::string_view> errorClass = std::nullopt);

/// A reply that tells of an error.
[[nodiscard]] CommandOutput failureWith(const NEBSourceControlError& error);

/// Adds a failure behind what the reply has to say; of several, a program is told the first.
void addFailure(CommandOutput& output, const CommandOutput& failure);

/// The line of such a reply alone.
[[nodiscard]] std::string complaint(std::string_view sentence);

/// Writes the reply, standard output first, and answers the exit status. What cannot be written to
/// standard output becomes a failure of its own, told on standard error.
[[nodiscard]] int deliver(const CommandOutput& output);

}  // namespace neb::nebsc
