#include "GitExtensions/GitTree.h"

#include <algorithm>
#include <iterator>

#include "GitExtensions/GitRecordFields.h"
#include "GitOperations/GitRevision.h"
#include "Platform/PathString.h"
#include "Platform/Scanner.h"

namespace neb {

namespace {

struct ModeKind {
    std::string_view mode, kind;
};

/// Any other mode is that of a file.
constexpr ModeKind modeKinds[] = {
    {"100755", "executable"},
    {"120000", "symbolic link"},
    {"040000", "folder"},
    {"160000", "submodule"},
};

/// Reads "MODE TYPE ID SIZE TAB PATH", where the size is padded, "-" for a folder or submodule, and
/// can be missing.
class TreeParser : public GitNULRecordParser {
public:
    /// `folder` is prepended to each path, unless it is empty.
    explicit TreeParser(std::string_view folder)
        : _front(folder.empty() ? "" : pathByAppendingComponent(folder, "")) {}

protected:
    void parsePiece(const Data& output, std::string_view entry,
                    NEBSourceControlResult& records) override {
        Scanner scanner(entry);
        const auto takeField = [&scanner] {
            const std::string_view field = scanner.takeUpTo(' ');
            scanner.skipOne(' ');
            return field;
        };
        const std::string_view mode = takeField();
        static_cast<void>(takeField());  // the type, which the mode implies
        const std::string_view properties = scanner.takeUpTo('\t');
        scanner.skipOne('\t');
        const std::string_view path = scanner.rest();
        NEBDictionary& record = records.emplace_back();
        record.reserve(6);
        const auto* row = std::ranges::find(modeKinds, mode, &ModeKind::mode);
        record.set(NEBSourceControlOperationKindKey,
                   row != std::end(modeKinds) ? row->kind : "file");
        gitSetName(record, gitNameKeys, output, path.substr(path.rfind('/') + 1));
        if (_front.empty()) {
            gitSetName(record, gitPathKeys, output, path);
        } else {
            gitSetName(record, gitPathKeys, _front + std::string(path));
        }
        gitSetText(record, NEBSourceControlOperationModeKey, output, mode);
        gitSetText(record, NEBSourceControlOperationObjectIDKey, output,
                   properties.substr(0, properties.find(' ')));
        gitSetInteger(record, NEBSourceControlOperationSizeKey,
                      properties.substr(properties.rfind(' ') + 1));
    }

private:
    std::string _front;
};

}  // namespace

GitTreeOperation::GitTreeOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitNamedObjectOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    std::vector<std::string> arguments{"ls-tree", "-z", "--full-tree"};
    if (!asked.option(NEBSourceControlRequestOptionOmitSizes).boolValue()) {
        arguments.emplace_back("--long");
    }
    if (asked.option(NEBSourceControlRequestOptionRecursive).boolValue()) {
        arguments.insert(arguments.end(), {"-r", "-t"});
    }
    const NEBValue revision = gitRevisionOfCommit(asked.startingRevision);
    const ObjectName object{revision.isPresent() ? revision.description() : "HEAD",
                            gitPathFromTop(asked)};
    setObject(object, "tree");
    arguments.push_back(object.text());
    setArgumentsBehindDefaults(arguments);
}

std::unique_ptr<NEBSourceControlRecordParser> GitTreeOperation::makeRecordParser() {
    return std::make_unique<TreeParser>(gitPathFromTop(*request()));
}

}  // namespace neb
