// Commands.h - what nebsc does, one function for each way in.
//
// Each answers all that there is to say and prints nothing. A signal ends the work of each; the
// reply then says so, and its exit status is that of the signal. On the main thread, one at a time.
#pragma once

#include <optional>
#include <string>

#include "HostSession.h"
#include "NEBFoundation/NEBSourceControlPlugIn.h"
#include "Reply.h"

namespace neb::nebsc {

struct RequestCall {
    /// "-" stands for standard input.
    std::string file = "-";
    /// Make the operation, do not run it.
    bool isDryRun = false;
};
/// Reads a request, carries it out, and says what came of it, in JSON.
[[nodiscard]] Reply requestCommand(const HostSession& session, const RequestCall& call);

struct StatusCall {
    /// As seen from the current folder; absent means the whole working copy.
    std::optional<std::string> path;
    /// The outcome in JSON instead of lines for a person.
    bool isJSON = false;
    bool isColoured = false;
};
/// Says which files of a working copy have changed.
[[nodiscard]] Reply statusCommand(const HostSession& session, const StatusCall& call);

/// Says which types of request there are and what each needs, as the plug-in itself tells it: a
/// table or JSON.
[[nodiscard]] Reply typesCommand(const HostSession& session, bool isJSON);

/// The versions of nebsc, of the plug-in and of git, one a line, or as a JSON object.
[[nodiscard]] Reply versionCommand(const NEBSourceControlPlugIn& plugIn, bool isJSON);

}  // namespace neb::nebsc
