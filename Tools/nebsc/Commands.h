// Commands.h - the commands of nebsc, each in a source file of its family.
#pragma once

#include "Command.h"
#include "NEBFoundation/NEBSourceControlPlugIn.h"
#include "Reply.h"

namespace neb::nebsc {

// The headings under which the help lists commands.
inline constexpr std::string_view workingCopyGroup = "Working copies";
inline constexpr std::string_view programsGroup = "For programs";

// ---- working copies
extern const Command statusCommand;

// ---- requests
/// Reads a request, carries it out, and says what came of it, in JSON.
extern const Command requestCommand;
/// Says which types of request there are and what each needs, as the plug-in itself tells it: a
/// table or JSON.
extern const Command typesCommand;

/// The versions of nebsc, of the plug-in and of git, one a line, or as a JSON object.
[[nodiscard]] Reply replyWithVersions(const NEBSourceControlPlugIn& plugIn, bool isJSON);

}  // namespace neb::nebsc
