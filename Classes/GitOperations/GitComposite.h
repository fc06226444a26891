// GitComposite.h - the base of operations that run other operations.
//
//     void GitInfoOperation::main() {
//         if (error()) {
//             return;
//         }
//         setOperationQueue(std::make_shared<OperationQueue>());
//         const auto origin = run<GitFetchRemoteOriginOperation>(request());
//         setError(origin->error());
//         setResult(origin->result());
//     }
#pragma once

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "NEBFoundation/NEBSourceControlOperation.h"
#include "Platform/Mutex.h"
#include "Platform/OperationQueue.h"

namespace neb {

/// The private queue of a composite operation. cancelAll() and the accessors of the queue are
/// thread-safe; the other methods belong to the thread that runs the composite.
class GitSubOperations {
public:
    [[nodiscard]] std::shared_ptr<OperationQueue> queue() const;
    void setQueue(std::shared_ptr<OperationQueue> queue);

    /// Adds the operation to the queue, which must exist. The operation inherits the command log,
    /// the background flag, the variables of children, the inspection and the limits of the
    /// composite, and is cancelled with it.
    void add(const NEBSourceControlOperation& composite,
             const std::shared_ptr<NEBSourceControlOperation>& operation);
    /// Waits until all operations have finished, and passes on to the composite whether output was
    /// held open. A cancelled composite then has the error of a cancelled operation.
    void wait(NEBSourceControlOperation& composite);
    void cancelAll();

private:
    mutable Mutex _mutex;
    std::shared_ptr<OperationQueue> _queue NEB_GUARDED_BY(_mutex);
    std::vector<std::shared_ptr<NEBSourceControlOperation>> _added;
};

/// A composite on top of `Base`, usually NEBSourceControlOperation. Its main() runs operations for
/// the same request, or for a sub-request, on a queue of its own, waits for them, and passes on an
/// error or merges their results.
template <typename Base>
class GitComposite : public Base {
public:
    using Base::Base;

    /// The queue of the latest run. Null before the first run.
    [[nodiscard]] std::shared_ptr<OperationQueue> operationQueue() const {
        return _subOperations.queue();
    }
    void setOperationQueue(std::shared_ptr<OperationQueue> queue) {
        _subOperations.setQueue(std::move(queue));
    }

    /// Also cancels all operations on the queue, now and in future.
    void cancel() override {
        Base::cancel();
        _subOperations.cancelAll();
    }

    /// Absent: the commands are those of the operations on the queue.
    [[nodiscard]] std::optional<NEBSourceControlCommand> command() override { return std::nullopt; }

protected:
    /// Adds an operation for the request to the queue and returns it. Read it only after the wait.
    template <typename Op>
    std::shared_ptr<Op> addToQueue(std::shared_ptr<NEBSourceControlRequest> request) {
        auto operation = initWithRequest<Op>(std::move(request));
        _subOperations.add(*this, operation);
        return operation;
    }

    void waitUntilAllOperationsAreFinished() { _subOperations.wait(*this); }

    /// Runs an operation until it has finished, and returns it.
    template <typename Op>
    std::shared_ptr<Op> runOperation(std::shared_ptr<Op> operation) {
        _subOperations.add(*this, operation);
        waitUntilAllOperationsAreFinished();
        return operation;
    }

    /// Runs an operation for the request until it has finished.
    template <typename Op>
    std::shared_ptr<Op> run(std::shared_ptr<NEBSourceControlRequest> request) {
        auto operation = addToQueue<Op>(std::move(request));
        waitUntilAllOperationsAreFinished();
        return operation;
    }

    /// Like run(). The records of the operation go to the sink of the composite, if there is one.
    template <typename Op>
    std::shared_ptr<Op> runList(std::shared_ptr<NEBSourceControlRequest> request) {
        auto operation = initWithRequest<Op>(std::move(request));
        this->deliverRecordsOf(*operation);
        _subOperations.add(*this, operation);
        waitUntilAllOperationsAreFinished();
        return operation;
    }

private:
    GitSubOperations _subOperations;
};

}  // namespace neb
