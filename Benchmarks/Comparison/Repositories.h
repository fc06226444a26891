// Repositories.h - the repositories of the comparison, each created once.
#pragma once

#include <filesystem>
#include <string>

namespace neb::benchmarks {

enum class RepositoryKind {
    history,      ///< as many commits, each of three files out of 5,000
    workingCopy,  ///< as many changed and untracked files among the tracked ones, half of each
    lines,        ///< one file of as many lines, "lines.txt", changed in 500 commits
    patch,        ///< two commits whose difference has some as many millions of bytes
    folder,       ///< one folder of as many files, "entries", checked out
    small,        ///< a hundred commits, a branch "topic" beside "main", and a remote
};

class Repositories {
public:
    /// Uses the folder, and repositories of earlier runs in it; without a folder (an empty path) a
    /// temporary one, which the destructor removes. The working copy tracks `trackedFiles` files.
    Repositories(const std::filesystem::path& folder, int trackedFiles);
    Repositories(const Repositories&) = delete;
    Repositories& operator=(const Repositories&) = delete;
    ~Repositories();

    /// Returns the top folder of the repository; creates it if it does not exist.
    [[nodiscard]] std::string path(RepositoryKind kind, int size) const;

private:
    std::filesystem::path _folder;
    bool _isTemporary;
    int _trackedFiles;
};

}  // namespace neb::benchmarks
