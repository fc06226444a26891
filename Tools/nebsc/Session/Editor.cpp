#include "Session/Editor.h"

#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>
#include <vector>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Platform/ChildProcess.h"
#include "Platform/ChildSpawn.h"
#include "Session/GitProgram.h"
#include "Terminal/IgnoredSignals.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// The terminal, which nebsc lends to the editor. SIGTTOU must be ignored.
class LentTerminal {
public:
    LentTerminal() : _hasSettings(::tcgetattr(STDIN_FILENO, &_settings) == 0) {}

    /// Returns whether the terminal is that of another process group, so that nebsc runs in the
    /// background. Then the editor stays in the group of nebsc, and the shell stops both.
    [[nodiscard]] static bool isOfOthers() {
        const pid_t foreground = ::tcgetpgrp(STDIN_FILENO);
        return foreground >= 0 && foreground != ::getpgrp();
    }
    /// Makes the group of the editor the one in the foreground, and resumes it: it may have used
    /// the terminal before.
    static void lendTo(pid_t group) {
        if (!isOfOthers()) {
            ::tcsetpgrp(STDIN_FILENO, group);
        }
        ::kill(-group, SIGCONT);
    }
    static void takeBackFrom(pid_t group) {
        if (::tcgetpgrp(STDIN_FILENO) == group) {
            ::tcsetpgrp(STDIN_FILENO, ::getpgrp());
        }
    }
    void restoreSettings() const {
        if (_hasSettings) {
            ::tcsetattr(STDIN_FILENO, TCSADRAIN, &_settings);
        }
    }

private:
    termios _settings{};
    bool _hasSettings;
};

/// Waits until the process ends or, if `orStop`, stops; does not reap it. Returns
/// whether it has stopped.
bool hasStopped(pid_t process, bool orStop) {
    siginfo_t info{};
    const int events = WEXITED | WNOWAIT | (orStop ? WSTOPPED : 0);
    while (::waitid(P_PID, static_cast<id_t>(process), &info, events) < 0 && errno == EINTR) {
    }
    return info.si_code == CLD_STOPPED;
}

/// Suspends the job of nebsc with its editor, which has stopped, as after Ctrl-Z. Returns when the
/// shell resumes the job, or at once without a shell that could.
void suspendWith(pid_t editor) {
    siginfo_t info{};
    ::waitid(P_PID, static_cast<id_t>(editor), &info, WSTOPPED | WNOHANG);
    const bool neededTerminal = info.si_status == SIGTTIN || info.si_status == SIGTTOU;
    if (!neededTerminal || ::tcgetpgrp(STDIN_FILENO) != editor) {
        LentTerminal::takeBackFrom(editor);
        ::kill(0, SIGTSTP);
    }
    LentTerminal::lendTo(editor);
}

/// Waits for the end of the editor, which a signal to nebsc ends, with all processes of its group
/// if it leads one. Returns its status.
int statusOf(pid_t editor, bool leadsGroup, Interruption& interruption) {
    {
        const Interruption::Work work(interruption, [receiver = leadsGroup ? -editor : editor] {
            ::kill(receiver, SIGTERM);
            ::kill(receiver, SIGCONT);
        });
        while (hasStopped(editor, leadsGroup)) {
            suspendWith(editor);
        }
    }
    LentTerminal::takeBackFrom(editor);
    int status = 0;
    while (::waitpid(editor, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

/// Returns the text for the shell. The shell becomes the editor where the command allows that, so
/// that its status is that of the editor.
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
    std::vector<int> restored = signalsNotIgnored(signals);
    restored.push_back(SIGPIPE);  // which nebsc ignores while it asks about hunks
    const Interruption::TerminalLoan loan(interruption);
    const IgnoredSignals ignored(signals);
    const LentTerminal terminal;
    const ChildLaunch launch{.launchPath = "/bin/sh",
                             .arguments = {"-c", scriptFor(command), command, file},
                             .currentDirectoryPath = folder,
                             .environment = NEBSourceControlInheritedEnvironment()};
    const bool leadsGroup = !LentTerminal::isOfOthers();
    const SpawnedChild editor = spawnChild(launch, {.defaultSignals = std::move(restored),
                                                    .hasEmptySignalMask = true,
                                                    .leadsGroup = leadsGroup});
    if (editor.pid < 0) {
        return editor.failure;
    }
    if (leadsGroup) {
        LentTerminal::lendTo(editor.pid);
    }
    std::string failure = failureOf(command, statusOf(editor.pid, leadsGroup, interruption));
    if (!failure.empty()) {
        terminal.restoreSettings();
    }
    return failure;
}

}  // namespace neb::nebsc
