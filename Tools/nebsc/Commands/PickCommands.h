// PickCommands.h - the part of "revert" that reverts a commit.
#pragma once

#include "CommandLine/Command.h"
#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

/// Commits the opposite of the commit of the option "--commit".
[[nodiscard]] CommandOutput runRevertOfCommit(const CommandCall& call);

}  // namespace neb::nebsc
