#include "Server/CursorRequests.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "JSON/OutcomeJSON.h"
#include "JSON/RequestJSON.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Server/RequestResponse.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

/// Returns the result of a page; `outcome` is JSON text, and empty unless the page is the last one.
std::string textOfPage(const NEBSourceControlResult& records, const JSON& cursor,
                       const std::string& outcome) {
    std::string text = "{\"records\":" + textOfRecords(records) + ",\"cursor\":" + cursor.dump();
    if (!outcome.empty()) {
        text.append(",\"outcome\":").append(outcome);
    }
    return text + "}";
}

std::string sentenceOfUnknown(const std::string& cursor) {
    return "The cursor " + inQuotes(shortened(cursor)) + " is unknown or closed.";
}

/// A paused request must not hold up others, so it must not change anything. Returns the reason why
/// the request can have no cursor; empty if it can.
std::string refusalByEffect(const NEBSourceControlRequest& request) {
    if (NEBSourceControlEffectOfRequest(request) == NEBSourceControlRequestEffect::reads) {
        return {};
    }
    const auto name = NEBSourceControlRequestTypeName(request.type);
    return "A request of the type " + std::to_string(request.type) +
           (name ? " (" + std::string(*name) + ")" : "") +
           " has no pages, as only types that read have; send it with 'sourceControl/perform'.";
}

}  // namespace

// ---- the use of a cursor ----------------------------------------------------------------------

/// A request for a page, until its response. A cursor is not idle meanwhile, and it is removed at
/// the end unless the client can continue with it.
class CursorRequests::Use {
public:
    /// `isKept` is for a request that is cancelled before it begins.
    Use(CursorRequests& owner, std::string key, bool isKept)
        : _owner(owner), _key(std::move(key)), _isKept(isKept) {
        const MutexLock lock(owner._mutex);
        const auto entry = owner._entries.find(_key);
        if (entry != owner._entries.end()) {
            ++entry->second.uses;
        }
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use() { end(); }

    /// Returns the response with the next page, and ends the use: the client may send the next
    /// request as soon as it has the response.
    std::string respond(const Job& job, Cursor& cursor, std::int64_t pageSize) {
        try {
            std::string response = responseWithPage(job, cursor, pageSize);
            end();
            return response;
        } catch (...) {
            _isKept = false;  // records are lost
            end();
            throw;
        }
    }

private:
    std::string responseWithPage(const Job& job, Cursor& cursor, std::int64_t pageSize) {
        const Cursor::Page page = cursor.next(static_cast<std::size_t>(pageSize));
        _isKept = !cursor.isCancelled() && !page.isLast;
        if (_isKept) {
            return rpcResultOfText(job.id(), textOfPage(page.records, _key, {}));
        }
        std::optional<RequestResult> result = cursor.takeResult();
        if (!result) {  // a request that waited before this one has taken it
            return cursor.isCancelled()
                       ? cancelledResponseTo(job)
                       : rpcError(job.id(), RPCErrorCode::invalidParams, sentenceOfUnknown(_key));
        }
        if (cursor.isCancelled()) {
            return cancelledResponseTo(job, std::move(*result));
        }
        return responseTo(job, std::move(*result), [&page](const Outcome& outcome) {
            return textOfPage(page.records, nullptr, textOfOutcome(outcome));
        });
    }

    void end() {
        if (std::exchange(_hasEnded, true)) {
            return;
        }
        if (!_isKept) {
            static_cast<void>(_owner.remove(_key));
            return;
        }
        const MutexLock lock(_owner._mutex);
        const auto entry = _owner._entries.find(_key);
        if (entry != _owner._entries.end()) {
            --entry->second.uses;
            entry->second.lastUse = _owner._now();
        }
    }

    CursorRequests& _owner;
    const std::string _key;
    bool _isKept;
    bool _hasEnded = false;
};

// ---- methods ----------------------------------------------------------------------------------

CursorRequests::CursorRequests(const HostSession& session, MessageWriter& writer,
                               ProgressReports& progress, Jobs& jobs,
                               CredentialRequests& credentials, Clock now)
    : _session(session),
      _writer(writer),
      _progress(progress),
      _jobs(jobs),
      _credentials(credentials),
      _now(std::move(now)) {}

/// All are cancelled before the first is waited for, so that their processes end at the same time.
CursorRequests::~CursorRequests() {
    std::map<std::string, Entry> entries;
    {
        const MutexLock lock(_mutex);
        entries.swap(_entries);
    }
    for (const auto& [key, entry] : entries) {
        entry.cursor->cancel();
    }
    _scheduler.waitUntilAllWorkIsDone();
}

/// Reads the parameters. Absent if the message was refused.
std::optional<CursorParams> CursorRequests::take(RPCMessage& message) {
    CursorParams params = takeCursorParams(message.params);
    if (!params.refusal.empty()) {
        refuse(message, RPCErrorCode::invalidParams, params.refusal);
        return std::nullopt;
    }
    return params;
}

void CursorRequests::open(RPCMessage& message) {
    auto params = take(message);
    if (!params) {
        return;
    }
    if (!params->request || !params->pageSize || params->cursor) {
        refuse(
            message, RPCErrorCode::invalidParams,
            "'sourceControl/open' takes the members 'request' and 'pageSize'; both are required.");
        return;
    }
    const RequestReading reading = requestFromJSON(*params->request, _trust);
    const std::string refusal =
        reading.request ? refusalByEffect(*reading.request) : reading.refusal;
    if (!refusal.empty()) {
        refuse(message, RPCErrorCode::invalidParams, refusal);
        return;
    }
    const auto cursor = std::make_shared<Cursor>(_session, reading.request,
                                                 _credentials.settingsFor(reading, *message.id));
    const std::string key = std::to_string(++_lastKey);
    bool hasRoom = false;
    {
        const MutexLock lock(_mutex);
        hasRoom = _entries.size() < mostCursors;
        if (hasRoom) {
            _entries[key] = {
                .cursor = cursor, .pageSize = *params->pageSize, .uses = 0, .lastUse = _now()};
        }
    }
    if (!hasRoom) {
        refuse(message, RPCErrorCode::invalidRequest,
               std::to_string(mostCursors) +
                   " cursors are open, which is the limit; close one with 'sourceControl/close'.");
        return;
    }
    start(message, *params, key, cursor, *params->pageSize, true);
}

void CursorRequests::next(RPCMessage& message) {
    auto params = take(message);
    if (!params) {
        return;
    }
    if (!params->cursor || params->request) {
        refuse(
            message, RPCErrorCode::invalidParams,
            "'sourceControl/next' takes the members 'cursor', which is required, and 'pageSize'.");
        return;
    }
    std::shared_ptr<Cursor> cursor;
    std::int64_t pageSize = 0;
    {
        const MutexLock lock(_mutex);
        const auto entry = _entries.find(*params->cursor);
        if (entry != _entries.end()) {
            cursor = entry->second.cursor;
            entry->second.pageSize = params->pageSize.value_or(entry->second.pageSize);
            pageSize = entry->second.pageSize;
        }
    }
    if (!cursor) {
        refuse(message, RPCErrorCode::invalidParams, sentenceOfUnknown(*params->cursor));
        return;
    }
    start(message, *params, *params->cursor, cursor, pageSize, false);
}

void CursorRequests::start(const RPCMessage& message, const CursorParams& params,
                           const std::string& key, const std::shared_ptr<Cursor>& cursor,
                           std::int64_t pageSize, bool isOpen) {
    const auto use = std::make_shared<Use>(*this, key, !isOpen);
    _jobs.start(*message.id, _scheduler, {.places = {key}},
                [this, use, cursor, pageSize, token = params.progressToken](Job& job) {
                    std::optional<ProgressReports::Work> progress;
                    if (token) {
                        progress.emplace(_progress, *token, "page");
                    }
                    const Job::Work work(job, [&cursor] { cursor->cancel(); });
                    return use->respond(job, *cursor, pageSize);
                });
}

/// The response follows when the processes of the cursor have exited.
void CursorRequests::close(RPCMessage& message) {
    auto params = take(message);
    if (!params) {
        return;
    }
    if (!params->cursor || params->request || params->pageSize) {
        refuse(message, RPCErrorCode::invalidParams,
               "'sourceControl/close' takes the member 'cursor', which is required.");
        return;
    }
    if (_jobs.refuseKnown(*message.id)) {
        return;  // the cursor stays open
    }
    const std::shared_ptr<Cursor> cursor = remove(*params->cursor);
    if (!cursor) {
        refuse(message, RPCErrorCode::invalidParams, sentenceOfUnknown(*params->cursor));
        return;
    }
    cursor->cancel();
    _jobs.start(*message.id, _scheduler, {.places = {*params->cursor}}, [cursor](Job& job) {
        cursor->close();
        return rpcResult(job.id(), nullptr);
    });
}

void CursorRequests::closeIdle() {
    std::vector<std::pair<std::string, std::shared_ptr<Cursor>>> idle;
    const Moment limit = _now() - longestIdleTime;
    {
        const MutexLock lock(_mutex);
        std::erase_if(_entries, [&idle, limit](const auto& item) {
            const Entry& entry = item.second;
            if (entry.uses > 0 || entry.lastUse > limit) {
                return false;
            }
            idle.emplace_back(item.first, entry.cursor);
            return true;
        });
    }
    for (const auto& [key, cursor] : idle) {
        cursor->cancel();
        _scheduler.add({.places = {key}}, [cursor = cursor] { cursor->close(); });
    }
}

bool CursorRequests::hasAny() const {
    const MutexLock lock(_mutex);
    return !_entries.empty();
}

/// Removes the entry and returns its cursor; null if the key is unknown.
std::shared_ptr<Cursor> CursorRequests::remove(const std::string& key) {
    const MutexLock lock(_mutex);
    const auto entry = _entries.find(key);
    if (entry == _entries.end()) {
        return nullptr;
    }
    std::shared_ptr<Cursor> cursor = std::move(entry->second.cursor);
    _entries.erase(entry);
    return cursor;
}

void CursorRequests::refuse(const RPCMessage& message, RPCErrorCode code,
                            const std::string& sentence) {
    _writer.send(rpcError(*message.id, code, sentence));
}

}  // namespace neb::nebsc
