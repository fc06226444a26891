#include "GitOperations/GitCopy.h"

#include "GitOperations/GitTrackedFiles.h"
#include "NEBFoundation/NEBSourceControlFileError.h"

namespace neb {

namespace {

std::string textOf(const NEBValue& path) {
    return path.isPresent() ? path.description() : std::string();
}

}  // namespace

void GitFileSystemOperation::main() {
    if (error()) {
        return;
    }
    const auto queue = std::make_shared<OperationQueue>();
    setOperationQueue(queue);
    queue->addBlock([this] {
        if (const auto failure = work(_fileManager)) {
            setError(NEBSourceControlErrorFromFileFailure(*failure));
        }
    });
    const auto add = addToQueue<GitAddOperation>(request());
    waitUntilAllOperationsAreFinished();
    setResult(add->result());
}

void GitFileSystemOperation::cancel() {
    GitComposite::cancel();
    _fileManager.cancel();
}

std::optional<FileFailure> GitCopyOperation::work(FileManager& manager) {
    const NEBSourceControlRequest& asked = *request();
    return manager.copyItem(asked.fileCount() > 0 ? textOf(asked.files->front()) : "",
                            textOf(asked.destination));
}

std::optional<FileFailure> GitMakeDirectoryOperation::work(FileManager& manager) {
    return manager.createDirectory(textOf(request()->destination));
}

}  // namespace neb
