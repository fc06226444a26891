// Commands.h - the commands of nebsc, each in a source file of its family.
#pragma once

#include <span>
#include <string_view>

#include "CommandLine/Command.h"
#include "NEBFoundation/NEBSourceControlPlugIn.h"
#include "Session/Trace.h"
#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

// The headings under which the help lists commands.
inline constexpr std::string_view lookGroup = "Look";
inline constexpr std::string_view changeGroup = "Change";
inline constexpr std::string_view branchesGroup = "Branches";
inline constexpr std::string_view remotesGroup = "Remotes and synchronising";
inline constexpr std::string_view subversionGroup = "Subversion";
inline constexpr std::string_view requestsGroup = "Raw requests";
inline constexpr std::string_view shellGroup = "Shells and manual";
/// Of the commands that only other programs call.
inline constexpr std::string_view hiddenGroup = {};
/// Of the commands that stand behind the name of another.
inline constexpr std::string_view innerGroup = "Commands";

// ---- look
extern const Command statusCommand;
extern const Command logCommand;
extern const Command blameCommand;
extern const Command diffCommand;
extern const Command listCommand;
extern const Command exportCommand;
extern const Command exportTreeCommand;
extern const Command infoCommand;
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

// ---- branches
/// Its commands are those about the branches of the repository.
extern const Command branchCommand;
extern const Command branchTrackCommand;
extern const Command branchTrackingCommand;
extern const Command checkoutCommand;
extern const Command mergeCommand;
extern const Command mergeBaseCommand;

// ---- remotes and synchronising
extern const Command cloneCommand;
/// Its commands are those about the repositories that this one knows by name.
extern const Command remoteCommand;
extern const Command fetchCommand;
extern const Command pushCommand;
extern const Command updateCommand;

// ---- Subversion
/// Its commands are those that exchange commits with the Subversion repository behind this one.
extern const Command subversionCommand;

// ---- raw requests
/// Reads a request, carries it out, and says what came of it, in JSON.
extern const Command requestCommand;
/// Does so for a client that stays, over JSON-RPC.
extern const Command serveCommand;
/// Says which types of request there are and what each needs, as the plug-in itself tells it: a
/// table or JSON.
extern const Command typesCommand;

// ---- shells
/// Prints the script that lets a shell complete the words of a call.
extern const Command completionCommand;
/// What such a script asks: what the word that is being typed can become.
extern const Command completeCommand;
/// Prints the manual page.
extern const Command manualCommand;

// ---- all of them

/// All commands, in the order in which the help lists them.
[[nodiscard]] std::span<const Command* const> allCommands();

/// The versions of nebsc, of the plug-in and of git, one a line, or as a JSON object.
[[nodiscard]] CommandOutput replyWithVersions(const NEBSourceControlPlugIn& plugIn,
                                              const Trace& trace, bool isJSON);

}  // namespace neb::nebsc
