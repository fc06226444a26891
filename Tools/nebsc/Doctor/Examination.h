// Examination.h - the shared state of the checks of `nebsc doctor`: how they run git, what is known
// about the repository, and the findings.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Doctor/Finding.h"
#include "Doctor/UserSettings.h"
#include "Session/GitProgram.h"

namespace neb::nebsc {

/// The folders of a repository. All paths are absolute.
struct RepositoryLayout {
    std::string gitFolder;
    /// Differs from `gitFolder` in a linked worktree.
    std::string commonFolder;
    /// The top of the working copy; empty outside of one.
    std::string workingCopy;
};

/// One run of all checks. Not thread-safe.
class Examination {
public:
    Examination(Interruption& interruption, const Trace& trace, const std::string& folder)
        : _interruption(interruption), _trace(trace), _folder(folder) {}

    // ---- git queries

    /// Runs git in the folder with a time limit of a few seconds. git changes nothing, fetches no
    /// missing objects of a partial clone and opens no network connection.
    [[nodiscard]] ChildOutcome query(std::vector<std::string> arguments);
    /// Runs git like query(), but ends it after `limit`. Such a timeout does not count for
    /// shouldStop().
    [[nodiscard]] ChildOutcome queryWithin(std::chrono::milliseconds limit,
                                           std::vector<std::string> arguments);
    /// Runs two git processes in the same way as query(), with the output of the first one
    /// piped into the second one. Returns the outcome of the second one.
    [[nodiscard]] ChildOutcome queryPipeline(std::vector<std::string> first,
                                             std::vector<std::string> second);
    /// Runs git like query(), without a time limit of its own.
    [[nodiscard]] ChildOutcome queryWithoutTimeLimit(std::vector<std::string> arguments);
    /// Returns the absolute path of a file of the repository, such as "index" or "refs/heads/main".
    [[nodiscard]] std::string gitPath(const std::string& name);
    /// Returns whether to skip the remaining checks: after several timeouts, or when interrupted.
    [[nodiscard]] bool shouldStop() const;
    /// Returns whether a signal or the time limit of the command has ended the queries.
    [[nodiscard]] bool isInterrupted() const { return _interruption.hasOccurred(); }

    // ---- findings

    void add(Health health, std::string subject, std::string text, std::string advice = {});
    [[nodiscard]] std::size_t findingCount() const { return _findings.size(); }
    /// Drops all findings but the first `count`.
    void keepFindings(std::size_t count) { _findings.resize(count); }
    [[nodiscard]] std::vector<Finding> takeFindings() { return std::move(_findings); }

    // ---- state

    [[nodiscard]] const std::string& folder() const { return _folder; }
    /// Returns whether the program exists: in git's own folder or in PATH; one with a slash at that
    /// path.
    [[nodiscard]] bool isReachable(const std::string& program) const;

    /// Whether git runs and reports a version.
    bool hasGit = false;
    /// The folder of git's own programs; empty if unknown.
    std::string programs;
    /// Absent outside of a repository that git can read.
    std::optional<RepositoryLayout> repository;
    /// Absent if git cannot read them.
    std::optional<UserSettings> settings;

private:
    /// `limit` is absent for no time limit.
    [[nodiscard]] ChildOutcome run(std::vector<std::vector<std::string>> calls,
                                   std::optional<std::chrono::milliseconds> limit);
    /// The same with the time limit of query(). Counts timeouts.
    [[nodiscard]] ChildOutcome runWithTimeLimit(std::vector<std::vector<std::string>> calls);

    Interruption& _interruption;
    const Trace& _trace;
    const std::string& _folder;
    std::vector<Finding> _findings;
    int _timeouts = 0;
};

/// Returns the environment variables that keep git from fetching missing objects of a partial
/// clone and from opening network connections.
[[nodiscard]] std::vector<std::string> variablesAgainstFetching();

/// Returns whether the examination ended git after the time limit of the query.
[[nodiscard]] bool hasTimedOut(const ChildOutcome& outcome);

/// Returns the value of an environment variable; empty if it is not set.
[[nodiscard]] std::string environmentVariable(const char* name);

/// Returns the advice to run a "git config --global" command, and to set HOME first if both that
/// and GIT_CONFIG_GLOBAL are missing. `beginning` introduces the command, such as "Run".
[[nodiscard]] std::string globalSettingAdvice(const std::string& beginning,
                                              const std::string& command);

}  // namespace neb::nebsc
