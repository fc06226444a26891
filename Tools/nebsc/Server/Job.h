// Job.h - a client's request from its arrival to its answer.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>

#include "Platform/Mutex.h"

namespace neb::nebsc {

/// From any thread.
class Job {
public:
    explicit Job(nlohmann::ordered_json id) : _id(std::move(id)) {}
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;

    [[nodiscard]] const nlohmann::ordered_json& id() const { return _id; }

    /// Work that can be cancelled, for as long as the object lives. One at a time.
    class Work {
    public:
        /// `cancel` is called as soon as the job is cancelled, and at once when it was before. It
        /// must not block.
        Work(Job& job, std::function<void()> cancel);
        Work(const Work&) = delete;
        Work& operator=(const Work&) = delete;
        /// Afterwards `cancel` is not called any more.
        ~Work();

    private:
        Job& _job;
    };

    /// To be asked once the job's turn has come: whether to begin. Not when it was cancelled.
    [[nodiscard]] bool begin();

    /// Cancels the job. True when it had not begun and was not cancelled before: then whoever
    /// cancels it answers the client, else whoever works at it does.
    [[nodiscard]] bool cancel();

private:
    const nlohmann::ordered_json _id;
    mutable Mutex _mutex;
    std::function<void()> _cancel NEB_GUARDED_BY(_mutex);
    bool _isCancelled NEB_GUARDED_BY(_mutex) = false;
    bool _hasBegun NEB_GUARDED_BY(_mutex) = false;
};

}  // namespace neb::nebsc
