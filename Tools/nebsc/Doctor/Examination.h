// Examination.h - what the checks of `nebsc doctor` share: how they ask git, what is known of the
// repository so far, and the findings.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Doctor/Diagnosis.h"
#include "Doctor/UserSettings.h"
#include "Session/GitProgram.h"

namespace neb::nebsc {

/// Where a repository keeps its files. All paths are absolute.
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

    // ---- questions to git

    /// Runs git in the folder for a few seconds at most. git changes nothing, fetches nothing that
    /// a partial clone lacks, and talks to no other machine.
    [[nodiscard]] ChildOutcome ask(std::vector<std::string> arguments);
    /// The same for two git processes, the first one's output piped into the second one. Returns
    /// the outcome of the second.
    [[nodiscard]] ChildOutcome askPipeline(std::vector<std::string> first,
                                           std::vector<std::string> second);
    /// The same as ask() without a limit of time; a signal ends it.
    [[nodiscard]] ChildOutcome askPatiently(std::vector<std::string> arguments);
    /// The absolute path of a file of the repository, such as "index" or "refs/heads/main".
    [[nodiscard]] std::string gitPath(const std::string& name);
    /// True once several questions were not answered in time: more would only take longer.
    [[nodiscard]] bool isHopeless() const;

    // ---- findings

    void add(Health health, std::string subject, std::string text, std::string advice = {});
    [[nodiscard]] std::vector<Finding> takeFindings() { return std::move(_findings); }

    // ---- what is known

    [[nodiscard]] const std::string& folder() const { return _folder; }
    /// Whether there is a program of the name: in git's own folder or in PATH, or at the path.
    [[nodiscard]] bool isReachable(const std::string& program) const;

    /// Whether git can be used at all.
    bool hasGit = false;
    /// Where git's own programs are; empty where it is not known.
    std::string programs;
    /// Absent outside of a repository that git can read.
    std::optional<RepositoryLayout> repository;
    /// Absent where git cannot read them.
    std::optional<UserSettings> settings;

private:
    [[nodiscard]] ChildOutcome run(std::vector<std::vector<std::string>> calls, bool isLimited);

    Interruption& _interruption;
    const Trace& _trace;
    const std::string& _folder;
    std::vector<Finding> _findings;
    int _unansweredQuestions = 0;
};

/// Whether Examination::ask() ended git because its time was up.
[[nodiscard]] bool isUnanswered(const ChildOutcome& outcome);

/// The value of an environment variable; empty where it is not set.
[[nodiscard]] std::string environmentVariable(const char* name);

}  // namespace neb::nebsc
