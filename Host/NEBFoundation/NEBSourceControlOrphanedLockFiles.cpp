#include "NEBFoundation/NEBSourceControlOrphanedLockFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

#include "Platform/ChildSession.h"

namespace neb {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view lockEnding = ".lock";

/// "git" and what it calls its parts.
bool isGit(const fs::path& process) {
    std::error_code failure;
    return fs::read_symlink(process / "exe", failure).filename().string().starts_with("git");
}

/// Whether the file lies in a folder of git's own: a tracked file may end in ".lock", too.
bool liesInRepository(const fs::path& file) {
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

/// git has not begun to write: what it has written to, it has noted.
bool isEmptyFile(const std::optional<struct stat>& information) {
    return information && S_ISREG(information->st_mode) && information->st_size == 0 &&
           information->st_nlink == 1;
}

}  // namespace

void OrphanedLockFiles::noteOf(pid_t session) {
    for (const pid_t member : liveMembers(session)) {
        noteOfProcess("/proc/" + std::to_string(member));
    }
}

void OrphanedLockFiles::noteOfProcess(const std::string& process) {
    if (!isGit(process)) {
        return;
    }
    std::error_code failure;
    for (fs::directory_iterator entry(process + "/fd", failure), end; !failure && entry != end;
         entry.increment(failure)) {
        std::error_code gone;
        const std::string path = fs::read_symlink(entry->path(), gone).string();
        if (!path.ends_with(lockEnding) || !liesInRepository(path)) {
            continue;
        }
        FileDescriptor file(::open(entry->path().c_str(), O_PATH | O_CLOEXEC));
        if (file.isOpen() && isEmptyFile(informationOf(file))) {
            _locks.push_back({.path = path, .file = std::move(file)});
        }
    }
}

void OrphanedLockFiles::remove() {
    for (const Lock& lock : _locks) {
        const auto noted = informationOf(lock.file);
        struct stat found {};
        if (isEmptyFile(noted) && ::lstat(lock.path.c_str(), &found) == 0 &&
            found.st_dev == noted->st_dev && found.st_ino == noted->st_ino) {
            ::unlink(lock.path.c_str());
        }
    }
    _locks.clear();
}

}  // namespace neb
