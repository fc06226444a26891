#include "Support/ProgramStart.h"

#include <unistd.h>

#include <stdexcept>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"

namespace neb::test {

std::vector<std::string> environmentWith(const VariableChanges& changes) {
    std::vector<std::string> environment = NEBSourceControlInheritedEnvironment();
    for (const auto& [name, value] : changes) {
        const std::string start = name + "=";
        std::erase_if(environment, [&start](const std::string& variable) {
            return variable.starts_with(start);
        });
        if (value) {
            environment.push_back(start + *value);
        }
    }
    return environment;
}

pid_t startProgram(const std::vector<std::string>& args,
                   const std::vector<std::string>& environment, const SpawnOptions& options,
                   std::optional<std::string> folder) {
    const bool isPath = args[0].find('/') != std::string::npos;
    const ChildLaunch launch{.launchPath = isPath ? args[0] : "/usr/bin/env",
                             .arguments = {args.begin() + (isPath ? 1 : 0), args.end()},
                             .currentDirectoryPath = std::move(folder),
                             .environment = environment};
    const SpawnedChild child = spawnChild(launch, options);
    if (child.pid < 0) {
        throw std::runtime_error(child.failure);
    }
    return child.pid;
}

std::string readLine(int descriptor) {
    std::string line;
    char letter = '\0';
    while (::read(descriptor, &letter, 1) == 1 && letter != '\n') {
        line += letter;
    }
    return line;
}

}  // namespace neb::test
