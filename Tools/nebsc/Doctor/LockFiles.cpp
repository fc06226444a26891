#include "Doctor/LockFiles.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <set>
#include <system_error>

#include "Platform/PathString.h"
#include "Session/Paths.h"

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

struct Process {
    std::string name;
    std::string folder;
    std::vector<std::string> files;
};

std::string target(const fs::path& link) {
    std::error_code failure;
    const fs::path path = fs::read_symlink(link, failure);
    return failure ? "" : path.string();
}

/// Returns the processes that the user may inspect.
std::vector<Process> runningProcesses() {
    std::vector<Process> processes;
    std::error_code failure;
    for (fs::directory_iterator entry("/proc", failure), end; !failure && entry != end;
         entry.increment(failure)) {
        const std::string number = entry->path().filename().string();
        if (number.find_first_not_of("0123456789") != std::string::npos) {
            continue;
        }
        std::string command;
        std::ifstream(entry->path() / "comm") >> command;
        Process process{
            command.append(" (").append(number).append(")"), target(entry->path() / "cwd"), {}};
        std::error_code ignored;
        for (fs::directory_iterator file(entry->path() / "fd", ignored), last;
             !ignored && file != last; file.increment(ignored)) {
            process.files.push_back(target(file->path()));
        }
        processes.push_back(std::move(process));
    }
    return processes;
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

std::vector<LockFile> findLockFiles(std::vector<std::string> gitFolders,
                                    const std::string& workingCopy) {
    for (const std::string& folder : std::vector(gitFolders)) {
        collectSubmodules(folder + "/modules", gitFolders);
    }
    const std::set<std::string> paths = pathsOfLocks(gitFolders);
    if (paths.empty()) {
        return {};
    }
    const std::vector<Process> processes = runningProcesses();
    const auto isGitInRepository = [&](const Process& process) {
        const auto runsIn = [&process](const std::string& folder) {
            return !folder.empty() && liesWithin(process.folder, folder);
        };
        const bool isGit = process.name.starts_with("git (") || process.name.starts_with("git-");
        return isGit &&
               (runsIn(workingCopy) || std::any_of(gitFolders.begin(), gitFolders.end(), runsIn));
    };
    std::vector<LockFile> locks;
    for (const std::string& path : paths) {
        LockFile lock{.path = path, .age = {}, .holders = {}};
        struct stat attributes {};
        if (::lstat(path.c_str(), &attributes) != 0) {
            continue;  // removed meanwhile
        }
        const auto now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
        lock.age = std::chrono::seconds(std::max<std::int64_t>(now - attributes.st_mtime, 0));
        for (const Process& process : processes) {
            const bool isOpen =
                std::find(process.files.begin(), process.files.end(), path) != process.files.end();
            if (isOpen || isGitInRepository(process)) {
                lock.holders.push_back(process.name);
            }
        }
        locks.push_back(std::move(lock));
    }
    return locks;
}

std::string textOfAge(std::chrono::seconds age) {
    struct Unit {
        std::int64_t seconds;
        const char* name;
    };
    constexpr std::array<Unit, 3> units{{{86400, "day"}, {3600, "hour"}, {60, "minute"}}};
    for (const Unit& unit : units) {
        if (const std::int64_t count = age.count() / unit.seconds; count > 0) {
            return std::to_string(count) + " " + unit.name + (count == 1 ? "" : "s");
        }
    }
    return std::to_string(age.count()) + " s";
}

}  // namespace neb::nebsc
