// NebscRun.h - runs the built nebsc as a user does, and shows what came of it.
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

#include "Support/ProgramStart.h"
#include "Support/TemporaryFolder.h"

namespace neb::test {

/// Where the program's standard output goes.
enum class NebscOutput { collected, closed, full, terminal };

struct NebscSurroundings {
    /// The working directory; empty means the test's own.
    std::string folder{};
    /// All of standard input.
    std::string input{};
    bool hasClosedInput = false;
    /// What differs from the test's own environment; an absent value removes the variable.
    VariableChanges variables{};
    NebscOutput output = NebscOutput::collected;
    /// Of the terminal that standard output is; 0: it does not know.
    unsigned short terminalColumns = 0;
    /// Whether standard error goes to a terminal; the outcome's errors are what it got then.
    bool hasTerminalForErrors = false;
    /// Signals that the program finds ignored.
    std::vector<int> ignoredSignals{};
};

struct NebscOutcome {
    std::string output;
    std::string errors;
    /// -1 when a signal ended the program.
    int exitStatus = -1;

    /// The output as JSON; it must be one line, line end included.
    [[nodiscard]] nlohmann::ordered_json json() const;
};

/// A nebsc that runs. It is ended and reaped with the object.
class Nebsc {
public:
    Nebsc(const std::vector<std::string>& arguments, const NebscSurroundings& surroundings);
    /// The same with another program, a copy of nebsc or a script that becomes it.
    Nebsc(const std::string& program, const std::vector<std::string>& arguments,
          const NebscSurroundings& surroundings);
    Nebsc(const Nebsc&) = delete;
    Nebsc& operator=(const Nebsc&) = delete;
    ~Nebsc();

    void send(int signalNumber) const;
    /// Waits until the terminal for errors has got the text; answers all that it got since the last
    /// call.
    std::string awaitErrors(std::string_view text);
    /// Waits for its end.
    [[nodiscard]] NebscOutcome outcome();

private:
    [[nodiscard]] ChildStream outputStream(const NebscSurroundings& surroundings);

    TemporaryFolder _files;
    pid_t _pid = -1;
    int _terminal = -1;
    int _errorTerminal = -1;
};

[[nodiscard]] NebscOutcome runNebsc(const std::vector<std::string>& arguments,
                                    const NebscSurroundings& surroundings = {});
[[nodiscard]] NebscOutcome runProgram(const std::string& program,
                                      const std::vector<std::string>& arguments,
                                      const NebscSurroundings& surroundings);
/// `nebsc request` with the JSON as its standard input.
[[nodiscard]] NebscOutcome runRequest(std::string_view json, NebscSurroundings surroundings = {});

/// A folder with a script named git that stands in for the real one.
class StandInGit {
public:
    /// `script` is what the shell runs, with git's arguments as its own. `rev-parse` is
    /// answered before it: a working copy with the top `top` that has a commit.
    StandInGit(std::string_view top, std::string_view script);

    /// The variable that puts the script before the real git.
    [[nodiscard]] std::pair<std::string, std::optional<std::string>> path() const;
    [[nodiscard]] std::string launchPath() const { return _folder.path("git"); }

private:
    TemporaryFolder _folder;
};

}  // namespace neb::test
