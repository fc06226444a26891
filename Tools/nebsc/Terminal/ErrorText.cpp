#include "Terminal/ErrorText.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <unordered_set>
#include <utility>
#include <vector>

#include "NEBFoundation/NEBSourceControlErrorDetails.h"
#include "Platform/Text.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// What a TAB that begins a line is shown as: git indents the commands that it suggests with one.
constexpr std::size_t tabWidth = 4;

/// The lines of the text, its last line end left out; none for a text of blanks.
std::vector<std::string> printableLines(std::string_view text) {
    std::vector<std::string> lines;
    forEachLine(trimmed(text), [&lines](std::string_view line) {
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        line.remove_prefix(line.rfind('\r') + 1);  // progress that was written over
        const std::size_t tabs = std::min(line.find_first_not_of('\t'), line.size());
        lines.push_back(std::string(tabs * tabWidth, ' ') + printable(line.substr(tabs)));
    });
    return lines;
}

void appendIndented(std::string& lines, const std::vector<std::string>& all) {
    for (const std::string& line : all) {
        lines += (line.empty() ? "" : "    ") + line + "\n";
    }
}

/// Returns the text without the marks that git puts before its messages.
std::string_view withoutMarks(std::string_view text) {
    for (const std::string_view mark : {"fatal: ", "error: ", "fatal: "}) {
        if (text.starts_with(mark)) {
            text = trimmed(text.substr(mark.size()));
        }
    }
    return text;
}

/// Returns whether the text begins with a capitalised word that is not a name.
bool beginsWithOrdinaryWord(std::string_view text) {
    constexpr std::array<std::string_view, 2> names{"Subversion", "Python"};
    const std::string_view word = text.substr(0, text.find_first_of(" ,"));
    const auto isSmall = [](char character) { return character >= 'a' && character <= 'z'; };
    return word.size() < text.size() && word.front() >= 'A' && word.front() <= 'Z' &&
           std::all_of(word.begin() + 1, word.end(), isSmall) &&
           std::find(names.begin(), names.end(), word) == names.end();
}

/// Takes the line out that says what happened: as a rule the first, but where git says before whom
/// it has talked to, or passes on what the far end said, the first that tells of a failure.
std::string takeSentence(std::vector<std::string>& lines) {
    const auto begins = [](const std::string& line, std::initializer_list<std::string_view> marks) {
        return std::any_of(marks.begin(), marks.end(),
                           [&line](std::string_view mark) { return line.starts_with(mark); });
    };
    auto sentence = lines.begin();
    if (begins(*sentence, {"From ", "To ", "remote: ", "warning: "})) {
        const auto telling = std::find_if(lines.begin(), lines.end(), [&](const std::string& line) {
            return begins(line, {" ! [", "fatal: ", "error: "});
        });
        sentence = telling == lines.end() ? sentence : telling;
    }
    std::string text{trimmed(*sentence)};
    lines.erase(sentence);
    if (text.ends_with(':') && lines.empty()) {
        text.pop_back();
    }
    return messageLine(text);
}

/// Returns the error's files that the texts do not report as files. A file name that is merely part
/// of a text does not count: "file" occurs in "unmerged files".
std::vector<std::string> printableFilesOmittedBy(std::initializer_list<std::string_view> texts,
                                                 const NEBSourceControlError& error) {
    std::unordered_set<std::string> reported;
    for (const std::string_view text : texts) {
        for (std::string& file : NEBSourceControlFilesInText(text, error.errorClass.value_or(""))) {
            reported.insert(std::move(file));
        }
    }
    std::vector<std::string> omitted;
    for (const std::string& file : error.files) {
        if (!reported.contains(file)) {
            omitted.push_back(printable(file));
        }
    }
    return omitted;
}

}  // namespace

std::string messageLine(std::string_view sentence) {
    std::string line(withoutMarks(sentence));
    if (beginsWithOrdinaryWord(line)) {
        line.front() = static_cast<char>(line.front() - 'A' + 'a');
    }
    const bool isOneSentence = line.find(". ") == std::string::npos;
    if (line.ends_with('.') && !line.ends_with("..") && isOneSentence) {
        line.pop_back();
    }
    return line;
}

std::string errorLines(const NEBSourceControlError& error) {
    const auto suggestion = error.localizedRecoverySuggestion();
    std::string description = error.localizedDescription().value_or("");
    std::string words = error.text.value_or("");
    if (suggestion == NEBSourceControlAdviceOfHints(error.hints)) {
        description = NEBSourceControlTextWithoutHints(description);
        words = NEBSourceControlTextWithoutHints(words);
    }
    description = trimmed(description);
    words = trimmed(words);
    if (description.empty()) {
        description = "The operation failed with the error " + std::to_string(error.code) + " of " +
                      error.domain + ".";
    }
    std::vector<std::string> rest = printableLines(description);
    const std::string message = takeSentence(rest);
    std::string lines = "nebsc: " + message + "\n";
    if (suggestion) {
        for (const std::string& line : printableLines(*suggestion)) {
            // How git is kept from saying so is none of a person's troubles.
            lines += line.starts_with("Disable this message with ") ? "" : line + "\n";
        }
    }
    appendIndented(lines, rest);
    if (description.find(words) == std::string::npos) {
        appendIndented(lines, printableLines(words));
    }
    appendIndented(lines, printableFilesOmittedBy({description, words}, error));
    return lines;
}

}  // namespace neb::nebsc
