#include "Session/Credentials/TerminalCredentials.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <string.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>

#include "Platform/FileDescriptor.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

FileDescriptor openTerminal() {
    return FileDescriptor(::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY));
}

bool hasValue(const char* variable) {
    const char* value = ::getenv(variable);
    return value != nullptr && *value != '\0';
}

/// Switches the echo of the terminal off during the lifetime of the object, and the keys that would
/// end or suspend the process meanwhile.
class HiddenInput {
public:
    HiddenInput(int terminal, bool isWanted) : _terminal(terminal) {
        _isHidden = isWanted && ::tcgetattr(terminal, &_former) == 0;
        if (_isHidden) {
            termios hidden = _former;
            hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            hidden.c_cc[VQUIT] = _POSIX_VDISABLE;
            hidden.c_cc[VSUSP] = _POSIX_VDISABLE;
            ::tcsetattr(terminal, TCSAFLUSH, &hidden);
        }
    }
    HiddenInput(const HiddenInput&) = delete;
    HiddenInput& operator=(const HiddenInput&) = delete;
    ~HiddenInput() {
        if (_isHidden) {
            ::tcsetattr(_terminal, TCSAFLUSH, &_former);
        }
    }

private:
    const int _terminal;
    bool _isHidden = false;
    termios _former{};
};

/// Reads a line, without its end. Absent at the end of the input, and when `end` becomes readable.
std::optional<std::string> readLine(int terminal, int end) {
    std::string line;
    while (!line.ends_with('\n')) {
        std::array<pollfd, 2> descriptors{{{.fd = terminal, .events = POLLIN, .revents = 0},
                                           {.fd = end, .events = POLLIN, .revents = 0}}};
        if (::poll(descriptors.data(), descriptors.size(), -1) < 0) {
            continue;
        }
        if (descriptors[1].revents != 0) {
            return std::nullopt;
        }
        std::array<char, 1024> buffer{};
        const ssize_t count = ::read(terminal, buffer.data(), buffer.size());
        if (count == 0 || (count < 0 && errno != EINTR)) {
            return std::nullopt;
        }
        line.append(buffer.data(), static_cast<std::size_t>(count > 0 ? count : 0));
        ::explicit_bzero(buffer.data(), buffer.size());
    }
    line.pop_back();
    return line;
}

/// Returns the prompt line by line, without control characters.
std::string shownPrompt(std::string_view prompt) {
    std::string shown;
    while (!prompt.empty()) {
        const std::size_t end = std::min(prompt.find('\n'), prompt.size());
        shown += printable(prompt.substr(0, end));
        shown.append(end < prompt.size() ? "\n" : "");
        prompt.remove_prefix(std::min(end + 1, prompt.size()));
    }
    return shown.ends_with(' ') || shown.ends_with('\n') ? shown : shown + " ";
}

}  // namespace

bool TerminalCredentials::canAsk() {
    const char* prompts = ::getenv("GIT_TERMINAL_PROMPT");
    if ((prompts != nullptr && std::string_view(prompts) == "0") || hasValue("GIT_ASKPASS") ||
        hasValue("SSH_ASKPASS")) {
        return false;
    }
    const FileDescriptor terminal = openTerminal();
    return terminal.isOpen() && ::tcgetpgrp(terminal.get()) == ::getpgrp();
}

std::optional<std::string> TerminalCredentials::ask(const CredentialQuestion& question, int end) {
    const MutexLock lock(_mutex);
    const FileDescriptor terminal = openTerminal();
    if (!terminal.isOpen()) {
        return std::nullopt;
    }
    const ProgressIndicator::Pause pause(_indicator);
    const HiddenInput hidden(terminal.get(), isSecret(question.kind));
    if (writeAll(terminal.get(), shownPrompt(question.prompt)) != 0) {
        return std::nullopt;
    }
    auto answer = readLine(terminal.get(), end);
    if (!answer || isSecret(question.kind)) {  // no line end was typed, or none was shown
        static_cast<void>(writeAll(terminal.get(), "\n"));
    }
    return answer;
}

}  // namespace neb::nebsc
