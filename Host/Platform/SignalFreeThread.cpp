#include "Platform/SignalFreeThread.h"

#include <signal.h>

#include <exception>
#include <utility>

namespace neb {

namespace {

/// Blocks signals for the calling thread during its lifetime. A new thread inherits the signal
/// mask.
class BlockedSignals {
public:
    BlockedSignals() {
        sigset_t signals;
        ::sigfillset(&signals);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS}) {
            ::sigdelset(&signals, fault);
        }
        ::pthread_sigmask(SIG_BLOCK, &signals, &_previous);
    }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;
    ~BlockedSignals() { ::pthread_sigmask(SIG_SETMASK, &_previous, nullptr); }

private:
    sigset_t _previous{};
};

}  // namespace

std::thread startSignalFreeThread(std::function<void()> work) {
    const BlockedSignals blocked;
    try {
        return std::thread(std::move(work));
    } catch (const std::exception&) {  // std::system_error or std::bad_alloc
        return {};
    }
}

}  // namespace neb
