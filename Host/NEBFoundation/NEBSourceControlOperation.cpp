#include "NEBFoundation/NEBSourceControlOperation.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "NEBFoundation/NEBSourceControlInspection.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"

namespace neb {

namespace {

/// Sends the reports of the calling thread to a sink while the object exists. Does nothing without
/// a sink.
class ScopedSink {
public:
    explicit ScopedSink(const LOMAssertionSink& sink) : _former(LOMAssertionSinkOfThread()) {
        if (sink) {
            LOMSetAssertionSinkOfThread(sink);
        }
    }
    ScopedSink(const ScopedSink&) = delete;
    ScopedSink& operator=(const ScopedSink&) = delete;
    ~ScopedSink() { LOMSetAssertionSinkOfThread(std::move(_former)); }

private:
    LOMAssertionSink _former;
};

}  // namespace

NEBSourceControlOperation::NEBSourceControlOperation(
    std::shared_ptr<NEBSourceControlRequest> request)
    : _request(std::move(request)), _reportSink(LOMAssertionSinkOfThread()) {}

void NEBSourceControlOperation::start() {
    _startTime = _startTime.value_or(std::chrono::steady_clock::now());
    try {
        const ScopedSink sink(_reportSink);
        if (isCancelled()) {
            setError(NEBSourceControlCancelledError());
        } else if (mayStart()) {
            main();
        }
        if (_recordSink && _result) {
            deliverRecords(std::exchange(*_result, {}));
        }
    } catch (...) {
        setResult(std::nullopt);  // it may be incomplete, and its memory may be needed
        std::optional<NEBSourceControlError> unexpected;
        NEBSourceControlStoreCurrentException(&unexpected);
        if (unexpected) {
            setError(std::move(unexpected));
        } else {
            _error.emplace().errorClass = NEBSourceControlUnknownErrorClass.text();
        }
    }
    setFinished();
}

bool NEBSourceControlOperation::mayStart() {
    if (!_request->isInspected()) {
        return true;
    }
    if (!_inspection) {
        _inspection = std::make_shared<NEBSourceControlInspection>();
    }
    const bool changes =
        NEBSourceControlEffectOfRequest(*_request) == NEBSourceControlRequestEffect::changes;
    if (changes) {
        const auto name = NEBSourceControlRequestTypeName(_request->type);
        setError(NEBSourceControlNotTrustedError(
            "The request was refused because it changes the repository \"%@\", which is not "
            "trusted: %@.",
            {_request->sourceTreeName(), std::string(name.value_or("unknown type"))}));
    }
    return !changes;
}

std::optional<std::vector<std::string>> NEBSourceControlOperation::switchedOff() const {
    return _inspection ? std::optional(_inspection->switchedOff()) : std::nullopt;
}

void NEBSourceControlOperation::deliverRecords(NEBSourceControlResult records) {
    if (records.size() <= recordBatchSize) {
        deliverBatch(std::move(records));
        return;
    }
    for (std::size_t first = 0; first < records.size(); first += recordBatchSize) {
        const std::size_t count = std::min(recordBatchSize, records.size() - first);
        const auto begin = records.begin() + static_cast<std::ptrdiff_t>(first);
        deliverBatch({std::make_move_iterator(begin),
                      std::make_move_iterator(begin + static_cast<std::ptrdiff_t>(count))});
    }
}

void NEBSourceControlOperation::deliverBatch(NEBSourceControlResult batch) {
    const std::size_t count = batch.size();
    if (count > 0 && isCancelled()) {
        setError(NEBSourceControlCancelledError());
    } else if (count > 0) {
        const auto begin = std::chrono::steady_clock::now();
        _recordSink(std::move(batch));
        _deliveredRecordCount += count;
        if (_startTime) {
            *_startTime += std::chrono::steady_clock::now() - begin;
        }
    }
}

void NEBSourceControlOperation::deliverRecordsOf(NEBSourceControlOperation& operation) {
    if (_recordSink) {
        operation.setRecordSink(
            [this](NEBSourceControlResult records) { deliverRecords(std::move(records)); });
    }
}

void NEBSourceControlOperation::inheritLimits(const NEBSourceControlOperation& other) {
    _limits = other._limits;
    _startTime = other._startTime;
}

NEBSourceControlLimits NEBSourceControlOperation::remainingLimits() const {
    NEBSourceControlLimits remaining = _limits;
    if (remaining.total && _startTime) {
        const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::steady_clock::now() - *_startTime);
        *remaining.total -= std::min(passed, *remaining.total);
    }
    return remaining;
}

void NEBSourceControlOperation::setError(std::optional<NEBSourceControlError> error) {
    _error = std::move(error);
    if (_error) {
        NEBSourceControlAddAdvice(*_error);
        _error->hidePasswords();
    }
}

std::string NEBSourceControlOperation::descriptionForAssertionMessage() const {
    return "<" + className() + ">";
}

NEBSourceControlError NEBSourceControlCancelledError() {
    auto error = NEBSourceControlError::withDescription(NEBSourceControlGenericError,
                                                        "The operation was cancelled.");
    error.errorClass = NEBSourceControlCancelledErrorClass;
    return error;
}

}  // namespace neb
