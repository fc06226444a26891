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
    static_cast<void>(scanner.takeUpToSpace());  // the object id
    scanner.skipOne('\t');

    NEBDictionary record;
    record.reserve(2);
    record.set(NEBSourceControlOperationIsLeafKey, type == "blob");
    record.set(NEBSourceControlOperationNameKey,
               NEBValue(listing, lastPathComponentIn(scanner.rest())));
    return record;
}

/// Parses the texts that git_componentsSeparatedByNULLTerminator() returns.
class ListParser : public NEBSourceControlRecordParser {
public:
    ListParser() : NEBSourceControlRecordParser('\0') {}

protected:
    void parsePiece(const Data& listing, std::string_view entry,
                    NEBSourceControlResult& records) override {
        parseLastPiece(listing, {entry.data(), entry.size() + 1}, records);  // with its NUL
    }
    void parseLastPiece(const Data& listing, std::string_view entry,
                        NEBSourceControlResult& records) override {
        git_forEachComponentSeparatedByNULLTerminator(
            entry, [&](std::string_view text) { records.push_back(recordOf(listing, text)); });
    }
};

std::string folderOf(const NEBSourceControlRequest& request) {
    return request.fileCount() > 0 ? request.files->front().description() : std::string();
}

NEBSourceControlError errorOfFolderOutside(const NEBSourceControlRequest& request) {
    auto error = NEBSourceControlError::withDescription(
        NEBSourceControlGenericError,
        formattedText("The folder \"%@\" cannot be listed: it is not a path inside \"%@\".",
                      {folderOf(request), request.sourceTreeName()}));
    error.errorClass = NEBSourceControlPathOutsideErrorClass;
    return error;
}

/// Returns the pattern for all entries of the folder. Without a name, it is text that is a syntax
/// error for the shell: hosts rely on the root not being listed.
std::string patternFor(const NEBSourceControlRequest& request) {
    const std::string folder = folderOf(request);
    return folder.empty() ? std::string(absentValueText) : gitShellPattern(folder) + "/*";
}

/// Returns the suffix of HEAD: its tree or, with the option for a branch, the name of the branch,
/// which is not a type of object, so that git finds nothing.
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

std::unique_ptr<NEBSourceControlRecordParser> GitListFilesOperation::makeRecordParser() {
    return std::make_unique<ListParser>();
}

/// The shell finds no file for a URL, so that git lists nothing and prints no error.
void GitListFilesOperation::parseData() {
    GitOperation::parseData();
    if (result()->empty() && deliveredRecordCount() == 0 && pathOfFileURL(folderOf(*request()))) {
        setError(errorOfFolderOutside(*request()));
    }
}

/// For a missing folder outside the working copy, git reports an invalid path. Without a folder,
/// the shell reports a syntax error.
std::optional<NEBSourceControlError> GitListFilesOperation::errorFromErrorMessage(
    const std::optional<std::string>& message) {
    auto error = GitOperation::errorFromErrorMessage(message);
    constexpr int firstStatusOfSignals = 129;  // see EXIT STATUS in sh(1p)
    if (error && terminationStatus() &&
        terminationStatus()->exitStatus().value_or(0) >= firstStatusOfSignals) {
        error->errorClass = NEBSourceControlKilledErrorClass;
        return error;
    }
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
    const auto list = runList<GitListFilesOperation>(request());
    setResult(list->result());
    if (list->error()) {
        setError(list->error());
    }
}

}  // namespace neb
