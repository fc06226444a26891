#include "Session/Editor.h"

#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <vector>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Platform/ChildProcess.h"
#include "Platform/ChildSpawn.h"
#include "Session/GitProgram.h"
#include "Terminal/IgnoredSignals.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// The settings of the terminal, and the processes that it belongs to.
class TerminalState {
public:
    TerminalState() : _hasSettings(::tcgetattr(STDIN_FILENO, &_settings) == 0) {}

    /// SIGTTOU must be ignored.
    void restore() const {
        if (_group > 0) {
            ::tcsetpgrp(STDIN_FILENO, _group);
        }
        if (_hasSettings) {
            ::tcsetattr(STDIN_FILENO, TCSADRAIN, &_settings);
        }
    }

private:
    termios _settings{};
    bool _hasSettings;
    pid_t _group = ::tcgetpgrp(STDIN_FILENO);
};

/// Waits for the end of the process, which a signal to nebsc ends. Returns its status.
int statusOf(pid_t process, Interruption& interruption) {
    {
        const Interruption::Work work(interruption, [process] { ::kill(process, SIGTERM); });
        siginfo_t info{};
        while (::waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOWAIT) < 0 &&
               errno == EINTR) {
        }
    }
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

/// Returns the text for the shell. The shell becomes the editor where the command allows that, so
/// that a signal ends the editor, too.
std::string scriptFor(const std::string& command) {
    const bool isSimple = command.find_first_of(";|&<>()`=\n") == std::string::npos;
    return (isSimple ? "exec " : "") + command + " \"$@\"";
}

std::string failureOf(const std::string& command, int status) {
    constexpr int notExecutable = 126;
    constexpr int notFound = 127;
    const std::string editor = "The editor " + inQuotes(command) + " ";
    if (WIFSIGNALED(status)) {
        return editor + "was ended by signal " + std::to_string(WTERMSIG(status));
    }
    switch (WEXITSTATUS(status)) {
        case 0:
            return {};
        case notExecutable:
            return editor + "cannot be executed";
        case notFound:
            return editor + "was not found";
        default:
            return editor + "exited with status " + std::to_string(WEXITSTATUS(status));
    }
}

}  // namespace

bool canEdit() {
    return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDOUT_FILENO) == 1;
}

/// In the environment that git otherwise gets, there is no editor.
EditorChoice editorOfUser(Interruption& interruption, const std::string& folder) {
    ChildProcess process;
    const Interruption::Work work(interruption, [&process] { process.cancel(); });
    const ChildOutcome outcome = process
                                     .run({{.launchPath = gitPath(),
                                            .arguments = {"var", "GIT_EDITOR"},
                                            .currentDirectoryPath = folder,
                                            .environment = NEBSourceControlInheritedEnvironment()}})
                                     .front();
    if (auto command = trimmedOutputOf(outcome)) {
        return {.command = std::move(*command)};
    }
    return {.failure = reasonOf(outcome)};
}

/// As git, leaves it to the shell to split the command.
std::string edit(Interruption& interruption, const std::string& command, const std::string& file,
                 const std::string& folder) {
    const std::vector<int> signals{SIGINT, SIGQUIT, SIGTTOU};
    const std::vector<int> restored = signalsNotIgnored(signals);
    const Interruption::TerminalLoan loan(interruption);
    const IgnoredSignals ignored(signals);
    const TerminalState terminal;
    const ChildLaunch launch{.launchPath = "/bin/sh",
                             .arguments = {"-c", scriptFor(command), command, file},
                             .currentDirectoryPath = folder,
                             .environment = NEBSourceControlInheritedEnvironment()};
    const SpawnedChild editor =
        spawnChild(launch, {.defaultSignals = restored, .hasEmptySignalMask = true});
    if (editor.pid < 0) {
        return editor.failure;
    }
    std::string failure = failureOf(command, statusOf(editor.pid, interruption));
    if (!failure.empty()) {
        terminal.restore();
    }
    return failure;
}

}  // namespace neb::nebsc
