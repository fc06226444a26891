#include "NEBFoundation/NEBSourceControlLockWait.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <span>
#include <string_view>
#include <system_error>

#include "NEBFoundation/NEBSourceControlGitDirectory.h"
#include "Platform/Interceptor.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"

namespace neb {

namespace {

using std::chrono::milliseconds;

enum class Waiting {
    /// Locks the index before anything else, and holds the lock until all files are written. Hooks
    /// run later. Started again if the index is locked.
    forIndex,
    /// The same, but the hook post-checkout runs at the end, and git exits with its status; see
    /// githooks(5). With such a hook, the output does not show whether it ran: as beforeStart.
    forIndexUnlessHook,
    /// Only changes settings. Started again if the configuration was locked at the first change, or
    /// if it sets the same values once more.
    forConfiguration,
    /// Locks the index more than once, or after it has changed something: `git merge` has
    /// MERGE_HEAD, `git stash push` the stash, `git rebase` and `git pull` anything. Never started
    /// again, but not started while the index is locked.
    beforeStart,
};

/// How a command of git waits. A command that is not listed does not wait: it reads, it locks only
/// references, or nothing is certain about it.
struct CommandRow {
    std::string_view command;
    /// One of its arguments before "--", or the beginning of one up to "="; empty for all uses of
    /// the command.
    std::string_view argument;
    Waiting waiting;
    /// forConfiguration: a substring of the line after the one about the lock; empty if no line may
    /// follow.
    std::string_view consequence = {};
};

constexpr CommandRow commandRows[] = {
    {"add", "", Waiting::forIndex},
    {"rm", "", Waiting::forIndex},
    {"mv", "", Waiting::forIndex},
    {"restore", "", Waiting::forIndexUnlessHook},
    // When it switches branches, git exits with status 1 if the hook fails.
    {"checkout", "--merge", Waiting::forIndex},
    {"checkout", "", Waiting::forIndexUnlessHook},
    {"switch", "", Waiting::forIndex},
    {"apply", "", Waiting::forIndex},
    {"commit", "", Waiting::forIndex},
    {"reset", "", Waiting::forIndex},
    {"config", "", Waiting::forConfiguration},
    // The first of two settings. A remote that has a URL cannot be added once more.
    {"remote", "add", Waiting::forConfiguration, ".url' to '"},
    {"branch", "--set-upstream-to=", Waiting::forConfiguration,
     "unable to write upstream branch configuration"},
    // The first of two settings. Without it, git reports that there is no upstream branch.
    {"branch", "--unset-upstream", Waiting::forConfiguration, ".remote'"},
    {"merge", "", Waiting::beforeStart},
    {"pull", "", Waiting::beforeStart},
    {"rebase", "", Waiting::beforeStart},
    {"cherry-pick", "", Waiting::beforeStart},
    {"revert", "", Waiting::beforeStart},
    {"stash", "push", Waiting::beforeStart},
    {"stash", "apply", Waiting::beforeStart},
    {"stash", "pop", Waiting::beforeStart},
};

/// Returns the command of git and its arguments, without the options of git itself; see git(1).
std::span<const std::string> commandOf(const std::vector<std::string>& arguments) {
    std::span<const std::string> rest(arguments);
    while (!rest.empty() && rest.front().starts_with('-')) {
        const bool hasValue = rest.front() == "-c" || rest.front() == "-C";
        rest = rest.subspan(std::min<std::size_t>(hasValue ? 2 : 1, rest.size()));
    }
    return rest;
}

/// Returns the row of the command; null if it has none.
const CommandRow* rowOf(const std::vector<ChildLaunch>& launches) {
    if (launches.size() != 1 || lastPathComponent(launches.front().launchPath) != "git") {
        return nullptr;
    }
    const auto command = commandOf(launches.front().arguments);
    const auto* row = std::ranges::find_if(commandRows, [command](const CommandRow& candidate) {
        const auto isArgument = [&candidate](const std::string& argument) {
            return argument.substr(0, argument.find('=') + 1) == candidate.argument ||
                   argument == candidate.argument;
        };
        const auto end = std::ranges::find(command, "--");
        return !command.empty() && command.front() == candidate.command &&
               (candidate.argument.empty() || std::any_of(command.begin(), end, isArgument));
    });
    return row != std::end(commandRows) ? row : nullptr;
}

/// Whether git itself died because of the index lock. If a hook before the commit prints the same,
/// git exits with another status or prints a second line about the failure.
bool failedAtIndex(const ChildOutcome& outcome) {
    constexpr int statusOfDeath = 128;
    std::string_view failure;
    int failures = 0;
    forEachLine(outcome.errorOutput.bytes(), [&](std::string_view line) {
        if (line.starts_with("fatal: ") || line.starts_with("error: ")) {
            failure = line;
            ++failures;
        }
    });
    return outcome.status.exitStatus() == statusOfDeath && failures == 1 &&
           failure.starts_with("fatal: Unable to create '") &&
           failure.ends_with("/index.lock': File exists.");
}

bool failedAtConfiguration(const ChildOutcome& outcome, std::string_view consequence) {
    std::vector<std::string_view> lines;
    forEachLine(outcome.errorOutput.bytes(), [&lines](std::string_view line) {
        if (!line.starts_with("hint:")) {
            lines.push_back(line);
        }
    });
    const std::size_t expected = consequence.empty() ? 1 : 2;
    return lines.size() == expected &&
           lines.front().starts_with("error: could not lock config file ") &&
           lines.front().ends_with(": File exists") &&
           lines.back().find(consequence) != std::string_view::npos;
}

/// Whether the repository has a hook that runs at the end of a checkout.
bool hasCheckoutHook(const ChildLaunch& launch) {
    ChildLaunch query = launch;
    query.arguments.resize(query.arguments.size() - commandOf(query.arguments).size());
    query.arguments.insert(query.arguments.end(),
                           {"rev-parse", "--git-path", "hooks/post-checkout"});
    query.input.reset();
    ChildProcess process;
    const auto outcomes =
        process.run({query}, {}, {.total = std::chrono::seconds(2), .outputBytes = 1U << 16U});
    const std::string path(trimmed(outcomes.front().output.bytes(), "\n"));
    const std::filesystem::path hook =
        std::filesystem::path(launch.currentDirectoryPath.value_or(".")) / path;
    return !outcomes.front().status.isSuccess() || path.empty() ||
           interceptedFact("exists", hook.string(), [&hook] {
               std::error_code failure;
               return std::filesystem::exists(hook, failure);
           });
}

bool isIndexLocked(const ChildLaunch& launch) {
    const std::string folder = launch.currentDirectoryPath.value_or(".");
    return interceptedFact("index is locked", folder, [&folder] {
        std::error_code failure;
        const auto repository = NEBSourceControlFindGitDirectory(folder);
        return repository && std::filesystem::exists(repository->path + "/index.lock", failure);
    });
}

bool canStartAgain(const CommandRow& row, const ChildLaunch& launch, const ChildOutcome& outcome) {
    switch (row.waiting) {
        case Waiting::forIndex:
            return failedAtIndex(outcome);
        case Waiting::forIndexUnlessHook:
            return failedAtIndex(outcome) && !hasCheckoutHook(launch);
        case Waiting::forConfiguration:
            return failedAtConfiguration(outcome, row.consequence);
        case Waiting::beforeStart:
            break;
    }
    return false;
}

}  // namespace

std::optional<milliseconds> NEBSourceControlLockWait::pauseBeforeStart() {
    const CommandRow* row = _mostTime > milliseconds(0) ? rowOf(_launches) : nullptr;
    if (row == nullptr || !isIndexLocked(_launches.front())) {
        return std::nullopt;
    }
    const bool mustWait =
        row->waiting == Waiting::beforeStart ||
        (row->waiting == Waiting::forIndexUnlessHook && hasCheckoutHook(_launches.front()));
    return mustWait ? nextPause() : std::nullopt;
}

std::optional<milliseconds> NEBSourceControlLockWait::pauseAfter(
    const std::vector<ChildOutcome>& outcomes) {
    const bool hasFailed = outcomes.size() == 1 && !outcomes.front().status.isSuccess() &&
                           outcomes.front().output.empty() && !outcomes.front().exceededLimit;
    const CommandRow* row = hasFailed && _mostTime > milliseconds(0) ? rowOf(_launches) : nullptr;
    if (row == nullptr) {
        return std::nullopt;
    }
    return canStartAgain(*row, _launches.front(), outcomes.front()) ? nextPause() : std::nullopt;
}

std::optional<milliseconds> NEBSourceControlLockWait::nextPause() {
    std::optional<milliseconds> pause;
    const bool isOver = interceptedFact("wait is over", "", [&] {
        pause = remainingPause();
        return !pause;
    });
    return isOver ? std::nullopt : std::optional(pause.value_or(milliseconds(0)));
}

std::optional<milliseconds> NEBSourceControlLockWait::remainingPause() {
    const auto now = std::chrono::steady_clock::now();
    _end = _end.value_or(now + _mostTime);
    const auto remaining = std::chrono::duration_cast<milliseconds>(*_end - now);
    if (remaining <= milliseconds(0)) {
        return std::nullopt;
    }
    const milliseconds pause = std::min(_pause, remaining);
    _pause *= 2;
    return pause;
}

}  // namespace neb
