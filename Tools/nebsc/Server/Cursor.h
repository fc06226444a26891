// Cursor.h - a request whose records a client gets in pages.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <utility>

#include "NEBFoundation/NEBSourceControlRecordCursor.h"
#include "Server/Job.h"
#include "Session/HostSession.h"
#include "Session/RunSettings.h"

namespace neb::nebsc {

/// Performs a request on a thread of its own, which waits while no page is wanted. cancel() and
/// isCancelled() are thread-safe; all other members must be called by one thread at a time.
class Cursor {
public:
    using Page = NEBSourceControlRecordCursor::Page;

    /// The session must outlive the cursor. The request must be of a type that only reads.
    Cursor(const HostSession& session, std::shared_ptr<NEBSourceControlRequest> request,
           const RunSettings& settings);

    /// See NEBSourceControlRecordCursor.
    [[nodiscard]] Page next(std::size_t pageSize) { return _records.next(pageSize); }
    void cancel() { _records.cancel(); }
    [[nodiscard]] bool isCancelled() const { return _records.isCancelled(); }
    void close() { _records.close(); }

    /// Removes and returns the result, after the last page. Absent if it was taken before.
    [[nodiscard]] std::optional<RequestResult> takeResult() {
        return std::exchange(_result, std::nullopt);
    }

private:
    void perform(const HostSession& session,
                 const std::shared_ptr<NEBSourceControlRequest>& request,
                 const RunSettings& settings, const NEBSourceControlRecordSink& sink);

    Job _job{nullptr};
    std::optional<RequestResult> _result;
    NEBSourceControlRecordCursor _records;  // last: its thread uses the others
};

}  // namespace neb::nebsc
