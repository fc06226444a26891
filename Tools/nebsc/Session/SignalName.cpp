#include "Session/SignalName.h"

#include <algorithm>
#include <csignal>
#include <iterator>
#include <string_view>

namespace neb::nebsc {

namespace {

struct Row {
    int number;
    std::string_view name;
};

/// See signal(7). Numbers depend on the processor. sigabbrev_np(3) is in glibc only.
constexpr Row signals[] = {
    {SIGHUP, "SIGHUP"},       {SIGINT, "SIGINT"},   {SIGQUIT, "SIGQUIT"}, {SIGILL, "SIGILL"},
    {SIGTRAP, "SIGTRAP"},     {SIGABRT, "SIGABRT"}, {SIGBUS, "SIGBUS"},   {SIGFPE, "SIGFPE"},
    {SIGKILL, "SIGKILL"},     {SIGUSR1, "SIGUSR1"}, {SIGSEGV, "SIGSEGV"}, {SIGUSR2, "SIGUSR2"},
    {SIGPIPE, "SIGPIPE"},     {SIGALRM, "SIGALRM"}, {SIGTERM, "SIGTERM"}, {SIGCHLD, "SIGCHLD"},
    {SIGCONT, "SIGCONT"},     {SIGSTOP, "SIGSTOP"}, {SIGTSTP, "SIGTSTP"}, {SIGTTIN, "SIGTTIN"},
    {SIGTTOU, "SIGTTOU"},     {SIGURG, "SIGURG"},   {SIGXCPU, "SIGXCPU"}, {SIGXFSZ, "SIGXFSZ"},
    {SIGVTALRM, "SIGVTALRM"}, {SIGPROF, "SIGPROF"}, {SIGPOLL, "SIGPOLL"}, {SIGWINCH, "SIGWINCH"},
    {SIGSYS, "SIGSYS"},
#ifdef SIGSTKFLT
    {SIGSTKFLT, "SIGSTKFLT"},
#endif
#ifdef SIGPWR
    {SIGPWR, "SIGPWR"},
#endif
};

}  // namespace

std::string signalName(int signalNumber) {
    const auto* row =
        std::find_if(std::begin(signals), std::end(signals),
                     [&](const Row& candidate) { return candidate.number == signalNumber; });
    return row == std::end(signals) ? "SIG" + std::to_string(signalNumber) : std::string(row->name);
}

}  // namespace neb::nebsc
