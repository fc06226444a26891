// ProgressReports.h - "$/progress" notifications for running requests, as in the Language Server
// Protocol, for tokens that the client chooses.
//
//     ProgressReports progress([&writer](const std::string& message) { writer.send(message); });
//     const ProgressReports::Work work(progress, token, "log");
#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <thread>

#include "JSON/JSONText.h"
#include "Platform/Mutex.h"

namespace neb::nebsc {

struct ProgressToken {
    /// Absent if the client sent none.
    std::optional<nlohmann::ordered_json> value;
    /// One sentence; empty unless the token is of the wrong kind.
    std::string refusal;
};

/// Removes the member with the name from the parameters.
[[nodiscard]] ProgressToken takeProgressToken(JSONNode& params, std::string_view name);

/// Sends progress notifications from a thread of its own. Thread-safe.
class ProgressReports {
public:
    /// Calls `send` with each message, on one thread at a time; it must not block. If no thread can
    /// be created, nothing is reported.
    explicit ProgressReports(std::function<void(const std::string&)> send);
    ProgressReports(const ProgressReports&) = delete;
    ProgressReports& operator=(const ProgressReports&) = delete;
    /// All Work objects must be destroyed before.
    ~ProgressReports();

private:
    using Clock = std::chrono::steady_clock;

    struct Entry {
        nlohmann::ordered_json token;
        std::string title;
        Clock::time_point start;
        Clock::time_point due;
        bool hasBegun = false;
    };

public:
    /// Reports a request during the lifetime of this object: first after half a second, then every
    /// second, and at the end.
    class Work {
    public:
        Work(ProgressReports& reports, nlohmann::ordered_json token, std::string title);
        Work(const Work&) = delete;
        Work& operator=(const Work&) = delete;
        ~Work();

    private:
        ProgressReports& _reports;
        std::list<Entry>::iterator _entry;
    };

private:
    void watch();
    void report(const nlohmann::ordered_json& token, nlohmann::ordered_json value) const;
    void reportNext(Entry& entry, Clock::time_point now) const;

    const std::function<void(const std::string&)> _send;
    Mutex _mutex;
    Condition _changed;
    std::list<Entry> _entries NEB_GUARDED_BY(_mutex);
    bool _isEnding NEB_GUARDED_BY(_mutex) = false;
    std::thread _thread;
};

}  // namespace neb::nebsc
