#include "OperationRun.h"

#include <string.h>

#include "LifeSign.h"

namespace neb::nebsc {

HostSession::Runner interruptibleRunner(Interruption& interruption, std::string_view activity) {
    return [&interruption, activity](NEBSourceControlOperation& operation) {
        const LifeSign sign(activity);
        const Interruption::Work work(interruption, [&operation] { operation.cancel(); });
        operation.start();
    };
}

void noteReports(Reply& reply, const Outcome& outcome) {
    for (const LOMAssertionReport& report : outcome.reports) {
        reply.standardError +=
            complaint("The plug-in reports: " + report.message + " (" + report.function + ", " +
                      report.file + ":" + std::to_string(report.line) + ")");
    }
}

void noteLeftFolder(Reply& reply, const Outcome& outcome) {
    if (!outcome.leftFolder.empty()) {
        reply.standardError += complaint(outcome.leftFolder);
    }
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
