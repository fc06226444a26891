#include "GitOperations/GitExport.h"

#include <filesystem>
#include <optional>

#include "GitOperations/GitRevision.h"
#include "LOMFoundation/LOMAssertion.h"
#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlAssertions.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlFileError.h"
#include "NEBFoundation/NEBSourceControlTemporaryFile.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/FileManager.h"
#include "Platform/Interceptor.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

constexpr std::string_view sourceFile = "Classes/GitOperations";

NEBValue firstFile(const NEBSourceControlRequest& request) {
    return request.fileCount() > 0 ? request.files->front() : NEBValue();
}

/// Removes the first `prefixLength` bytes and the character after them from a path. A "/" is one
/// byte, whatever follows it.
std::string pathAfterPrefix(std::string_view path, std::size_t prefixLength) {
    const auto isContinuation = [&path](std::size_t i) {
        return i < path.size() && (static_cast<unsigned char>(path[i]) & 0xC0U) == 0x80U;
    };
    std::size_t begin = prefixLength + 1;
    while (path[prefixLength] != '/' && isContinuation(begin)) {
        ++begin;
    }
    return std::string(path.substr(begin));
}

/// Returns the location of the source tree without a trailing "/"; absent if unknown.
std::optional<std::string> locationOf(const NEBSourceControlRequest& request) {
    if (!request.sourceTree || !request.sourceTree->location) {
        return std::nullopt;
    }
    std::string location = *request.sourceTree->location;
    while (location.size() > 1 && location.ends_with('/')) {
        location.pop_back();
    }
    return location;
}

/// Returns the path of the file relative to the top of the repository. With a repository path in
/// the options, the host passes it in this form; otherwise it is the rest after the location of the
/// source tree and one character. Absent for a file outside.
std::optional<std::string> relativePath(const NEBSourceControlRequest& request) {
    const NEBValue file = firstFile(request);
    if (!file.isPresent()) {
        return std::nullopt;
    }
    const std::string path = file.description();
    if (request.option(NEBSourceControlRequestOptionRepositoryPath).isPresent()) {
        return path;
    }
    const auto location = locationOf(request);
    if (!location || path.size() <= location->size() || !path.starts_with(*location)) {
        return std::nullopt;
    }
    return pathAfterPrefix(path, location->size());
}

/// Whether the file only seems to be below the location: "/w/tree-2/a" beside "/w/tree". The rest
/// of its path could name another existing file.
bool isBesideLocation(const NEBSourceControlRequest& request) {
    const NEBValue file = firstFile(request);
    const auto location = locationOf(request);
    return relativePath(request) && location &&
           !request.option(NEBSourceControlRequestOptionRepositoryPath).isPresent() &&
           file.description()[location->size()] != '/';
}

void assertIsValid(const std::optional<std::string>& relativePath, const NEBValue& file) {
    if (!relativePath || relativePath->empty()) {
        LOMReportFailedAssertion("-[GitExportFileOperation initWithRequest:]", sourceFile, 48,
                                 "Attempt to show a file from an invalid path: %@",
                                 {file.description(), std::string(LOMAssertionFailedFormat),
                                  "[relativePathString length] != 0"});
    }
}

/// Returns an error that was detected without running git.
NEBSourceControlError ownFailure(std::string_view errorClass, const std::string& description) {
    auto error = NEBSourceControlError::withDescription(NEBSourceControlGenericError, description);
    error.errorClass = errorClass;
    return error;
}

NEBSourceControlError refusalOf(const NEBSourceControlRequest& request) {
    const NEBValue file = firstFile(request);
    if (!file.isPresent()) {
        return ownFailure(NEBSourceControlUnknownErrorClass,
                          "Nothing was exported: the request has no file.");
    }
    if (relativePath(request) && !isBesideLocation(request)) {
        return ownFailure(NEBSourceControlPathInvalidErrorClass,
                          formattedText("The file \"%@\" was not exported: a path that ends in "
                                        "\".\" or \"..\" names a whole tree.",
                                        {file.description()}));
    }
    return ownFailure(NEBSourceControlPathOutsideErrorClass,
                      formattedText("The file \"%@\" was not exported: it is not inside \"%@\".",
                                    {file.description(), request.sourceTreeName()}));
}

/// Returns the part of the target's name before the name of the file. As a prefix of the only entry
/// of the archive, it renames that entry to the target. Empty when the target has another name.
std::string headOfTarget(std::string_view targetName, std::string_view fileName) {
    const std::size_t position = targetName.find(fileName);
    const bool isThere = !fileName.empty() && position != std::string_view::npos;
    return isThere ? std::string(targetName.substr(0, position)) : std::string();
}

/// Whether the archive contains a whole tree, because the path of the file is empty or stands for
/// the content of a folder. It may only be extracted at the destination itself; anywhere else, it
/// would overwrite files beside the target.
bool lacksDestinationForTree(const NEBSourceControlRequest& request) {
    const bool hasDestination = request.destination.isPresent() && request.fileCount() == 0;
    const auto relative = relativePath(request);
    const std::string name = lastPathComponent(relative.value_or("."));
    return !hasDestination && (name == "." || name == "..");
}

/// Returns the target that the constructor stored in the options of the request.
const LOMFilePath* targetOf(const NEBSourceControlRequest& request) {
    return request.option(NEBSourceControlOperationPathKey).filePath();
}

/// Returns the path, or its nearest existing parent, if it is not a folder: git would replace it
/// with one. Empty otherwise.
std::string searchNonFolder(std::filesystem::path path) {
    std::error_code ignored;
    while (!path.empty() && path != path.parent_path()) {
        const auto status = std::filesystem::status(path, ignored);
        if (std::filesystem::exists(status)) {
            return std::filesystem::is_directory(status) ? "" : path.string();
        }
        path = path.parent_path();
    }
    return "";
}

std::string nonFolderOnPath(const std::filesystem::path& path) {
    return interceptedText("file in place of folder", path.string(),
                           [&path] { return searchNonFolder(path); });
}

/// Removes what a failed export has left.
void removeFrom(const std::string& path) {
    static_cast<void>(interceptedFact("remove", path, [&path] {
        std::error_code failure;
        return std::filesystem::remove_all(path, failure) > 0;
    }));
}

/// Removes the folder if it is empty.
void removeEmptyFolder(const std::string& folder) {
    static_cast<void>(interceptedFact("remove", folder, [&folder] {
        std::error_code failure;
        return std::filesystem::remove(folder, failure);
    }));
}

}  // namespace

// ---- one file ---------------------------------------------------------------------------------

GitExportFileOperation::GitExportFileOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    NEBSourceControlRequest& asked = *this->request();
    const auto relative = relativePath(asked);
    assertIsValid(relative, firstFile(asked));

    std::vector<std::string> arguments{"archive"};
    const LOMFilePath target = chooseTarget();
    const std::string name = lastPathComponent(relative.value_or(""));
    const std::string head = headOfTarget(target.lastPathComponent(), name);
    if (!head.empty()) {
        arguments.push_back("--prefix=" + head);
    }
    NEBDictionary options = asked.options.value_or(NEBDictionary());
    options.set(NEBSourceControlOperationPathKey, target);
    asked.setOptions(std::move(options));

    const NEBValue revision = gitRevisionOfCommit(asked.startingRevision);
    if (revision.isPresent()) {
        const std::string folder = pathByDeletingLastComponent(relative.value_or(""));
        arguments.push_back(revision.description() + (folder.empty() ? "" : ":" + folder));
    }
    if (relative) {
        arguments.push_back(name);
    }
    setArgumentsBehindDefaults(arguments);
    // Other users can list the temporary folder.
    setArchivesForOwner(!asked.destination.isPresent());
}

LOMFilePath GitExportFileOperation::chooseTarget() const {
    const NEBValue& destination = request()->destination;
    if (destination.isPresent()) {
        return LOMFilePath::filePathForPathString(destination.description());
    }
    const NEBValue file = firstFile(*request());
    return NEBSourceControl_filePathForTmpFileBasedOnFileName(file.isPresent() ? file.description()
                                                                               : std::string());
}

std::shared_ptr<NEBSourceControlTaskOperation> GitExportFileOperation::pipeToOperation() {
    if (!_pipeToOperation) {
        _pipeToOperation = initWithRequest<GitTarOperation>(request());
    }
    return _pipeToOperation;
}

void GitExportFileOperation::main() {
    if (lacksDestinationForTree(*request()) || isBesideLocation(*request())) {
        setError(refusalOf(*request()));
        return;
    }
    const LOMFilePath target = *targetOf(*request());
    // The temporary file of a long name is in a folder of its own, which is created and removed
    // with it.
    const std::string folder = pathByDeletingLastComponent(target.pathString());
    const bool isOwnFolder = !request()->destination.isPresent() &&
                             !LOMFilePath::filePathForPathString(folder).existsInFileSystem();
    if (isOwnFolder) {
        if (const auto failure = FileManager().createDirectory(folder)) {
            setError(NEBSourceControlErrorFromFileFailure(*failure));
            return;
        }
    }
    const bool isNew = !target.existsInFileSystem();
    GitOperation::main();
    if (isNew) {
        rejectIncompleteExport();
    }
    if (error() && isNew) {
        removeFrom(target.pathString());
        if (isOwnFolder) {
            removeEmptyFolder(folder);
        }
    }
}

/// A target that did not exist before, and that a failing git or tar has left, is incomplete. Its
/// existence would say otherwise.
void GitExportFileOperation::rejectIncompleteExport() {
    if (!result()) {
        return;
    }
    for (NEBSourceControlTaskOperation* half :
         {static_cast<NEBSourceControlTaskOperation*>(this),
          static_cast<NEBSourceControlTaskOperation*>(_pipeToOperation.get())}) {
        const auto& status = half->terminationStatus();
        if (!status || status->isSuccess()) {
            continue;
        }
        const std::string stderrText = _nebsc_stringFromData(half->errorData()).value_or("");
        auto translated =
            stderrText.empty() ? std::nullopt : half->errorFromErrorMessage(stderrText);
        if (!error() && translated) {
            translated->errorClass = NEBSourceControlErrorClassOfText(stderrText);
            translated->text = stderrText;
            setError(std::move(translated));
        } else if (!error()) {
            setError(ownFailure(NEBSourceControlUnknownErrorClass,
                                "The file was not exported completely: " + half->className() +
                                    " ended with " + status->description() + "."));
        }
        setResult(std::nullopt);
    }
}

// ---- extraction -------------------------------------------------------------------------------

GitTarOperation::GitTarOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : NEBSourceControlTaskOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    std::optional<std::string> folder;
    if (asked.destination.isPresent() && asked.fileCount() == 0) {
        folder = asked.destination.description();
    } else if (const LOMFilePath* target = targetOf(asked)) {
        folder = pathByDeletingLastComponent(target->pathString());
        if (folder->empty()) {
            folder = ".";  // of a name without a folder
        }
    }
    NEBSourceControlAssertNotNil(
        {.function = "-[GitTarOperation initWithRequest:]", .file = sourceFile, .line = 112},
        folder.has_value(), "(chDir)");
    std::vector<std::string> arguments{"-C"};
    if (folder) {
        arguments.insert(arguments.end(), {*folder, "-xf", "-"});
    }
    setArguments(std::move(arguments));
}

std::string GitTarOperation::launchPath() {
    return "/usr/bin/tar";
}

void GitTarOperation::parseData() {
    const LOMFilePath* target = targetOf(*request());
    if (target != nullptr && target->existsInFileSystem()) {
        NEBDictionary record;
        record.set(NEBSourceControlOperationPathKey, *target);
        setResult({{std::move(record)}});
        return;
    }
    setError(NEBSourceControlError::withDescription(
        NEBSourceControlGenericError,
        formattedText("The revision %@ was not found for the file \"%@\".",
                      {gitRevisionOfCommit(request()->startingRevision).description(),
                       firstFile(*request()).description()})));
}

// ---- the whole tree ---------------------------------------------------------------------------

GitExportTreeOperation::GitExportTreeOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    const std::string destination = this->request()->destination.description();
    setJudgedByExitStatus();
    setArgumentsBehindDefaults(
        {"checkout-index", "-a", "-f",
         "--prefix=" + destination + (destination.ends_with('/') ? "" : "/")});
}

void GitExportTreeOperation::main() {
    const std::string destination =
        request()->destination.isPresent() ? request()->destination.description() : "";
    if (destination.empty()) {
        setError(ownFailure(NEBSourceControlUnknownErrorClass,
                            "The files were not exported: the request has no destination."));
    } else if (const std::string file = nonFolderOnPath(
                   std::filesystem::path(currentDirectoryPath().value_or("")) / destination);
               !file.empty()) {
        setError(ownFailure(NEBSourceControlDestinationExistsErrorClass,
                            "The files were not exported: \"" + file + "\" is not a folder."));
    } else {
        GitOperation::main();
    }
}

}  // namespace neb
