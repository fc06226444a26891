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

/// The files that git keeps in the repository's folder while an operation is in progress.
constexpr std::array<Row, 7> rows{{
    {"rebase-merge", {"a rebase", "'nebsc continue' resumes it, 'nebsc abort' cancels it.", true}},
    {"rebase-apply/rebasing",
     {"a rebase", "'nebsc continue' resumes it, 'nebsc abort' cancels it.", true}},
    {"rebase-apply/applying",
     {"git am", "'git am --continue' resumes it, 'git am --abort' cancels it.", true}},
    {"MERGE_HEAD", {"a merge", "'nebsc commit' completes it, 'nebsc abort' cancels it."}},
    {"CHERRY_PICK_HEAD",
     {"a cherry-pick", "'nebsc continue' resumes it, 'nebsc abort' cancels it."}},
    {"REVERT_HEAD", {"a revert", "'nebsc continue' resumes it, 'nebsc abort' cancels it."}},
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
