// RevisionArguments.h - the revisions and files among a command's arguments.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "CommandFrame/GitQueries.h"
#include "CommandLine/Command.h"
#include "CommandLine/UsageError.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Session/Paths.h"
#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

struct RevisionArguments {
    /// Two for a range.
    std::vector<std::string> revisions{};
    /// As findFile() returns them.
    std::vector<std::string> files{};
    /// What separates the two revisions of a range, ".." or "..."; empty without a range.
    std::string dots{};
    /// Why a revision or file cannot be used; the other members do not count then.
    std::optional<CommandOutput> refused{};

    /// Sets the request's files, and the revisions as its starting and ending revision.
    void copyTo(NEBSourceControlRequest& request) const;
};

/// Limits the number of arguments.
struct RevisionArgumentLimits {
    std::size_t revisions;
    std::size_t files;
};

/// Distinguishes revisions from files in the arguments of the parameters "REVISION" and "FILE", as
/// git does: revisions come first, and what follows "--" is a file. Without "--", each argument
/// must be one of the two and not both. "A..B" and "A...B" are a range; a missing side stands for
/// HEAD.
///
/// If git may not be run, an argument is a file if it exists on disk or follows another file; a
/// range is refused.
///
/// Replaces a revision by unambiguousRevision(). Throws a UsageError if there are more
/// arguments than the limits allow.
[[nodiscard]] RevisionArguments readRevisionArguments(const GitQueries& git,
                                                      const Arguments& arguments,
                                                      RevisionArgumentLimits limits);

/// Returns all arguments of the parameters "REVISION" and "FILE", in order.
[[nodiscard]] std::vector<std::string> revisionAndFileArguments(const Arguments& arguments);

/// Returns the revisions that readRevisionArguments() asks about, for the discovery to answer.
[[nodiscard]] std::vector<std::string> revisionsToAskFor(const Arguments& arguments);

/// Returns the absolute path of the file that the argument names. Where there is no working copy,
/// as in a bare repository, returns its path from the top of the tree.
[[nodiscard]] PathSearch findFile(const WorkingCopyLocation& workingCopy,
                                  const std::string& argument);

/// Returns the full commit id in place of a revision that git or the request would take for
/// something else: one named like a file at the top of the working copy, and "0".
[[nodiscard]] std::string unambiguousRevision(const GitQueries& git, const std::string& revision);

/// Returns git's name for the object at a path: "REVISION:path", "REVISION:" for the top.
[[nodiscard]] std::string objectAt(const GitQueries& git, const std::string& revision,
                                   const std::string& path);

}  // namespace neb::nebsc
