#include "Terminal/Pager.h"

#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <utility>
#include <vector>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Platform/ChildSpawn.h"
#include "Platform/FileDescriptor.h"
#include "Terminal/Tabs.h"
#include "Terminal/TextWidth.h"

namespace neb::nebsc {

namespace {

/// git's default pager, or cat where less is not installed.
constexpr std::string_view defaultPager = "command -v less > /dev/null || exec cat; exec less";

/// The variables that git sets for pagers if the user has not set them.
constexpr std::array<std::string_view, 2> pagerVariables{"LESS=FRX", "LV=-c"};

std::optional<std::string> variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

/// Returns the size of the terminal; 24 rows of 80 columns if it is unknown.
winsize sizeOfTerminal(int descriptor) {
    winsize size{};
    static_cast<void>(::ioctl(descriptor, TIOCGWINSZ, &size));
    constexpr unsigned short defaultRows = 24;
    constexpr unsigned short defaultColumns = 80;
    size.ws_row = size.ws_row == 0 ? defaultRows : size.ws_row;
    size.ws_col = size.ws_col == 0 ? defaultColumns : size.ws_col;
    return size;
}

/// Returns the width of a line in columns, without its colour sequences.
std::size_t columnsOnTerminal(std::string_view line) {
    std::size_t columns = 0;
    while (!line.empty()) {
        const std::size_t end = std::min(line.find_first_of("\x1b\t\r"), line.size());
        columns += columnsOf(line.substr(0, end));
        line.remove_prefix(end);
        if (line.starts_with('\x1b')) {
            line.remove_prefix(std::min(line.find('m'), line.size() - 1) + 1);
        } else if (!line.empty()) {
            columns += line.starts_with('\t') ? columnsOfTab(columns) : 0;
            line.remove_prefix(1);
        }
    }
    return columns;
}

/// Returns the inherited environment and those of pagerVariables that it lacks.
std::vector<std::string> environmentOfPager() {
    std::vector<std::string> environment = NEBSourceControlInheritedEnvironment();
    for (const std::string_view entry : pagerVariables) {
        const std::string_view name = entry.substr(0, entry.find('=') + 1);
        const auto isSet = [name](const std::string& other) { return other.starts_with(name); };
        if (std::none_of(environment.begin(), environment.end(), isSet)) {
            environment.emplace_back(entry);
        }
    }
    return environment;
}

/// Waits for the pager. Returns whether the shell found the program and could run it.
bool hasRun(pid_t pager) {
    constexpr int notExecutable = 126;
    constexpr int notFound = 127;
    int status = 0;
    while (::waitpid(pager, &status, 0) < 0) {
        if (errno != EINTR) {
            return true;
        }
    }
    return !WIFEXITED(status) ||
           (WEXITSTATUS(status) != notExecutable && WEXITSTATUS(status) != notFound);
}

}  // namespace

bool canHavePager(int descriptor) {
    return ::isatty(descriptor) == 1 && variable("TERM") != "dumb";
}

bool needsPager(int descriptor, std::string_view text) {
    if (!canHavePager(descriptor)) {
        return false;
    }
    const winsize size = sizeOfTerminal(descriptor);
    std::size_t rows = 1;  // for the shell prompt
    while (!text.empty() && rows <= size.ws_row) {
        const std::string_view line = text.substr(0, text.find('\n'));
        const std::size_t columns = std::max<std::size_t>(columnsOnTerminal(line), 1);
        rows += (columns + size.ws_col - 1) / size.ws_col;
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return rows > size.ws_row;
}

std::optional<std::string> pagerOfUser(const std::optional<std::string>& configured) {
    auto pager = variable("GIT_PAGER");
    pager = pager ? pager : configured;
    pager = pager ? pager : variable("PAGER");
    pager = pager ? pager : std::string(defaultPager);
    return pager->empty() || *pager == "cat" ? std::nullopt : pager;
}

Pager::Pager(const std::string& command)
    : _restoredSignals(signalsNotIgnored(defaultSignals())), _ignoredSignals(defaultSignals()) {
    Pipe pipe;
    if (openPipe(pipe, PipeSize::ordinary) != 0) {
        return;
    }
    const ChildLaunch launch{.launchPath = "/bin/sh",
                             .arguments = {"-c", command},
                             .currentDirectoryPath = std::nullopt,
                             .environment = environmentOfPager()};
    _process = spawnChild(launch, {.standardInput = ChildStream::copyOf(pipe.readEnd.get()),
                                   .defaultSignals = _restoredSignals,
                                   .hasEmptySignalMask = true})
                   .pid;
    if (_process >= 0) {
        _input = std::move(pipe.writeEnd);
    }
}

bool Pager::waitForEnd() {
    _input.close();
    return waitForProcess();
}

bool Pager::waitForProcess() {
    if (_process >= 0) {
        _hasRun = hasRun(std::exchange(_process, -1));
    }
    return _hasRun;
}

std::vector<int> Pager::defaultSignals() {
    return {SIGINT, SIGQUIT, SIGPIPE};
}

}  // namespace neb::nebsc
