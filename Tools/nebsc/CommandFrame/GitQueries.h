// GitQueries.h - questions to git about the repository that a command works in.
//
//     const auto pager = git.outputOf({"config", "--get", "core.pager"});
//     if (git.isUnknownRevision("v1.0")) …
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "CommandFrame/WorkingCopyLocation.h"
#include "NEBFoundation/NEBSourceControlTrust.h"
#include "Platform/ChildProcess.h"
#include "Session/Interruption.h"
#include "Session/Trace.h"

namespace neb::nebsc {

/// Not thread-safe. Unless stated otherwise, each query runs one git process, which a signal ends.
/// What the discovery of the working copy found out about a revision is not asked again.
class GitQueries {
public:
    /// Both must outlive the object. If the plug-in is not for git, `isAvailable` is false: then
    /// git is never run, and each query returns what it returns if git fails.
    GitQueries(Interruption& interruption, const Trace& trace,
               NEBSourceControlTrust trust = NEBSourceControlTrust::trusted,
               bool isAvailable = true)
        : _interruption(interruption), _trace(trace), _trust(trust), _isAvailable(isAvailable) {}

    /// Whether git may be run.
    [[nodiscard]] bool isAvailable() const { return _isAvailable; }
    [[nodiscard]] Interruption& interruption() const { return _interruption; }
    [[nodiscard]] const Trace& trace() const { return _trace; }
    /// The trust in the repository.
    [[nodiscard]] NEBSourceControlTrust trust() const { return _trust; }
    [[nodiscard]] const WorkingCopyLocation& workingCopy() const { return _workingCopy; }
    void setWorkingCopy(WorkingCopyLocation workingCopy) { _workingCopy = std::move(workingCopy); }
    /// Forgets what the discovery found out about revisions; call it when that may have changed.
    void forgetRevisions() { _workingCopy.revisions = {}; }

    // ---- any question

    /// Runs git in the working copy. Path arguments are never patterns.
    [[nodiscard]] ChildOutcome run(std::vector<std::string> arguments) const;
    /// Returns whether git exits with status 0.
    [[nodiscard]] bool succeeds(std::vector<std::string> arguments) const;
    /// Returns git's output without the line end; absent if git fails or prints nothing.
    [[nodiscard]] std::optional<std::string> outputOf(std::vector<std::string> arguments) const;
    /// Returns the lines of git's output, without line ends.
    [[nodiscard]] std::vector<std::string> linesOf(std::vector<std::string> arguments) const;

    // ---- revisions

    /// Runs git to find the commit that a revision stands for. For an unknown revision git exits
    /// with status 1 and prints nothing. Always runs git.
    [[nodiscard]] ChildOutcome runForCommit(const std::string& revision) const;
    /// Returns the full commit id that a revision stands for; absent if it names no commit.
    [[nodiscard]] std::optional<std::string> commitId(const std::string& revision) const;
    [[nodiscard]] bool isCommit(const std::string& revision) const;
    /// Returns whether the discovery of the working copy found that the revision stands for a
    /// commit. Runs no git.
    [[nodiscard]] bool isKnownCommit(const std::string& revision) const;
    /// Returns whether git knows no such commit. False if git failed for another reason.
    [[nodiscard]] bool isUnknownRevision(const std::string& revision) const;
    /// Returns whether HEAD names no commit yet. Runs git only if the discovery did not find that
    /// out and no file has the commit, as for a branch without commits.
    [[nodiscard]] bool isWithoutCommits() const;
    /// Returns the current commit of HEAD, 12 characters; absent before the first commit. Runs git
    /// only if the commit is not in a file, as in a linked worktree.
    [[nodiscard]] std::optional<std::string> headCommit() const;
    /// Returns whether HEAD contains the revision.
    [[nodiscard]] bool isMerged(const std::string& revision) const;

    // ---- files

    /// Returns whether the index has the path or something below it.
    [[nodiscard]] bool isTracked(const std::string& path) const;
    /// Returns whether git ignores the path.
    [[nodiscard]] bool isIgnored(const std::string& path) const;
    /// Returns "blob", "tree" or, for a submodule, "commit"; empty if the revision has nothing at
    /// the path, absent if git fails.
    [[nodiscard]] std::optional<std::string> typeOfEntry(const std::string& revision,
                                                         const std::string& path) const;

private:
    Interruption& _interruption;
    const Trace& _trace;
    NEBSourceControlTrust _trust;
    bool _isAvailable;
    WorkingCopyLocation _workingCopy{};
};

}  // namespace neb::nebsc
