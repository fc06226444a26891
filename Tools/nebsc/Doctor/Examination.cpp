#include "Doctor/Examination.h"

#include <chrono>
#include <cstdlib>
#include <utility>

#include "Doctor/ProgramSearch.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

constexpr auto timeLimitOfQuery = std::chrono::seconds(5);
constexpr int mostTimeouts = 2;

}  // namespace

ChildOutcome Examination::run(std::vector<std::vector<std::string>> calls,
                              std::optional<std::chrono::milliseconds> limit) {
    ChildProcess process;
    const auto cancel = [&process] { process.cancel(); };
    const Interruption::Work work(_interruption, cancel);
    return runGitProcesses(process, _trace, std::move(calls),
                           {.folder = _folder,
                            .variables = variablesAgainstFetching(),
                            .traits = {.isBackgroundWork = true},
                            .limits = {.total = limit}});
}

ChildOutcome Examination::runWithTimeLimit(std::vector<std::vector<std::string>> calls) {
    ChildOutcome outcome = run(std::move(calls), timeLimitOfQuery);
    if (hasTimedOut(outcome)) {
        ++_timeouts;
        outcome.status = TerminationStatus::unknown(
            "timed out after " + std::to_string(timeLimitOfQuery.count()) + " s");
        outcome.errorOutput = {};
    }
    return outcome;
}

ChildOutcome Examination::query(std::vector<std::string> arguments) {
    return runWithTimeLimit({std::move(arguments)});
}

ChildOutcome Examination::queryWithin(std::chrono::milliseconds limit,
                                      std::vector<std::string> arguments) {
    return run({std::move(arguments)}, limit);
}

ChildOutcome Examination::queryPipeline(std::vector<std::string> first,
                                        std::vector<std::string> second) {
    return runWithTimeLimit({std::move(first), std::move(second)});
}

ChildOutcome Examination::queryWithoutTimeLimit(std::vector<std::string> arguments) {
    return run({std::move(arguments)}, std::nullopt);
}

std::string Examination::gitPath(const std::string& name) {
    const auto path =
        trimmedOutputOf(query({"rev-parse", "--path-format=absolute", "--git-path", name}));
    return path.value_or(pathByAppendingComponent(repository ? repository->gitFolder : "", name));
}

bool Examination::shouldStop() const {
    return _timeouts >= mostTimeouts || isInterrupted();
}

void Examination::add(Health health, std::string subject, std::string text, std::string advice) {
    _findings.push_back({health, std::move(subject), std::move(text), std::move(advice)});
}

bool Examination::isReachable(const std::string& program) const {
    return program.find('/') != std::string::npos
               ? isProgram(pathByExpandingTilde(program))
               : isProgramIn(programs + ":" + environmentVariable("PATH"), program);
}

std::vector<std::string> variablesAgainstFetching() {
    // git before 2.44 ignores the first variable and starts a fetch; the second one makes that
    // fetch fail before it connects.
    return {"GIT_NO_LAZY_FETCH=1", "GIT_ALLOW_PROTOCOL="};
}

bool hasTimedOut(const ChildOutcome& outcome) {
    return outcome.exceededLimit == ChildLimit::total;
}

std::string environmentVariable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

std::string globalSettingAdvice(const std::string& beginning, const std::string& command) {
    const bool hasFile =
        !environmentVariable("HOME").empty() || !environmentVariable("GIT_CONFIG_GLOBAL").empty();
    return (hasFile ? "" : "Set HOME, which 'git config --global' requires. ") + beginning + ": " +
           command;
}

}  // namespace neb::nebsc
