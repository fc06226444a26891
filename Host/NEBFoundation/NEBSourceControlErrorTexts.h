// NEBSourceControlErrorTexts.h - the sentences of errors, and their translation.
//
//     const auto german = NEBSourceControlErrorTexts::fromText(contentOf("de.txt"));
//     show(german.description(error).value_or("Unbekannter Fehler"));
//
// An error has English texts. A host in another language reads a table of its own, one line for
// each sentence, and passes errors to it:
//
//     # comment
//     remote-ahead.description = Auf dem Server von „%@“ sind neuere Änderungen.
//
// The table knows which sentence an error has by comparing its text with all sentences, so errors
// need no further members, and errors that were read from JSON can be translated too.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlError.h"
#include "Platform/Export.h"

namespace neb {

/// A sentence in English.
struct NEBSourceControlErrorSentence {
    /// Stable: a key is never removed, and never gets another meaning. "CLASS.description" and
    /// "CLASS.advice" are the sentences of an error class; others have more parts, such as
    /// "nothing-to-commit.untracked.advice". The last part is "description" or "advice".
    std::string key;
    /// The sentence. Each "%@" stands for a name, a path or a number.
    std::string english;
};

/// All sentences, those of the classes first. Each key is there once. They live as long as the
/// library is loaded. Thread-safe.
[[nodiscard]] NEB_EXPORT std::span<const NEBSourceControlErrorSentence>
NEBSourceControlErrorSentences();

/// The sentences in another language. Immutable, so thread-safe; copies are independent.
class NEB_EXPORT NEBSourceControlErrorTexts {
public:
    /// Reads a table in UTF-8 from the content of a file. A line is "KEY = TEXT"; lines that are
    /// blank or begin with "#" are ignored. In a text, "%@" is the next value of the English
    /// sentence, and "%1$@" or "%2$@" the first or second one, for another order.
    [[nodiscard]] static NEBSourceControlErrorTexts fromText(std::string_view table);

    /// Returns the description of the error in the language of the table. If the error's own
    /// sentence has no key or no text, returns the sentence of its class. Absent without that,
    /// too: show localizedDescription() then, which can be the output of git.
    [[nodiscard]] std::optional<std::string> description(const NEBSourceControlError& error) const;
    /// The same for the recovery suggestion. Absent for an error without a suggestion, and for one
    /// whose suggestion is a hint of git.
    [[nodiscard]] std::optional<std::string> suggestion(const NEBSourceControlError& error) const;

    /// What is wrong with the table, in English, one sentence for each line that is not "KEY =
    /// TEXT", has an unknown key, or uses a value that its sentence does not have. Such lines are
    /// ignored.
    [[nodiscard]] const std::vector<std::string>& problems() const { return _problems; }
    /// The keys that the table has no text for, in the order of NEBSourceControlErrorSentences().
    [[nodiscard]] std::vector<std::string> missingKeys() const;

private:
    [[nodiscard]] std::optional<std::string> translation(std::string_view text,
                                                         const std::string& errorClass,
                                                         std::string_view kind) const;
    void addLine(std::string_view line, std::size_t number);

    std::map<std::string, std::string, std::less<>> _texts;
    std::vector<std::string> _problems;
};

}  // namespace neb
