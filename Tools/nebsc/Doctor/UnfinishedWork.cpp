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

/// What git keeps in the repository's folder for as long as work is under way.
constexpr std::array<Row, 7> rows{{
    {"rebase-merge",
     {"a rebase", "'git rebase --continue' goes on, 'git rebase --abort' takes it back."}},
    {"rebase-apply/rebasing",
     {"a rebase", "'git rebase --continue' goes on, 'git rebase --abort' takes it back."}},
    {"rebase-apply/applying",
     {"git am", "'git am --continue' goes on, 'git am --abort' takes it back."}},
    {"MERGE_HEAD", {"a merge", "'nebsc commit' ends it, 'git merge --abort' takes it back."}},
    {"CHERRY_PICK_HEAD",
     {"a cherry-pick", "'git cherry-pick --continue' goes on, --abort takes it back."}},
    {"REVERT_HEAD", {"a revert", "'git revert --continue' goes on, --abort takes it back."}},
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
