#include "HostSession.h"

#include "ReportCapture.h"

namespace neb::nebsc {

namespace {

void runOperation(NEBSourceControlOperation& operation, const HostSession::Runner& run,
                  Outcome& outcome) {
    const auto log = std::make_shared<NEBSourceControlCommandLog>();
    operation.setCommandLog(log);
    run(operation);
    outcome.commands = log->runs();
    outcome.result = operation.result();
    outcome.error = operation.error();
    outcome.outputWasHeldOpen = operation.outputWasHeldOpen();
}

}  // namespace

Performance HostSession::perform(const std::shared_ptr<NEBSourceControlRequest>& request,
                                 const Runner& run) const {
    const ReportCapture capture;
    Outcome outcome;
    outcome.type = request->type;
    outcome.authenticationRequired = _controller->authenticationRequiredForRequest(*request);
    outcome.valid = _controller->validateRequest(*request, &outcome.error);
    if (outcome.valid) {
        if (auto refused = NEBSourceControlFirstOptionLikeValue(*request)) {
            return {std::nullopt, std::move(refused)};
        }
        if (const auto operation = _controller->operationForRequest(request)) {
            outcome.operation = operation->className();
            outcome.command = operation->command();
            if (run) {
                runOperation(*operation, run, outcome);
            }
        }
    }
    outcome.reports = capture.reports();
    return {std::move(outcome), std::nullopt};
}

}  // namespace neb::nebsc
