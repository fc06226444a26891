// InspectingCommands.h - the commands that work with the option "--inspect".
#pragma once

#include <string>
#include <vector>

#include "CommandLine/Command.h"
#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

/// Returns whether the command, a subcommand after its command, only reads. Its questions to git
/// outside requests start no other program.
[[nodiscard]] bool readsOnly(const std::vector<const Command*>& commands);

/// Returns the name of the command as a user writes it: "branch list".
[[nodiscard]] std::string nameOfCommand(const std::vector<const Command*>& commands);

/// Returns the refusal of another command, of the class "not-trusted".
[[nodiscard]] CommandOutput notTrusted(const std::vector<const Command*>& commands);

}  // namespace neb::nebsc
