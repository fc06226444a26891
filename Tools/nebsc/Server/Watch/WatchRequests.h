// WatchRequests.h - the methods "sourceControl/watch" and "sourceControl/unwatch", and the
// notifications "sourceControl/didChange" and "sourceControl/watchEnded".
//
//     WatchRequests watches(session, writer, jobs, scheduler);
//     watches.watch(message);     // {"sourceTree": {"location": "/path"}, "workingTree": true}
//     watches.unwatch(message);   // {"watch": "1"}
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "NEBFoundation/NEBSourceControlScheduler.h"
#include "Platform/Mutex.h"
#include "Server/Jobs.h"
#include "Server/MessageWriter.h"
#include "Server/RPCMessage.h"
#include "Server/Watch/RepositoryWatch.h"
#include "Server/Watch/WatchParams.h"
#include "Session/HostSession.h"

namespace neb::nebsc {

/// Keeps the watches of one client. The methods must be called by one thread.
class WatchRequests {
public:
    static constexpr std::size_t mostWatches = 64;

    /// Whether the system can report changes.
    [[nodiscard]] static bool areAvailable() { return FolderWatcher::isAvailable(); }

    /// All must outlive this object. The scheduler must run no work any more when they are
    /// destroyed.
    WatchRequests(const HostSession& session, MessageWriter& writer, Jobs& jobs,
                  NEBSourceControlScheduler& scheduler)
        : _session(session), _writer(writer), _jobs(jobs), _scheduler(scheduler) {}
    WatchRequests(const WatchRequests&) = delete;
    WatchRequests& operator=(const WatchRequests&) = delete;
    /// Ends all watches and waits until nothing of them is left. All jobs must be cancelled before,
    /// and must have ended.
    ~WatchRequests();

    /// Each sends the response to the message, now or when it is known.
    void watch(RPCMessage& message);
    void unwatch(RPCMessage& message);

    /// Makes all watches end soon, also those that are being prepared.
    void stopAll();

private:
    using Watch = std::shared_ptr<RepositoryWatch>;
    class Start;

    [[nodiscard]] static std::string prepared(Job& job, const std::string& key,
                                              RepositoryWatch& watch);
    void sendChanges(const std::string& key, const std::string& location, std::uint32_t changes);
    void end(const std::string& key, const std::string& location, const WatchFailure& failure);
    [[nodiscard]] Watch remove(const std::string& key);
    void refuse(const RPCMessage& message, RPCErrorCode code, const std::string& sentence);

    const HostSession& _session;
    MessageWriter& _writer;
    Jobs& _jobs;
    NEBSourceControlScheduler& _scheduler;
    std::uint64_t _lastKey = 0;
    Mutex _mutex;
    std::map<std::string, Watch> _watches NEB_GUARDED_BY(_mutex);  // by the client's name of it
};

}  // namespace neb::nebsc
