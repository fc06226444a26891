#include "nebsc/NebscRun.h"

#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <stdexcept>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"

namespace neb::test {

namespace {

constexpr mode_t ownerOnly = 0600;

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> environmentWith(const NebscSurroundings& surroundings) {
    std::vector<std::string> environment = NEBSourceControlInheritedEnvironment();
    for (const auto& [name, value] : surroundings.variables) {
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

/// The master side of a new terminal.
int openTerminal() {
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0) {
        throw std::runtime_error("no terminal");
    }
    return master;
}

std::string readTerminal(int master) {
    std::string bytes;
    char piece[4096];
    ssize_t count = 0;
    while ((count = ::read(master, piece, sizeof piece)) > 0) {
        bytes.append(piece, static_cast<std::size_t>(count));
    }
    return bytes;
}

/// Default dispositions for all signals but the ignored ones, whatever the test was started with.
class SpawnAttributes {
public:
    explicit SpawnAttributes(const std::vector<int>& ignoredSignals) {
        ::posix_spawnattr_init(&_attributes);
        sigset_t defaults;
        ::sigemptyset(&defaults);
        for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
            if (std::find(ignoredSignals.begin(), ignoredSignals.end(), signalNumber) ==
                ignoredSignals.end()) {
                ::sigaddset(&defaults, signalNumber);
            }
        }
        ::posix_spawnattr_setsigdefault(&_attributes, &defaults);
        ::posix_spawnattr_setflags(&_attributes, POSIX_SPAWN_SETSIGDEF);
    }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&_attributes); }

    [[nodiscard]] const posix_spawnattr_t* get() const { return &_attributes; }

private:
    posix_spawnattr_t _attributes{};
};

/// The test's own disposition of signals, put back with the object.
class IgnoredSignals {
public:
    explicit IgnoredSignals(const std::vector<int>& signals) {
        for (const int signalNumber : signals) {
            _former.emplace_back(signalNumber, std::signal(signalNumber, SIG_IGN));
        }
    }
    IgnoredSignals(const IgnoredSignals&) = delete;
    IgnoredSignals& operator=(const IgnoredSignals&) = delete;
    ~IgnoredSignals() {
        for (const auto& [signalNumber, handler] : _former) {
            static_cast<void>(std::signal(signalNumber, handler));
        }
    }

private:
    std::vector<std::pair<int, void (*)(int)>> _former;
};

}  // namespace

nlohmann::ordered_json NebscOutcome::json() const {
    if (output.empty() || output.find('\n') != output.size() - 1) {
        throw std::runtime_error("not one line: " + output + errors);
    }
    return nlohmann::ordered_json::parse(output);
}

Nebsc::Nebsc(const std::vector<std::string>& arguments, const NebscSurroundings& surroundings)
    : Nebsc(NEB_BUILD_FOLDER "/bin/nebsc", arguments, surroundings) {}

Nebsc::Nebsc(const std::string& program, const std::vector<std::string>& arguments,
             const NebscSurroundings& surroundings) {
    const std::string input = _files.write("input", surroundings.input);
    std::string output = _files.path("output");
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    if (surroundings.hasClosedInput) {
        ::posix_spawn_file_actions_addclose(&actions, STDIN_FILENO);
    } else {
        ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, input.c_str(), O_RDONLY, 0);
    }
    if (surroundings.output == NebscOutput::terminal) {
        _terminal = openTerminal();
        output = ::ptsname(_terminal);
        winsize size{};
        size.ws_col = surroundings.terminalColumns;
        ::ioctl(_terminal, TIOCSWINSZ, &size);
    } else if (surroundings.output == NebscOutput::full) {
        output = "/dev/full";
    }
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(),
                                       O_WRONLY | O_CREAT | O_NOCTTY, ownerOnly);
    if (surroundings.output == NebscOutput::closed) {
        ::posix_spawn_file_actions_addclose(&actions, STDOUT_FILENO);
    }
    std::string errors = _files.path("errors");
    if (surroundings.hasTerminalForErrors) {
        _errorTerminal = openTerminal();
        errors = ::ptsname(_errorTerminal);
    }
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors.c_str(),
                                       O_WRONLY | O_CREAT | O_NOCTTY, ownerOnly);
    if (!surroundings.folder.empty()) {
        ::posix_spawn_file_actions_addchdir_np(&actions, surroundings.folder.c_str());
    }
    std::vector<std::string> words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> environment = environmentWith(surroundings);
    const IgnoredSignals ignored(surroundings.ignoredSignals);
    const SpawnAttributes attributes(surroundings.ignoredSignals);
    const int failure = ::posix_spawn(&_pid, words[0].c_str(), &actions, attributes.get(),
                                      pointersTo(words).data(), pointersTo(environment).data());
    ::posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) {
        throw std::runtime_error("cannot start " + words[0]);
    }
}

Nebsc::~Nebsc() {
    if (_pid > 0) {
        ::kill(_pid, SIGKILL);
        ::waitpid(_pid, nullptr, 0);
    }
    for (const int terminal : {_terminal, _errorTerminal}) {
        if (terminal >= 0) {
            ::close(terminal);
        }
    }
}

std::string Nebsc::awaitErrors(std::string_view text) {
    std::string bytes;
    char byte = 0;
    while (bytes.find(text) == std::string::npos && ::read(_errorTerminal, &byte, 1) == 1) {
        bytes += byte;
    }
    return bytes;
}

void Nebsc::send(int signalNumber) const {
    ::kill(_pid, signalNumber);
}

NebscOutcome Nebsc::outcome() {
    int status = 0;
    while (::waitpid(_pid, &status, 0) < 0 && errno == EINTR) {
    }
    _pid = -1;
    return {.output = _terminal >= 0 ? readTerminal(_terminal) : _files.read("output"),
            .errors = _errorTerminal >= 0 ? readTerminal(_errorTerminal) : _files.read("errors"),
            .exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1};
}

NebscOutcome runNebsc(const std::vector<std::string>& arguments,
                      const NebscSurroundings& surroundings) {
    return Nebsc(arguments, surroundings).outcome();
}

NebscOutcome runProgram(const std::string& program, const std::vector<std::string>& arguments,
                        const NebscSurroundings& surroundings) {
    return Nebsc(program, arguments, surroundings).outcome();
}

NebscOutcome runRequest(std::string_view json, NebscSurroundings surroundings) {
    surroundings.input = json;
    return runNebsc({"request"}, surroundings);
}

StandInGit::StandInGit(std::string_view top, std::string_view script) {
    _folder.writeProgram("git", std::string("#!/bin/sh\n[ \"$1\" = rev-parse ] && "
                                            "{ printf 'true\\n%s\\n%040d\\n' '")
                                    .append(top)
                                    .append("' 0; exit; }\n")
                                    .append(script)
                                    .append("\n"));
}

std::pair<std::string, std::optional<std::string>> StandInGit::path() const {
    const char* rest = std::getenv("PATH");
    return {"PATH", _folder.path() + ":" + (rest == nullptr ? "" : rest)};
}

}  // namespace neb::test
