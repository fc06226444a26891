#include "HostRun.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

#include "GitController.h"
#include "Platform/Text.h"

namespace neb::benchmarks {

namespace {

std::string contentOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Returns the environment of the only child of this thread from /proc, which is exactly that of an
/// operation. It is available shortly after the launch.
std::vector<std::string> environmentOfChild() {
    const std::string children = contentOf("/proc/thread-self/children");
    const std::string file = "/proc/" + children.substr(0, children.find(' ')) + "/environ";
    std::string environ;
    for (int looks = 0; environ.empty() && looks < 1000; ++looks) {
        environ = contentOf(file);
    }
    std::vector<std::string> environment;
    forEachField(environ, '\0', [&environment](std::string_view variable) {
        if (!variable.empty()) {
            environment.emplace_back(variable);
        }
    });
    return environment;
}

std::size_t recordsAfterRunning(const Request& request,
                                const std::shared_ptr<NEBSourceControlCommandLog>& log) {
    const GitController controller;
    std::optional<NEBSourceControlError> refusal;
    static_cast<void>(controller.authenticationRequiredForRequest(*request));
    if (!controller.validateRequest(*request, &refusal)) {
        throw std::runtime_error(refusal->localizedDescription().value_or("refused"));
    }
    const auto operation = controller.operationForRequest(request);
    operation->setCommandLog(log);
    operation->start();
    if (operation->error()) {
        throw std::runtime_error(operation->error()->localizedDescription().value_or("failed"));
    }
    std::size_t records = 0;
    for (const NEBDictionary& record : operation->result().value()) {
        records += record.isEmpty() ? 0 : 1;
    }
    return records;
}

}  // namespace

std::size_t performOperation(const Request& request) {
    return recordsAfterRunning(request, nullptr);
}

ChildLaunch launchFor(const Request& request) {
    ChildLaunch launch;
    const auto note = [&launch](std::size_t, const NEBSourceControlCommand& command) {
        launch = {.launchPath = command.launchPath,
                  .arguments = command.arguments,
                  .currentDirectoryPath = command.currentDirectoryPath,
                  .environment = environmentOfChild()};
    };
    // A fast child may have ended before its environment is read.
    for (int attempt = 0; launch.environment.empty(); ++attempt) {
        const auto log = std::make_shared<NEBSourceControlCommandLog>(
            NEBSourceControlCommandLog::Observers{.started = note});
        static_cast<void>(recordsAfterRunning(request, log));
        if (log->runs().size() != 1 || attempt == 100) {
            throw std::runtime_error("no child's environment could be read");
        }
    }
    return launch;
}

}  // namespace neb::benchmarks
