#include "Platform/NewFile.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <vector>

#include "Platform/PathString.h"

namespace neb {

namespace fs = std::filesystem;

namespace {

FileFailure failureToWrite(const std::string& path, int errorNumber) {
    return FileFailure::of(errorNumber, "'" + path + "' could not be written");
}

/// Removes a file or folder, including folders without write permission.
void removeTree(const fs::path& path) {
    std::error_code ignored;
    if (fs::is_directory(fs::symlink_status(path, ignored))) {
        ::chmod(path.c_str(), S_IRWXU);
        std::vector<fs::path> inside;
        for (fs::directory_iterator entry(path, ignored), end; !ignored && entry != end;
             entry.increment(ignored)) {
            inside.push_back(entry->path());
        }
        for (const fs::path& item : inside) {
            removeTree(item);
        }
    }
    fs::remove(path, ignored);
}

}  // namespace

NewFile::~NewFile() {
    if (!_folder.empty()) {
        removeTree(_folder);
    }
}

std::optional<FileFailure> NewFile::prepare() {
    std::string folder =
        pathByAppendingComponent(pathByDeletingLastComponent(_path), ".draft-XXXXXX");
    if (::mkdtemp(folder.data()) == nullptr) {
        return failureToWrite(_path, errno);
    }
    _folder = folder;
    return std::nullopt;
}

std::string NewFile::draft() const {
    return pathByAppendingComponent(_folder, _draftName);
}

std::optional<FileFailure> NewFile::publish() {
    const std::string from = draft();
#ifdef RENAME_NOREPLACE
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, _path.c_str(), RENAME_NOREPLACE) == 0) {
        return std::nullopt;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return failureToWrite(_path, errno);
    }
#endif
    return publishPortably(from);
}

/// Publishes without renameat2. A hard link never replaces a file. For a folder, and on a file
/// system without hard links, this only checks first whether the path is free.
std::optional<FileFailure> NewFile::publishPortably(const std::string& from) {
    if (::linkat(AT_FDCWD, from.c_str(), AT_FDCWD, _path.c_str(), 0) == 0) {
        return std::nullopt;  // the destructor removes the other name
    }
    std::error_code failure;
    if (errno == EEXIST || fs::exists(fs::symlink_status(_path, failure))) {
        return failureToWrite(_path, EEXIST);
    }
    fs::rename(from, _path, failure);
    return failure ? std::optional(failureToWrite(_path, failure.value())) : std::nullopt;
}

}  // namespace neb
