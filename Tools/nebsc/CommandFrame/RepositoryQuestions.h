// RepositoryQuestions.h - what a command asks git about its repository, in one `git rev-parse`.
//
// git-rev-parse(1) writes its answers one by one, and ends at the first question that it cannot
// answer. So the answers that it wrote before count, whatever its exit status is.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/ChildRun.h"

namespace neb::nebsc {

/// The questions beyond where the working copy is, and whether HEAD names a commit.
struct RepositoryQuestions {
    /// Revisions that may stand for a commit, in the order in which the command needs them.
    std::vector<std::string> revisions{};
    /// Whether to ask for the branch of HEAD. Not answered unless each of the revisions stands for
    /// a commit.
    bool asksBranch = false;
    /// The same for that branch and its upstream.
    bool asksUpstream = false;
};

/// The answers of git about revisions. They count until the repository changes.
struct RevisionAnswers {
    /// The full commit id of a revision; absent if the revision stands for no commit. Has no entry
    /// for a revision that was not asked about or not reached.
    std::map<std::string, std::optional<std::string>, std::less<>> commits{};
    /// The full name of the branch of HEAD, "HEAD" if HEAD is detached; absent if not answered.
    std::optional<std::string> head{};
    /// The full name of the upstream of that branch, "refs/remotes/origin/main"; absent if there is
    /// none or if not answered.
    std::optional<std::string> upstream{};
};

/// Where the working copy is, as git printed it.
struct RepositoryAnswers {
    /// Whether git found a repository.
    bool isRepository = false;
    /// Absolute path of the top of the working copy; absent outside of one.
    std::optional<std::string> top{};
    /// Whether HEAD names a commit; absent if not answered.
    std::optional<bool> hasCommits{};
    RevisionAnswers revisions{};
};

/// Returns the arguments of git. A folder whose path has a line end gets only the basic questions,
/// because their answers can still be read.
[[nodiscard]] std::vector<std::string> argumentsFor(const RepositoryQuestions& questions,
                                                    const std::string& folder);

/// Returns the answers in the outcome of git with argumentsFor() the same questions and folder.
[[nodiscard]] RepositoryAnswers answersIn(const ChildOutcome& outcome,
                                          const RepositoryQuestions& questions,
                                          const std::string& folder);

/// Returns the revisions that an argument may stand for: itself, or both ends of a range. Empty for
/// one that git would take for an option or for an exclusion.
[[nodiscard]] std::vector<std::string> revisionsToAskFor(const std::string& argument);

}  // namespace neb::nebsc
