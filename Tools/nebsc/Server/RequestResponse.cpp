#include "Server/RequestResponse.h"

#include <utility>

#include "JSON/OutcomeJSON.h"
#include "JSON/RequestJSON.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Server/RPCMessage.h"

namespace neb::nebsc {

namespace {

constexpr const char* sentenceOfCancellation = "The request was cancelled.";

std::string refusedResponseTo(const Job& job, const NEBSourceControlArgumentInjection& value) {
    return rpcError(job.id(), RPCErrorCode::invalidParams, sentenceOfRefusedValue(value));
}

}  // namespace

std::string responseTo(const Job& job, RequestResult requestResult, const ResultText& resultText) {
    if (requestResult.refusedValue) {
        return refusedResponseTo(job, *requestResult.refusedValue);
    }
    const auto& error = requestResult.outcome->error;
    if (error && error->errorClass == NEBSourceControlCancelledErrorClass) {
        return cancelledResponseTo(job, std::move(requestResult));
    }
    return writtenOutcome(*requestResult.outcome, [&job, &resultText](const Outcome& outcome) {
        return rpcResultOfText(job.id(), resultText(outcome));
    });
}

std::string responseTo(const Job& job, RequestResult requestResult) {
    return responseTo(job, std::move(requestResult), textOfOutcome);
}

std::string cancelledResponseTo(const Job& job) {
    return rpcError(job.id(), RPCErrorCode::requestCancelled, sentenceOfCancellation);
}

std::string cancelledResponseTo(const Job& job, RequestResult requestResult) {
    if (requestResult.refusedValue) {
        return refusedResponseTo(job, *requestResult.refusedValue);
    }
    return writtenOutcome(*requestResult.outcome, [&job](const Outcome& outcome) {
        return rpcError(job.id(), RPCErrorCode::requestCancelled, sentenceOfCancellation,
                        textOfOutcome(outcome));
    });
}

}  // namespace neb::nebsc
