#include "Doctor/LockFiles.h"

#include <filesystem>
#include <set>
#include <system_error>

namespace neb::nebsc {

namespace fs = std::filesystem;

namespace {

/// Limits the time of the search. Repositories with more references than this keep them packed.
constexpr std::size_t mostEntries = 200000;

template <typename Iterator>
void collectLocks(const std::string& folder, std::set<std::string>& paths) {
    std::error_code failure;
    std::size_t count = 0;
    constexpr auto passingOver = fs::directory_options::skip_permission_denied;
    for (Iterator entry(folder, passingOver, failure), end;
         !failure && entry != end && count < mostEntries; entry.increment(failure), ++count) {
        std::error_code ignored;
        if (entry->path().extension() == ".lock" &&
            fs::is_regular_file(entry->symlink_status(ignored))) {
            paths.insert(entry->path().string());
        }
    }
}

/// Adds the repositories of submodules and of their submodules. The name of a submodule can contain
/// slashes.
void collectSubmodules(const fs::path& folder, std::vector<std::string>& gitFolders) {
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure), end; !failure && entry != end;
         entry.increment(failure)) {
        std::error_code ignored;
        if (!fs::is_directory(entry->symlink_status(ignored))) {
            continue;
        }
        const bool isRepository = fs::exists(entry->path() / "HEAD", ignored);
        if (isRepository) {
            gitFolders.push_back(entry->path().string());
        }
        collectSubmodules(isRepository ? entry->path() / "modules" : entry->path(), gitFolders);
    }
}

std::set<std::string> pathsOfLocks(const std::vector<std::string>& gitFolders) {
    std::set<std::string> paths;
    for (const std::string& folder : gitFolders) {
        for (const char* subfolder : {"", "/objects/info", "/objects/pack"}) {
            collectLocks<fs::directory_iterator>(folder + subfolder, paths);
        }
        collectLocks<fs::recursive_directory_iterator>(folder + "/refs", paths);
    }
    return paths;
}

}  // namespace

std::vector<NEBSourceControlLockFile> findLockFiles(std::vector<std::string> gitFolders,
                                                    const std::string& workingCopy) {
    for (const std::string& folder : std::vector(gitFolders)) {
        collectSubmodules(folder + "/modules", gitFolders);
    }
    const std::set<std::string> paths = pathsOfLocks(gitFolders);
    gitFolders.push_back(workingCopy);
    return NEBSourceControlExamineLockFiles({paths.begin(), paths.end()}, gitFolders);
}

}  // namespace neb::nebsc
