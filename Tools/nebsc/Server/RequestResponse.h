// RequestResponse.h - the response to a request from its outcome.
#pragma once

#include <functional>
#include <string>

#include "Server/Job.h"
#include "Session/HostSession.h"

namespace neb::nebsc {

/// Returns the result of an outcome as JSON text.
using ResultText = std::function<std::string(const Outcome&)>;

/// Returns the response to the job: the result that `resultText` makes of the outcome, or an error
/// if the request was refused or cancelled. Thread-safe.
[[nodiscard]] std::string responseTo(const Job& job, RequestResult requestResult,
                                     const ResultText& resultText);
/// Returns the same with the outcome as the result.
[[nodiscard]] std::string responseTo(const Job& job, RequestResult requestResult);
/// Returns the error response to a cancelled request without an outcome.
[[nodiscard]] std::string cancelledResponseTo(const Job& job);
/// Returns the same with its outcome.
[[nodiscard]] std::string cancelledResponseTo(const Job& job, RequestResult requestResult);

}  // namespace neb::nebsc
