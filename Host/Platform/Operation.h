// Operation.h - a unit of work that a queue or a thread of the host runs once.
#pragma once

#include <atomic>

#include "Platform/Export.h"

namespace neb {

/// Whoever runs an operation calls start() once, on any thread; cancel() and the two questions may
/// be asked from any thread at any time.
class NEB_EXPORT Operation {
public:
    Operation() = default;
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    virtual ~Operation() = default;

    /// Runs main() and marks the operation finished.
    virtual void start();
    /// The work. Called by start().
    virtual void main() = 0;
    /// Asks the operation to end as soon as it can, or not to begin. It finishes all the same.
    virtual void cancel() { _cancelled = true; }

    [[nodiscard]] bool isCancelled() const { return _cancelled; }
    [[nodiscard]] bool isFinished() const { return _finished; }

protected:
    void setFinished() { _finished = true; }

private:
    std::atomic<bool> _cancelled = false;
    std::atomic<bool> _finished = false;
};

}  // namespace neb
