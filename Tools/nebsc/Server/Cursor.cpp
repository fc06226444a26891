#include "Server/Cursor.h"

#include <utility>

#include "Session/OperationRun.h"

namespace neb::nebsc {

Cursor::Cursor(const HostSession& session, std::shared_ptr<NEBSourceControlRequest> request,
               const RunSettings& settings)
    : _records(
          [this, &session, request = std::move(request),
           settings](const NEBSourceControlRecordSink& sink) {
              perform(session, request, settings, sink);
          },
          [this] { static_cast<void>(_job.cancel()); }) {}

void Cursor::perform(const HostSession& session,
                     const std::shared_ptr<NEBSourceControlRequest>& request,
                     const RunSettings& settings, const NEBSourceControlRecordSink& sink) {
    _result = session.perform(request, [&](NEBSourceControlOperation& operation) {
        settings.applyTo(operation);
        operation.setRecordSink(sink);
        const Job::Work work(_job, [&operation] { cancelOperation(operation); });
        operation.start();
    });
}

}  // namespace neb::nebsc
