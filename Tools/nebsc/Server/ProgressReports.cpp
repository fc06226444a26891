#include "Server/ProgressReports.h"

#include <algorithm>

#include "Platform/SignalFreeThread.h"
#include "Server/RPCMessage.h"

namespace neb::nebsc {

namespace {

constexpr std::chrono::milliseconds initialDelay{500};
constexpr std::chrono::seconds interval{1};

}  // namespace

ProgressToken takeProgressToken(JSONNode& params, std::string_view name) {
    const auto token = std::find_if(params.children.begin(), params.children.end(),
                                    [name](const JSONNode& child) { return child.name == name; });
    if (token == params.children.end()) {
        return {};
    }
    ProgressToken taken{.value = stringOrInteger(*token), .refusal = {}};
    if (!taken.value && token->kind != JSONNode::Kind::null) {
        taken.refusal = subjectAt(name) + " is " + std::string(nameOfKind(token->kind)) +
                        "; expected a string or an integer.";
    }
    params.children.erase(token);
    return taken;
}

ProgressReports::ProgressReports(std::function<void(const std::string&)> send)
    : _send(std::move(send)) {
    _thread = startSignalFreeThread([this] { watch(); });
}

ProgressReports::~ProgressReports() {
    {
        const MutexLock lock(_mutex);
        _isEnding = true;
    }
    _changed.notify_one();
    if (_thread.joinable()) {
        _thread.join();
    }
}

ProgressReports::Work::Work(ProgressReports& reports, nlohmann::ordered_json token,
                            std::string title)
    : _reports(reports) {
    const Clock::time_point now = Clock::now();
    {
        const MutexLock lock(reports._mutex);
        reports._entries.push_back({.token = std::move(token),
                                    .title = std::move(title),
                                    .start = now,
                                    .due = now + initialDelay});
        _entry = std::prev(reports._entries.end());
    }
    reports._changed.notify_one();
}

ProgressReports::Work::~Work() {
    const MutexLock lock(_reports._mutex);
    if (_entry->hasBegun) {
        _reports.report(_entry->token, {{"kind", "end"}});
    }
    _reports._entries.erase(_entry);
}

void ProgressReports::report(const nlohmann::ordered_json& token,
                             nlohmann::ordered_json value) const {
    _send(rpcNotification("$/progress", {{"token", token}, {"value", std::move(value)}}));
}

void ProgressReports::reportNext(Entry& entry, Clock::time_point now) const {
    if (!entry.hasBegun) {
        entry.hasBegun = true;
        entry.due = entry.start + interval;
        report(entry.token, {{"kind", "begin"}, {"title", entry.title}});
        return;
    }
    const auto seconds = std::chrono::floor<std::chrono::seconds>(now - entry.start);
    entry.due = entry.start + seconds + interval;
    report(entry.token, {{"kind", "report"}, {"message", std::to_string(seconds.count()) + " s"}});
}

void ProgressReports::watch() {
    MutexLock lock(_mutex);
    while (!_isEnding) {
        if (_entries.empty()) {
            _changed.wait(lock);
            continue;
        }
        const auto next = std::min_element(
            _entries.begin(), _entries.end(),
            [](const Entry& left, const Entry& right) { return left.due < right.due; });
        const Clock::time_point due = next->due;
        _changed.wait_until(lock, due);
        const Clock::time_point now = Clock::now();
        for (Entry& entry : _entries) {
            if (entry.due <= now) {
                reportNext(entry, now);
            }
        }
    }
}

}  // namespace neb::nebsc
