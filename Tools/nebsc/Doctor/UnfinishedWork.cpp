#include "Doctor/UnfinishedWork.h"

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
    {"rebase-merge",
     {"a rebase", "'git rebase --continue' resumes it, 'git rebase --abort' cancels it."}},
    {"rebase-apply/rebasing",
     {"a rebase", "'git rebase --continue' resumes it, 'git rebase --abort' cancels it."}},
    {"rebase-apply/applying",
     {"git am", "'git am --continue' resumes it, 'git am --abort' cancels it."}},
    {"MERGE_HEAD", {"a merge", "'nebsc commit' completes it, 'git merge --abort' cancels it."}},
    {"CHERRY_PICK_HEAD",
     {"a cherry-pick", "'git cherry-pick --continue' resumes it, --abort cancels it."}},
    {"REVERT_HEAD", {"a revert", "'git revert --continue' resumes it, --abort cancels it."}},
    {"BISECT_LOG", {"a bisection", "'git bisect reset' ends it."}},
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

}  // namespace neb::nebsc
