// WorkingCopyLocation.h - the working copy that a command works in, and how its paths are shown.
#pragma once

#include <optional>
#include <string>

#include "CommandFrame/RepositoryQuestions.h"
#include "NEBFoundation/NEBSourceControlOperation.h"
#include "NEBFoundation/NEBSourceControlTrust.h"
#include "Platform/ChildProcess.h"
#include "Session/Interruption.h"
#include "Session/Trace.h"

namespace neb::nebsc {

struct WorkingCopyLocation {
    /// Absolute path of the top of the working copy. Outside a working copy, the folder where the
    /// search began, so that git itself reports what is wrong.
    std::string location{};
    /// Absolute path of the current folder, without symbolic links.
    std::string currentFolder{};
    bool isWorkingCopy = false;
    /// False if git was not asked, as for a repository that is yet to be created.
    bool isRepository = false;
    /// Whether HEAD names a commit; absent if that is not known.
    std::optional<bool> hasCommits{};
    RevisionAnswers revisions{};
    /// How git ended; if it found no working copy, its stderr says why.
    ChildOutcome discovery{TerminationStatus::notStarted({}), {}, {}};

    /// Returns whether commands run in the same folder, and find the same kind of repository there.
    [[nodiscard]] bool isAtSamePlaceAs(const WorkingCopyLocation& other) const {
        return location == other.location && isWorkingCopy == other.isWorkingCopy &&
               isRepository == other.isRepository;
    }
};

/// Returns the working copy that the folder lies in, with the answers to the questions. Runs one
/// `git rev-parse`; a signal ends it.
[[nodiscard]] WorkingCopyLocation findWorkingCopy(
    Interruption& interruption, const Trace& trace, const std::string& currentFolder,
    const std::string& folder, const RepositoryQuestions& questions = {},
    NEBSourceControlTrust trust = NEBSourceControlTrust::trusted);

/// Returns what findWorkingCopy() finds if the repository is where it usually is: in the nearest
/// folder around the current one that has a ".git" or is a git directory. Absent without such a
/// folder. Runs no git.
[[nodiscard]] std::optional<WorkingCopyLocation> probableWorkingCopy(
    const std::string& currentFolder);

/// Returns the working copy that the result of a request for information (19) about the folder
/// names; without one, the folder, which is no working copy then.
[[nodiscard]] WorkingCopyLocation workingCopyInResult(
    const std::optional<NEBSourceControlResult>& result, const std::string& currentFolder,
    const std::string& folder);

/// Returns the absolute path of a repository in the file system, relative to the current folder;
/// any other URL (or HOST:PATH) as it is.
[[nodiscard]] std::string repositoryLocation(const std::string& currentFolder,
                                             const std::string& url);

/// Returns an absolute path, or a path from the top of the working copy, as the user sees it: from
/// the current folder if that lies in the same working copy, else absolute. Keeps a "/" at the end.
[[nodiscard]] std::string pathAsSeen(const WorkingCopyLocation& workingCopy,
                                     const std::string& path);

/// The same, printable.
[[nodiscard]] std::string shownPath(const WorkingCopyLocation& workingCopy,
                                    const std::string& path);

/// Returns an absolute path in the working copy as seen from its top, empty for the top itself. Any
/// other path is returned as it is.
[[nodiscard]] std::string pathFromTop(const WorkingCopyLocation& workingCopy,
                                      const std::string& path);

}  // namespace neb::nebsc
