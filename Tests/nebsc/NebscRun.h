// NebscRun.h - runs of the built nebsc and their outcomes.
//
//     runNebsc({"status"}, {.folder = repository.path()}).output;
#pragma once

#include <sys/types.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/FileDescriptor.h"
#include "Support/ProgramStart.h"
#include "Support/TemporaryFolder.h"

namespace neb::test {

/// The kind of standard output that the program gets.
enum class NebscOutput { collected, closed, full, terminal, pipe };

struct NebscSurroundings {
    /// The working directory; empty for that of the test.
    std::string folder{};
    /// All of standard input.
    std::string input{};
    bool hasClosedInput = false;
    /// Changes to the environment of the test; an absent value removes the variable.
    VariableChanges variables{};
    NebscOutput output = NebscOutput::collected;
    /// The width of a terminal as standard output; 0 for unknown.
    unsigned short terminalColumns = 0;
    /// Whether standard error is a terminal. The errors of the outcome come from it then.
    bool hasTerminalForErrors = false;
    /// Whether standard input is the same terminal.
    bool hasTerminalForInput = false;
    /// Signals that are ignored when the program starts.
    std::vector<int> ignoredSignals{};
};

struct NebscOutcome {
    std::string output;
    std::string errors;
    /// -1 if a signal ended the program.
    int exitStatus = -1;
    /// The most memory that it had, or that the test had when it started the program.
    long peakKiB = 0;

    /// Returns the output as JSON. The output must be one line with its newline.
    [[nodiscard]] nlohmann::ordered_json json() const;
};

/// A running nebsc. The destructor kills and reaps it.
class Nebsc {
public:
    Nebsc(const std::vector<std::string>& arguments, const NebscSurroundings& surroundings);
    /// Runs another program: a copy of nebsc or a script that executes it.
    Nebsc(const std::string& program, const std::vector<std::string>& arguments,
          const NebscSurroundings& surroundings);
    Nebsc(const Nebsc&) = delete;
    Nebsc& operator=(const Nebsc&) = delete;
    ~Nebsc();

    void send(int signalNumber) const;
    [[nodiscard]] pid_t pid() const { return _pid; }
    /// Types on the terminal.
    void type(std::string_view text) const;
    /// Waits until the text appears on the terminal for errors. Returns its output since the last
    /// call.
    std::string awaitErrors(std::string_view text);
    /// Waits for the next line on the pipe, and returns it without its end; empty after a minute or
    /// at the end of the output.
    [[nodiscard]] std::string awaitLine() const;
    /// Closes the read end of the pipe.
    void stopReading();
    /// Waits for the end of the program, and reads nothing until then.
    [[nodiscard]] int exitStatusWithoutReading();
    /// Waits for the end of the program.
    [[nodiscard]] NebscOutcome outcome();

private:
    [[nodiscard]] ChildStream outputStream(const NebscSurroundings& surroundings);

    TemporaryFolder _files;
    pid_t _pid = -1;
    int _terminal = -1;
    Pipe _pipe;
    int _errorTerminal = -1;
};

[[nodiscard]] NebscOutcome runNebsc(const std::vector<std::string>& arguments,
                                    const NebscSurroundings& surroundings = {});
[[nodiscard]] NebscOutcome runProgram(const std::string& program,
                                      const std::vector<std::string>& arguments,
                                      const NebscSurroundings& surroundings);
/// Runs `nebsc request` with the JSON as standard input.
[[nodiscard]] NebscOutcome runRequest(std::string_view json, NebscSurroundings surroundings = {});

/// A folder with a script named git that replaces the real git.
class StandInGit {
public:
    /// The shell runs `script` with the arguments of git, except for `rev-parse`, which reports a
    /// working copy with the top-level directory `top` and a commit.
    StandInGit(std::string_view top, std::string_view script);

    /// Returns the variable PATH with the script before the real git.
    [[nodiscard]] std::pair<std::string, std::optional<std::string>> path() const;
    [[nodiscard]] std::string launchPath() const { return _folder.path("git"); }

private:
    TemporaryFolder _folder;
};

}  // namespace neb::test
