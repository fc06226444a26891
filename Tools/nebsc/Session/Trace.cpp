#include "Session/Trace.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <map>
#include <memory>

#include "Platform/FileDescriptor.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

namespace {

/// Ignores failures, because there is nowhere to report them.
void writeLine(std::size_t number, const std::string& text) {
    static_cast<void>(
        writeAll(STDERR_FILENO, "trace " + std::to_string(number) + ": " + text + "\n"));
}

std::string shellCommand(const NEBSourceControlCommand& command) {
    std::string line;
    if (command.currentDirectoryPath) {
        line = "cd " + shellQuoted(withoutSecrets(*command.currentDirectoryPath)) + " && ";
    }
    line += shellQuoted(command.launchPath);
    for (const std::string& argument : command.arguments) {
        line += " " + shellQuoted(withoutSecrets(argument));
    }
    return line;
}

}  // namespace

std::size_t Trace::started(const NEBSourceControlCommand& command) const {
    const MutexLock lock(_mutex);
    const std::size_t number = ++_count;
    if (_isOn) {
        writeLine(number, shellCommand(command));
    }
    return number;
}

void Trace::ended(std::size_t number, const TerminationStatus& status,
                  std::chrono::nanoseconds duration) const {
    if (!_isOn) {
        return;
    }
    std::array<char, 32> milliseconds{};
    static_cast<void>(std::snprintf(milliseconds.data(), milliseconds.size(), "%.1f ms",
                                    std::chrono::duration<double, std::milli>(duration).count()));
    const MutexLock lock(_mutex);
    writeLine(number, status.description() + ", " + milliseconds.data());
}

NEBSourceControlCommandLog::Observers Trace::observers() const {
    if (!_isOn) {
        return {};
    }
    struct Numbers {
        Mutex mutex;
        std::map<std::size_t, std::size_t> ofIndex NEB_GUARDED_BY(mutex);
    };
    const auto numbers = std::make_shared<Numbers>();
    return {
        .started =
            [this, numbers](std::size_t index, const NEBSourceControlCommand& command) {
                const std::size_t number = started(command);
                const MutexLock lock(numbers->mutex);
                numbers->ofIndex[index] = number;
            },
        .ended =
            [this, numbers](std::size_t index, const TerminationStatus& status,
                            std::chrono::nanoseconds duration) {
                MutexLock lock(numbers->mutex);
                const std::size_t number = numbers->ofIndex[index];
                lock.unlock();
                ended(number, status, duration);
            },
    };
}

}  // namespace neb::nebsc
