#include "Doctor/Checks.h"
#include "Platform/Text.h"
#include "Session/GitProgram.h"

namespace neb::nebsc {

/// Parses the output of git worktree(1) list --porcelain.
void checkWorktrees(Examination& examination) {
    const ChildOutcome list = examination.query({"worktree", "list", "--porcelain"});
    if (!list.status.isSuccess()) {
        examination.add(Health::problem, "worktree", "git cannot list them: " + reasonOf(list));
        return;
    }
    constexpr std::string_view worktree = "worktree ";
    constexpr std::string_view prunable = "prunable ";
    std::string path;
    forEachField(list.output, '\n', [&](std::string_view line) {
        if (line.starts_with(worktree)) {
            path = line.substr(worktree.size());
        } else if (line.starts_with(prunable)) {
            examination.add(Health::note, "worktree",
                            path + " is missing: " + std::string(line.substr(prunable.size())),
                            "'git worktree prune' removes the entry; if the folder was moved, run "
                            "'git worktree repair NEW-PATH'.");
        }
    });
}

}  // namespace neb::nebsc
