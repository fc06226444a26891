#include "GitOperations/GitCopy.h"

#include "GitOperations/GitTrackedFiles.h"
#include "NEBFoundation/NEBSourceControlFileError.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

/// Waits for the queue when it is destroyed, also by an exception, as the work there uses the
/// operation.
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
    // Without a destination, the add would stage the files of the request.
    const bool hasDestination = request()->destination.isPresent();
    const auto add = hasDestination ? addToQueue<GitAddOperation>(request()) : nullptr;
    waitUntilAllOperationsAreFinished();
    setResult(add ? add->result() : std::nullopt);
}

/// The queue would lose an exception.
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
