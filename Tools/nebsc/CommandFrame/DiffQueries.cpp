#include "CommandFrame/DiffQueries.h"

#include <vector>

namespace neb::nebsc {

namespace {

/// Returns the arguments of git for a diff request.
std::vector<std::string> argumentsOf(const NEBSourceControlRequest& diff, std::string_view dots,
                                     const std::vector<std::string>& options) {
    std::vector<std::string> arguments{"diff", "--no-ext-diff"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    std::string revisions(diff.startingRevision.string().value_or("HEAD"));
    if (const auto end = diff.endingRevision.string()) {
        revisions.append(dots).append(*end);
    }
    arguments.insert(arguments.end(), {"--end-of-options", std::move(revisions), "--"});
    for (std::size_t i = 0; i < diff.fileCount(); ++i) {
        arguments.push_back((*diff.files)[i].description());
    }
    return arguments;
}

}  // namespace

// ---- names and states -------------------------------------------------------------------------

NameStatusQuery::NameStatusQuery(std::shared_ptr<NEBSourceControlRequest> request,
                                 std::string_view dots)
    : EntryQuery(std::move(request)) {
    setCurrentDirectoryPath(this->request()->sourceTree->location);
    setArguments(argumentsOf(*this->request(), dots, {"--name-status", "-z"}));
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

PatchQuery::PatchQuery(std::shared_ptr<NEBSourceControlRequest> request, std::string_view dots)
    : NEBSourceControlTaskOperation(std::move(request)) {
    setCurrentDirectoryPath(this->request()->sourceTree->location);
    setArguments(argumentsOf(*this->request(), dots, {}));
}

std::unique_ptr<NEBSourceControlRecordParser> PatchQuery::makeRecordParser() {
    return std::make_unique<Parser>(*this);
}

}  // namespace neb::nebsc
