// GitComposite.h - the pattern of an operation that runs other operations.
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

/// The private queue of a composite and what stands on it. cancelAll() and the queue's accessors
/// may be called from any thread, the others from the one that runs the composite.
class GitSubOperations {
public:
    [[nodiscard]] std::shared_ptr<OperationQueue> queue() const;
    void setQueue(std::shared_ptr<OperationQueue> queue);

    /// Puts the operation on the queue, of which there must be one. It records its children where
    /// the composite does, is background work when that is, and is cancelled with it.
    void add(const NEBSourceControlOperation& composite,
             const std::shared_ptr<NEBSourceControlOperation>& operation);
    /// Waits until everything on the queue has finished and passes on to the composite that output
    /// was held open. A composite that has been cancelled has the cancelled error afterwards.
    void wait(NEBSourceControlOperation& composite);
    void cancelAll();

private:
    mutable Mutex _mutex;
    std::shared_ptr<OperationQueue> _queue NEB_GUARDED_BY(_mutex);
    std::vector<std::shared_ptr<NEBSourceControlOperation>> _added;
};

/// A composite on top of `Base`, NEBSourceControlOperation as a rule: its main() runs operations
/// made from the same request, or from a sub-request, on a queue of its own, waits for them, and
/// passes on an error or merges results.
template <typename Base>
class GitComposite : public Base {
public:
    using Base::Base;

    /// The queue of the latest run; absent before the first.
    [[nodiscard]] std::shared_ptr<OperationQueue> operationQueue() const {
        return _subOperations.queue();
    }
    void setOperationQueue(std::shared_ptr<OperationQueue> queue) {
        _subOperations.setQueue(std::move(queue));
    }

    /// Cancels what runs on the queue too, and what is put on it from now on.
    void cancel() override {
        Base::cancel();
        _subOperations.cancelAll();
    }

    /// Nothing: the commands are those of the operations that it runs.
    [[nodiscard]] std::optional<NEBSourceControlCommand> command() override { return std::nullopt; }

protected:
    /// Puts an operation made from the request on the queue, and answers it. Read it only after the
    /// wait.
    template <typename Op>
    std::shared_ptr<Op> addToQueue(std::shared_ptr<NEBSourceControlRequest> request) {
        auto operation = initWithRequest<Op>(std::move(request));
        _subOperations.add(*this, operation);
        return operation;
    }

    void waitUntilAllOperationsAreFinished() { _subOperations.wait(*this); }

    /// Runs an operation made from the request to its end.
    template <typename Op>
    std::shared_ptr<Op> run(std::shared_ptr<NEBSourceControlRequest> request) {
        auto operation = addToQueue<Op>(std::move(request));
        waitUntilAllOperationsAreFinished();
        return operation;
    }

private:
    GitSubOperations _subOperations;
};

}  // namespace neb
