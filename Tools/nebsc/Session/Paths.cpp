#include "Session/Paths.h"

#include <filesystem>
#include <system_error>

namespace neb::nebsc {

namespace fs = std::filesystem;

namespace {

/// With a "/" at the end, the system would follow a symbolic link.
fs::path withoutTrailingSlashes(std::string path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.pop_back();
    }
    return path;
}

fs::path resolved(const fs::path& path, std::error_code& failure) {
    const fs::path name = path.filename();
    if (name.empty() || name == "." || name == "..") {
        return withoutTrailingSlashes(fs::weakly_canonical(path, failure).string());
    }
    return fs::weakly_canonical(path.parent_path(), failure) / name;
}

}  // namespace

PathSearch findCurrentFolder() {
    std::error_code failure;
    const fs::path folder = fs::current_path(failure);
    if (failure) {
        return {std::nullopt, "The current folder cannot be found: " + failure.message() + "."};
    }
    return {folder.string(), {}};
}

PathSearch findAbsolutePath(const std::string& currentFolder, const std::string& path) {
    std::error_code failure;
    const fs::path absolute =
        resolved(fs::path(currentFolder) / withoutTrailingSlashes(path), failure);
    if (failure) {
        return {std::nullopt,
                "The path '" + path + "' cannot be looked up: " + failure.message() + "."};
    }
    return {absolute.string(), {}};
}

bool isAnythingAt(const std::string& path) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(path, ignored));
}

bool isRegularFile(const std::string& path) {
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

bool isFolder(const std::string& path) {
    std::error_code ignored;
    return fs::is_directory(fs::status(path, ignored));
}

bool isFolderItself(const std::string& path) {
    std::error_code ignored;
    return fs::is_directory(fs::symlink_status(path, ignored));
}

}  // namespace neb::nebsc
