#include "GitOperations/GitBlame.h"

#include "GitOperations/GitLineParser.h"
#include "GitOperations/GitRevision.h"
#include "Platform/DateFormatter.h"
#include "Platform/Scanner.h"

namespace neb {

namespace {

/// Reads "revision TAB ( author TAB date TAB number ) text". A missing part leaves out its key;
/// parsing continues at the same position. The white space before an author pads the names to one
/// width; if an author has nothing else, it takes the next TAB too, so that the date becomes the
/// author.
NEBDictionary recordOf(const Data& text, std::string_view line) {
    Scanner scanner(line);
    const std::string_view revision = scanner.takeUpTo('\t');
    scanner.skipOne('\t');
    scanner.skipOne('(');
    scanner.skipSpace();
    const std::string_view author = scanner.takeUpTo('\t');
    scanner.skipOne('\t');
    const std::string_view date = scanner.takeUpTo('\t');
    scanner.skipOne('\t');
    const std::string_view number = scanner.takeUpTo(')');

    NEBDictionary record;
    record.reserve(4);
    const auto setIfRead = [&](NEBConstant key, std::string_view field) {
        if (!field.empty()) {
            record.set(key, NEBValue(text, field));
        }
    };
    setIfRead(NEBSourceControlOperationRevisionKey, gitAbbreviatedRevision(revision));
    setIfRead(NEBSourceControlOperationAuthorKey, author);
    if (const auto instant = DateFormatter().dateFromString(date)) {
        record.set(NEBSourceControlOperationDateKey, *instant);
    }
    setIfRead(NEBSourceControlOperationLineNumberKey, number);
    return record;
}

}  // namespace

GitBlameOperation::GitBlameOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    std::vector<std::string> arguments{"blame", "-c", "-l"};
    if (asked.startingRevision.isPresent() && !gitIsSymbolicRevision(asked.startingRevision)) {
        arguments.push_back(asked.startingRevision.description());
    }
    if (asked.fileCount() == 1) {
        arguments.emplace_back("--");
        appendFiles(arguments);
    }
    setArgumentsBehindDefaults(arguments);
}

std::unique_ptr<NEBSourceControlRecordParser> GitBlameOperation::makeRecordParser() {
    return std::make_unique<GitLineParser>(recordOf);
}

void GitBlameOperation::parseData() {
    if (hasOutput()) {
        GitOperation::parseData();
    }
}

}  // namespace neb
