// ProgressReports.h - tells a client that its request is still worked at: "$/progress" as the
// Language Server Protocol has it for a token of the client's.
//
//     ProgressReports progress([&writer](const std::string& message) { writer.send(message); });
//     const ProgressReports::Work work(progress, token, "log");
#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>

#include "Platform/Mutex.h"

namespace neb::nebsc {

/// From any thread.
class ProgressReports {
public:
    /// `send` is called with each message, by one thread at a time; it must not block. Nothing is
    /// reported when the system has no thread.
    explicit ProgressReports(std::function<void(const std::string&)> send);
    ProgressReports(const ProgressReports&) = delete;
    ProgressReports& operator=(const ProgressReports&) = delete;
    /// All work must have ended.
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
    /// Work that is told of from half a second on, then once a second, and at its end.
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
    void tellOf(Entry& entry, Clock::time_point now) const;

    const std::function<void(const std::string&)> _send;
    Mutex _mutex;
    Condition _changed;
    std::list<Entry> _entries NEB_GUARDED_BY(_mutex);
    bool _isEnding NEB_GUARDED_BY(_mutex) = false;
    std::thread _thread;
};

}  // namespace neb::nebsc
