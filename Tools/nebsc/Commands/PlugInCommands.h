// PlugInCommands.h - the commands that work with a plug-in for another program than git.
#pragma once

#include <optional>

#include "CommandLine/CommandLineParser.h"
#include "NEBFoundation/NEBSourceControlPlugIn.h"
#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

/// Refuses a command, or an option of it, that asks git what no request returns: git would answer
/// about another repository that contains the folder. Absent for the others, whose requests the
/// plug-in carries out or refuses. Call it for a plug-in whose program is not git. Thread-safe.
[[nodiscard]] std::optional<CommandOutput> refusalOfPlugIn(const NEBSourceControlPlugIn& plugIn,
                                                           const ParsedCommandLine& commandLine);

}  // namespace neb::nebsc
