// NEBSourceControlOperation.h - the base of every operation.
//
//     std::shared_ptr<NEBSourceControlOperation> operation =
//     controller->operationForRequest(request); queue.addOperation(operation);
//     queue.waitUntilAllOperationsAreFinished();
//     operation->error();    // absent on success
//     operation->result();   // the records
//
// Made by a plug-in, owned by the host, run once, read once it has finished. cancel() may be called
// from any thread; everything else belongs to the thread that makes, runs or reads the operation.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "LOMFoundation/LOMAssertion.h"
#include "NEBFoundation/NEBDictionary.h"
#include "NEBFoundation/NEBSourceControlCommandLog.h"
#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Platform/Export.h"
#include "Platform/Operation.h"

namespace neb {

/// One dictionary a record, keyed by the NEBSourceControlOperation…Key constants.
using NEBSourceControlResult = std::vector<NEBDictionary>;

class NEB_EXPORT NEBSourceControlOperation : public Operation, public NEBObject {
public:
    /// Keeps the request, which must be there; see initWithRequest below.
    explicit NEBSourceControlOperation(std::shared_ptr<NEBSourceControlRequest> request);

    /// Runs main(), unless the operation has been cancelled, which becomes the error then. Whatever
    /// main() throws becomes the error too, and there is no result then.
    void start() override;
    /// Does nothing: the operation completes with neither result nor error.
    void main() override {}

    /// The class's own name, "GitStatusOperation".
    [[nodiscard]] virtual std::string className() const { return "NEBSourceControlOperation"; }
    [[nodiscard]] const std::shared_ptr<NEBSourceControlRequest>& request() const {
        return _request;
    }

    /// Absent until there is one; absent and empty differ.
    [[nodiscard]] const std::optional<NEBSourceControlResult>& result() const { return _result; }
    void setResult(std::optional<NEBSourceControlResult> result) { _result = std::move(result); }
    /// The abbreviated names of the commits that the result should hold and leaves out, as their
    /// text is not UTF-8; in the order of the result.
    [[nodiscard]] const std::vector<std::string>& omittedRevisions() const {
        return _omittedRevisions;
    }
    void setOmittedRevisions(std::vector<std::string> revisions) {
        _omittedRevisions = std::move(revisions);
    }
    /// Absent on success. No password of a URL is in its texts, whoever set it.
    [[nodiscard]] const std::optional<NEBSourceControlError>& error() const { return _error; }
    void setError(std::optional<NEBSourceControlError> error);

    /// What the operation was built to run; nothing for one that runs other operations.
    [[nodiscard]] virtual std::optional<NEBSourceControlCommand> command() { return std::nullopt; }

    /// Where the children that run are recorded; absent: nowhere. An operation hands its own to the
    /// operations that it runs.
    [[nodiscard]] const std::shared_ptr<NEBSourceControlCommandLog>& commandLog() const {
        return _commandLog;
    }
    void setCommandLog(std::shared_ptr<NEBSourceControlCommandLog> log) {
        _commandLog = std::move(log);
    }

    /// Whether nobody waits for this work (a refresh by itself): git then takes no lock that it can
    /// do without, so as not to be in the way of what the user does meanwhile.
    [[nodiscard]] bool isBackgroundWork() const { return _isBackgroundWork; }
    void setBackgroundWork(bool isBackgroundWork) { _isBackgroundWork = isBackgroundWork; }

    /// Whether a process that a child had left behind still held its output open, so that more may
    /// have been written after the operation had ended. An operation that runs others passes on
    /// what they say.
    [[nodiscard]] bool outputWasHeldOpen() const { return _outputWasHeldOpen; }
    void setOutputWasHeldOpen(bool wasHeldOpen) { _outputWasHeldOpen = wasHeldOpen; }

    [[nodiscard]] std::string descriptionForAssertionMessage() const override;

private:
    std::shared_ptr<NEBSourceControlRequest> _request;
    LOMAssertionSink _reportSink;  // of the thread that made it; mostly absent
    std::optional<NEBSourceControlResult> _result;
    std::vector<std::string> _omittedRevisions;
    std::optional<NEBSourceControlError> _error;
    std::shared_ptr<NEBSourceControlCommandLog> _commandLog;
    bool _isBackgroundWork = false;
    bool _outputWasHeldOpen = false;
};

/// Makes an operation of the class, unstarted; nothing without a request.
template <typename Op>
[[nodiscard]] std::shared_ptr<Op> initWithRequest(
    std::shared_ptr<NEBSourceControlRequest> request) {
    return request ? std::make_shared<Op>(std::move(request)) : nullptr;
}

/// The error with which a cancelled operation finishes; its class is "cancelled".
[[nodiscard]] NEB_EXPORT NEBSourceControlError NEBSourceControlCancelledError();

}  // namespace neb
