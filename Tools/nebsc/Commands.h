// Commands.h - the commands of nebsc, each in a source file of its family.
#pragma once

#include "Command.h"
#include "NEBFoundation/NEBSourceControlPlugIn.h"
#include "Reply.h"

namespace neb::nebsc {

// The headings under which the help lists commands.
inline constexpr std::string_view workingCopyGroup = "Working copy";
inline constexpr std::string_view revisionsGroup = "Branches and revisions";
inline constexpr std::string_view historyGroup = "History and content";
inline constexpr std::string_view repositoriesGroup = "Repositories";
inline constexpr std::string_view exchangeGroup = "Exchange with other repositories";
inline constexpr std::string_view programsGroup = "For programs";
/// Of the commands that stand behind the name of another.
inline constexpr std::string_view innerGroup = "Commands";

// ---- working copies
extern const Command statusCommand;
extern const Command addCommand;
extern const Command removeCommand;
extern const Command moveCommand;
extern const Command copyCommand;
extern const Command makeDirectoryCommand;
extern const Command revertCommand;
extern const Command commitCommand;

// ---- branches and revisions
extern const Command checkoutCommand;
extern const Command mergeCommand;
extern const Command mergeBaseCommand;
/// Its commands are those about the branches of the repository.
extern const Command branchCommand;

// ---- history and content
extern const Command logCommand;
extern const Command blameCommand;
extern const Command diffCommand;
extern const Command listCommand;
extern const Command exportCommand;
extern const Command exportTreeCommand;

// ---- repositories
extern const Command initCommand;
extern const Command cloneCommand;
extern const Command infoCommand;

// ---- the exchange with other repositories
/// Its commands are those about the repositories that this one knows by name.
extern const Command remoteCommand;
extern const Command fetchCommand;
extern const Command pushCommand;
extern const Command updateCommand;

// ---- requests
/// Reads a request, carries it out, and says what came of it, in JSON.
extern const Command requestCommand;
/// Does so for a client that stays, over JSON-RPC.
extern const Command serveCommand;
/// Says which types of request there are and what each needs, as the plug-in itself tells it: a
/// table or JSON.
extern const Command typesCommand;

/// The versions of nebsc, of the plug-in and of git, one a line, or as a JSON object.
[[nodiscard]] Reply replyWithVersions(const NEBSourceControlPlugIn& plugIn, bool isJSON);

}  // namespace neb::nebsc
