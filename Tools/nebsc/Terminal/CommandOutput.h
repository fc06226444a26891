// CommandOutput.h - the output of a command, and how it is written.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "NEBFoundation/NEBSourceControlError.h"
#include "Terminal/ExitStatus.h"

namespace neb::nebsc {

/// The output and the exit status of a command.
struct CommandOutput {
    /// The complete text, with line ends; empty if there is no output.
    std::string standardOutput;
    /// The same for standard error.
    std::string standardError;
    int exitStatus = exitDone;
    /// The shell command of the pager for standard output; absent if no pager is used.
    std::optional<std::string> pager = std::nullopt;
    /// The failure in the form for --json, if it is not part of an outcome; otherwise absent.
    std::optional<NEBSourceControlError> error = std::nullopt;
};

/// Returns output that is one line on standard error: "nebsc: " and the printable sentence. If the
/// exit status is exitFailed, `error` is set too: to the sentence, with the error class that the
/// same failure has in the outcome of a request. An absent class means "unknown".
[[nodiscard]] CommandOutput refusal(std::string_view sentence, int exitStatus,
                                    std::optional<std::string_view> errorClass = std::nullopt);

/// Returns output that reports the error on standard error, with the exit status exitFailed.
[[nodiscard]] CommandOutput failureWith(const NEBSourceControlError& error);

/// Adds a line on what to do about a failure: to standard error, and to `error` as its recovery
/// suggestion, in place of a general one.
void addAdvice(CommandOutput& output, const std::string& advice);

/// Returns refusal() with the exit status exitFailed and addAdvice().
[[nodiscard]] CommandOutput refusalWithAdvice(std::string_view sentence, const std::string& advice,
                                              std::string_view errorClass);

/// Appends a failure to the output. If there are several, `error` is the first.
void addFailure(CommandOutput& output, const CommandOutput& failure);

/// Returns the line that refusal() writes: "nebsc: " and the printable sentence.
[[nodiscard]] std::string diagnostic(std::string_view sentence);

/// Writes the output, standard output first. Returns the exit status. A failure to write to
/// standard output is reported on standard error and changes a successful exit status to
/// exitFailed; that the reader has ended, such as head(1), is no failure.
[[nodiscard]] int deliver(const CommandOutput& output);

}  // namespace neb::nebsc
