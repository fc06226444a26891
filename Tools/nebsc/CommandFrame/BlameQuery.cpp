#include "CommandFrame/BlameQuery.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <utility>
#include <vector>

#include "Platform/Scanner.h"

namespace neb::nebsc {

namespace {

/// Returns a number of at least 1 and at most nine digits.
std::optional<std::int64_t> lineNumberIn(std::string_view text) {
    std::int64_t number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = failure == std::errc() && end == text.data() + text.size() &&
                          number >= 1 && number < 1'000'000'000;
    return isNumber ? std::optional(number) : std::nullopt;
}

NEBDate dateOf(std::string_view seconds) {
    std::int64_t count = 0;
    std::from_chars(seconds.data(), seconds.data() + seconds.size(), count);
    return NEBDate(std::chrono::seconds(count));
}

}  // namespace

std::optional<LineRange> lineRangeIn(std::string_view text) {
    const std::size_t comma = std::min(text.find(','), text.size());
    const std::string_view first = text.substr(0, comma);
    std::string_view last = text.substr(std::min(comma + 1, text.size()));
    const bool isCount = last.starts_with('+');
    last.remove_prefix(isCount ? 1 : 0);
    LineRange range;
    if (!first.empty()) {
        const auto number = lineNumberIn(first);
        if (!number) {
            return std::nullopt;
        }
        range.first = *number;
    }
    if (!last.empty() || isCount) {
        range.last = lineNumberIn(last);
        if (!range.last) {
            return std::nullopt;
        }
        *range.last += isCount ? range.first - 1 : 0;
    }
    const bool isAnything = !first.empty() || range.last;
    return isAnything && range.last.value_or(range.first) >= range.first ? std::optional(range)
                                                                         : std::nullopt;
}

BlameQuery::BlameQuery(std::shared_ptr<NEBSourceControlRequest> request,
                       const std::optional<LineRange>& range)
    : EntryQuery(std::move(request), '\n') {
    const NEBSourceControlRequest& blame = *this->request();
    setCurrentDirectoryPath(blame.sourceTree->location);
    std::vector<std::string> arguments{"blame", "--porcelain"};
    if (range) {
        arguments.push_back("-L" + std::to_string(range->first) + "," +
                            (range->last ? std::to_string(*range->last) : ""));
    }
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
