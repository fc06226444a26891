#include "Server/Watch/WatchRequests.h"

#include <utility>
#include <vector>

#include "Server/RequestResponse.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

JSON namesOf(std::uint32_t changes) {
    JSON names = JSON::array();
    for (const RepositoryChangeName& row : repositoryChangeNames) {
        if ((changes & row.change) != 0) {
            names.push_back(row.name);
        }
    }
    return names;
}

}  // namespace

/// The start of a watch, until its response has been sent. At the end, the watch begins to report,
/// so that no notification comes before the response. A watch that could not be prepared, or was
/// cancelled, is removed.
class WatchRequests::Start {
public:
    Start(WatchRequests& owner, std::string key, Watch watch)
        : _owner(owner), _key(std::move(key)), _watch(std::move(watch)) {}
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;
    ~Start() {
        if (_isPrepared) {
            _watch->begin();
        } else {
            static_cast<void>(_owner.remove(_key));
        }
    }

    std::string respond(Job& job) {
        std::string response = prepared(job, _key, *_watch);
        _isPrepared = !_watch->isStopped();
        if (!_isPrepared) {  // at once: a client with the response may use the name again
            static_cast<void>(_owner.remove(_key));
        }
        return response;
    }

private:
    WatchRequests& _owner;
    const std::string _key;
    const Watch _watch;
    bool _isPrepared = false;
};

WatchRequests::~WatchRequests() {
    stopAll();
    std::map<std::string, Watch> watches;
    {
        const MutexLock lock(_mutex);
        watches.swap(_watches);
    }
    watches.clear();
    _scheduler.waitUntilAllWorkIsDone();  // the ends of watches
}

void WatchRequests::stopAll() {
    const MutexLock lock(_mutex);
    for (const auto& [key, watch] : _watches) {
        watch->stop();
    }
}

void WatchRequests::watch(RPCMessage& message) {
    const WatchParams params = watchParamsFromJSON(message.params);
    if (!params.refusal.empty()) {
        refuse(message, RPCErrorCode::invalidParams, params.refusal);
        return;
    }
    if (!_session.mayRunGit()) {
        refuse(message, RPCErrorCode::invalidRequest,
               "Only repositories of git can be watched, and the plug-in is not for git.");
        return;
    }
    if (_jobs.refuseKnown(*message.id)) {
        return;
    }
    const std::string key = std::to_string(++_lastKey);
    const auto watch = std::make_shared<RepositoryWatch>(
        _session.trace(), params.path, params.withWorkingTree,
        RepositoryWatch::Observer{
            .changed = [this, key, location = params.location](
                           std::uint32_t changes) { sendChanges(key, location, changes); },
            .ended = [this, key, location = params.location](
                         const WatchFailure& failure) { end(key, location, failure); }});
    bool hasRoom = false;
    {
        const MutexLock lock(_mutex);
        hasRoom = _watches.size() < mostWatches;
        if (hasRoom) {
            _watches[key] = watch;
        }
    }
    if (!hasRoom) {
        refuse(message, RPCErrorCode::invalidRequest,
               std::to_string(mostWatches) +
                   " repositories are watched, which is the limit; end one with "
                   "'sourceControl/unwatch'.");
        return;
    }
    const auto start = std::make_shared<Start>(*this, key, watch);
    _jobs.start(*message.id, _scheduler, {}, [start](Job& job) { return start->respond(job); });
}

/// Returns the response. Stops a watch that could not be prepared.
std::string WatchRequests::prepared(Job& job, const std::string& key, RepositoryWatch& watch) {
    std::optional<WatchFailure> failure;
    {
        const Job::Work work(job, [&watch] { watch.stop(); });
        failure = watch.prepare();
    }
    if (watch.isStopped()) {
        return cancelledResponseTo(job);
    }
    if (!failure) {
        return rpcResult(job.id(), {{"watch", key}});
    }
    watch.stop();
    return rpcError(job.id(), RPCErrorCode::requestFailed, failure->sentence,
                    JSON{{"class", failure->errorClass}}.dump());
}

/// The response follows when nothing of the watch is left.
void WatchRequests::unwatch(RPCMessage& message) {
    const UnwatchParams params = unwatchParamsFromJSON(message.params);
    if (!params.refusal.empty()) {
        refuse(message, RPCErrorCode::invalidParams, params.refusal);
        return;
    }
    if (_jobs.refuseKnown(*message.id)) {
        return;  // the watch goes on
    }
    Watch watch = remove(params.watch);
    if (!watch) {
        refuse(message, RPCErrorCode::invalidParams,
               "The watch " + inQuotes(shortened(params.watch)) + " is unknown or has ended.");
        return;
    }
    watch->stop();
    _jobs.start(*message.id, _scheduler, {}, [watch](Job& job) {
        watch->join();
        return rpcResult(job.id(), nullptr);
    });
}

void WatchRequests::sendChanges(const std::string& key, const std::string& location,
                                std::uint32_t changes) {
    _writer.send(
        rpcNotification("sourceControl/didChange",
                        {{"watch", key}, {"location", location}, {"changes", namesOf(changes)}}));
}

/// Runs on the thread of the watch, so that another thread must join it.
void WatchRequests::end(const std::string& key, const std::string& location,
                        const WatchFailure& failure) {
    _writer.send(rpcNotification("sourceControl/watchEnded", {{"watch", key},
                                                              {"location", location},
                                                              {"class", failure.errorClass},
                                                              {"message", failure.sentence}}));
    const MutexLock lock(_mutex);
    const auto entry = _watches.find(key);
    if (entry != _watches.end()) {
        _scheduler.add({}, [watch = entry->second] { watch->join(); });
        _watches.erase(entry);
    }
}

/// Removes the watch and returns it; null if the key is unknown.
WatchRequests::Watch WatchRequests::remove(const std::string& key) {
    const MutexLock lock(_mutex);
    const auto entry = _watches.find(key);
    if (entry == _watches.end()) {
        return nullptr;
    }
    Watch watch = std::move(entry->second);
    _watches.erase(entry);
    return watch;
}

void WatchRequests::refuse(const RPCMessage& message, RPCErrorCode code,
                           const std::string& sentence) {
    _writer.send(rpcError(*message.id, code, sentence));
}

}  // namespace neb::nebsc
