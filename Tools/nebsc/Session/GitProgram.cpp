#include "Session/GitProgram.h"

#include <algorithm>

#include "LOMFoundation/LOMDeveloperPaths.h"
#include "NEBFoundation/NEBSourceControlOrphanedLockFiles.h"
#include "Platform/Text.h"

namespace neb::nebsc {

std::string gitPath() {
    return LOMDeveloperPaths::defaultPaths()
        .binSearchPathForPlatform(std::nullopt)
        .pathOfProgram("git");
}

namespace {

std::vector<std::string> environmentFor(const GitSurroundings& surroundings) {
    std::vector<std::string> environment = NEBSourceControlChildEnvironment(
        NEBSourceControlInheritedEnvironment(), surroundings.traits);
    NEBSourceControlSetVariables(environment, surroundings.variables);
    return environment;
}

std::string_view withoutSeverity(std::string_view line) {
    for (const std::string_view prefix : {"fatal: ", "error: "}) {
        if (line.starts_with(prefix)) {
            line.remove_prefix(prefix.size());
        }
    }
    return line;
}

}  // namespace

ChildOutcome runGit(Interruption& interruption, const Trace& trace,
                    std::vector<std::string> arguments, std::optional<std::string> folder,
                    NEBSourceControlTrust trust) {
    static const NEBSourceControlSetting withoutHooks[] = {{"core.hooksPath", "/dev/null"}};
    ChildProcess process;
    const Interruption::Work work(interruption, [&process] { process.cancel(); });
    GitSurroundings surroundings{.folder = std::move(folder)};
    if (trust == NEBSourceControlTrust::inspect) {
        surroundings.traits.mayFetchObjects = false;
        surroundings.traits.settings = withoutHooks;
    }
    return runGitProcesses(process, trace, {std::move(arguments)}, surroundings);
}

ChildOutcome runGit(ChildProcess& process, const Trace& trace, std::vector<std::string> arguments,
                    std::optional<std::string> folder) {
    return runGitProcesses(process, trace, {std::move(arguments)}, {.folder = std::move(folder)});
}

ChildOutcome runGitProcesses(ChildProcess& process, const Trace& trace,
                             std::vector<std::vector<std::string>> argumentLists,
                             const GitSurroundings& surroundings) {
    const std::vector<std::string> environment = environmentFor(surroundings);
    std::vector<NEBSourceControlCommand> commands;
    std::vector<ChildLaunch> launches;
    for (std::vector<std::string>& arguments : argumentLists) {
        launches.push_back({.launchPath = gitPath(),
                            .arguments = arguments,
                            .currentDirectoryPath = surroundings.folder,
                            .environment = environment});
        commands.push_back({.launchPath = launches.back().launchPath,
                            .arguments = std::move(arguments),
                            .currentDirectoryPath = surroundings.folder,
                            .pipeTo = nullptr});
    }
    std::vector<std::optional<std::size_t>> traceNumbers(commands.size());
    const auto started = [&](std::size_t index) {
        traceNumbers[index] = trace.started(commands[index]);
    };
    std::vector<ChildOutcome> outcomes =
        NEBSourceControlRunChildren(process, launches, {.started = started}, surroundings.limits);
    std::optional<ChildLimit> exceededLimit;
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        if (traceNumbers[i]) {
            trace.ended(*traceNumbers[i], outcomes[i].status, outcomes[i].duration);
        }
        if (outcomes[i].exceededLimit) {
            exceededLimit = outcomes[i].exceededLimit;
        }
    }
    ChildOutcome last = std::move(outcomes.back());
    last.exceededLimit = exceededLimit;
    return last;
}

std::optional<std::string> trimmedOutputOf(const ChildOutcome& outcome) {
    if (!outcome.status.isSuccess() || outcome.output.empty()) {
        return std::nullopt;
    }
    std::string output(outcome.output);
    if (output.ends_with('\n')) {
        output.pop_back();
    }
    return output;
}

std::string reasonOf(const ChildOutcome& outcome) {
    std::string reason;
    bool isFatal = false;
    bool continues = false;
    forEachField(outcome.errorOutput, '\n', [&](std::string_view line) {
        const bool startsFatal = !isFatal && line.starts_with("fatal: ");
        const std::size_t text = std::min(line.find_first_not_of(" \t"), line.size());
        if (startsFatal || (reason.empty() && text < line.size())) {
            reason = withoutSeverity(line);
            isFatal = isFatal || startsFatal;
            continues = true;
        } else if (continues && text < line.size() && (text > 0 || reason.ends_with(':'))) {
            reason.append(reason.ends_with(':') ? " " : ", ").append(line.substr(text));
        } else {
            continues = false;
        }
    });
    return reason.empty() ? outcome.status.description() : reason;
}

bool isObjectId(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

std::vector<std::string> splitAtNUL(std::string_view bytes) {
    std::vector<std::string> texts;
    while (!bytes.empty()) {
        const std::size_t end = std::min(bytes.find('\0'), bytes.size());
        texts.emplace_back(bytes.substr(0, end));
        bytes.remove_prefix(std::min(end + 1, bytes.size()));
    }
    return texts;
}

}  // namespace neb::nebsc
