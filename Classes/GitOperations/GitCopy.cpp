#include "GitOperations/GitCopy.h"

#include "GitOperations/GitTrackedFiles.h"
#include "NEBFoundation/NEBSourceControlFileError.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

/// Waits for the queue's work when it ends, also by an exception: that work uses the operation.
class WaitAtEnd {
public:
    explicit WaitAtEnd(OperationQueue& queue) : _queue(queue) {}
    WaitAtEnd(const WaitAtEnd&) = delete;
    WaitAtEnd& operator=(const WaitAtEnd&) = delete;
    ~WaitAtEnd() { _queue.waitUntilAllOperationsAreFinished(); }

private:
    OperationQueue& _queue;
};

}  // namespace

void GitFileSystemOperation::main() {
    if (error()) {
        return;
    }
    const auto queue = std::make_shared<OperationQueue>();
    setOperationQueue(queue);
    const WaitAtEnd wait(*queue);
    queue->addBlock([this] { doWork(); });
    // Without a destination the add would take whatever else the request names.
    const bool hasDestination = request()->destination.isPresent();
    const auto add = hasDestination ? addToQueue<GitAddOperation>(request()) : nullptr;
    waitUntilAllOperationsAreFinished();
    setResult(add ? add->result() : std::nullopt);
}

/// What is thrown on the queue would get lost there.
void GitFileSystemOperation::doWork() {
    try {
        if (const auto failure = work(_fileManager)) {
            setError(NEBSourceControlErrorFromFileFailure(*failure));
        }
    } catch (...) {
        setError(NEBSourceControlErrorOfCurrentException());
    }
}

std::string GitFileSystemOperation::pathOf(const NEBValue& value) const {
    std::string path = value.isPresent() ? value.description() : std::string();
    const auto& sourceTree = request()->sourceTree;
    if (path.empty() || isAbsolutePath(path) || !sourceTree || !sourceTree->location) {
        return path;
    }
    return pathByAppendingComponent(pathOfLocation(*sourceTree->location).value_or(""), path);
}

void GitFileSystemOperation::cancel() {
    GitComposite::cancel();
    _fileManager.cancel();
}

std::optional<FileFailure> GitCopyOperation::work(FileManager& manager) {
    const NEBSourceControlRequest& asked = *request();
    return manager.copyItem(asked.fileCount() > 0 ? pathOf(asked.files->front()) : "",
                            pathOf(asked.destination));
}

std::optional<FileFailure> GitMakeDirectoryOperation::work(FileManager& manager) {
    return manager.createDirectory(pathOf(request()->destination));
}

}  // namespace neb
