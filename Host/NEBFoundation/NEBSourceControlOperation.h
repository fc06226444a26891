// NEBSourceControlOperation.h - the base class of all operations.
//
//     const auto operation = controller->operationForRequest(request);
//     queue.addOperation(operation);
//     queue.waitUntilAllOperationsAreFinished();
//     operation->error();    // absent on success
//     operation->result();   // the records
//
// A plug-in makes an operation; the host owns it, runs it once, and reads it after it has finished.
// cancel() is thread-safe. All other members must be called by one thread at a time: the one that
// makes, runs or reads the operation.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "LOMFoundation/LOMAssertion.h"
#include "NEBFoundation/NEBDictionary.h"
#include "NEBFoundation/NEBSourceControlCommandLog.h"
#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlLimits.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "NEBFoundation/NEBSourceControlTrust.h"
#include "Platform/Export.h"
#include "Platform/Operation.h"

namespace neb {

/// The records of a result. Their keys are the NEBSourceControlOperation…Key constants.
using NEBSourceControlResult = std::vector<NEBDictionary>;

/// Takes the next records of a result. Called in order, one batch at a time, on the thread that
/// runs the operation, or on one that works for it while the first waits. It may block: the child
/// then waits as well, so that memory stays bounded. If it throws, the operation ends with an
/// error. It may call cancel().
using NEBSourceControlRecordSink = std::function<void(NEBSourceControlResult records)>;

/// Carries out one request.
class NEB_EXPORT NEBSourceControlOperation : public Operation, public NEBObject {
public:
    /// Shares ownership of the request, which must not be null; see initWithRequest() below.
    explicit NEBSourceControlOperation(std::shared_ptr<NEBSourceControlRequest> request);

    /// Runs main() on the calling thread, and returns when it has finished. An operation that would
    /// change a repository which is only inspected fails with an error of the class "not-trusted"
    /// instead. A cancelled operation finishes with NEBSourceControlCancelledError(). An exception
    /// of main() becomes the error; the operation has no result then.
    void start() override;
    /// Does the work. The base implementation does nothing: no result, no error.
    void main() override {}

    /// The name of the class, "GitStatusOperation".
    [[nodiscard]] virtual std::string className() const { return "NEBSourceControlOperation"; }
    /// Never null.
    [[nodiscard]] const std::shared_ptr<NEBSourceControlRequest>& request() const {
        return _request;
    }

    /// The records. Absent means that the operation has no result; empty means that it found none.
    /// The reference is valid until the operation is destroyed or runs.
    [[nodiscard]] const std::optional<NEBSourceControlResult>& result() const { return _result; }
    /// Replaces the records. For main().
    void setResult(std::optional<NEBSourceControlResult> result) { _result = std::move(result); }

    /// Delivers the records while the operation runs, instead of keeping them: those of a list as
    /// soon as they are parsed, in batches of at most 512; any other result at the end. result() is
    /// empty then, unless it is absent. error() says whether the records are complete. Null: no
    /// sink. Set it before start().
    void setRecordSink(NEBSourceControlRecordSink sink) { _recordSink = std::move(sink); }
    /// Whether there is a sink.
    [[nodiscard]] bool hasRecordSink() const { return _recordSink != nullptr; }
    /// The number of records that the sink has taken.
    [[nodiscard]] std::size_t deliveredRecordCount() const { return _deliveredRecordCount; }
    /// Delivers the records of another operation, which this one runs, to the sink of this one.
    /// Does nothing without a sink.
    void deliverRecordsOf(NEBSourceControlOperation& operation);

    /// The abbreviated ids of the commits that are missing from the result because their text is
    /// not UTF-8, in the order of the result.
    [[nodiscard]] const std::vector<std::string>& omittedRevisions() const {
        return _omittedRevisions;
    }
    /// Adds a commit to them. For main().
    void addOmittedRevision(std::string revision) {
        _omittedRevisions.push_back(std::move(revision));
    }
    /// The reason for the failure. Absent on success, and before the operation has run.
    [[nodiscard]] const std::optional<NEBSourceControlError>& error() const { return _error; }
    /// Sets the error, adds the advice of its class if it has none, and removes the passwords of
    /// URLs from all texts. For main().
    void setError(std::optional<NEBSourceControlError> error);

    /// The command line that the operation runs. Absent when it runs other operations instead.
    [[nodiscard]] virtual std::optional<NEBSourceControlCommand> command() { return std::nullopt; }

    /// Records the children that the operation and the operations that it runs start. Null: no
    /// record. Set it before start().
    [[nodiscard]] const std::shared_ptr<NEBSourceControlCommandLog>& commandLog() const {
        return _commandLog;
    }
    /// Sets the log, which is shared: a host may read it while the operation runs.
    void setCommandLog(std::shared_ptr<NEBSourceControlCommandLog> log) {
        _commandLog = std::move(log);
    }

    /// Whether no user waits for the result, as for an automatic refresh. git then takes no
    /// optional locks, so that it does not block commands of the user. Set it before start().
    [[nodiscard]] bool isBackgroundWork() const { return _isBackgroundWork; }
    /// Sets whether no user waits. False by default.
    void setBackgroundWork(bool isBackgroundWork) { _isBackgroundWork = isBackgroundWork; }

    /// The limits of the children; none by default. A child that exceeds its limits is
    /// ended as by cancel(), and the error is of the class "timed-out" or "output-too-large". Set
    /// them before start().
    void setLimits(const NEBSourceControlLimits& limits) { _limits = limits; }
    /// The limits that were set, not what is left of them.
    [[nodiscard]] const NEBSourceControlLimits& limits() const { return _limits; }
    /// Takes the limits of an operation that runs this one, and counts the total time from its
    /// start.
    void inheritLimits(const NEBSourceControlOperation& other);

    /// Environment variables of the children, each "NAME=value", in place of those that
    /// NEBSourceControlChildEnvironment() sets: for programs that git starts to ask for passwords.
    [[nodiscard]] const std::vector<std::string>& childVariables() const { return _childVariables; }
    /// Sets these variables; none by default. Set them before start().
    void setChildVariables(std::vector<std::string> variables) {
        _childVariables = std::move(variables);
    }

    /// What the repository names and was switched off for a request whose source tree has the trust
    /// NEBSourceControlTrust::inspect: names of settings ("filter.lfs.clean"), hooks
    /// ("hooks/post-index-change"), and "submodules" if their working copies were not examined.
    /// Empty until the repository was examined; absent for other requests.
    [[nodiscard]] std::optional<std::vector<std::string>> switchedOff() const;
    /// What is known about the repository of such a request. Null for other requests, and before
    /// start().
    [[nodiscard]] const std::shared_ptr<NEBSourceControlInspection>& inspection() const {
        return _inspection;
    }
    /// Shares what an operation that runs this one knows. Null: start() creates an empty one.
    void setInspection(std::shared_ptr<NEBSourceControlInspection> inspection) {
        _inspection = std::move(inspection);
    }

    /// Whether a lingering process that a child had started held its output open. Output that it
    /// wrote after the operation had ended is missing.
    [[nodiscard]] bool outputWasHeldOpen() const { return _outputWasHeldOpen; }
    /// For main().
    void setOutputWasHeldOpen(bool wasHeldOpen) { _outputWasHeldOpen = wasHeldOpen; }

    /// Returns the name of the class in angle brackets.
    [[nodiscard]] std::string descriptionForAssertionMessage() const override;

protected:
    /// The limits for a child that is started now: `total` is what is left of it.
    [[nodiscard]] NEBSourceControlLimits remainingLimits() const;

    /// The most records of one batch.
    static constexpr std::size_t recordBatchSize = 512;
    /// Passes the records to the sink, which must exist, in batches. If the operation is cancelled
    /// meanwhile, drops the rest and sets the error. Throws what the sink throws.
    void deliverRecords(NEBSourceControlResult records);

private:
    /// Prepares the inspection of a repository that is not trusted. Returns false with an error if
    /// the request would change it.
    [[nodiscard]] bool mayStart();
    /// Passes at most recordBatchSize records to the sink.
    void deliverBatch(NEBSourceControlResult batch);

    std::shared_ptr<NEBSourceControlRequest> _request;
    LOMAssertionSink _reportSink;  // of the thread that made the operation; usually absent
    std::optional<NEBSourceControlResult> _result;
    NEBSourceControlRecordSink _recordSink;
    std::size_t _deliveredRecordCount = 0;
    std::vector<std::string> _omittedRevisions;
    std::optional<NEBSourceControlError> _error;
    std::shared_ptr<NEBSourceControlCommandLog> _commandLog;
    NEBSourceControlLimits _limits;
    // of the total time; later by the time that the sink has taken
    std::optional<std::chrono::steady_clock::time_point> _startTime;
    std::vector<std::string> _childVariables;
    std::shared_ptr<NEBSourceControlInspection> _inspection;
    bool _isBackgroundWork = false;
    bool _outputWasHeldOpen = false;
};

/// Returns a new operation of the class, not started; null when the request is null.
template <typename Op>
[[nodiscard]] std::shared_ptr<Op> initWithRequest(
    std::shared_ptr<NEBSourceControlRequest> request) {
    return request ? std::make_shared<Op>(std::move(request)) : nullptr;
}

/// Returns the error of a cancelled operation, of the class "cancelled". Thread-safe.
[[nodiscard]] NEB_EXPORT NEBSourceControlError NEBSourceControlCancelledError();

}  // namespace neb
