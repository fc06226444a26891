#include "Platform/SignalFreeThread.h"

#include <signal.h>

#include <exception>
#include <utility>

namespace neb {

namespace {

/// Blocks the signals for the calling thread while it lives: a new thread starts with the mask of
/// the one that makes it.
class BlockedSignals {
public:
    BlockedSignals() {
        sigset_t signals;
        ::sigfillset(&signals);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS}) {
            ::sigdelset(&signals, fault);
        }
        ::pthread_sigmask(SIG_BLOCK, &signals, &_former);
    }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;
    ~BlockedSignals() { ::pthread_sigmask(SIG_SETMASK, &_former, nullptr); }

private:
    sigset_t _former{};
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
