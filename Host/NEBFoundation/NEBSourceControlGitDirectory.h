// NEBSourceControlGitDirectory.h - finds the git directory of a folder without starting git.
//
//     const auto repository = NEBSourceControlFindGitDirectory("/home/me/project/src");
//     repository->commonPath;    // "/home/me/project/.git"
#pragma once

#include <optional>
#include <string>

#include "Platform/Export.h"

namespace neb {

/// The folders of a repository. All are absolute and without symbolic links.
struct NEBSourceControlGitDirectory {
    /// The folder with HEAD and index: ".git", the folder that a file ".git" names, or a bare
    /// repository.
    std::string path;
    /// The folder with references and configuration. All linked worktrees of a repository share it;
    /// otherwise it is the same as `path`. See gitrepository-layout(5), "commondir".
    std::string commonPath;
    /// The top of the working copy; empty for a bare repository.
    std::string workingCopy;
};

/// Returns the repository that git uses in the folder; absent without one. Like git, looks for
/// ".git" in the folder and its parents, and takes a folder that is a git directory itself for a
/// bare repository. Ignores settings such as core.worktree. Missing folders at the end of the path
/// are skipped. Throws only std::bad_alloc. Thread-safe.
[[nodiscard]] NEB_EXPORT std::optional<NEBSourceControlGitDirectory>
NEBSourceControlFindGitDirectory(const std::string& folder);

}  // namespace neb
