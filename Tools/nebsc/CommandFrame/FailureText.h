// FailureText.h - what commands report when they fail, or refuse to start.
//
// A `refusal…` function returns the output of a command that ends there; absent means that there is
// nothing to refuse.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "CommandFrame/BranchQueries.h"
#include "CommandFrame/GitQueries.h"
#include "CommandFrame/RemoteSettings.h"
#include "NEBFoundation/NEBSourceControlError.h"
#include "Session/HostSession.h"
#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

// ---- failures of git

/// Returns the message for a git that failed and printed nothing.
[[nodiscard]] std::string silentFailureText(int exitStatus);
/// Returns the failure. In the message, the parts of these names that hold control characters are
/// printable: git prints them as they are, and a line end would split the message.
[[nodiscard]] CommandOutput failureAbout(const std::vector<std::string>& names,
                                         const NEBSourceControlError& error);
/// Gives an error of a file or of a hook the code and the sentences of its class. The plug-in's own
/// table takes every "Permission denied" for a wrong password.
void describeAccessDeniedHere(NEBSourceControlError& error);
/// Removes the lines in which git reports that the question of nebsc for a name or password was
/// not answered: they name a temporary file.
void removeUnansweredQuestions(NEBSourceControlError& error);
/// Returns the failure of a query about these names, with what git printed.
[[nodiscard]] CommandOutput failureOfQuery(const GitQueries& git, const ChildOutcome& query,
                                           const std::vector<std::string>& names = {});
/// Throws a UsageError if the request was refused because of a value that git would take for an
/// option.
void rejectRefusedValue(const RequestResult& result);
/// Returns a better message than the error's own if git did not find a file; else empty.
[[nodiscard]] std::string textForMissingFile(const WorkingCopyLocation& workingCopy,
                                             const NEBSourceControlError& error);

// ---- repositories

[[nodiscard]] std::optional<CommandOutput> refusalOutsideRepository(const GitQueries& git);
[[nodiscard]] std::optional<CommandOutput> refusalOutsideWorkingCopy(const GitQueries& git);
/// Refuses where no Subversion repository is connected.
[[nodiscard]] std::optional<CommandOutput> refusalWithoutSubversion(const GitQueries& git);

// ---- revisions

/// Refuses where HEAD has no commit. Absent outside of a repository too.
[[nodiscard]] std::optional<CommandOutput> refusalWithoutCommits(const GitQueries& git);
/// The same for a revision that is HEAD or counts from it; absent for others.
[[nodiscard]] std::optional<CommandOutput> refusalOfUnbornHEAD(const GitQueries& git,
                                                               const std::string& revision);
/// Refuses a revision that is a tree or a blob, as "HEAD^{tree}"; absent for others.
[[nodiscard]] std::optional<CommandOutput> refusalOfOtherObject(const GitQueries& git,
                                                                const std::string& revision);
/// Returns the refusal of a revision that git knows no commit for: it does not exist, its reference
/// is broken, or it is another object.
[[nodiscard]] CommandOutput refusalOfUnknownRevision(const GitQueries& git,
                                                     const std::string& revision);
/// Refuses a revision that stands for no commit. Absent for one that begins with "-", which the
/// request refuses.
[[nodiscard]] std::optional<CommandOutput> refusalOfRevision(const GitQueries& git,
                                                             const std::string& revision);
/// Returns the refusal of a remote's branch that a fetch has not brought: the remote does not have
/// it, or its refspecs leave it out. Asks the remote.
[[nodiscard]] CommandOutput refusalOfBranchNotFetched(const GitQueries& git,
                                                      const TrackedBranch& tracked);

// ---- files

/// Refuses a path outside the working copy.
[[nodiscard]] std::optional<CommandOutput> refusalOfPathOutside(const GitQueries& git,
                                                                const std::string& path);
/// Refuses a path in the repository's own folder (".git"), in which only git writes.
[[nodiscard]] std::optional<CommandOutput> refusalInsideGitFolder(const GitQueries& git,
                                                                  const std::string& path);
[[nodiscard]] CommandOutput refusalOfMissingFolder(const std::string& argument);
/// Refuses a path at which there is something already.
[[nodiscard]] std::optional<CommandOutput> refusalOfExisting(const WorkingCopyLocation& workingCopy,
                                                             const std::string& path);
/// Refuses a folder that cannot be created, because it or one of its parents is no folder.
[[nodiscard]] std::optional<CommandOutput> refusalOfBlockedFolder(
    const WorkingCopyLocation& workingCopy, const std::string& folder);
/// Returns a refusal with the files, each on a line of its own as the user sees it.
[[nodiscard]] CommandOutput refusalAboutFiles(const WorkingCopyLocation& workingCopy,
                                              std::string_view text,
                                              const std::vector<std::string>& files,
                                              std::string_view errorClass);
/// Adds a failure with the text and all files in conflict. Adds nothing without conflicts.
void addConflicts(CommandOutput& output, const GitQueries& git, std::string_view text);

}  // namespace neb::nebsc
