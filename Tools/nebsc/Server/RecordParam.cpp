#include "Server/RecordParam.h"

#include <algorithm>
#include <utility>

#include "Commands/OwnOperations.h"
#include "JSON/OutcomeJSON.h"
#include "Platform/PathString.h"
#include "Recording/RecordingFile.h"
#include "Server/RPCMessage.h"
#include "Server/RequestResponse.h"

namespace neb::nebsc {

namespace {

/// Reads a member: the path of the file.
void readPath(const JSONNode& node, const std::string& name, RecordParam& taken) {
    if (node.kind == JSONNode::Kind::string && isAbsolutePath(node.text)) {
        taken.path = node.text;
        return;
    }
    taken.refusal = subjectAt(name) + " is " +
                    (node.kind == JSONNode::Kind::string ? "a relative path"
                                                         : std::string(nameOfKind(node.kind))) +
                    "; expected an absolute path.";
}

/// Reads {"file": "/path", "anonymous": true}.
void readObject(const JSONNode& node, RecordParam& taken) {
    for (const JSONNode& member : node.children) {
        if (member.name == "file") {
            readPath(member, "record.file", taken);
        } else if (member.name == "anonymous" && member.kind == JSONNode::Kind::boolean) {
            taken.isAnonymous = member.boolean;
        } else {
            taken.refusal =
                subjectAt(pathOfMember("record", member.name)) +
                (member.name == "anonymous"
                     ? " is " + std::string(nameOfKind(member.kind)) + "; expected a boolean."
                     : " is unknown; expected 'file' or 'anonymous'.");
        }
    }
    if (memberOf(node, "file") == nullptr) {
        taken.refusal = subjectAt("record.file") + " is missing.";
    }
}

}  // namespace

RecordParam takeRecordParam(JSONNode& params) {
    const auto param = std::ranges::find(params.children, "record", &JSONNode::name);
    if (param == params.children.end()) {
        return {};
    }
    RecordParam taken;
    if (param->kind == JSONNode::Kind::object) {
        readObject(*param, taken);
    } else if (param->kind != JSONNode::Kind::null) {
        readPath(*param, "record", taken);
    }
    params.children.erase(param);
    return taken;
}

std::string recordedResponseTo(const Job& job, const RecordParam& record,
                               const HostSession& session, const std::string& plugInVersion,
                               const std::function<RequestResult()>& perform) {
    if (!record.path) {
        return responseTo(job, perform());
    }
    RecordingFile file(*record.path, anonymization(session, record.isAnonymous));
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
