#include "Session/MissingFolder.h"

#include <system_error>
#include <utility>

namespace neb::nebsc {

namespace fs = std::filesystem;

namespace {

FileFailure failureOf(const fs::path& folder, const char* what, const std::error_code& cause) {
    return {cause.value(), "The folder '" + folder.string() + "' could not be " + what + ": " +
                               cause.message() + "."};
}

}  // namespace

std::optional<FileFailure> MissingFolder::make() {
    std::error_code ignored;
    _wasEmpty = fs::is_directory(fs::symlink_status(target(), ignored)) &&
                fs::is_empty(target(), ignored) && !ignored;
    fs::path folder;
    for (const fs::path& name : _path) {
        folder /= name;
        std::error_code failure;
        if (name.empty() || fs::exists(fs::symlink_status(folder, failure))) {
            continue;
        }
        // False if another process created the folder meanwhile; then it must not be removed.
        if (fs::create_directory(folder, failure)) {
            _made.push_back(folder);
        }
        if (failure) {
            return failureOf(folder, "made", failure);
        }
    }
    return std::nullopt;
}

fs::path MissingFolder::target() const {
    return _path.has_filename() ? _path : _path.parent_path();
}

std::optional<FileFailure> MissingFolder::rollBack() {
    std::optional<FileFailure> failed;
    if (std::exchange(_wasEmpty, false)) {
        std::error_code failure;
        for (fs::directory_iterator entry(target(), failure), end; !failure && entry != end;
             entry.increment(failure)) {
            std::error_code failureInside;
            fs::remove_all(entry->path(), failureInside);
            if (failureInside && !failed) {
                failed = failureOf(entry->path(), "removed again", failureInside);
            }
        }
    }
    while (!_made.empty()) {
        const fs::path folder = std::move(_made.back());
        _made.pop_back();
        std::error_code failure;
        if (folder == target()) {
            fs::remove_all(folder, failure);
        } else {
            fs::remove(folder, failure);
        }
        if (failure && failure != std::errc::directory_not_empty && !failed) {
            failed = failureOf(folder, "removed again", failure);
        }
    }
    return failed;
}

}  // namespace neb::nebsc
