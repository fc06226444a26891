#include "CommandFrame/BlameQuery.h"

#include <charconv>
#include <chrono>
#include <cstdint>
#include <utility>
#include <vector>

#include "Platform/Scanner.h"

namespace neb::nebsc {

namespace {

NEBDate dateOf(std::string_view seconds) {
    std::int64_t count = 0;
    std::from_chars(seconds.data(), seconds.data() + seconds.size(), count);
    return NEBDate(std::chrono::seconds(count));
}

}  // namespace

BlameQuery::BlameQuery(std::shared_ptr<NEBSourceControlRequest> request)
    : EntryQuery(std::move(request), '\n') {
    const NEBSourceControlRequest& blame = *this->request();
    setCurrentDirectoryPath(blame.sourceTree->location);
    std::vector<std::string> arguments{"blame", "--porcelain"};
    if (const auto revision = blame.startingRevision.string()) {
        arguments.emplace_back(*revision);
    }
    arguments.insert(arguments.end(), {"--", blame.files->front().description()});
    setArguments(std::move(arguments));
}

/// git-blame(1), THE PORCELAIN FORMAT: "ID LINE-BEFORE LINE [COUNT]"; for the first line of a
/// commit, its "author NAME", "author-time SECONDS" and more, whose names are no ids; then a TAB
/// and the text of the line.
std::optional<BlamedLine> BlameQuery::entryIn(std::string_view text) {
    if (text.starts_with('\t')) {
        text.remove_prefix(1);
        return _commit == nullptr
                   ? std::nullopt
                   : std::optional(BlamedLine{
                         .commit = _commit, .number = _number, .content = std::string(text)});
    }
    Scanner scanner(text);
    const std::string_view key = scanner.takeUpTo(' ');
    scanner.skipOne(' ');
    if (isObjectId(key)) {
        const std::string id(key);
        _commit = &_commits.try_emplace(id, BlamedCommit{.id = id}).first->second;
        scanner.takeUpTo(' ');
        scanner.skipOne(' ');
        _number = scanner.takeUpTo(' ');
    } else if (_commit != nullptr && key == "author") {
        _commit->author = scanner.rest();
    } else if (_commit != nullptr && key == "author-time") {
        _commit->date = dateOf(scanner.rest());
    }
    return std::nullopt;
}

}  // namespace neb::nebsc
