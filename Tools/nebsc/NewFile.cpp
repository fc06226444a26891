#include "NewFile.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>

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

/// Some file systems cannot promise to overwrite nothing; there a look must do.
std::optional<FileFailure> NewFile::publish() {
    const std::string from = draft();
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, _path.c_str(), RENAME_NOREPLACE) == 0) {
        return std::nullopt;
    }
    if (errno != EINVAL) {
        return failureToWrite(_path, errno);
    }
    std::error_code failure;
    if (std::filesystem::exists(std::filesystem::symlink_status(_path, failure))) {
        return failureToWrite(_path, EEXIST);
    }
    std::filesystem::rename(from, _path, failure);
    return failure ? std::optional(failureToWrite(_path, failure.value())) : std::nullopt;
}

}  // namespace neb::nebsc
