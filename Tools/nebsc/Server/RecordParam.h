// RecordParam.h - the param "record" of a request, the file for a recording of it.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "JSON/JSONText.h"
#include "Server/Job.h"
#include "Session/HostSession.h"

namespace neb::nebsc {

struct RecordParam {
    /// An absolute path; absent if the request is not to be recorded.
    std::optional<std::string> path;
    /// Whether names and texts are replaced.
    bool isAnonymous = false;
    /// Why the param is refused; empty if it is not.
    std::string refusal = {};
};

/// Removes the param from the params of a request and returns it.
[[nodiscard]] RecordParam takeRecordParam(JSONNode& params);

/// Returns the response to a request that `perform` carries out on this thread, which is recorded
/// if there is a path. If the file cannot be created, the request does not run.
[[nodiscard]] std::string recordedResponseTo(const Job& job, const RecordParam& record,
                                             const HostSession& session,
                                             const std::string& plugInVersion,
                                             const std::function<RequestResult()>& perform);

}  // namespace neb::nebsc
