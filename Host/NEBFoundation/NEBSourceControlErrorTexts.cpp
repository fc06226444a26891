#include "NEBFoundation/NEBSourceControlErrorTexts.h"

#include <algorithm>
#include <functional>

#include "Platform/Text.h"

namespace neb {

namespace {

constexpr std::string_view placeholder = "%@";

/// The literal parts of a sentence, one more than it has placeholders.
std::vector<std::string_view> literalsOf(std::string_view sentence) {
    std::vector<std::string_view> literals;
    for (std::size_t at = sentence.find(placeholder); at != std::string_view::npos;
         at = sentence.find(placeholder)) {
        literals.push_back(sentence.substr(0, at));
        sentence.remove_prefix(at + placeholder.size());
    }
    literals.push_back(sentence);
    return literals;
}

using Values = std::vector<std::string>;

/// Returns the values of the placeholders if the text is the sentence with values.
std::optional<Values> valuesIn(std::string_view text, std::string_view sentence) {
    const auto literals = literalsOf(sentence);
    if (!text.starts_with(literals.front())) {
        return std::nullopt;
    }
    text.remove_prefix(literals.front().size());
    if (literals.size() == 1) {
        return text.empty() ? std::optional(Values()) : std::nullopt;
    }
    Values values;
    for (std::size_t i = 1; i + 1 < literals.size(); ++i) {
        const std::size_t at = text.find(literals[i]);
        if (at == std::string_view::npos) {
            return std::nullopt;
        }
        values.emplace_back(text.substr(0, at));
        text.remove_prefix(at + literals[i].size());
    }
    if (!text.ends_with(literals.back())) {
        return std::nullopt;
    }
    values.emplace_back(text.substr(0, text.size() - literals.back().size()));
    return values;
}

/// A placeholder in a translation: "%@", or "%1$@" with a digit.
struct Reference {
    std::size_t length = 0;  // 0: no placeholder
    std::optional<std::size_t> index;
};

Reference referenceAt(std::string_view text) {
    if (text.starts_with(placeholder)) {
        return {placeholder.size(), std::nullopt};
    }
    const bool hasIndex = text.size() >= 4 && text[0] == '%' && text[1] >= '1' && text[1] <= '9' &&
                          text.substr(2, 2) == "$@";
    return hasIndex ? Reference{4, static_cast<std::size_t>(text[1] - '1')} : Reference{};
}

/// Returns the translation with the values, or nothing if it refers to a value that is not there.
std::optional<std::string> filled(std::string_view translation, const Values& values) {
    std::string text;
    std::size_t next = 0;
    while (!translation.empty()) {
        const Reference reference = referenceAt(translation);
        if (reference.length == 0) {
            text += translation.front();
            translation.remove_prefix(1);
            continue;
        }
        const std::size_t index = reference.index ? *reference.index : next++;
        if (index >= values.size()) {
            return std::nullopt;
        }
        text += values[index];
        translation.remove_prefix(reference.length);
    }
    return text;
}

const NEBSourceControlErrorSentence* sentenceWithKey(std::string_view key) {
    const auto sentences = NEBSourceControlErrorSentences();
    const auto found = std::ranges::find(sentences, key, &NEBSourceControlErrorSentence::key);
    return found == sentences.end() ? nullptr : &*found;
}

/// A sentence that a text can be.
struct Match {
    const NEBSourceControlErrorSentence* sentence = nullptr;
    Values values;
};

/// Returns the sentence of the kind that the text is. Of several, the one with the fewest bytes in
/// its values is the most specific.
Match matchOf(std::string_view text, std::string_view kind) {
    Match best;
    std::size_t fewest = 0;
    for (const NEBSourceControlErrorSentence& sentence : NEBSourceControlErrorSentences()) {
        auto values = std::string_view(sentence.key).ends_with(kind)
                          ? valuesIn(text, sentence.english)
                          : std::nullopt;
        if (!values) {
            continue;
        }
        std::size_t bytes = 0;
        for (const std::string& value : *values) {
            bytes += value.size();
        }
        if (best.sentence == nullptr || bytes < fewest) {
            best = {&sentence, *std::move(values)};
            fewest = bytes;
        }
    }
    return best;
}

std::string lineText(std::size_t number) {
    return "Line " + std::to_string(number) + ": ";
}

}  // namespace

NEBSourceControlErrorTexts NEBSourceControlErrorTexts::fromText(std::string_view table) {
    NEBSourceControlErrorTexts texts;
    std::size_t number = 0;
    forEachField(table, '\n', [&](std::string_view line) {
        ++number;
        line = trimmed(line);
        if (!line.empty() && !line.starts_with('#')) {
            texts.addLine(line, number);
        }
    });
    return texts;
}

void NEBSourceControlErrorTexts::addLine(std::string_view line, std::size_t number) {
    const std::size_t equals = line.find(" = ");
    if (equals == std::string_view::npos) {
        _problems.push_back(lineText(number) + "it is not of the form \"KEY = TEXT\".");
        return;
    }
    const std::string key(trimmed(line.substr(0, equals)));
    const std::string text(trimmed(line.substr(equals + 3)));
    const NEBSourceControlErrorSentence* sentence = sentenceWithKey(key);
    if (sentence == nullptr) {
        _problems.push_back(lineText(number) + "no sentence has the key \"" + key + "\".");
    } else if (!filled(text, Values(literalsOf(sentence->english).size() - 1))) {
        _problems.push_back(lineText(number) + "the sentence \"" + key +
                            "\" does not have that many values.");
    } else {
        _texts.insert_or_assign(key, text);
    }
}

std::optional<std::string> NEBSourceControlErrorTexts::translation(std::string_view text,
                                                                   const std::string& errorClass,
                                                                   std::string_view kind) const {
    const Match match = matchOf(text, kind);
    const auto own = match.sentence != nullptr ? _texts.find(match.sentence->key) : _texts.end();
    if (own != _texts.end()) {
        return filled(own->second, match.values);
    }
    const auto general = _texts.find(errorClass + std::string(kind));
    return general != _texts.end() ? filled(general->second, {}) : std::nullopt;
}

std::optional<std::string> NEBSourceControlErrorTexts::description(
    const NEBSourceControlError& error) const {
    const auto text = error.localizedDescription();
    // The sentence of the class "unknown" says less than the output of git.
    const bool isUnknown = error.errorClass == "unknown";
    return text ? translation(*text, isUnknown ? "" : error.errorClass.value_or(""), ".description")
                : std::nullopt;
}

std::optional<std::string> NEBSourceControlErrorTexts::suggestion(
    const NEBSourceControlError& error) const {
    const auto text = error.localizedRecoverySuggestion();
    return text ? translation(*text, "", ".advice") : std::nullopt;
}

std::vector<std::string> NEBSourceControlErrorTexts::missingKeys() const {
    std::vector<std::string> missing;
    for (const NEBSourceControlErrorSentence& sentence : NEBSourceControlErrorSentences()) {
        if (!_texts.contains(sentence.key)) {
            missing.push_back(sentence.key);
        }
    }
    return missing;
}

}  // namespace neb
