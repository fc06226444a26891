#include "Session/NewFile.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "Platform/ErrnoText.h"
#include "Platform/PathString.h"

namespace neb::nebsc {

namespace {

FileFailure failureToWrite(const std::string& path, int errorNumber) {
    return {errorNumber,
            "\"" + path + "\" could not be written: " + textOfErrno(errorNumber) + "."};
}

}  // namespace

NewFile::~NewFile() {
    if (!_folder.empty()) {
        std::error_code ignored;
        std::filesystem::remove_all(_folder, ignored);
    }
}

std::optional<FileFailure> NewFile::prepare() {
    std::string folder =
        pathByAppendingComponent(pathByDeletingLastComponent(_path), ".nebsc-XXXXXX");
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

/// For file systems and systems without that call. A second name for a file is never put in another
/// one's place; for a folder, and where a file cannot have two names, a look must do.
std::optional<FileFailure> NewFile::publishPortably(const std::string& from) {
    if (::linkat(AT_FDCWD, from.c_str(), AT_FDCWD, _path.c_str(), 0) == 0) {
        return std::nullopt;  // the draft's own name goes with its folder
    }
    std::error_code failure;
    if (errno == EEXIST ||
        std::filesystem::exists(std::filesystem::symlink_status(_path, failure))) {
        return failureToWrite(_path, EEXIST);
    }
    std::filesystem::rename(from, _path, failure);
    return failure ? std::optional(failureToWrite(_path, failure.value())) : std::nullopt;
}

}  // namespace neb::nebsc
