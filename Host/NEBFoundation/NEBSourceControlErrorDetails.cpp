#include "NEBFoundation/NEBSourceControlErrorDetails.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <span>

#include "NEBFoundation/ErrorCatalogue/ErrorFileRows.h"
#include "Platform/Text.h"

namespace neb {

namespace {

constexpr std::string_view hintPrefix = "hint:";
constexpr std::string_view remotePrefix = "remote:";

/// Calls `visit` with each line, without its line end.
template <typename Visit>
void forEachTextLine(std::string_view text, Visit visit) {
    forEachField(text, '\n', [&visit](std::string_view line) {
        visit(line.substr(0, line.find_last_not_of('\r') + 1));
    });
}

/// Returns the line without the prefix and one blank after it.
std::string_view withoutPrefix(std::string_view line, std::string_view prefix) {
    line.remove_prefix(prefix.size());
    line.remove_prefix(line.starts_with(' ') ? 1 : 0);
    return line;
}

/// Returns the offset of the text in the line, regardless of letter case, or npos.
std::size_t offsetOf(std::string_view text, std::string_view line) {
    const auto found =
        std::search(line.begin(), line.end(), text.begin(), text.end(),
                    [](char a, char b) { return lowercaseASCII(a) == lowercaseASCII(b); });
    return found == line.end() && !text.empty() ? std::string_view::npos
                                                : static_cast<std::size_t>(found - line.begin());
}

/// Returns the files that the line names as the row describes.
std::vector<std::string_view> filesNamedIn(std::string_view line, const ErrorFileMention& mention) {
    std::vector<std::string_view> files;
    if (offsetOf(mention.beginning, line.substr(0, mention.beginning.size())) != 0) {
        return files;
    }
    line.remove_prefix(mention.beginning.size());
    for (std::size_t before = offsetOf(mention.before, line); before != std::string_view::npos;
         before = offsetOf(mention.before, line)) {
        line.remove_prefix(before + mention.before.size());
        const std::size_t end = mention.after.empty() ? line.size() : offsetOf(mention.after, line);
        if (end == std::string_view::npos) {
            break;
        }
        files.push_back(line.substr(0, end));
        if (mention.before.empty()) {
            break;
        }
        line.remove_prefix(end);
    }
    return files;
}

/// Whether the line is from git itself and not a hint.
bool isOwnLine(std::string_view line) {
    return !line.starts_with(hintPrefix) && !line.starts_with(remotePrefix);
}

/// Collects each name once. The names are substrings of a text that outlives the object.
class Names {
public:
    void add(std::string_view name) {
        if (!name.empty() && _known.insert(name).second) {
            _names.emplace_back(name);
        }
    }
    [[nodiscard]] std::vector<std::string> take() { return std::move(_names); }

private:
    std::vector<std::string> _names;
    std::set<std::string_view> _known;  // ordered, so hostile names cannot slow it down
};

/// Returns the rows of the class.
template <typename Row>
std::vector<Row> rowsOfClass(std::span<const Row> rows, std::string_view errorClass) {
    std::vector<Row> found;
    std::ranges::copy_if(rows, std::back_inserter(found),
                         [errorClass](const Row& row) { return row.errorClass == errorClass; });
    return found;
}

void addMentions(Names& names, std::string_view line,
                 const std::vector<ErrorFileMention>& mentions) {
    const ErrorFileMention* matched = nullptr;
    for (const ErrorFileMention& mention : mentions) {
        if (matched != nullptr && mention.beginning != matched->beginning) {
            continue;
        }
        for (const std::string_view file : filesNamedIn(line, mention)) {
            names.add(file);
            matched = &mention;
        }
    }
}

/// Returns the list that follows the line, or null.
const ErrorFileList* listAfter(std::string_view line, const std::vector<ErrorFileList>& lists) {
    const auto list = std::ranges::find_if(lists, [line](const ErrorFileList& candidate) {
        return offsetOf(candidate.heading, line) != std::string_view::npos;
    });
    return list != lists.end() ? &*list : nullptr;
}

}  // namespace

std::vector<std::string> NEBSourceControlHintsInText(std::string_view text) {
    std::vector<std::string> hints;
    forEachTextLine(text, [&hints](std::string_view line) {
        if (line.starts_with(hintPrefix)) {
            hints.emplace_back(withoutPrefix(line, hintPrefix));
        }
    });
    return hints;
}

std::string NEBSourceControlAdviceOfHints(const std::vector<std::string>& hints) {
    std::string advice;
    for (const std::string& hint : hints) {
        advice += advice.empty() ? hint : "\n" + hint;
    }
    return advice.substr(0, advice.find_last_not_of(" \n") + 1);
}

std::string NEBSourceControlTextWithoutHints(std::string_view text) {
    std::string others;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
        const std::string_view line = text.substr(0, length);
        others += line.starts_with(hintPrefix) ? std::string_view{} : line;
        text.remove_prefix(length);
    }
    return others;
}

std::vector<std::string> NEBSourceControlRemoteLinesInText(std::string_view text) {
    std::vector<std::string> remoteLines;
    forEachTextLine(text, [&remoteLines](std::string_view line) {
        if (line.starts_with(remotePrefix)) {
            line = line.substr(line.rfind('\r') + 1);
            line = line.starts_with(remotePrefix) ? withoutPrefix(line, remotePrefix) : line;
            remoteLines.emplace_back(line.substr(0, line.find_last_not_of(" \t") + 1));
        }
    });
    return remoteLines;
}

std::vector<std::string> NEBSourceControlFilesInText(std::string_view text,
                                                     std::string_view errorClass) {
    const auto mentions = rowsOfClass(errorFileMentions(), errorClass);
    const auto lists = rowsOfClass(errorFileLists(), errorClass);
    if (mentions.empty() && lists.empty()) {
        return {};
    }
    Names names;
    const ErrorFileList* list = nullptr;
    forEachTextLine(text, [&](std::string_view line) {
        if (list != nullptr && isOwnLine(line) && line.starts_with(list->indentation)) {
            names.add(line.substr(list->indentation.size()));
        } else {
            list = isOwnLine(line) ? listAfter(line, lists) : nullptr;
        }
        if (list == nullptr && isOwnLine(line)) {
            addMentions(names, line, mentions);
        }
    });
    return names.take();
}

}  // namespace neb
