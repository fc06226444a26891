#include "Server/RecordParam.h"

#include <algorithm>
#include <utility>

#include "JSON/OutcomeJSON.h"
#include "Platform/PathString.h"
#include "Recording/RecordingFile.h"
#include "Server/RPCMessage.h"
#include "Server/RequestResponse.h"

namespace neb::nebsc {

RecordParam takeRecordParam(JSONNode& params) {
    const auto param = std::ranges::find(params.children, "record", &JSONNode::name);
    if (param == params.children.end()) {
        return {};
    }
    RecordParam taken;
    if (param->kind == JSONNode::Kind::string && isAbsolutePath(param->text)) {
        taken.path = param->text;
    } else if (param->kind != JSONNode::Kind::null) {
        taken.refusal =
            subjectAt("record") + " is " +
            (param->kind == JSONNode::Kind::string ? "a relative path"
                                                   : std::string(nameOfKind(param->kind))) +
            "; expected an absolute path.";
    }
    params.children.erase(param);
    return taken;
}

std::string recordedResponseTo(const Job& job, const std::optional<std::string>& path,
                               const std::string& plugInVersion,
                               const std::function<RequestResult()>& perform) {
    if (!path) {
        return responseTo(job, perform());
    }
    RecordingFile file(*path);
    if (const auto failure = file.open(plugInVersion)) {
        return rpcError(job.id(), RPCErrorCode::invalidParams, failure->description);
    }
    RequestResult result = [&] {
        const Interceptor::Scope scope(file.interceptor());
        return perform();
    }();
    const auto failure = file.finish();
    if (failure && result.outcome) {
        return rpcError(job.id(), RPCErrorCode::internalError, failure->description,
                        textOfOutcome(*result.outcome));
    }
    return responseTo(job, std::move(result));
}

}  // namespace neb::nebsc
