// CursorRequests.h - the methods "sourceControl/open", "sourceControl/next" and
// "sourceControl/close", with which a client gets the records of a request in pages.
//
//     CursorRequests cursors(session, writer, progress, jobs, credentials);
//     cursors.open(message);   // {"request": {"type": 18, …}, "pageSize": 50}
//     cursors.next(message);   // {"cursor": "1"}
//     cursors.close(message);  // {"cursor": "1"}
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "NEBFoundation/NEBSourceControlScheduler.h"
#include "Platform/Mutex.h"
#include "Server/Credentials/CredentialRequests.h"
#include "Server/Cursor.h"
#include "Server/CursorParams.h"
#include "Server/Jobs.h"
#include "Server/MessageWriter.h"
#include "Server/ProgressReports.h"
#include "Server/RPCMessage.h"
#include "Session/HostSession.h"

namespace neb::nebsc {

/// Keeps the cursors of one client. Uses a queue of its own, so that clients that wait for pages
/// block no other request. The methods, closeIdle() and hasAny() must be called by one thread.
class CursorRequests {
public:
    using Moment = std::chrono::steady_clock::time_point;
    using Clock = std::function<Moment()>;

    static constexpr std::size_t mostCursors = 64;
    static constexpr std::chrono::minutes longestIdleTime{10};

    /// All must outlive this object. `now` returns the time, for the age of idle cursors.
    CursorRequests(const HostSession& session, MessageWriter& writer, ProgressReports& progress,
                   Jobs& jobs, CredentialRequests& credentials,
                   Clock now = std::chrono::steady_clock::now);
    CursorRequests(const CursorRequests&) = delete;
    CursorRequests& operator=(const CursorRequests&) = delete;
    /// Ends all cursors and waits until no process of them is left. All jobs must be cancelled
    /// before.
    ~CursorRequests();

    /// Sets the trust of requests that do not say it.
    void setDefaultTrust(NEBSourceControlTrust trust) { _trust = trust; }

    /// Each sends the response to the message, now or when it is known.
    void open(RPCMessage& message);
    void next(RPCMessage& message);
    void close(RPCMessage& message);

    /// Begins to close the cursors that the client has not used for longestIdleTime.
    void closeIdle();
    [[nodiscard]] bool hasAny() const;

private:
    struct Entry {
        std::shared_ptr<Cursor> cursor;
        std::int64_t pageSize = 0;
        /// The requests for pages that have no response yet.
        int uses = 0;
        Moment lastUse;
    };
    class Use;

    [[nodiscard]] std::optional<CursorParams> take(RPCMessage& message);
    void start(const RPCMessage& message, const CursorParams& params, const std::string& key,
               const std::shared_ptr<Cursor>& cursor, std::int64_t pageSize, bool isOpen);
    [[nodiscard]] std::shared_ptr<Cursor> remove(const std::string& key);
    void refuse(const RPCMessage& message, RPCErrorCode code, const std::string& sentence);

    const HostSession& _session;
    MessageWriter& _writer;
    ProgressReports& _progress;
    Jobs& _jobs;
    CredentialRequests& _credentials;
    NEBSourceControlTrust _trust = NEBSourceControlTrust::trusted;
    const Clock _now;
    std::uint64_t _lastKey = 0;
    mutable Mutex _mutex;
    std::map<std::string, Entry> _entries NEB_GUARDED_BY(_mutex);  // by the client's name of it
    NEBSourceControlScheduler _scheduler{mostCursors};  // the requests for one cursor in order
};

}  // namespace neb::nebsc
