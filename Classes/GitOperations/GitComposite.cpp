#include "GitOperations/GitComposite.h"

namespace neb {

std::shared_ptr<OperationQueue> GitSubOperations::queue() const {
    const MutexLock lock(_mutex);
    return _queue;
}

void GitSubOperations::setQueue(std::shared_ptr<OperationQueue> queue) {
    const MutexLock lock(_mutex);
    _queue.swap(queue);
}

void GitSubOperations::add(const NEBSourceControlOperation& composite,
                           const std::shared_ptr<NEBSourceControlOperation>& operation) {
    operation->setCommandLog(composite.commandLog());
    operation->setBackgroundWork(composite.isBackgroundWork());
    operation->setChildVariables(composite.childVariables());
    operation->setInspection(composite.inspection());
    operation->inheritLimits(composite);
    _added.push_back(operation);
    if (composite.isCancelled()) {
        operation->cancel();
    }
    queue()->addOperation(operation);
    // cancel() marks the composite first and then reads the queue, so that one of the two sees the
    // other.
    if (composite.isCancelled()) {
        operation->cancel();
    }
}

void GitSubOperations::wait(NEBSourceControlOperation& composite) {
    queue()->waitUntilAllOperationsAreFinished();
    for (const auto& operation : std::exchange(_added, {})) {
        if (operation->outputWasHeldOpen()) {
            composite.setOutputWasHeldOpen(true);
        }
    }
    if (composite.isCancelled()) {
        composite.setError(NEBSourceControlCancelledError());
    }
}

void GitSubOperations::cancelAll() {
    if (const auto running = queue()) {
        running->cancelAllOperations();
    }
}

}  // namespace neb
