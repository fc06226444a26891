// Jobs.h - the requests of a client that have no response yet.
//
//     Jobs jobs(writer, [] { … });
//     jobs.start(id, scheduler, {}, responseOf);
//     jobs.cancel(id);
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "NEBFoundation/NEBSourceControlScheduler.h"
#include "Platform/Mutex.h"
#include "Server/Job.h"
#include "Server/MessageWriter.h"

namespace neb::nebsc {

/// Runs requests as jobs and sends one response for each. Thread-safe.
class Jobs {
public:
    /// Does the work of a request and returns the response.
    using Respond = std::function<std::string(Job&)>;

    /// Calls `fail`, on any thread, if memory for a response is missing. The writer must outlive
    /// this object, and this object the schedulers that run the jobs.
    Jobs(MessageWriter& writer, std::function<void()> fail)
        : _writer(writer), _fail(std::move(fail)) {}
    Jobs(const Jobs&) = delete;
    Jobs& operator=(const Jobs&) = delete;

    /// Schedules a job for the request (see NEBSourceControlWork). If a job has the
    /// same id, sends an error response instead. `respond` is destroyed when the job has ended.
    /// Throws std::bad_alloc; then no response is sent.
    void start(const nlohmann::ordered_json& id, NEBSourceControlScheduler& scheduler,
               const NEBSourceControlWork& place, Respond respond);

    /// If a job has this id, sends an error response to the request that repeats it, and returns
    /// true.
    bool refuseKnown(const nlohmann::ordered_json& id);
    /// Returns whether the response to the request is not sent yet.
    [[nodiscard]] bool has(const nlohmann::ordered_json& id) const;
    [[nodiscard]] std::size_t count() const;

    /// Cancels the job of the request, if there is one. A waiting request gets its response at
    /// once, a running one when it has ended.
    void cancel(const nlohmann::ordered_json& id);
    /// Cancels all jobs. Responses to waiting jobs are skipped if memory runs out.
    void cancelAll();

private:
    void work(Job& job, const Respond& respond);
    void finish(Job& job, const std::string& response);
    void cancel(Job& job);
    void refuse(const nlohmann::ordered_json& id);
    void erase(const nlohmann::ordered_json& id);

    MessageWriter& _writer;
    const std::function<void()> _fail;
    mutable Mutex _mutex;
    std::map<std::string, std::shared_ptr<Job>> _jobs NEB_GUARDED_BY(_mutex);  // by id
};

}  // namespace neb::nebsc
