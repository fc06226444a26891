#include "GitOperations/GitTrackedFiles.h"

#include "LOMFoundation/LOMFilePath.h"
#include "NEBFoundation/NEBSourceControlAssertions.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

constexpr NEBSourceControlAssertionSite pathStringSite{
    .function = "-[GitAddOperation initWithRequest:]",
    .file = "Classes/GitOperations",
    .line = 672};

/// Returns the path of the file, with a "/" appended if it is a folder. A relative path starts at
/// git's working directory; the empty path names nothing.
std::string pathToAdd(const NEBValue& file, const std::optional<std::string>& currentFolder) {
    std::string path = file.description();
    if (path.empty() || path.ends_with('/')) {
        return path;
    }
    const std::string absolutePath =
        isAbsolutePath(path) ? path : pathByAppendingComponent(currentFolder.value_or(""), path);
    const auto attributes = LOMFilePath::filePathForPathString(absolutePath).fileAttributes();
    return attributes && attributes->fileType == LOMFileType::directory ? path + '/' : path;
}

}  // namespace

GitAddOperation::GitAddOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    setChangesRepository();
    std::vector<std::string> arguments{"add", "--"};
    const NEBSourceControlRequest& asked = *this->request();
    if (asked.destination.isPresent()) {
        arguments.push_back(asked.destination.description());
    } else if (asked.fileCount() == 0) {
        arguments.emplace_back(".");
    } else {
        for (const NEBValue& file : *asked.files) {
            NEBSourceControlAssertInstance(pathStringSite, file, file.isString(), "pathString",
                                           "NSString");
            if (file.isPresent()) {
                arguments.push_back(pathToAdd(file, currentDirectoryPath()));
            }
        }
    }
    setArgumentsBehindDefaults(arguments);
}

GitRemoveOperation::GitRemoveOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    setChangesRepository();
    std::vector<std::string> arguments{"rm", "-f", "-r", "--"};
    appendFiles(arguments);
    setArguments(std::move(arguments));
}

GitMoveOperation::GitMoveOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    setChangesRepository();
    std::vector<std::string> arguments{"mv"};
    const NEBSourceControlRequest& asked = *this->request();
    if (asked.fileCount() > 0) {
        appendIfPresent(arguments, asked.files->front());
    }
    appendIfPresent(arguments, asked.destination);
    setArguments(std::move(arguments));
}

}  // namespace neb
