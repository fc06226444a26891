// Job.h - the state of a client's request until its response.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>

#include "Platform/Mutex.h"

namespace neb::nebsc {

/// A request that can be cancelled before and while it runs. Thread-safe.
class Job {
public:
    explicit Job(nlohmann::ordered_json id) : _id(std::move(id)) {}
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    [[nodiscard]] const nlohmann::ordered_json& id() const { return _id; }

    /// Makes the job's work cancellable during the lifetime of this object. One per job at a time.
    class Work {
    public:
        /// Calls `cancel` when the job is cancelled, or at once if it already is. `cancel` must not
        /// block.
        Work(Job& job, std::function<void()> cancel);
        Work(const Work&) = delete;
        Work& operator=(const Work&) = delete;
        /// After this, `cancel` is no longer called.
        ~Work();

    private:
        Job& _job;
    };

    /// Marks the job as running. Returns false if it was cancelled and must not run.
    [[nodiscard]] bool begin();

    /// Cancels the job. Returns true if it had not begun and was not cancelled before: then the
    /// caller must send the response. Otherwise the thread that runs the job sends it.
    [[nodiscard]] bool cancel();

private:
    const nlohmann::ordered_json _id;
    mutable Mutex _mutex;
    std::function<void()> _cancel NEB_GUARDED_BY(_mutex);
    bool _isCancelled NEB_GUARDED_BY(_mutex) = false;
    bool _hasBegun NEB_GUARDED_BY(_mutex) = false;
};

}  // namespace neb::nebsc
