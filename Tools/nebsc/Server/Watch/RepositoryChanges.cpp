#include "Server/Watch/RepositoryChanges.h"

#include <algorithm>
#include <iterator>

namespace neb::nebsc {

namespace {

enum class Owner : std::uint8_t { worktree, shared, both };

struct GitPath {
    /// A folder, with everything below it, if it ends with "/".
    std::string_view path;
    Owner owner;
    std::uint32_t changes;
};

/// The first row that matches decides.
constexpr GitPath gitPaths[] = {
    {"HEAD", Owner::worktree, changedHead},
    {"logs/HEAD", Owner::worktree, changedHead},
    {"index", Owner::worktree, changedIndex},
    {"MERGE_HEAD", Owner::worktree, changedOperation},
    {"CHERRY_PICK_HEAD", Owner::worktree, changedOperation},
    {"REVERT_HEAD", Owner::worktree, changedOperation},
    {"REBASE_HEAD", Owner::worktree, changedOperation},
    {"BISECT_START", Owner::worktree, changedOperation},
    {"BISECT_LOG", Owner::worktree, changedOperation},
    {"rebase-merge/", Owner::worktree, changedOperation},
    {"rebase-apply/", Owner::worktree, changedOperation},
    {"sequencer/", Owner::worktree, changedOperation},
    {"config.worktree", Owner::worktree, changedConfiguration},
    {"info/sparse-checkout", Owner::worktree, changedConfiguration},
    {"refs/bisect/", Owner::worktree, changedOperation | changedReferences},
    {"refs/worktree/", Owner::worktree, changedReferences},
    {"refs/rewritten/", Owner::worktree, changedReferences},
    {"refs/stash", Owner::shared, changedStash},
    {"logs/refs/stash", Owner::shared, changedStash},
    {"refs/", Owner::shared, changedReferences},
    {"packed-refs", Owner::shared, changedReferences},
    {"shallow", Owner::shared, changedReferences},
    // The tables of the reftable format have all references, and HEAD, in one list.
    {"reftable/tables.list", Owner::both, changedHead | changedReferences | changedStash},
    {"config", Owner::shared, changedConfiguration},
    {"info/exclude", Owner::shared, changedConfiguration},
    {"info/attributes", Owner::shared, changedConfiguration},
    {"info/grafts", Owner::shared, changedReferences},
};

constexpr std::string_view watchedGitFolders[] = {"",          "logs",         "logs/refs",
                                                  "info",      "reftable",     "rebase-merge",
                                                  "sequencer", "rebase-apply", "refs"};

bool matches(std::string_view path, std::string_view pattern) {
    if (!pattern.ends_with('/')) {
        return path == pattern;
    }
    return path.starts_with(pattern) || path == pattern.substr(0, pattern.size() - 1);
}

bool belongsTo(Owner owner, GitFolderRole role) {
    return owner == Owner::both || (owner == Owner::worktree ? role.isOfWorktree : role.isShared);
}

}  // namespace

std::uint32_t changesOfGitPath(std::string_view path, GitFolderRole role) {
    if (path.ends_with(".lock")) {
        return changedNothing;
    }
    const auto* row =
        std::find_if(std::begin(gitPaths), std::end(gitPaths),
                     [path](const GitPath& candidate) { return matches(path, candidate.path); });
    return row != std::end(gitPaths) && belongsTo(row->owner, role) ? row->changes : changedNothing;
}

bool isWatchedGitFolder(std::string_view path) {
    return path.starts_with("refs/") ||
           std::find(std::begin(watchedGitFolders), std::end(watchedGitFolders), path) !=
               std::end(watchedGitFolders);
}

}  // namespace neb::nebsc
