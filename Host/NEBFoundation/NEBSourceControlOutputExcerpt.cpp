#include "NEBFoundation/NEBSourceControlOutputExcerpt.h"

#include "Platform/TextEnds.h"

namespace neb {

namespace {

constexpr std::string_view mark = "[some text is left out here]\n";

/// Returns the text without the warnings of git, which can be as many as there are files.
std::string withoutWarnings(std::string_view text) {
    constexpr std::string_view start = "\nwarning: ";
    std::string rest;
    bool isWarning = text.starts_with(start.substr(1));
    while (!text.empty()) {
        const std::size_t lineEnd = text.find(isWarning ? "\n" : start);
        const std::size_t end = lineEnd == std::string_view::npos ? text.size() : lineEnd + 1;
        rest += isWarning ? "" : text.substr(0, end);
        text.remove_prefix(end);
        isWarning = text.starts_with(start.substr(1));
    }
    return rest;
}

}  // namespace

std::string NEBSourceControlOutputExcerpt(std::string_view text) {
    if (text.size() <= NEBSourceControlLongestMessages) {
        return std::string(text);
    }
    constexpr std::size_t longestRest = NEBSourceControlLongestMessages - 64;  // beside the mark
    const std::string errors = withoutWarnings(text);
    if (!errors.empty() && errors.size() <= longestRest) {
        return std::string(mark) + errors;
    }
    // Warnings alone say what is wrong, too.
    const TextEnds ends = endsOf(errors.empty() ? text : errors, longestRest);
    std::string excerpt(ends.first);
    excerpt += excerpt.ends_with('\n') ? "" : "\n";
    return excerpt.append(mark).append(ends.last);
}

}  // namespace neb
