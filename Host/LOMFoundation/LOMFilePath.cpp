#include "LOMFoundation/LOMFilePath.h"

#include <sys/stat.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include "Platform/Interceptor.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

struct TypeRow {
    LOMFileType type;
    std::string_view name;
    mode_t mode;
};

/// The last row stands for all other modes.
constexpr TypeRow typeRows[] = {{LOMFileType::regular, "regular", S_IFREG},
                                {LOMFileType::directory, "directory", S_IFDIR},
                                {LOMFileType::symbolicLink, "symbolic link", S_IFLNK},
                                {LOMFileType::other, "other", 0}};

/// Returns the name of the type of a file; empty if it cannot be read.
std::string nameOfType(const std::string& path) {
    struct stat information {};
    if (::lstat(path.c_str(), &information) != 0) {
        return {};
    }
    const auto* row = std::ranges::find(typeRows, information.st_mode & S_IFMT, &TypeRow::mode);
    return std::string(row != std::end(typeRows) ? row->name : std::rbegin(typeRows)->name);
}

}  // namespace

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
    const std::string name =
        interceptedText("type", _pathString, [this] { return nameOfType(_pathString); });
    const auto* row = std::ranges::find(typeRows, name, &TypeRow::name);
    return row != std::end(typeRows) ? std::optional(LOMFileAttributes{row->type}) : std::nullopt;
}

}  // namespace neb
