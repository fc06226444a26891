// NEBSourceControlRecordCursor.h - the records of an operation, one page at a time.
//
//     NEBSourceControlRecordCursor cursor(controller->operationForRequest(request));
//     auto page = cursor.next(50);   // starts git, and returns as soon as it has 50 records
//     show(page.records);
//     page = cursor.next(50);
//     cursor.close();                // ends git; the destructor does the same
//
// Between two pages, git waits at a full pipe: a cursor has at most 600 records and one page in
// memory, whatever the length of the history. A git that waits has no lock of the repository: log,
// blame, ls-tree and branch take none, and status and diff take the lock of the index only to write
// back file times, before or after they print.
#pragma once

#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <thread>

#include "NEBFoundation/NEBSourceControlOperation.h"
#include "Platform/Export.h"
#include "Platform/Mutex.h"

namespace neb {

/// Runs an operation on a thread of its own and returns its records on demand. cancel() is
/// thread-safe. All other members must be called by one thread at a time.
class NEB_EXPORT NEBSourceControlRecordCursor {
public:
    /// The next records, and whether more can follow.
    struct Page {
        /// In the order of the result. Empty only on the last page.
        NEBSourceControlResult records;
        /// Whether the operation has finished and no record is left. The owner may then read the
        /// operation: its error() says whether the records are complete.
        bool isLast = false;
    };
    /// Does all work around an operation with the record sink, and returns when it has finished.
    using Work = std::function<void(const NEBSourceControlRecordSink& sink)>;

    /// Takes an operation that has not started. Must not be null.
    explicit NEBSourceControlRecordCursor(
        const std::shared_ptr<NEBSourceControlOperation>& operation);
    /// Takes a function that runs an operation, and one that cancels it. `cancelWork` must be
    /// thread-safe, may be called before `work`, during it and after it, and must not block.
    NEBSourceControlRecordCursor(Work work, std::function<void()> cancelWork);
    NEBSourceControlRecordCursor(const NEBSourceControlRecordCursor&) = delete;
    NEBSourceControlRecordCursor& operator=(const NEBSourceControlRecordCursor&) = delete;
    /// Calls close().
    ~NEBSourceControlRecordCursor();

    /// Returns the next records. Blocks until there are `pageSize` of them (at least 1) or the
    /// operation has finished. The first call starts the operation. The last page can be empty.
    /// After cancel(), blocks until the operation has ended, and returns an empty last page. Throws
    /// what the work threw; an operation throws nothing.
    [[nodiscard]] Page next(std::size_t pageSize);

    /// Begins to end the operation, and discards the records that were not returned. Does not
    /// block. Thread-safe.
    void cancel();
    /// Whether cancel() or close() was called. Thread-safe.
    [[nodiscard]] bool isCancelled() const;

    /// Ends the operation and waits until it has ended: no process of it is left. If it has not
    /// started, it never does.
    void close();

private:
    /// Starts the thread at the first call.
    void start();
    /// The function of the thread: does the work.
    void run();
    /// Keeps records for next(). Blocks while enough of them wait.
    void add(NEBSourceControlResult records);

    const Work _work;
    const std::function<void()> _cancelWork;
    bool _hasStarted = false;
    std::thread _thread;

    mutable Mutex _mutex;
    Condition _changed;
    std::deque<NEBDictionary> _records NEB_GUARDED_BY(_mutex);
    std::size_t _wantedCount NEB_GUARDED_BY(_mutex) = 0;  // by a next() that waits
    bool _keepsAll NEB_GUARDED_BY(_mutex) = false;        // there is no thread that could wait
    bool _isCancelled NEB_GUARDED_BY(_mutex) = false;
    bool _isFinished NEB_GUARDED_BY(_mutex) = false;
    std::exception_ptr _failure NEB_GUARDED_BY(_mutex);
};

}  // namespace neb
