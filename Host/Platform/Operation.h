// Operation.h - a unit of work that runs once.
//
//     class Copy : public Operation {
//         void main() override {
//             while (!isCancelled() && copyNextFile()) {
//             }
//         }
//     };
#pragma once

#include <atomic>

#include "Platform/Export.h"

namespace neb {

/// The base class of operations.
///
/// The owner calls start() once, on any thread, or adds the operation to an OperationQueue. The
/// operation must live until start() has returned. cancel(), isCancelled() and isFinished() are
/// thread-safe and may be called at any time.
class NEB_EXPORT Operation {
public:
    Operation() = default;
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    virtual ~Operation() = default;

    /// Runs main() on the calling thread, then marks the operation as finished. An override must
    /// do both as well.
    virtual void start();
    /// Does the work. Called by start(); subclasses implement it.
    virtual void main() = 0;
    /// Requests that the operation end soon, or not begin. main() decides when to look. The
    /// operation still has to be started, and finishes as usual.
    virtual void cancel() { _cancelled = true; }

    /// Whether cancel() was called.
    [[nodiscard]] bool isCancelled() const { return _cancelled; }
    /// Whether start() has done its work. What main() wrote before is visible to the thread that
    /// gets true.
    [[nodiscard]] bool isFinished() const { return _finished; }

protected:
    /// Marks the operation as finished.
    void setFinished() { _finished = true; }

private:
    std::atomic<bool> _cancelled = false;
    std::atomic<bool> _finished = false;
};

}  // namespace neb
