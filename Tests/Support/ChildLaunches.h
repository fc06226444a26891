// ChildLaunches.h - child processes for the tests of the process runner.
#pragma once

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

#include "Platform/ChildProcess.h"

namespace neb::test {

inline const std::vector<std::string> environment{"PATH=/usr/bin:/bin"};

inline ChildLaunch shell(std::string script) {
    return {.launchPath = "/bin/sh",
            .arguments = {"-c", std::move(script)},
            .currentDirectoryPath = std::nullopt,
            .environment = environment};
}

inline ChildLaunch program(std::string path, std::vector<std::string> arguments = {}) {
    return {.launchPath = std::move(path),
            .arguments = std::move(arguments),
            .currentDirectoryPath = std::nullopt,
            .environment = environment};
}

inline ChildOutcome runOne(const ChildLaunch& launch) {
    ChildProcess process;
    return process.run({launch}).at(0);
}

/// Returns the process id that a script printed.
inline pid_t numberIn(std::string_view text) {
    return static_cast<pid_t>(std::stol(std::string(text)));
}

}  // namespace neb::test
