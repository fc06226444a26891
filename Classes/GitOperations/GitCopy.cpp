#include "GitOperations/GitCopy.h"

#include <cerrno>
#include <exception>

#include "GitOperations/GitTrackedFiles.h"
#include "NEBFoundation/NEBSourceControlFileError.h"
#include "Platform/PathString.h"

namespace neb {

void GitFileSystemOperation::main() {
    if (error()) {
        return;
    }
    const auto queue = std::make_shared<OperationQueue>();
    setOperationQueue(queue);
    queue->addBlock([this] { doWork(); });
    // Without a destination the add would take whatever else the request names.
    const bool hasDestination = request()->destination.isPresent();
    const auto add = hasDestination ? addToQueue<GitAddOperation>(request()) : nullptr;
    waitUntilAllOperationsAreFinished();
    setResult(add ? add->result() : std::nullopt);
}

/// A block of a queue must not throw.
void GitFileSystemOperation::doWork() {
    try {
        if (const auto failure = work(_fileManager)) {
            setError(NEBSourceControlErrorFromFileFailure(*failure));
        }
    } catch (const std::exception& exception) {
        setError(NEBSourceControlErrorFromFileFailure(
            {ENOMEM, std::string("The work could not be done: ") + exception.what() + "."}));
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
