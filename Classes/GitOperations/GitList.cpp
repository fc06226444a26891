#include "GitOperations/GitList.h"

#include "GitOperations/GitShellText.h"
#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NSData+GitUtilities.h"
#include "Platform/PathString.h"
#include "Platform/Scanner.h"

namespace neb {

namespace {

/// Reads "mode type name TAB path", with blanks between the first three.
NEBDictionary recordOf(const Data& listing, std::string_view entry) {
    Scanner scanner(entry);
    static_cast<void>(scanner.takeInteger());  // the mode
    scanner.skipSpace();
    const std::string_view type = scanner.takeUpToSpace();
    scanner.skipSpace();
    static_cast<void>(scanner.takeUpToSpace());  // the object's name
    scanner.skipOne('\t');

    NEBDictionary record;
    record.reserve(2);
    record.set(NEBSourceControlOperationIsLeafKey, type == "blob");
    record.set(NEBSourceControlOperationNameKey,
               NEBValue(listing, lastPathComponentIn(scanner.rest())));
    return record;
}

std::string folderOf(const NEBSourceControlRequest& request) {
    return request.fileCount() > 0 ? request.files->front().description() : std::string();
}

NEBSourceControlError errorOfFolderOutside(const NEBSourceControlRequest& request) {
    auto error = NEBSourceControlError::withDescription(
        NEBSourceControlGenericError,
        formattedText("The folder \"%@\" cannot be listed: it is no path inside \"%@\".",
                      {folderOf(request), request.sourceTreeName()}));
    error.errorClass = NEBSourceControlPathOutsideErrorClass;
    return error;
}

/// All entries of the folder, for the shell to expand. No name at all fills its place in the
/// command line the way that nothing does, with a text at which the shell stops: hosts count on the
/// root not being listed.
std::string patternFor(const NEBSourceControlRequest& request) {
    const std::string folder = folderOf(request);
    return folder.empty() ? std::string(absentValueText) : gitShellPattern(folder) + "/*";
}

/// What is asked for behind HEAD: its tree, or, with the option for a branch, what git makes of the
/// branch's name there (nothing: it is no kind of object).
std::string selectorFor(const NEBSourceControlRequest& request) {
    const NEBValue& branch = request.option(NEBSourceControlRequestOptionBranch);
    return branch.isPresent() ? gitShellPattern(branch.description()) : "tree";
}

}  // namespace

GitListFilesOperation::GitListFilesOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    setArguments({"-c", formattedText("%@ ls-tree -z HEAD^{%@} %@",
                                      {gitShellWord(GitOperation::launchPath()), selectorFor(asked),
                                       patternFor(asked)})});
}

std::string GitListFilesOperation::launchPath() {
    return "/bin/sh";
}

/// The shell finds no file for a URL, and git then lists nothing and prints no error.
void GitListFilesOperation::parseData() {
    NEBSourceControlResult records;
    if (data()) {
        git_forEachComponentSeparatedByNULLTerminator(
            *data(), [&](std::string_view entry) { records.push_back(recordOf(*data(), entry)); });
    }
    if (records.empty() && pathOfFileURL(folderOf(*request()))) {
        setError(errorOfFolderOutside(*request()));
    }
    setResult(std::move(records));
}

/// A folder outside the working copy that is not there has words of its own in git, which speak of
/// an invalid path. No folder at all makes the shell complain about its syntax.
std::optional<NEBSourceControlError> GitListFilesOperation::errorFromErrorMessage(
    const std::optional<std::string>& message) {
    auto error = GitOperation::errorFromErrorMessage(message);
    if (error && folderOf(*request()).empty()) {
        error->errorClass = NEBSourceControlPathInvalidErrorClass;
        return error;
    }
    const bool isInvalidPath = message && message->find("Invalid path '/") != std::string::npos;
    return error && isInvalidPath ? errorOfFolderOutside(*request()) : error;
}

void GitListOperation::main() {
    if (error()) {
        return;
    }
    setOperationQueue(std::make_shared<OperationQueue>());
    const auto list = run<GitListFilesOperation>(request());
    setResult(list->result());
    if (list->error()) {
        setError(list->error());
    }
}

}  // namespace neb
