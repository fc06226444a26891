// UsageError.h - the sentences about a call that cannot be understood.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "CommandLine/Command.h"
#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

/// Why a call is not understood.
struct UsageError {
    /// A sentence without the full stop.
    std::string sentence;
    /// What may have been meant, as questionForSimilar() has it.
    std::string question = {};
};

/// In each of these functions, `commandName` holds the names of the call's command, each with a
/// blank behind it: "branch list "; empty without a command. From any thread.

/// The option does not exist; `command` may be null.
[[nodiscard]] UsageError unknownOption(const std::string& option, const std::string& commandName,
                                       const Command* command);
/// None of the commands has the name.
[[nodiscard]] UsageError unknownCommand(const std::string& commandName, const std::string& name,
                                        std::span<const Command* const> commands);
/// The command takes no argument at this position.
[[nodiscard]] UsageError unexpectedArgument(const std::string& argument,
                                            const std::string& commandName, const Command& command);
/// The parameter is required and not in the call.
[[nodiscard]] UsageError missingParameter(const Parameter& parameter,
                                          const std::string& commandName, const Command& command);
/// What CLI11 reports of an option, which it says in the text alone: "--plugin: 1 required FILE
/// missing", "--message: At Most 1 required but received 2", "json was given a disallowed flag
/// override".
[[nodiscard]] UsageError usageErrorInOption(const std::string& text);

/// The reply to a call with a mistake.
[[nodiscard]] CommandOutput refusedCall(const UsageError& mistake, const std::string& commandName);

}  // namespace neb::nebsc
