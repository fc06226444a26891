#include "OperationRun.h"

#include <string.h>

namespace neb::nebsc {

HostSession::Runner interruptibleRunner(Interruption& interruption) {
    return [&interruption](NEBSourceControlOperation& operation) {
        const Interruption::Work work(interruption, [&operation] { operation.cancel(); });
        operation.start();
    };
}

void noteHeldOutput(Reply& reply, const Outcome& outcome) {
    if (outcome.outputWasHeldOpen) {
        reply.standardError += complaint(
            "A process that git left behind still held its output open; what it wrote later is "
            "missing here.");
    }
}

void noteInterruption(Reply& reply, std::optional<int> signalNumber) {
    if (signalNumber) {
        reply.standardError =
            complaint("Stopped by SIG" + std::string(::sigabbrev_np(*signalNumber)) + ".");
        reply.exitStatus = exitOfSignal(*signalNumber);
    }
}

}  // namespace neb::nebsc
