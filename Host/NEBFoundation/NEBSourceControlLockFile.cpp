#include "NEBFoundation/NEBSourceControlLockFile.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <system_error>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlGitDirectory.h"
#include "Platform/Interceptor.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"

namespace neb {

namespace fs = std::filesystem;

namespace {

// ---- processes --------------------------------------------------------------------------------

struct Process {
    NEBSourceControlLockHolder holder;
    bool isGit = false;
    std::string folder;
    std::vector<std::string> files;
};

std::string target(const fs::path& link) {
    std::error_code failure;
    const fs::path path = fs::read_symlink(link, failure);
    return failure ? "" : path.string();
}

/// Returns the name of the program and, of git, its command. Other arguments may be secret.
std::string commandOf(const fs::path& process, const std::string& name) {
    std::ifstream file(process / "cmdline", std::ios::binary);
    std::string program;
    std::string argument;
    std::getline(file, program, '\0');
    std::getline(file, argument, '\0');
    const bool isCommand = name == "git" && !argument.empty() && !argument.starts_with('-');
    return isCommand ? name + " " + argument : name;
}

/// Returns the processes that the user may inspect; proc(5).
std::vector<Process> runningProcesses() {
    std::vector<Process> processes;
    std::error_code failure;
    for (fs::directory_iterator entry("/proc", failure), end; !failure && entry != end;
         entry.increment(failure)) {
        const std::string number = entry->path().filename().string();
        Process process;
        const auto [rest, error] =
            std::from_chars(number.data(), number.data() + number.size(), process.holder.process);
        if (error != std::errc() || rest != number.data() + number.size()) {
            continue;
        }
        std::string name;
        std::ifstream(entry->path() / "comm") >> name;
        process.isGit = name == "git" || name.starts_with("git-");
        process.holder.command = commandOf(entry->path(), name);
        process.folder = target(entry->path() / "cwd");
        std::error_code ignored;
        for (fs::directory_iterator file(entry->path() / "fd", ignored), last;
             !ignored && file != last; file.increment(ignored)) {
            process.files.push_back(target(file->path()));
        }
        processes.push_back(std::move(process));
    }
    return processes;
}

std::vector<NEBSourceControlLockHolder> holdersOf(const std::string& path,
                                                  const std::vector<Process>& processes,
                                                  const std::vector<std::string>& folders) {
    std::vector<NEBSourceControlLockHolder> holders;
    std::vector<NEBSourceControlLockHolder> others;
    for (const Process& process : processes) {
        const auto runsIn = [&process](const std::string& folder) {
            return !folder.empty() && liesWithin(process.folder, folder);
        };
        if (std::ranges::count(process.files, path) != 0) {
            holders.push_back(process.holder);
        } else if (process.isGit && std::ranges::any_of(folders, runsIn)) {
            others.push_back(process.holder);
        }
    }
    std::ranges::move(others, std::back_inserter(holders));
    return holders;
}

// ---- errors -----------------------------------------------------------------------------------

/// How git names a lock file, or the locked file.
struct Mention {
    std::string_view before, after, suffix;
};

constexpr Mention mentions[] = {
    {"nable to create '", "': File exists", ""},
    {"could not lock config file ", ": File exists", ".lock"},
    // git prints no reason if it changes a section.
    {"could not lock config file ", "\n", ".lock"},
};

std::optional<std::string> lockNamedIn(std::string_view text) {
    for (const Mention& mention : mentions) {
        const std::size_t before = text.find(mention.before);
        const std::size_t begin = before + mention.before.size();
        const std::size_t end =
            before != std::string_view::npos ? text.find(mention.after, begin) : before;
        if (end != std::string_view::npos) {
            return std::string(text.substr(begin, end - begin)) + std::string(mention.suffix);
        }
    }
    return std::nullopt;
}

/// git names the configuration relative to the top of the working copy.
std::string absolutePath(const std::string& path, const std::string& folder) {
    std::error_code failure;
    for (fs::path parent = fs::absolute(folder, failure);
         path.front() != '/' && parent.has_relative_path(); parent = parent.parent_path()) {
        if (fs::exists(parent / path, failure)) {
            return (parent / path).string();
        }
    }
    return path;
}

std::string suggestionFor(const NEBSourceControlLockFile& lock) {
    const std::string what =
        "\"" + lock.path + "\" is " + NEBSourceControlTextOfAge(lock.age) + " old";
    if (lock.holders.empty()) {
        return what + ". If no git is running, delete it.";
    }
    const NEBSourceControlLockHolder& holder = lock.holders.front();
    return what + " and held by \"" + holder.command + "\" (process " +
           std::to_string(holder.process) + "). Wait until that has ended.";
}

}  // namespace

std::vector<NEBSourceControlLockFile> NEBSourceControlExamineLockFiles(
    const std::vector<std::string>& paths, const std::vector<std::string>& folders) {
    std::vector<NEBSourceControlLockFile> locks;
    std::optional<std::vector<Process>> processes;
    for (const std::string& path : paths) {
        struct stat attributes {};
        if (::lstat(path.c_str(), &attributes) != 0) {
            continue;
        }
        if (!processes) {
            processes = runningProcesses();
        }
        const auto now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
        locks.push_back(
            {.path = path,
             .age = std::chrono::seconds(std::max<std::int64_t>(now - attributes.st_mtime, 0)),
             .holders = holdersOf(path, *processes, folders)});
    }
    return locks;
}

std::string NEBSourceControlTextOfAge(std::chrono::seconds age) {
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

namespace {

/// Returns the age of a lock file, its path, and the process and command of its first holder, each
/// but the last with a NUL behind it. Empty if the file does not exist.
std::string textOf(const std::string& named, const std::string& folder) {
    const auto repository = NEBSourceControlFindGitDirectory(folder);
    const auto locks = NEBSourceControlExamineLockFiles(
        {absolutePath(named, folder)},
        {repository ? repository->workingCopy : "", repository ? repository->path : ""});
    if (locks.empty()) {
        return {};
    }
    const NEBSourceControlLockFile& lock = locks.front();
    std::string text = std::to_string(lock.age.count()) + '\0' + lock.path;
    if (!lock.holders.empty()) {
        text += '\0' + std::to_string(lock.holders.front().process) + '\0' +
                lock.holders.front().command;
    }
    return text;
}

/// Reads such a text.
std::optional<NEBSourceControlLockFile> lockIn(std::string_view text) {
    std::vector<std::string> fields;
    forEachField(text, '\0', [&fields](std::string_view field) { fields.emplace_back(field); });
    if (fields.size() < 2) {
        return std::nullopt;
    }
    const auto numberIn = [](const std::string& field) {
        std::int64_t number = 0;
        std::from_chars(field.data(), field.data() + field.size(), number);
        return number;
    };
    NEBSourceControlLockFile lock{
        .path = fields[1], .age = std::chrono::seconds(numberIn(fields[0])), .holders = {}};
    if (fields.size() == 4) {
        lock.holders.push_back(
            {.process = static_cast<pid_t>(numberIn(fields[2])), .command = fields[3]});
    }
    return lock;
}

}  // namespace

void NEBSourceControlAddLockDetails(NEBSourceControlError& error, const std::string& folder) {
    const bool isLocked = error.errorClass == NEBSourceControlIndexLockedErrorClass ||
                          error.errorClass == NEBSourceControlRefLockedErrorClass;
    const auto named = isLocked ? lockNamedIn(error.text.value_or("")) : std::nullopt;
    if (!named || named->empty()) {
        return;
    }
    const auto found =
        lockIn(interceptedText("lock", *named, [&] { return textOf(*named, folder); }));
    if (!found) {
        return;
    }
    const NEBSourceControlLockFile& lock = *found;
    error.userInfo.set(NEBLocalizedRecoverySuggestionKey, suggestionFor(lock));
    error.userInfo.set(NEBSourceControlErrorLockPathKey, lock.path);
    error.userInfo.set(NEBSourceControlErrorLockAgeKey,
                       static_cast<std::int64_t>(lock.age.count()));
    if (!lock.holders.empty()) {
        error.userInfo.set(NEBSourceControlErrorLockHolderProcessKey,
                           static_cast<std::int64_t>(lock.holders.front().process));
        error.userInfo.set(NEBSourceControlErrorLockHolderCommandKey, lock.holders.front().command);
    }
}

}  // namespace neb
