#include "LOMFoundation/LOMFilePath.h"

#include <sys/stat.h>

#include "Platform/PathString.h"

namespace neb {

LOMFilePath LOMFilePath::filePathForPathString(std::string pathString) {
    return LOMFilePath(std::move(pathString));
}

std::string LOMFilePath::lastPathComponent() const {
    return neb::lastPathComponent(_pathString);
}

bool LOMFilePath::existsInFileSystem() const {
    return fileAttributes().has_value();
}

std::optional<LOMFileAttributes> LOMFilePath::fileAttributes() const {
    struct stat information {};
    if (::lstat(_pathString.c_str(), &information) != 0) {
        return std::nullopt;
    }
    switch (information.st_mode & S_IFMT) {
        case S_IFREG:
            return LOMFileAttributes{LOMFileType::regular};
        case S_IFDIR:
            return LOMFileAttributes{LOMFileType::directory};
        case S_IFLNK:
            return LOMFileAttributes{LOMFileType::symbolicLink};
        default:
            return LOMFileAttributes{LOMFileType::other};
    }
}

}  // namespace neb
