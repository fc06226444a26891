// Pager.h - shows long text in the user's pager, as git does.
//
//     if (needsPager(STDOUT_FILENO, text)) {
//         if (const auto command = pagerOfUser(core.pager)) {
//             Pager pager(*command);
//             writeAll(pager.input(), text);   // a failure means that the user has quit the pager
//             pager.waitForEnd();
//         }
//     }
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/FileDescriptor.h"
#include "Terminal/IgnoredSignals.h"

namespace neb::nebsc {

/// Returns whether text on the descriptor may go through a pager: whether it is a terminal, and
/// TERM is not "dumb". Thread-safe, as are the next two functions.
[[nodiscard]] bool canHavePager(int descriptor);

/// Returns whether the descriptor can have a pager and is too small for the printable text.
[[nodiscard]] bool needsPager(int descriptor, std::string_view text);

/// Returns the shell command of the user's pager: GIT_PAGER, else the setting core.pager
/// (`configured`), else PAGER, else "less" if it is installed. Absent if that is empty or "cat".
[[nodiscard]] std::optional<std::string> pagerOfUser(const std::optional<std::string>& configured);

/// A running pager. Ctrl-C has no effect on nebsc while the object exists, unless an Interruption
/// handles it, and a write to a pager that was quit fails with EPIPE. `less` shows colours, and
/// quits by itself if the text fits on the screen, unless LESS is set. Not thread-safe: changes
/// signal actions of the process.
class Pager {
public:
    /// Starts the shell command.
    explicit Pager(const std::string& command);
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;
    ~Pager() { static_cast<void>(waitForEnd()); }

    /// The descriptor that the pager's input is written to; -1 if the shell could not be started or
    /// the input has ended.
    [[nodiscard]] int input() const { return _input.get(); }
    /// Ends the input, and waits until the user quits the pager. Returns whether it has run: false
    /// if the shell could not be started, has not found the program or could not execute it.
    bool waitForEnd();
    /// The same without ending the input. Other functions must not be called meanwhile, except
    /// input().
    bool waitForProcess();

private:
    /// The signals that are meant for the pager, and the one of a pager that was quit.
    [[nodiscard]] static std::vector<int> defaultSignals();

    std::vector<int> _restoredSignals;
    IgnoredSignals _ignoredSignals;
    FileDescriptor _input;
    pid_t _process = -1;
    bool _hasRun = false;
};

}  // namespace neb::nebsc
