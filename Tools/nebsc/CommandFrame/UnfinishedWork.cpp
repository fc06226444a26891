#include "CommandFrame/UnfinishedWork.h"

#include <array>

#include "Platform/PathString.h"
#include "Session/Paths.h"

namespace neb::nebsc {

namespace {

struct Row {
    std::string_view file;
    UnfinishedWork work;
};

constexpr std::string_view finishesCommit =
    "'nebsc continue' resumes it, 'nebsc skip' leaves the commit out, 'nebsc abort' cancels it.";

/// The files that git keeps in the repository's folder while an operation is in progress.
constexpr std::array<Row, 7> rows{{
    {"rebase-merge", {"a rebase", finishesCommit, true}},
    {"rebase-apply/rebasing", {"a rebase", finishesCommit, true}},
    {"rebase-apply/applying",
     {"git am",
      "'nebsc continue' resumes it, 'nebsc skip' leaves the patch out, 'nebsc abort' cancels it.",
      true}},
    {"MERGE_HEAD", {"a merge", "'nebsc commit' completes it, 'nebsc abort' cancels it."}},
    {"CHERRY_PICK_HEAD", {"a cherry-pick", finishesCommit}},
    {"REVERT_HEAD", {"a revert", finishesCommit}},
    {"BISECT_LOG", {"a bisection", "'git bisect reset' ends it.", false, true}},
}};

}  // namespace

std::vector<UnfinishedWork> unfinishedWorkIn(const std::string& gitFolder) {
    std::vector<UnfinishedWork> found;
    for (const Row& row : rows) {
        if (isAnythingAt(pathByAppendingComponent(gitFolder, row.file))) {
            found.push_back(row.work);
        }
    }
    return found;
}

std::vector<UnfinishedWork> unfinishedWorkIn(const GitQueries& git) {
    const std::string usual = pathByAppendingComponent(git.workingCopy().location, ".git");
    return unfinishedWorkIn(isFolderItself(usual)
                                ? usual
                                : git.outputOf({"rev-parse", "--absolute-git-dir"}).value_or(""));
}

}  // namespace neb::nebsc
