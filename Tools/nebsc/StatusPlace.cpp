#include "StatusPlace.h"

#include <filesystem>
#include <system_error>

#include "GitProgram.h"

namespace neb::nebsc {

namespace fs = std::filesystem;

namespace {

/// The path as it is: what it names need not exist any more, and links on the way to it are
/// followed, as git does, but not the last one.
fs::path resolved(const fs::path& path, std::error_code& failure) {
    const fs::path name = path.filename();
    if (name.empty() || name == "." || name == "..") {
        const fs::path whole = fs::weakly_canonical(path, failure);
        // Where nothing is, the "/" at the end was kept.
        return whole.has_filename() ? whole : whole.parent_path();
    }
    return fs::weakly_canonical(path.parent_path(), failure) / name;
}

fs::path nearestFolder(fs::path path) {
    std::error_code ignored;
    while (!fs::is_directory(fs::symlink_status(path, ignored)) && path.has_relative_path()) {
        path = path.parent_path();
    }
    return path;
}

bool liesWithin(const std::string& path, const std::string& folder) {
    return path == folder || folder == "/" ||
           (path.starts_with(folder) && path[folder.size()] == '/');
}

StatusPlace makePlace(Interruption& interruption, const fs::path& path,
                      const fs::path& currentFolder) {
    std::error_code ignored;
    fs::path asked = path;
    fs::path folder = nearestFolder(asked);
    auto top = workingCopyTop(interruption, folder);
    if (!top && fs::is_symlink(fs::symlink_status(asked, ignored)) &&
        fs::is_directory(fs::status(asked, ignored))) {
        asked = folder = fs::canonical(asked, ignored);
        top = workingCopyTop(interruption, folder);
    }
    StatusPlace place{.location = top.value_or(folder.string()),
                      .destination = std::nullopt,
                      .currentFolder = currentFolder.string(),
                      .pathExists = fs::exists(fs::symlink_status(asked, ignored))};
    if (asked.string() != place.location) {
        place.destination = asked.string();
    }
    return place;
}

}  // namespace

StatusPlaceSearch findStatusPlace(Interruption& interruption,
                                  const std::optional<std::string>& path) {
    std::error_code failure;
    const fs::path currentFolder = fs::current_path(failure);
    if (failure) {
        return {std::nullopt, "The current folder cannot be found: " + failure.message() + "."};
    }
    if (!path) {
        StatusPlace place = makePlace(interruption, currentFolder, currentFolder);
        place.destination.reset();
        return {std::move(place), {}};
    }
    const fs::path absolute = resolved(currentFolder / *path, failure);
    if (failure) {
        return {std::nullopt,
                "The path \"" + *path + "\" cannot be looked up: " + failure.message() + "."};
    }
    return {makePlace(interruption, absolute, currentFolder), {}};
}

std::string pathAsSeenFrom(const StatusPlace& place, const std::string& path) {
    if (!liesWithin(place.currentFolder, place.location)) {
        return path;
    }
    const bool isFolder = path.ends_with('/');
    const fs::path plain = isFolder ? path.substr(0, path.size() - 1) : path;
    const std::string relative = plain.lexically_relative(place.currentFolder).string();
    return isFolder ? relative + "/" : relative;
}

}  // namespace neb::nebsc
