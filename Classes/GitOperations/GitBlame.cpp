#include "GitOperations/GitBlame.h"

#include "GitOperations/GitRevision.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/Scanner.h"
#include "Platform/Text.h"

namespace neb {

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

/// Reads "revision TAB ( author TAB date TAB number ) text". A missing part leaves out its key;
/// parsing continues at the same position. The white space before an author pads the names to one
/// width; if an author has nothing else, it takes the next TAB too, so that the date becomes the
/// author.
NEBDictionary GitBlameOperation::recordOf(const Data& text, std::string_view line) const {
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
    if (const auto instant = _formatter.dateFromString(date)) {
        record.set(NEBSourceControlOperationDateKey, *instant);
    }
    setIfRead(NEBSourceControlOperationLineNumberKey, number);
    return record;
}

void GitBlameOperation::parseData() {
    if (!data() || data()->empty()) {
        return;
    }
    const Data text = NEBSourceControlTextData(*data());
    const std::string_view lines = text;
    NEBSourceControlResult records;
    records.reserve(pieceCount(lines, '\n'));
    // The empty text after the last line end makes an empty record, which hosts rely on.
    forEachPiece(lines, '\n',
                 [&](std::string_view line) { records.push_back(recordOf(text, line)); });
    setResult(std::move(records));
}

}  // namespace neb
