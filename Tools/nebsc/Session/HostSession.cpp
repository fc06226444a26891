#include "Session/HostSession.h"

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlFileError.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"
#include "Session/GitDirectoryGuard.h"
#include "Session/MissingFolder.h"
#include "Session/MissingSubmodules.h"
#include "Session/ReportCapture.h"
#include "Session/RequestRecording.h"
#include "Session/Trust.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// Returns the recording of the calling thread's request; null without one.
std::shared_ptr<RequestRecording> recordingOfThread() {
    return std::dynamic_pointer_cast<RequestRecording>(Interceptor::ofThread());
}

void runOperation(NEBSourceControlOperation& operation, const HostSession::Runner& run,
                  const Trace& trace, Outcome& outcome) {
    const auto log = std::make_shared<NEBSourceControlCommandLog>(trace.observers());
    operation.setCommandLog(log);
    run(operation);
    if (const auto recording = recordingOfThread()) {
        recording->ran(operation);
    }
    outcome.commands = log->runs();
    outcome.result = operation.result();
    if (operation.hasRecordSink()) {
        outcome.recordCount = operation.deliveredRecordCount();
    }
    outcome.omittedRevisions = operation.omittedRevisions();
    outcome.error = operation.error();
    outcome.outputWasHeldOpen = operation.outputWasHeldOpen();
    outcome.switchedOff = operation.switchedOff();
}

bool hasFailed(const Outcome& outcome) {
    return outcome.error || outcome.commands.empty() ||
           outcome.commands.back().terminationStatus != 0;
}

/// Returns whether a failed clone lacks only submodules, and names them in the outcome. Such a
/// clone is kept, so that its data need not be received again.
bool lacksOnlySubmodules(Outcome& outcome, const std::string& folder, const Trace& trace) {
    if (outcome.error && outcome.error->errorClass == NEBSourceControlCancelledErrorClass) {
        return false;
    }
    const std::vector<std::string> missing = missingSubmodules(trace, folder);
    if (missing.empty()) {
        return false;
    }
    std::string names;
    for (const std::string& path : missing) {
        names += (names.empty() ? " " : ", ") + inQuotes(path);
    }
    outcome.leftFolder =
        "The clone " + inQuotes(folder) + " is kept; it lacks the " +
        (missing.size() == 1 ? "submodule" : "submodules") + names +
        // --force: some submodules are cloned without files, which git would treat as deleted.
        ". To get what is missing, run 'git submodule update --init --recursive --force' in it.";
    if (outcome.error) {
        outcome.error->files = missing;
    }
    return true;
}

/// The destination must exist because git runs in it.
void runClone(NEBSourceControlOperation& operation, const std::string& destination,
              const HostSession::Runner& run, const Trace& trace, Outcome& outcome) {
    MissingFolder folder(destination);
    if (const auto failure =
            interceptedChange("create folder", destination, [&folder] { return folder.make(); })) {
        outcome.error = NEBSourceControlErrorFromFileFailure(*failure);
    } else {
        runOperation(operation, run, trace, outcome);
        // A folder with content is not the clone, which git refuses to put there.
        const auto isNew = [&folder] { return folder.isNew(); };
        if (!hasFailed(outcome) || (interceptedFact("is new", destination, isNew) &&
                                    lacksOnlySubmodules(outcome, destination, trace))) {
            folder.keep();
        }
    }
    if (const auto failure = interceptedChange("remove new folders", destination,
                                               [&folder] { return folder.rollBack(); })) {
        outcome.leftFolder = failure->description;
    }
}

/// Returns the recording of the request; null if it is not to be recorded.
std::shared_ptr<RequestRecording> beginRecording(const NEBSourceControlRequest& request,
                                                 const OwnOperation& own) {
    const auto outer = recordingOfThread();
    return outer ? outer->begin(request, own) : nullptr;
}

NEBSourceControlError errorOfMissingOperation(std::int32_t type) {
    std::string description =
        "The plug-in has no operation for the request type " + std::to_string(type);
    if (const auto name = NEBSourceControlRequestTypeName(type)) {
        description.append(" (").append(*name).append(")");
    }
    auto error = NEBSourceControlError::withDescription(
        NEBSourceControlGenericError, description + ".",
        "Correct the request; 'nebsc types' lists the types and what each needs.");
    error.errorClass = NEBSourceControlRequestInvalidErrorClass;
    return error;
}

}  // namespace

RequestResult HostSession::perform(
    const std::shared_ptr<NEBSourceControlRequest>& request, const Runner& run,
    const std::shared_ptr<NEBSourceControlOperation>& replacement) const {
    const ReportCapture capture;
    Outcome outcome;
    outcome.type = request->type;
    if (isInspecting()) {
        inspectOnly(*request);
    }
    const auto recording =
        run ? beginRecording(*request, {.operation = replacement.get(), .isChecked = true})
            : nullptr;
    const Interceptor::Scope scope(recording ? recording : Interceptor::ofThread());
    try {
        if (auto refused = validateAndRun(request, run, replacement, outcome)) {
            return {std::nullopt, std::move(refused)};
        }
    } catch (...) {
        outcome.result.reset();
        outcome.error = NEBSourceControlErrorOfCurrentException();
    }
    outcome.reports = capture.reports();
    if (recording) {
        recording->ended(outcome);
    }
    return {std::move(outcome), std::nullopt};
}

Outcome HostSession::performOperation(NEBSourceControlOperation& operation,
                                      const Runner& run) const {
    if (isInspecting()) {
        inspectOnly(*operation.request());
    }
    Outcome outcome;
    outcome.type = operation.request()->type;
    outcome.valid = true;
    outcome.operation = operation.className();
    outcome.command = operation.command();
    const auto recording = beginRecording(*operation.request(), {.operation = &operation});
    const Interceptor::Scope scope(recording ? recording : Interceptor::ofThread());
    runOperation(operation, run, _trace, outcome);
    if (recording) {
        recording->ended(outcome);
    }
    return outcome;
}

std::optional<NEBSourceControlArgumentInjection> HostSession::validateAndRun(
    const std::shared_ptr<NEBSourceControlRequest>& request, const Runner& run,
    const std::shared_ptr<NEBSourceControlOperation>& replacement, Outcome& outcome) const {
    outcome.authenticationRequired = _controller->authenticationRequiredForRequest(*request);
    outcome.valid = _controller->validateRequest(*request, &outcome.error);
    if (!outcome.valid) {
        return std::nullopt;
    }
    if (auto refused = NEBSourceControlFirstArgumentInjection(*request)) {
        return refused;
    }
    if (auto error = run ? errorOfChangeInGitDirectory(*request) : std::nullopt) {
        outcome.error = std::move(error);
        return std::nullopt;
    }
    const auto operation = replacement ? replacement : _controller->operationForRequest(request);
    if (!operation) {
        outcome.error = errorOfMissingOperation(request->type);
        return std::nullopt;
    }
    outcome.operation = operation->className();
    outcome.command = operation->command();
    const auto destination = request->destination.string();
    if (run && destination &&
        NEBSourceControlDescriptionOfRequestType(request->type).worksInDestination) {
        runClone(*operation, std::string(*destination), run, _trace, outcome);
    } else if (run) {
        runOperation(*operation, run, _trace, outcome);
    }
    return std::nullopt;
}

}  // namespace neb::nebsc
