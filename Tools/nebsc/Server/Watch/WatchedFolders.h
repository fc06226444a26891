// WatchedFolders.h - the watched folders of a repository, and what their events mean.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Platform/ChildProcess.h"
#include "Platform/FolderWatcher.h"
#include "Server/Watch/RepositoryChanges.h"
#include "Server/Watch/RepositoryFolders.h"
#include "Session/Trace.h"

namespace neb::nebsc {

/// Watches the folders of git that matter and, optionally, the folders of the working tree that are
/// not ignored. Not thread-safe.
class WatchedFolders {
public:
    /// `trace` must outlive this object.
    WatchedFolders(const Trace& trace, RepositoryFolders folders, bool withWorkingTree);

    /// Begins to watch all folders, or begins again. Returns why that is not possible; absent on
    /// success. `process` runs git and can be cancelled from another thread.
    [[nodiscard]] std::optional<WatchFailure> watchAll(ChildProcess& process);

    /// Becomes readable when takeChanges() has events to read.
    [[nodiscard]] int descriptor() const { return _watcher ? _watcher->descriptor() : -1; }

    /// Returns what has changed since the last call, a combination of RepositoryChange.
    [[nodiscard]] std::uint32_t takeChanges();

    /// Watches the folders that are new, or everything again if events were lost. Call it before
    /// changes are reported: their reader then misses nothing. Returns why the repository is no
    /// longer watched; absent if it is. `process` as for watchAll().
    [[nodiscard]] std::optional<WatchFailure> update(ChildProcess& process);

private:
    enum class Kind { git, workingTree, other };

    struct Folder {
        std::string path{};
        Kind kind = Kind::other;
        /// Of Kind::git.
        GitFolderRole role{};
        /// Of Kind::git: the path from the git directory, empty for that itself.
        std::string gitPath{};
    };
    /// A folder without which the repository does not exist.
    struct Root {
        std::string path;
        std::uint64_t device;
        std::uint64_t number;
    };

    [[nodiscard]] std::uint32_t changesOf(const FolderEvent& event);
    [[nodiscard]] std::uint32_t changesOfGitFolder(const Folder& folder, const FolderEvent& event);
    [[nodiscard]] std::uint32_t changesOfWorkingTree(const Folder& folder,
                                                     const FolderEvent& event);
    void forget(int number);
    void forgetBelow(const std::string& path);
    void readHead();

    [[nodiscard]] std::optional<WatchFailure> addRoot(const std::string& path);
    [[nodiscard]] std::optional<WatchFailure> addGitFolders(const Folder& folder);
    [[nodiscard]] std::optional<WatchFailure> addWorkingTree(
        const std::string& path, const std::unordered_set<std::string>& ignored);
    [[nodiscard]] std::optional<WatchFailure> addNewFolders(ChildProcess& process);
    [[nodiscard]] std::optional<WatchFailure> add(const Folder& folder, bool& isAdded);
    [[nodiscard]] std::optional<WatchFailure> missingRoot() const;

    const Trace& _trace;
    const RepositoryFolders _repository;
    const bool _withWorkingTree;
    std::optional<FolderWatcher> _watcher;
    std::vector<Root> _roots;
    std::unordered_map<int, Folder> _folders;  // by the number of the watcher
    std::vector<Folder> _newFolders;
    /// Events were lost, or other folders are ignored now.
    bool _mustWatchAgain = false;
    std::string _headReference;  // "refs/heads/main"; empty if HEAD is detached
};

}  // namespace neb::nebsc
