#include "NEBFoundation/NEBSourceControlOrphanedLockFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/FileDescriptor.h"

namespace neb {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view lockSuffix = ".lock";

/// Whether the process runs git or one of its helper programs, such as git-remote-https.
bool isGit(const fs::path& process) {
    std::error_code failure;
    return fs::read_symlink(process / "exe", failure).filename().string().starts_with("git");
}

/// The lock files that git init creates before the folder has what a git directory has.
constexpr std::array<std::string_view, 2> locksOfNewRepository = {"HEAD.lock", "config.lock"};

/// Whether the file belongs to a git directory. A tracked file may end in ".lock", too.
bool belongsToGitDirectory(const fs::path& file) {
    if (std::ranges::count(locksOfNewRepository, file.filename()) != 0) {
        return true;
    }
    std::error_code failure;
    for (fs::path folder = file.parent_path(); folder != folder.parent_path();
         folder = folder.parent_path()) {
        if (fs::exists(folder / "HEAD", failure) && (fs::exists(folder / "objects", failure) ||
                                                     fs::exists(folder / "commondir", failure))) {
            return true;
        }
    }
    return false;
}

std::optional<struct stat> informationOf(const FileDescriptor& file) {
    struct stat information {};
    return ::fstat(file.get(), &information) == 0 ? std::optional(information) : std::nullopt;
}

/// When git writes to a lock file, it has recorded the name.
bool isEmptyFile(const std::optional<struct stat>& information) {
    return information && S_ISREG(information->st_mode) && information->st_size == 0 &&
           information->st_nlink == 1;
}

class OrphanedLockFiles {
public:
    /// Finds the empty lock files that the stopped processes have open.
    void find(const std::vector<pid_t>& processes) {
        for (const pid_t process : processes) {
            const fs::path path = "/proc/" + std::to_string(process);
            if (isGit(path)) {
                findIn(path);
            }
        }
    }

    /// Removes the found files that are still there and still empty.
    void remove() {
        for (const LockFile& lockFile : _lockFiles) {
            const auto found = informationOf(lockFile.file);
            struct stat now {};
            if (isEmptyFile(found) && ::lstat(lockFile.path.c_str(), &now) == 0 &&
                now.st_dev == found->st_dev && now.st_ino == found->st_ino) {
                ::unlink(lockFile.path.c_str());
            }
        }
    }

private:
    struct LockFile {
        std::string path;
        FileDescriptor file;  // while it is open, no other file gets its inode number
    };

    void findIn(const fs::path& process) {
        std::error_code failure;
        for (fs::directory_iterator entry(process / "fd", failure), end; !failure && entry != end;
             entry.increment(failure)) {
            std::error_code gone;
            const std::string path = fs::read_symlink(entry->path(), gone).string();
            if (!path.ends_with(lockSuffix) || !belongsToGitDirectory(path)) {
                continue;
            }
            FileDescriptor file(::open(entry->path().c_str(), O_PATH | O_CLOEXEC));
            if (file.isOpen() && isEmptyFile(informationOf(file))) {
                _lockFiles.push_back({.path = path, .file = std::move(file)});
            }
        }
    }

    std::vector<LockFile> _lockFiles;
};

}  // namespace

std::vector<ChildOutcome> NEBSourceControlRunChildren(ChildProcess& process,
                                                      const std::vector<ChildLaunch>& launches,
                                                      ChildProcess::Observers observers,
                                                      const ChildLimits& limits) {
    OrphanedLockFiles lockFiles;
    observers.stopped = [&lockFiles](const std::vector<pid_t>& processes) {
        lockFiles.find(processes);
    };
    std::vector<ChildOutcome> outcomes = process.run(launches, observers, limits);
    lockFiles.remove();
    return outcomes;
}

}  // namespace neb
