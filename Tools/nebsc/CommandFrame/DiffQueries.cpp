#include "CommandFrame/DiffQueries.h"

#include <charconv>
#include <vector>

#include "Platform/Scanner.h"

namespace neb::nebsc {

namespace {

/// Returns the arguments of git for a diff request.
std::vector<std::string> argumentsOf(const NEBSourceControlRequest& diff, const DiffSides& sides,
                                     const std::vector<std::string>& options) {
    std::vector<std::string> arguments{"diff", "--no-ext-diff"};
    if (sides.isStaged) {
        arguments.emplace_back("--cached");
    }
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.emplace_back("--end-of-options");
    const auto start = diff.startingRevision.string();
    const auto end = diff.endingRevision.string();
    if (start || end || !sides.isStaged) {
        std::string revisions(start.value_or("HEAD"));
        if (end) {
            revisions.append(sides.dots).append(*end);
        }
        arguments.push_back(std::move(revisions));
    }
    arguments.emplace_back("--");
    for (std::size_t i = 0; i < diff.fileCount(); ++i) {
        arguments.push_back((*diff.files)[i].description());
    }
    return arguments;
}

}  // namespace

// ---- names and states -------------------------------------------------------------------------

NameStatusQuery::NameStatusQuery(std::shared_ptr<NEBSourceControlRequest> request,
                                 const DiffSides& sides)
    : EntryQuery(std::move(request)) {
    setCurrentDirectoryPath(this->request()->sourceTree->location);
    setArguments(argumentsOf(*this->request(), sides, {"--name-status", "-z"}));
    setWritesWholeBuffers(true);
}

/// An entry is "LETTER[SCORE]" NUL "PATH" NUL; a renamed or copied file has its old path and a NUL
/// before the path.
std::optional<NameStatusEntry> NameStatusQuery::entryIn(std::string_view text) {
    if (!_begun) {
        _begun = NameStatusEntry{.letter = text.empty() ? ' ' : text.front()};
        return std::nullopt;
    }
    const bool isRenamed = _begun->letter == 'R' || _begun->letter == 'C';
    if (isRenamed && !_begun->oldPath) {
        _begun->oldPath = text;
        return std::nullopt;
    }
    _begun->path = text;
    return std::exchange(_begun, std::nullopt);
}

// ---- counts of lines --------------------------------------------------------------------------

LineCountQuery::LineCountQuery(std::shared_ptr<NEBSourceControlRequest> request,
                               const DiffSides& sides)
    : EntryQuery(std::move(request)) {
    setCurrentDirectoryPath(this->request()->sourceTree->location);
    setArguments(argumentsOf(*this->request(), sides, {"--numstat", "-z"}));
    setWritesWholeBuffers(true);
}

/// An entry is "ADDED" TAB "DELETED" TAB "PATH" NUL, with "-" for the counts of a binary file; that
/// of a renamed file has an empty path, and then the old and the new path, each with a NUL.
std::optional<LineCountEntry> LineCountQuery::entryIn(std::string_view text) {
    if (_begun && !_begun->oldPath) {
        _begun->oldPath = text;
        return std::nullopt;
    }
    if (_begun) {
        _begun->path = text;
        return std::exchange(_begun, std::nullopt);
    }
    Scanner scanner(text);
    const auto takeCount = [&scanner] {
        const std::string_view digits = scanner.takeUpTo('\t');
        scanner.skipOne('\t');
        std::uint64_t count = 0;
        const auto [end, failure] =
            std::from_chars(digits.data(), digits.data() + digits.size(), count);
        return failure == std::errc() ? std::optional(count) : std::nullopt;
    };
    LineCountEntry entry{.added = takeCount(), .deleted = takeCount()};
    entry.path = scanner.rest();
    if (entry.path.empty()) {
        _begun = std::move(entry);
        return std::nullopt;
    }
    return entry;
}

// ---- the patch --------------------------------------------------------------------------------

class PatchQuery::Parser : public NEBSourceControlRecordParser {
public:
    explicit Parser(PatchQuery& query) : NEBSourceControlRecordParser('\n'), _query(query) {}

protected:
    void parsePiece(const Data& /*output*/, std::string_view line,
                    NEBSourceControlResult& records) override {
        add(line, records);
        _query._lines += '\n';
    }
    void parseLastPiece(const Data& /*output*/, std::string_view line,
                        NEBSourceControlResult& records) override {
        if (!line.empty()) {
            add(line, records);
        }
    }

private:
    /// One record stands for all lines of a batch.
    void add(std::string_view line, NEBSourceControlResult& records) {
        if (records.empty()) {
            records.emplace_back();
        }
        _query._lines += line;
    }

    PatchQuery& _query;
};

PatchQuery::PatchQuery(std::shared_ptr<NEBSourceControlRequest> request, const DiffSides& sides)
    : NEBSourceControlTaskOperation(std::move(request)) {
    setCurrentDirectoryPath(this->request()->sourceTree->location);
    setArguments(argumentsOf(*this->request(), sides, {}));
}

std::unique_ptr<NEBSourceControlRecordParser> PatchQuery::makeRecordParser() {
    return std::make_unique<Parser>(*this);
}

CommitPatchQuery::CommitPatchQuery(std::shared_ptr<NEBSourceControlRequest> request)
    : PatchQuery(std::move(request), DiffSides{}) {
    const NEBSourceControlRequest& commit = *this->request();
    std::vector<std::string> arguments{"diff-tree",      "--patch",         "--cc",
                                       "--root",         "--no-commit-id",  "--no-ext-diff",
                                       "--find-renames", "--end-of-options"};
    arguments.emplace_back(commit.startingRevision.string().value_or("HEAD"));
    arguments.emplace_back("--");
    for (std::size_t i = 0; i < commit.fileCount(); ++i) {
        arguments.push_back((*commit.files)[i].description());
    }
    setArguments(std::move(arguments));
}

}  // namespace neb::nebsc
