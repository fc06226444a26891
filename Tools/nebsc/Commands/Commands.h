// Commands.h - the registry of all commands; each is defined in a source file of its family.
#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string_view>

#include "CommandLine/Command.h"
#include "NEBFoundation/NEBSourceControlPlugIn.h"
#include "Session/Trace.h"
#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

// The headings under which the help lists commands.
inline constexpr std::string_view inspectGroup = "Inspect";
inline constexpr std::string_view changeGroup = "Change";
inline constexpr std::string_view branchesGroup = "Branches";
inline constexpr std::string_view remotesGroup = "Remotes";
inline constexpr std::string_view subversionGroup = "Subversion";
inline constexpr std::string_view requestsGroup = "Requests";
inline constexpr std::string_view shellGroup = "Shells and manual";
/// For commands that only other programs run; the help does not list them.
inline constexpr std::string_view hiddenGroup = {};
/// For subcommands.
inline constexpr std::string_view subcommandGroup = "Commands";

// ---- inspect
extern const Command statusCommand;
extern const Command logCommand;
extern const Command showCommand;
extern const Command blameCommand;
extern const Command diffCommand;
extern const Command listCommand;
extern const Command catCommand;
extern const Command exportCommand;
extern const Command exportTreeCommand;
extern const Command infoCommand;
/// Executes the program nebsc-browse, which serves a page for the browser.
extern const Command browseCommand;
/// Runs even if the plug-in cannot be loaded.
extern const Command doctorCommand;

// ---- change
extern const Command initCommand;
extern const Command addCommand;
extern const Command removeCommand;
extern const Command moveCommand;
extern const Command copyCommand;
extern const Command makeDirectoryCommand;
extern const Command ignoreCommand;
extern const Command revertCommand;
extern const Command commitCommand;
extern const Command stageCommand;
extern const Command unstageCommand;
extern const Command discardCommand;
/// Its subcommands put changes aside and apply them.
extern const Command stashCommand;
extern const Command continueCommand;
extern const Command skipCommand;
extern const Command abortCommand;
/// Shows and changes settings of git.
extern const Command configCommand;
/// Runs even if the plug-in cannot be loaded.
extern const Command tuneCommand;

// ---- branches
/// Its subcommands list, create, rename and delete branches.
extern const Command branchCommand;
extern const Command branchRenameCommand;
extern const Command branchUpstreamCommand;
extern const Command branchTrackCommand;
extern const Command branchTrackingCommand;
extern const Command checkoutCommand;
extern const Command switchCommand;
extern const Command mergeCommand;
extern const Command mergeBaseCommand;
/// Its subcommands list, create and delete tags.
extern const Command tagCommand;
/// Its subcommands list, initialize and update submodules.
extern const Command submoduleCommand;
/// Its subcommands list, add and remove worktrees.
extern const Command worktreeCommand;
extern const Command cherryPickCommand;
extern const Command resetCommand;

// ---- remotes and synchronising
extern const Command cloneCommand;
/// Its subcommands list, add and remove remotes.
extern const Command remoteCommand;
extern const Command fetchCommand;
extern const Command pushCommand;
extern const Command updateCommand;
extern const Command pullCommand;

// ---- Subversion
/// Its subcommands exchange commits with the connected Subversion repository.
extern const Command subversionCommand;

// ---- requests
/// Runs a request in JSON and prints its outcome.
extern const Command requestCommand;
/// The option of that command that prints each record as it arrives.
inline constexpr std::string_view streamOption = "--stream";
/// Runs requests for a client over JSON-RPC.
extern const Command serveCommand;
/// Lists the request types and what each needs.
extern const Command typesCommand;

// ---- shells
/// Prints the completion script of a shell.
extern const Command completionCommand;
/// Prints the completions of a command line, for such a script.
extern const Command completeCommand;
/// Prints the manual page.
extern const Command manualCommand;

// ---- all of them

/// Returns all commands, in the order in which the help lists them.
[[nodiscard]] std::span<const Command* const> allCommands();

/// Prints the versions of nebsc, of the plug-in and of git, each on a line, or as a JSON object.
[[nodiscard]] CommandOutput outputWithVersions(const NEBSourceControlPlugIn& plugIn,
                                               const Trace& trace, bool isJSON,
                                               std::optional<std::chrono::milliseconds> timeLimit);

}  // namespace neb::nebsc
