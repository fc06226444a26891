// RepositoryFolders.h - the folders of a repository on disk, as git reports them.
#pragma once

#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "Platform/ChildProcess.h"
#include "Session/Trace.h"

namespace neb::nebsc {

/// Why a repository cannot be watched, or is no longer watched.
struct WatchFailure {
    /// The name of a class of docs/errors.md, such as "not-a-repository".
    std::string errorClass;
    std::string sentence;
};

/// The folders of a repository, as absolute paths without symbolic links.
struct RepositoryFolders {
    /// The git directory of the worktree.
    std::string gitFolder{};
    /// The git directory that all worktrees share; the same if there is only one.
    std::string commonFolder{};
    /// The top of the working tree. Absent in a bare repository.
    std::optional<std::string> top{};
};

struct RepositoryFoldersResult {
    RepositoryFolders folders{};
    std::optional<WatchFailure> failure{};
};

/// Asks git for the folders of the repository that `location` lies in. `process` can be cancelled
/// from another thread.
[[nodiscard]] RepositoryFoldersResult findRepositoryFolders(ChildProcess& process,
                                                            const Trace& trace,
                                                            const std::string& location);

/// Returns the ignored folders of the working tree, absolute paths, without those below other
/// ignored folders. `within` limits the search to these folders of the working tree, absolute paths
/// too; empty means everything. Empty if git failed: then nothing counts as ignored.
[[nodiscard]] std::unordered_set<std::string> ignoredFolders(
    ChildProcess& process, const Trace& trace, const std::string& top,
    const std::vector<std::string>& within);

}  // namespace neb::nebsc
