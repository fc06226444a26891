// OpenPages.h - the pages that are open, each with its server.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "Browse/PageSession.h"
#include "Platform/Mutex.h"

namespace neb::nebsc {

/// Thread-safe.
class OpenPages {
public:
    using Clock = std::chrono::steady_clock;

    /// As many as there are threads for them.
    static constexpr std::size_t mostPages = 24;

    /// Adds the session of a new page. Returns its id; empty if too many are open.
    [[nodiscard]] std::string add(std::shared_ptr<PageSession> session);
    /// Returns null if no open page has the id.
    [[nodiscard]] std::shared_ptr<PageSession> find(const std::string& id) const;
    void remove(const std::string& id);

    /// Returns since when no page has been open; absent while one is, and before the first.
    [[nodiscard]] std::optional<Clock::time_point> lastClosed() const;

private:
    mutable Mutex _mutex;
    std::map<std::string, std::shared_ptr<PageSession>> _sessions NEB_GUARDED_BY(_mutex);
    std::uint64_t _count NEB_GUARDED_BY(_mutex) = 0;
    std::optional<Clock::time_point> _lastClosed NEB_GUARDED_BY(_mutex);
};

}  // namespace neb::nebsc
