// LOMLogAspect.h - the log of one subject.
//
//     LOMLogAspect aspect("source-control");
//     aspect.setSink([](std::string_view message) { … });
//     aspect.logLevel = 1;
//     if (aspect.logLevel != 0) {
//         aspect._logAtLogLevel(1, "unknown status: %@", {status});
//     }
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Mutex.h"

namespace neb {

/// A log with a name and a level. Thread-safe. A caller checks that `logLevel` is not 0 before it
/// prepares the arguments of a message.
class NEB_EXPORT LOMLogAspect {
public:
    /// A function that receives messages. It is called by one thread at a time and must not log
    /// itself.
    using Sink = std::function<void(std::string_view message)>;

    /// Creates a log that is off. The default sink writes the name before each message.
    explicit LOMLogAspect(std::string name) : _name(std::move(name)) {}

    /// The highest level that is logged, set by the host. 0: nothing is logged.
    std::atomic<int> logLevel = 0;

    /// Passes a message to the sink: `format` with each "%@" replaced by the next argument, and
    /// with the passwords of URLs redacted. Does nothing if `level` is higher than logLevel.
    void _logAtLogLevel(int level, std::string_view format,
                        const std::vector<std::string>& arguments);

    /// Sets the sink. An empty function restores the default, which writes one line to standard
    /// error.
    void setSink(Sink sink);

private:
    const std::string _name;
    Mutex _mutex;
    Sink _sink NEB_GUARDED_BY(_mutex);
};

}  // namespace neb
