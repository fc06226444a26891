#include "CommandFrame/WorkingCopyLocation.h"

#include <filesystem>
#include <system_error>

#include "Session/GitProgram.h"

namespace neb::nebsc {

namespace fs = std::filesystem;

namespace {

/// With an end "/", a link would be followed.
fs::path withoutEndSlashes(std::string path) {
    while (path.size() > 1 && path.ends_with('/')) {
        path.pop_back();
    }
    return path;
}

fs::path resolved(const fs::path& path, std::error_code& failure) {
    const fs::path name = path.filename();
    if (name.empty() || name == "." || name == "..") {
        return withoutEndSlashes(fs::weakly_canonical(path, failure).string());
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
    const fs::path absolute = resolved(fs::path(currentFolder) / withoutEndSlashes(path), failure);
    if (failure) {
        return {std::nullopt,
                "The path \"" + path + "\" cannot be looked up: " + failure.message() + "."};
    }
    return {absolute.string(), {}};
}

std::string repositoryLocation(const std::string& currentFolder, const std::string& url) {
    const std::size_t colon = url.find(':');
    const bool hasHost = colon != std::string::npos && url.find('/') > colon;
    const PathSearch search = findAbsolutePath(currentFolder, url);
    const bool isPath = !url.empty() && !url.starts_with('-') && search.path &&
                        (!hasHost || isAnythingAt(*search.path));
    return isPath ? *search.path : url;
}

WorkingCopyLocation findWorkingCopy(Interruption& interruption, const Trace& trace,
                                    const std::string& currentFolder, const std::string& folder) {
    const auto top = workingCopyTop(interruption, trace, folder);
    return {.location = top.value_or(folder),
            .currentFolder = currentFolder,
            .isWorkingCopy = top.has_value()};
}

bool liesWithin(const std::string& path, const std::string& folder) {
    return path == folder || folder == "/" ||
           (path.starts_with(folder) && path[folder.size()] == '/');
}

bool isAnythingAt(const std::string& path) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(path, ignored));
}

std::string pathAsSeenFrom(const WorkingCopyLocation& place, const std::string& path) {
    if (!liesWithin(place.currentFolder, place.location)) {
        return path;
    }
    const bool isFolder = path.ends_with('/');
    const fs::path plain = isFolder ? path.substr(0, path.size() - 1) : path;
    const std::string relative = plain.lexically_relative(place.currentFolder).string();
    return isFolder ? relative + "/" : relative;
}

}  // namespace neb::nebsc
