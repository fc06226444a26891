#include "Server/Cursor.h"

#include <utility>

#include "Session/OperationRun.h"

namespace neb::nebsc {

Cursor::Cursor(const HostSession& session, std::shared_ptr<NEBSourceControlRequest> request,
               const NEBSourceControlLimits& limits)
    : _records(
          [this, &session, request = std::move(request), limits](
              const NEBSourceControlRecordSink& sink) { perform(session, request, limits, sink); },
          [this] { static_cast<void>(_job.cancel()); }) {}

void Cursor::perform(const HostSession& session,
                     const std::shared_ptr<NEBSourceControlRequest>& request,
                     const NEBSourceControlLimits& limits, const NEBSourceControlRecordSink& sink) {
    _result = session.perform(request, [&](NEBSourceControlOperation& operation) {
        operation.setLimits(limits);
        operation.setRecordSink(sink);
        const Job::Work work(_job, [&operation] { cancelOperation(operation); });
        operation.start();
    });
}

}  // namespace neb::nebsc
