#include "Session/OperationRun.h"

#include <utility>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlLimits.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"
#include "Session/Credentials/CredentialService.h"
#include "Session/Credentials/ServerContact.h"
#include "Session/Credentials/TerminalCredentials.h"
#include "Session/PackReceiveProgress.h"
#include "Session/RequestRecording.h"
#include "Session/SignalName.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// Returns the folder of the repository that the request uses; empty if the request has none.
std::string folderOf(const NEBSourceControlRequest& request) {
    if (NEBSourceControlDescriptionOfRequestType(request.type).worksInDestination) {
        return std::string(request.destination.string().value_or(""));
    }
    return request.sourceTree && request.sourceTree->location ? *request.sourceTree->location : "";
}

/// Lets the children of an operation that contacts a server ask the person at the terminal.
class TerminalAccess {
public:
    TerminalAccess(ProgressIndicator& indicator, NEBSourceControlOperation& operation)
        : _terminal(indicator),
          _service([this](const CredentialQuestion& question, const std::string& /*context*/,
                          int end) { return _terminal.ask(question, end); }) {
        if (!operation.isBackgroundWork() && mayContactServer(*operation.request()) &&
            TerminalCredentials::canAsk()) {
            _grant = _service.grant();
        }
        if (_grant) {
            operation.setChildVariables(
                _grant->variables(CredentialService::Precedence::afterUsersPrograms));
        }
    }

private:
    TerminalCredentials _terminal;
    CredentialService _service;
    std::shared_ptr<const CredentialService::Grant> _grant;
};

}  // namespace

void cancelOperation(NEBSourceControlOperation& operation) {
    try {
        operation.cancel();
    } catch (...) {
        NEBSourceControlStoreCurrentException(nullptr);
    }
}

HostSession::Runner interruptibleRunner(Interruption& interruption, ProgressIndicator& indicator) {
    return [&interruption, &indicator](NEBSourceControlOperation& operation) {
        PackReceiveProgress pack(folderOf(*operation.request()));
        const ProgressIndicator::Count count(indicator, [&operation, &pack] {
            return operation.commandLog()->receivedBytes() + pack.bytes();
        });
        const TerminalAccess terminal(indicator, operation);
        const Interruption::Work work(interruption, [&operation] { cancelOperation(operation); });
        operation.start();
        const auto timeLimit = interruption.exceededTimeLimit();
        if (timeLimit && operation.error() &&
            operation.error()->errorClass == NEBSourceControlCancelledErrorClass) {
            operation.setError(NEBSourceControlTimedOutError(*timeLimit));
        }
    };
}

HostSession::Runner streamingRunner(HostSession::Runner run, Interruption& interruption,
                                    StreamedOutput& output, RecordText textOf) {
    return [run = std::move(run), &interruption, &output,
            textOf = std::move(textOf)](NEBSourceControlOperation& operation) {
        operation.setRecordSink(recordedSink([&](const NEBSourceControlResult& records) {
            const std::optional<std::string> text = textOf(records);
            if (!text || !output.write(*text)) {
                cancelOperation(operation);
            }
        }));
        const StreamedOutput::Reader reader(output, [&operation] { cancelOperation(operation); });
        const Interruption::Work work(interruption, [&output] { output.stop(); });
        run(operation);
    };
}

bool takeEndOfOutput(const StreamedOutput& output, Outcome& outcome) {
    const bool isCancelled =
        outcome.error && outcome.error->errorClass == NEBSourceControlCancelledErrorClass;
    if ((!output.hasLostReader() && !output.hasFailed()) || (outcome.error && !isCancelled)) {
        return false;
    }
    outcome.error.reset();
    return true;
}

void noteReports(CommandOutput& output, const Outcome& outcome) {
    for (const LOMAssertionReport& report : outcome.reports) {
        output.standardError +=
            diagnostic("The plug-in reports: " + report.message + " (" + report.function + ", " +
                       report.file + ":" + std::to_string(report.line) + ")");
    }
}

void noteOmittedRevisions(CommandOutput& output, const Outcome& outcome) {
    const std::vector<std::string>& revisions = outcome.omittedRevisions;
    if (revisions.empty()) {
        return;
    }
    const std::string subject =
        revisions.size() == 1 ? "One commit is" : std::to_string(revisions.size()) + " commits are";
    output.standardError += diagnostic(
        subject + " left out, because the author, the e-mail address or the message is not UTF-8:");
    constexpr std::size_t perLine = 5;
    for (std::size_t i = 0; i < revisions.size(); ++i) {
        const bool isLastInLine = i % perLine == perLine - 1 || i + 1 == revisions.size();
        output.standardError += (i % perLine == 0 ? "    " : " ") + printable(revisions[i]) +
                                (isLastInLine ? "\n" : "");
    }
}

void noteLeftFolder(CommandOutput& output, const Outcome& outcome) {
    if (!outcome.leftFolder.empty()) {
        output.standardError += diagnostic(outcome.leftFolder);
    }
}

void noteSwitchedOff(CommandOutput& output, const Outcome& outcome) {
    std::string names;
    for (const std::string& name : outcome.switchedOff.value_or(std::vector<std::string>())) {
        names += name == "submodules" ? "" : (names.empty() ? "" : ", ") + printable(name);
    }
    if (!names.empty()) {
        output.standardError += diagnostic("Not trusted, and switched off: " + names + ".");
    }
}

void noteHeldOutput(CommandOutput& output, const Outcome& outcome) {
    if (outcome.outputWasHeldOpen) {
        output.standardError += diagnostic(
            "A process that git left behind still held its output open; what it wrote later is "
            "missing here.");
    }
}

void noteEndOfTime(CommandOutput& output, const Interruption& interruption) {
    if (const auto timeLimit = interruption.exceededTimeLimit()) {
        const CommandOutput failure = failureWith(NEBSourceControlTimedOutError(*timeLimit));
        output.standardError = failure.standardError;
        output.exitStatus = failure.exitStatus;
        output.error = failure.error;
    }
}

void noteInterruption(CommandOutput& output, std::optional<int> signalNumber) {
    if (signalNumber) {
        output.standardError = diagnostic("Stopped by " + signalName(*signalNumber) + ".");
        output.exitStatus = exitOfSignal(*signalNumber);
    }
}

}  // namespace neb::nebsc
