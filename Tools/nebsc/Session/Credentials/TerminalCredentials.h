// TerminalCredentials.h - asks the person at the terminal for what git and ssh need.
#pragma once

#include <optional>
#include <string>

#include "Platform/Mutex.h"
#include "Session/Credentials/CredentialQuestion.h"
#include "Session/Credentials/CredentialService.h"
#include "Terminal/ProgressIndicator.h"

namespace neb::nebsc {

/// Asks at the controlling terminal, one question at a time, without echo for secrets. Thread-safe.
class TerminalCredentials {
public:
    /// Whether a person can be asked: nebsc is in the foreground of a terminal, and the user has
    /// set neither GIT_TERMINAL_PROMPT=0 nor another program in GIT_ASKPASS or SSH_ASKPASS.
    [[nodiscard]] static bool canAsk();

    /// The indicator is paused during a question. It must outlive this object.
    explicit TerminalCredentials(ProgressIndicator& indicator) : _indicator(indicator) {}

    /// Returns the answer; absent if the person ends the input, or when `end` becomes readable.
    [[nodiscard]] std::optional<std::string> ask(const CredentialQuestion& question, int end);

private:
    ProgressIndicator& _indicator;
    Mutex _mutex;  // of the terminal
};

}  // namespace neb::nebsc
