#include "Server/Watch/WatchedFolders.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Platform/ErrnoText.h"
#include "Platform/PathString.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view nameOfGitFolder = ".git";

WatchFailure failureOfSystem(int number, const std::string& path) {
    if (number == ENOSPC || number == EMFILE || number == ENFILE) {
        const std::string setting =
            number == ENOSPC ? "fs.inotify.max_user_watches" : "fs.inotify.max_user_instances";
        return {.errorClass = std::string(NEBSourceControlSystemLimitErrorClass.text()),
                .sentence = "The system's limit of watched folders is reached; raise '" + setting +
                            "' (sysctl), or watch fewer folders."};
    }
    return {.errorClass = std::string(NEBSourceControlUnknownErrorClass.text()),
            .sentence = inQuotes(path) + " cannot be watched: " + textOfErrno(number) + "."};
}

/// Calls `visit` with the name of each folder in the folder. Skips symbolic links. A folder that
/// cannot be read has none.
template <typename Visit>
void forEachFolderIn(const std::string& path, const Visit& visit) {
    std::error_code failure;
    std::filesystem::directory_iterator entry(path, failure);
    while (!failure && entry != std::filesystem::directory_iterator()) {
        std::error_code unknown;
        if (entry->is_directory(unknown) && !entry->is_symlink(unknown)) {
            visit(entry->path().filename().string());
        }
        entry.increment(failure);
    }
}

bool hasGitFolder(const std::string& path) {
    struct stat status {};
    return ::lstat(pathByAppendingComponent(path, nameOfGitFolder).c_str(), &status) == 0;
}

std::string below(const std::string& gitPath, const std::string& name) {
    return gitPath.empty() ? name : gitPath + "/" + name;
}

}  // namespace

WatchedFolders::WatchedFolders(const Trace& trace, RepositoryFolders folders, bool withWorkingTree)
    : _trace(trace), _repository(std::move(folders)), _withWorkingTree(withWorkingTree) {}

// ---- adding folders ---------------------------------------------------------------------------

std::optional<WatchFailure> WatchedFolders::watchAll(ChildProcess& process) {
    _folders.clear();
    _roots.clear();
    _newFolders.clear();
    _mustWatchAgain = false;
    _watcher.emplace();
    if (_watcher->failure() != 0) {
        return failureOfSystem(_watcher->failure(), _repository.gitFolder);
    }
    const bool isShared = _repository.gitFolder == _repository.commonFolder;
    std::vector<std::string> roots{_repository.gitFolder, _repository.commonFolder};
    if (_repository.top) {
        roots.push_back(*_repository.top);
    }
    for (const std::string& root : roots) {
        if (auto failure = addRoot(root)) {
            return failure;
        }
    }
    if (auto failure = addGitFolders({.path = _repository.gitFolder,
                                      .kind = Kind::git,
                                      .role = {.isOfWorktree = true, .isShared = isShared}})) {
        return failure;
    }
    if (!isShared) {
        if (auto failure = addGitFolders({.path = _repository.commonFolder,
                                          .kind = Kind::git,
                                          .role = {.isOfWorktree = false, .isShared = true}})) {
            return failure;
        }
    }
    readHead();
    if (!_repository.top || !_withWorkingTree) {
        return std::nullopt;
    }
    return addWorkingTree(*_repository.top, ignoredFolders(process, _trace, *_repository.top, {}));
}

/// The folder is watched so that its end is reported, even if nothing in it matters.
std::optional<WatchFailure> WatchedFolders::addRoot(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        return failureOfSystem(errno, path);
    }
    _roots.push_back({.path = path, .device = status.st_dev, .number = status.st_ino});
    bool isAdded = false;
    return add({.path = path}, isAdded);
}

/// A folder that cannot be watched because it is gone or not readable has no events.
std::optional<WatchFailure> WatchedFolders::add(const Folder& folder, bool& isAdded) {
    const FolderWatcher::Added added = _watcher->add(folder.path);
    isAdded = added.failure == 0;
    if (isAdded) {
        _folders[added.folder] = folder;
        return std::nullopt;
    }
    if (added.failure == ENOENT || added.failure == ENOTDIR || added.failure == EACCES ||
        added.failure == ELOOP) {
        return std::nullopt;
    }
    return failureOfSystem(added.failure, folder.path);
}

std::optional<WatchFailure> WatchedFolders::addGitFolders(const Folder& folder) {
    std::vector<Folder> pending{folder};
    while (!pending.empty()) {
        const Folder next = std::move(pending.back());
        pending.pop_back();
        bool isAdded = false;
        if (auto failure = add(next, isAdded)) {
            return failure;
        }
        if (!isAdded) {
            continue;
        }
        forEachFolderIn(next.path, [&pending, &next](const std::string& name) {
            if (isWatchedGitFolder(below(next.gitPath, name))) {
                pending.push_back({.path = pathByAppendingComponent(next.path, name),
                                   .kind = Kind::git,
                                   .role = next.role,
                                   .gitPath = below(next.gitPath, name)});
            }
        });
    }
    return std::nullopt;
}

/// Leaves out ignored folders, ".git", and other repositories with their own ".git".
std::optional<WatchFailure> WatchedFolders::addWorkingTree(
    const std::string& path, const std::unordered_set<std::string>& ignored) {
    std::vector<std::string> pending{path};
    while (!pending.empty()) {
        const std::string next = std::move(pending.back());
        pending.pop_back();
        if (ignored.contains(next) || (next != *_repository.top && hasGitFolder(next))) {
            continue;
        }
        bool isAdded = false;
        if (auto failure = add({.path = next, .kind = Kind::workingTree}, isAdded)) {
            return failure;
        }
        if (isAdded) {
            forEachFolderIn(next, [&pending, &next](const std::string& name) {
                if (name != nameOfGitFolder) {
                    pending.push_back(pathByAppendingComponent(next, name));
                }
            });
        }
    }
    return std::nullopt;
}

std::optional<WatchFailure> WatchedFolders::addNewFolders(ChildProcess& process) {
    const std::vector<Folder> newFolders = std::exchange(_newFolders, {});
    std::vector<std::string> ofWorkingTree;
    for (const Folder& folder : newFolders) {
        if (folder.kind == Kind::workingTree) {
            ofWorkingTree.push_back(folder.path);
        } else if (auto failure = addGitFolders(folder)) {
            return failure;
        }
    }
    if (ofWorkingTree.empty()) {
        return std::nullopt;
    }
    const auto ignored = ignoredFolders(process, _trace, *_repository.top, ofWorkingTree);
    for (const std::string& path : ofWorkingTree) {
        if (auto failure = addWorkingTree(path, ignored)) {
            return failure;
        }
    }
    return std::nullopt;
}

// ---- events -----------------------------------------------------------------------------------

std::uint32_t WatchedFolders::takeChanges() {
    std::uint32_t changes = changedNothing;
    if (_watcher) {
        for (const FolderEvent& event : _watcher->takeEvents()) {
            changes |= changesOf(event);
        }
    }
    return changes;
}

std::uint32_t WatchedFolders::changesOf(const FolderEvent& event) {
    if (event.kind == FolderEvent::Kind::eventsLost) {
        _mustWatchAgain = true;
        return changedGitFolder | (_withWorkingTree ? changedWorkingTree : changedNothing);
    }
    const auto entry = _folders.find(event.folder);
    if (entry == _folders.end()) {
        return changedNothing;  // an event from before the end of its watch
    }
    const Folder folder = entry->second;
    if (event.kind == FolderEvent::Kind::folderRemoved) {
        forget(event.folder);
        return changedNothing;  // an event of the folder that contained it reports the change
    }
    if (event.kind == FolderEvent::Kind::folderMoved) {
        forgetBelow(folder.path);
        return changedNothing;
    }
    switch (folder.kind) {
        case Kind::git:
            return changesOfGitFolder(folder, event);
        case Kind::workingTree:
            return changesOfWorkingTree(folder, event);
        case Kind::other:
            break;
    }
    return changedNothing;
}

std::uint32_t WatchedFolders::changesOfGitFolder(const Folder& folder, const FolderEvent& event) {
    const std::string gitPath = below(folder.gitPath, event.name);
    const bool isNewFolder = event.kind == FolderEvent::Kind::folderAppeared;
    if (isNewFolder && isWatchedGitFolder(gitPath)) {
        _newFolders.push_back({.path = pathByAppendingComponent(folder.path, event.name),
                               .kind = Kind::git,
                               .role = folder.role,
                               .gitPath = gitPath});
    }
    if (gitPath == "HEAD" && folder.role.isOfWorktree) {
        readHead();
    }
    if (gitPath == "info/exclude" && _withWorkingTree) {
        _mustWatchAgain = true;
    }
    std::uint32_t changes = changesOfGitPath(gitPath, folder.role);
    // The branch of HEAD, which may have no reflog, or a new folder that contains it.
    if (folder.role.isShared && !_headReference.empty() &&
        (gitPath == _headReference || (isNewFolder && _headReference.starts_with(gitPath + "/")))) {
        changes |= changedHead;
    }
    return changes;
}

std::uint32_t WatchedFolders::changesOfWorkingTree(const Folder& folder, const FolderEvent& event) {
    if (event.name == nameOfGitFolder) {
        return changedNothing;
    }
    if (event.name == ".gitignore") {
        _mustWatchAgain = true;
    }
    if (event.kind == FolderEvent::Kind::folderAppeared) {
        _newFolders.push_back(
            {.path = pathByAppendingComponent(folder.path, event.name), .kind = Kind::workingTree});
    }
    return changedWorkingTree;
}

void WatchedFolders::forget(int number) {
    _folders.erase(number);
}

void WatchedFolders::forgetBelow(const std::string& path) {
    std::erase_if(_folders, [this, &path](const auto& entry) {
        const bool isBelow = liesWithin(entry.second.path, path);
        if (isBelow) {
            _watcher->remove(entry.first);
        }
        return isBelow;
    });
}

void WatchedFolders::readHead() {
    std::ifstream file(pathByAppendingComponent(_repository.gitFolder, "HEAD"));
    std::string label;
    std::string name;
    _headReference = file >> label >> name && label == "ref:" ? name : "";
}

// ---- after events -----------------------------------------------------------------------------

std::optional<WatchFailure> WatchedFolders::update(ChildProcess& process) {
    if (auto failure = missingRoot()) {
        return failure;
    }
    return _mustWatchAgain ? watchAll(process) : addNewFolders(process);
}

std::optional<WatchFailure> WatchedFolders::missingRoot() const {
    for (const Root& root : _roots) {
        struct stat status {};
        if (::stat(root.path.c_str(), &status) != 0 || status.st_dev != root.device ||
            status.st_ino != root.number) {
            return WatchFailure{
                .errorClass = std::string(NEBSourceControlNotARepositoryErrorClass.text()),
                .sentence = inQuotes(root.path) + " was removed or moved."};
        }
    }
    return std::nullopt;
}

}  // namespace neb::nebsc
