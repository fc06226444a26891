// NameMapping.h - replaces names and other words in texts, each always by the same one.
//
//     NameMapping mapping;
//     mapping.collect("/home/ann/secret.txt");
//     mapping.replaced("/home/ann/secret.txt")   // "/home/qhz/ovrkdw.bxm"
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace neb::nebsc {

/// Replaces the words of texts by random ones of the same length. A word is a sequence of letters
/// and digits of at least three bytes. These stay: gitVocabulary(), numbers, what looks
/// like an object id (digits and "a" to "f" in lower case) or a date, and bytes that are not UTF-8.
/// Small letters replace small ones, capital ones capital ones, and digits replace digits. Words
/// that differ only in this are replaced by words that differ only in this. Not thread-safe.
class NameMapping {
public:
    /// Takes all words in a text, so that no replacement equals one of them. Must be called for all
    /// texts before the first is replaced.
    void collect(std::string_view text);

    /// The same for words that are replaced even if they are in gitVocabulary(), except for a few
    /// that say nothing of a person, such as "root".
    void collectPersonal(std::string_view text);

    /// Returns the text with its words replaced. Throws std::runtime_error if no unused word of a
    /// length is left.
    [[nodiscard]] std::string replaced(std::string_view text);

    /// Takes words in lower case, which stay from now on. Forgets all replacements.
    void keep(const std::unordered_set<std::string>& words);

    /// Returns the words of the text, in lower case, that were collected and do not stay.
    [[nodiscard]] std::unordered_set<std::string> originalsIn(std::string_view text) const;

    /// Whether the word, in lower case, came from collectPersonal().
    [[nodiscard]] bool isPersonal(const std::string& lower) const {
        return _personal.contains(lower);
    }

private:
    /// Whether the word, in lower case, is to be replaced.
    [[nodiscard]] bool isName(std::string_view lower) const;
    /// Returns the replacement for a word in lower case.
    const std::string& replacementOf(const std::string& lower);

    std::unordered_set<std::string> _kept, _originals, _personal;
    std::unordered_map<std::string, std::string> _replacements;
    std::unordered_set<std::string> _used;
};

}  // namespace neb::nebsc
