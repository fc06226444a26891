// RepositoryChanges.h - the parts of a repository that a watch reports, and the files of git that
// hold them (gitrepository-layout(5)).
#pragma once

#include <cstdint>
#include <string_view>

namespace neb::nebsc {

/// A part of a repository. One bit each, to be combined.
enum RepositoryChange : std::uint32_t {
    /// The commit or the branch that HEAD names.
    changedHead = 1U << 0,
    /// Branches, remote branches and tags.
    changedReferences = 1U << 1,
    changedIndex = 1U << 2,
    changedStash = 1U << 3,
    /// A merge, rebase, cherry-pick, revert or bisect: begun, continued or ended.
    changedOperation = 1U << 4,
    /// Settings, ignored files and attributes of the repository.
    changedConfiguration = 1U << 5,
    /// Files of the working tree.
    changedWorkingTree = 1U << 6,

    changedNothing = 0,
    /// All but the working tree.
    changedGitFolder = (1U << 6) - 1,
};

/// A name of a change in the protocol.
struct RepositoryChangeName {
    RepositoryChange change;
    std::string_view name;
};
inline constexpr RepositoryChangeName repositoryChangeNames[] = {
    {changedHead, "head"},
    {changedReferences, "references"},
    {changedIndex, "index"},
    {changedStash, "stash"},
    {changedOperation, "operation"},
    {changedConfiguration, "configuration"},
    {changedWorkingTree, "workingTree"},
};

/// A folder with files of git. In a repository without linked worktrees, one folder is both.
struct GitFolderRole {
    /// Whether the folder belongs to the watched worktree: HEAD, index, unfinished operations.
    bool isOfWorktree = false;
    /// Whether the folder has what all worktrees share: references, settings.
    bool isShared = false;
};

/// Returns the changes that an event for the path means, a combination of RepositoryChange. The
/// path is relative to the folder of git. Lock files and files that nothing depends on mean no
/// change. Thread-safe.
[[nodiscard]] std::uint32_t changesOfGitPath(std::string_view path, GitFolderRole role);

/// Returns whether a folder of git has files whose events mean changes. The path is relative to the
/// folder of git, and empty for that folder itself. Thread-safe.
[[nodiscard]] bool isWatchedGitFolder(std::string_view path);

}  // namespace neb::nebsc
