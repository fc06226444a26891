// RequestRecording.h - what records the requests of a session.
//
//     const Interceptor::Scope scope(recording);
//     session.perform(request, run);
#pragma once

#include <memory>
#include <utility>

#include "NEBFoundation/NEBSourceControlOperation.h"
#include "NEBFoundation/NEBSourceControlRecording.h"
#include "Session/Outcome.h"

namespace neb::nebsc {

/// An operation of nebsc's own, which a request runs instead of the plug-in's.
struct OwnOperation {
    /// Null: the plug-in's operation runs.
    NEBSourceControlOperation* operation = nullptr;
    /// Whether the plug-in checks the request before.
    bool isChecked = false;
};

/// Records one request, or what belongs to none: the base class gets children and answers. Requests
/// that a HostSession performs in the scope of the latter are recorded. Thread-safe.
class RequestRecording : public NEBSourceControlRecorder {
public:
    using NEBSourceControlRecorder::NEBSourceControlRecorder;

    /// Begins to record another request, in the scope of this object. Null if this is a request
    /// itself, which is carried out with another.
    [[nodiscard]] virtual std::shared_ptr<RequestRecording> begin(
        const NEBSourceControlRequest& request, const OwnOperation& own) = 0;
    /// Takes records that are delivered while the operation runs.
    virtual void delivered(const NEBSourceControlResult& records) = 0;
    /// Takes the settings of the operation, which has run.
    virtual void ran(const NEBSourceControlOperation& operation) = 0;
    /// Takes what is known at the end. Not called if the request is refused.
    virtual void ended(const Outcome& outcome) = 0;
};

/// Returns the sink for an operation that is about to run on this thread: the recording of its
/// request, if there is one, gets the records first.
[[nodiscard]] inline NEBSourceControlRecordSink recordedSink(NEBSourceControlRecordSink sink) {
    auto recording = std::dynamic_pointer_cast<RequestRecording>(Interceptor::ofThread());
    if (!recording) {
        return sink;
    }
    return
        [recording = std::move(recording), sink = std::move(sink)](NEBSourceControlResult records) {
            recording->delivered(records);
            sink(std::move(records));
        };
}

}  // namespace neb::nebsc
