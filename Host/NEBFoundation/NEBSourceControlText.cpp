#include "NEBFoundation/NEBSourceControlText.h"

#include "Platform/Text.h"

namespace neb {

namespace {

bool isRowOfListing(std::string_view line) {
    constexpr std::string_view firstCharacters = " *+";
    return line.find('\t') != std::string_view::npos ||
           (!line.empty() && firstCharacters.find(line.front()) != std::string_view::npos);
}

bool isAnswer(std::string_view text) {
    return !text.empty() && text.find('\n') == text.size() - 1 && !isRowOfListing(text);
}

}  // namespace

Data NEBSourceControlTextData(const Data& data) {
    Data text = isUTF8(data) ? data : Data(textReplacingInvalidBytes(data));
    std::string_view answer = text;
    if (!isAnswer(answer)) {
        return text;
    }
    answer.remove_suffix(1);
    if (answer.ends_with('\r')) {
        answer.remove_suffix(1);
    }
    return {answer};
}

std::optional<std::string> _nebsc_stringFromData(const std::optional<Data>& data) {
    return data ? std::optional<std::string>(NEBSourceControlTextData(*data)) : std::nullopt;
}

void NEBSourceControlSetText(NEBDictionary& record, NEBConstant key, NEBConstant bytesKey,
                             std::string_view bytes) {
    const bool isText = isUTF8(bytes);
    record.set(key, isText ? NEBValue(bytes) : NEBValue(textReplacingInvalidBytes(bytes)));
    if (!isText) {
        record.set(bytesKey, NEBValue::ofBytes(Data(bytes)));
    }
}

}  // namespace neb
