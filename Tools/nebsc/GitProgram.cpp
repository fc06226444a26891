#include "GitProgram.h"

#include <algorithm>

#include "LOMFoundation/LOMDeveloperPaths.h"
#include "NEBFoundation/NEBSourceControlChildEnvironment.h"

namespace neb::nebsc {

namespace {

std::string gitPath() {
    return LOMDeveloperPaths::defaultPaths()
        .binSearchPathForPlatform(std::nullopt)
        .pathOfProgram("git");
}

}  // namespace

ChildOutcome runGit(Interruption& interruption, const Trace& trace,
                    std::vector<std::string> arguments, std::optional<std::string> folder) {
    ChildProcess process;
    const Interruption::Work work(interruption, [&process] { process.cancel(); });
    return runGit(process, trace, std::move(arguments), std::move(folder));
}

ChildOutcome runGit(ChildProcess& process, const Trace& trace, std::vector<std::string> arguments,
                    std::optional<std::string> folder) {
    const NEBSourceControlCommand command{.launchPath = gitPath(),
                                          .arguments = std::move(arguments),
                                          .currentDirectoryPath = std::move(folder),
                                          .pipeTo = nullptr};
    std::optional<std::size_t> number;
    ChildOutcome outcome =
        process
            .run({{.launchPath = command.launchPath,
                   .arguments = command.arguments,
                   .currentDirectoryPath = command.currentDirectoryPath,
                   .environment = NEBSourceControlChildEnvironment(
                       NEBSourceControlInheritedEnvironment(), {})}},
                 {.started = [&](std::size_t /*index*/) { number = trace.started(command); }})
            .front();
    if (number) {
        trace.ended(*number, outcome.status, outcome.duration);
    }
    return outcome;
}

std::optional<std::string> answerOf(const ChildOutcome& outcome) {
    if (!outcome.status.isSuccess() || outcome.output.empty()) {
        return std::nullopt;
    }
    std::string answer(outcome.output);
    if (answer.ends_with('\n')) {
        answer.pop_back();
    }
    return answer;
}

std::vector<std::string> textsBetweenNULs(std::string_view bytes) {
    std::vector<std::string> texts;
    while (!bytes.empty()) {
        const std::size_t end = std::min(bytes.find('\0'), bytes.size());
        texts.emplace_back(bytes.substr(0, end));
        bytes.remove_prefix(std::min(end + 1, bytes.size()));
    }
    return texts;
}

std::optional<std::string> workingCopyTop(Interruption& interruption, const Trace& trace,
                                          const std::string& folder) {
    return answerOf(runGit(interruption, trace, {"rev-parse", "--show-toplevel"}, folder));
}

}  // namespace neb::nebsc
