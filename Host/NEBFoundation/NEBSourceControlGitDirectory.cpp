#include "NEBFoundation/NEBSourceControlGitDirectory.h"

#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace neb {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view prefixOfGitFile = "gitdir: ";

std::string withoutLinks(const fs::path& path) {
    if (path.empty()) {
        return "";  // libc++ would return the current folder, libstdc++ returns nothing
    }
    std::error_code failure;
    const fs::path whole = fs::weakly_canonical(path, failure);
    return failure ? path.string() : whole.string();
}

/// Returns the first line of the file; empty if it cannot be read.
std::string firstLineOf(const fs::path& path) {
    std::error_code failure;
    std::string line;
    if (fs::is_regular_file(path, failure)) {  // a pipe would block
        std::ifstream file(path);
        std::getline(file, line);
    }
    return line;
}

bool isGitDirectory(const fs::path& folder) {
    std::error_code failure;
    return fs::exists(folder / "HEAD", failure) &&
           (fs::exists(folder / "objects", failure) || fs::exists(folder / "commondir", failure));
}

/// Returns the git directory of a working copy with this top; empty if it has none.
std::string gitDirectoryAt(const fs::path& folder) {
    std::error_code failure;
    const fs::path entry = folder / ".git";
    if (fs::is_directory(entry, failure)) {
        return isGitDirectory(entry) ? withoutLinks(entry) : "";
    }
    const std::string line = firstLineOf(entry);
    return line.starts_with(prefixOfGitFile)
               ? withoutLinks(folder / line.substr(prefixOfGitFile.size()))
               : "";
}

NEBSourceControlGitDirectory repositoryOf(const std::string& path, const std::string& workingCopy) {
    const std::string common = firstLineOf(fs::path(path) / "commondir");
    return {.path = path,
            .commonPath = common.empty() ? path : withoutLinks(fs::path(path) / common),
            .workingCopy = workingCopy};
}

}  // namespace

std::optional<NEBSourceControlGitDirectory> NEBSourceControlFindGitDirectory(
    const std::string& folder) {
    fs::path parent = withoutLinks(folder);
    while (!parent.empty()) {
        if (const std::string path = gitDirectoryAt(parent); !path.empty()) {
            return repositoryOf(path, parent.string());
        }
        if (isGitDirectory(parent)) {
            return repositoryOf(parent.string(), "");
        }
        if (parent == parent.parent_path()) {
            break;
        }
        parent = parent.parent_path();
    }
    return std::nullopt;
}

}  // namespace neb
