// LOMLogAspect.h - one subject of logging, with a level of its own.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Mutex.h"

namespace neb {

/// Every member may be used from any thread. Whoever logs reads `logLevel` first and does not
/// bother when it is 0.
class NEB_EXPORT LOMLogAspect {
public:
    /// Where messages go. Called by one thread at a time; it must not log itself.
    using Sink = std::function<void(std::string_view message)>;

    explicit LOMLogAspect(std::string name) : _name(std::move(name)) {}

    /// 0: logging is off. Set by the host.
    std::atomic<int> logLevel = 0;

    /// Writes a message: `format` with each "%@" replaced by the next argument. Without effect when
    /// `level` is above the aspect's.
    void _logAtLogLevel(int level, std::string_view format,
                        const std::vector<std::string>& arguments);

    /// An absent sink goes back to the default: one line on standard error, the name in front.
    void setSink(Sink sink);

private:
    const std::string _name;
    Mutex _mutex;
    Sink _sink NEB_GUARDED_BY(_mutex);
};

}  // namespace neb
