#include "nebsc/NebscRun.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <stdexcept>

namespace neb::test {

namespace {

constexpr int writing = O_WRONLY | O_CREAT | O_NOCTTY;

/// Returns the master side of a new terminal.
int openTerminal() {
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0) {
        throw std::runtime_error("cannot open a terminal");
    }
    return master;
}

std::string readToEnd(int master) {
    std::string bytes;
    char buffer[4096];
    ssize_t count = 0;
    while ((count = ::read(master, buffer, sizeof buffer)) > 0) {
        bytes.append(buffer, static_cast<std::size_t>(count));
    }
    return bytes;
}

/// Returns the signals that nebsc gets with the default disposition.
std::vector<int> defaultSignalsExcept(const std::vector<int>& ignoredSignals) {
    std::vector<int> signals{SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGPIPE};
    std::erase_if(signals, [&ignoredSignals](int signalNumber) {
        return std::find(ignoredSignals.begin(), ignoredSignals.end(), signalNumber) !=
               ignoredSignals.end();
    });
    return signals;
}

/// Ignores signals in the test. The destructor restores their dispositions.
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
    SpawnOptions options{.standardInput = ChildStream::file(input, O_RDONLY),
                         .defaultSignals = defaultSignalsExcept(surroundings.ignoredSignals)};
    options.standardOutput = outputStream(surroundings);
    std::string errors = _files.path("errors");
    if (surroundings.hasTerminalForErrors) {
        _errorTerminal = openTerminal();
        errors = ::ptsname(_errorTerminal);
    }
    options.standardError = ChildStream::file(errors, writing);
    if (surroundings.hasTerminalForInput) {
        options.standardInput = ChildStream::file(errors, O_RDONLY | O_NOCTTY);
    } else if (surroundings.hasClosedInput) {
        options.standardInput = ChildStream::closed();
    }
    std::vector<std::string> args{program};
    args.insert(args.end(), arguments.begin(), arguments.end());
    const IgnoredSignals ignored(surroundings.ignoredSignals);
    _pid = startProgram(
        args, environmentWith(surroundings.variables), options,
        surroundings.folder.empty() ? std::nullopt : std::optional(surroundings.folder));
    _pipe.writeEnd.close();
}

ChildStream Nebsc::outputStream(const NebscSurroundings& surroundings) {
    switch (surroundings.output) {
        case NebscOutput::closed:
            return ChildStream::closed();
        case NebscOutput::full:
            return ChildStream::file("/dev/full", writing);
        case NebscOutput::collected:
            return ChildStream::file(_files.path("output"), writing);
        case NebscOutput::pipe:
            EXPECT_EQ(openPipe(_pipe, PipeSize::ordinary), 0);
            return ChildStream::copyOf(_pipe.writeEnd.get());
        case NebscOutput::terminal:
            break;
    }
    _terminal = openTerminal();
    winsize size{};
    size.ws_col = surroundings.terminalColumns;
    ::ioctl(_terminal, TIOCSWINSZ, &size);
    return ChildStream::file(::ptsname(_terminal), writing);
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

void Nebsc::type(std::string_view text) const {
    if (::write(_errorTerminal, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw std::runtime_error("cannot type on the terminal");
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

std::string Nebsc::awaitLine() const {
    constexpr int aMinute = 60'000;
    std::string line;
    pollfd readable{.fd = _pipe.readEnd.get(), .events = POLLIN, .revents = 0};
    for (char byte = 0; ::poll(&readable, 1, aMinute) == 1 && ::read(readable.fd, &byte, 1) == 1 &&
                        byte != '\n';) {
        line += byte;
    }
    return line;
}

int Nebsc::exitStatusWithoutReading() {
    const Pipe unread = std::exchange(_pipe, {});
    return outcome().exitStatus;
}

void Nebsc::stopReading() {
    _pipe.readEnd.close();
}

void Nebsc::send(int signalNumber) const {
    ::kill(_pid, signalNumber);
}

NebscOutcome Nebsc::outcome() {
    std::string output = _pipe.readEnd.isOpen() ? readToEnd(_pipe.readEnd.get()) : "";
    int status = 0;
    rusage usage{};
    while (::wait4(_pid, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    _pid = -1;
    output += _terminal >= 0 ? readToEnd(_terminal) : _files.read("output");
    return {.output = std::move(output),
            .errors = _errorTerminal >= 0 ? readToEnd(_errorTerminal) : _files.read("errors"),
            .exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1,
            .peakKiB = usage.ru_maxrss};
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
