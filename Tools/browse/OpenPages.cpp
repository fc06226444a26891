#include "OpenPages.h"

#include <utility>

namespace neb::nebsc {

std::string OpenPages::add(std::shared_ptr<PageSession> session) {
    const MutexLock lock(_mutex);
    if (_sessions.size() >= mostPages) {
        return {};
    }
    _lastClosed.reset();
    std::string id = std::to_string(++_count);
    _sessions.emplace(id, std::move(session));
    return id;
}

std::shared_ptr<PageSession> OpenPages::find(const std::string& id) const {
    const MutexLock lock(_mutex);
    const auto found = _sessions.find(id);
    return found == _sessions.end() ? nullptr : found->second;
}

void OpenPages::remove(const std::string& id) {
    std::shared_ptr<PageSession> removed;  // ends without the lock
    const MutexLock lock(_mutex);
    const auto found = _sessions.find(id);
    if (found != _sessions.end()) {
        removed = std::exchange(found->second, nullptr);
        _sessions.erase(found);
    }
    if (_sessions.empty()) {
        _lastClosed = Clock::now();
    }
}

std::optional<OpenPages::Clock::time_point> OpenPages::lastClosed() const {
    const MutexLock lock(_mutex);
    return _lastClosed;
}

}  // namespace neb::nebsc
