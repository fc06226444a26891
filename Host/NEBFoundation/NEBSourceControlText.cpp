#include "NEBFoundation/NEBSourceControlText.h"

#include "Platform/Text.h"

namespace neb {

namespace {

bool isRowOfListing(std::string_view line) {
    constexpr std::string_view firstCharacters = " *+";
    return line.find('\t') != std::string_view::npos ||
           (!line.empty() && firstCharacters.find(line.front()) != std::string_view::npos);
}

}  // namespace

std::optional<std::string> _nebsc_stringFromData(const std::optional<Data>& data) {
    if (!data) {
        return std::nullopt;
    }
    std::string text = textReplacingInvalidBytes(*data);
    const bool isOneLine = !text.empty() && text.find('\n') == text.size() - 1;
    if (isOneLine && !isRowOfListing(text)) {
        text.pop_back();
        if (!text.empty() && text.back() == '\r') {
            text.pop_back();
        }
    }
    return text;
}

}  // namespace neb
