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

/// The width of a TAB at the start of a line. git indents suggested commands with TABs.
constexpr std::size_t tabWidth = 4;

/// Returns the printable lines of the text, without blanks at both ends; none if it is blank.
std::vector<std::string> printableLines(std::string_view text) {
    std::vector<std::string> lines;
    forEachLine(trimmed(text), [&lines](std::string_view line) {
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        line.remove_prefix(line.rfind('\r') + 1);  // progress text that git has overwritten
        const std::size_t tabs = std::min(line.find_first_not_of('\t'), line.size());
        lines.push_back(std::string(tabs * tabWidth, ' ') + printable(line.substr(tabs)));
    });
    return lines;
}

/// Appends the lines; of very many, only the first and the last, and how many are left out.
void appendIndented(std::string& text, const std::vector<std::string>& lines) {
    constexpr std::size_t shownAtEachEnd = 500;
    const std::size_t end = std::min(shownAtEachEnd, lines.size());
    const std::size_t start = std::max(end, lines.size() - end);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i == end && start > end) {
            text += "    [" + std::to_string(start - end) + " lines are left out here]\n";
            i = start;
        }
        text += (lines[i].empty() ? "" : "    ") + lines[i] + "\n";
    }
}

/// Returns the text without the prefixes of git's messages.
std::string_view withoutPrefixes(std::string_view text) {
    for (const std::string_view prefix : {"fatal: ", "error: ", "fatal: "}) {
        if (text.starts_with(prefix)) {
            text = trimmed(text.substr(prefix.size()));
        }
    }
    return text;
}

/// Returns whether the text begins with a capitalised word, unless that is a known name.
bool beginsWithOrdinaryWord(std::string_view text) {
    constexpr std::array<std::string_view, 2> names{"Subversion", "Python"};
    const std::string_view word = text.substr(0, text.find_first_of(" ,"));
    const auto isLowerCase = [](char character) { return character >= 'a' && character <= 'z'; };
    return !word.empty() && word.size() < text.size() && word.front() >= 'A' &&
           word.front() <= 'Z' && std::all_of(word.begin() + 1, word.end(), isLowerCase) &&
           std::find(names.begin(), names.end(), word) == names.end();
}

/// Returns whether a sentence ends before the end of the text. Names in quotes may hold ". ".
bool hasSeveralSentences(std::string_view text) {
    char quote = 0;
    for (std::size_t i = 0; i + 1 < text.size(); ++i) {
        const bool isQuote = text[i] == '\'' || text[i] == '"';
        if (quote == 0 && isQuote && (i == 0 || text[i - 1] == ' ')) {
            quote = text[i];
        } else if (quote != 0 && text[i] == quote) {
            quote = 0;
        } else if (quote == 0 && text.substr(i, 2) == ". ") {
            return true;
        }
    }
    return false;
}

/// Removes and returns the line that reports the failure. It is the first line, unless that is the
/// URL of the remote, output of the remote or a warning; then it is the first line with an error
/// prefix.
std::string takeSentence(std::vector<std::string>& lines) {
    const auto begins = [](const std::string& line,
                           std::initializer_list<std::string_view> prefixes) {
        return std::any_of(prefixes.begin(), prefixes.end(),
                           [&line](std::string_view prefix) { return line.starts_with(prefix); });
    };
    auto sentence = lines.begin();
    if (begins(*sentence, {"From ", "To ", "remote: ", "warning: "})) {
        const auto failure = std::find_if(lines.begin(), lines.end(), [&](const std::string& line) {
            return begins(line, {" ! [", "fatal: ", "error: "});
        });
        sentence = failure == lines.end() ? sentence : failure;
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
    std::string line(withoutPrefixes(sentence));
    if (beginsWithOrdinaryWord(line)) {
        line.front() = static_cast<char>(line.front() - 'A' + 'a');
    }
    if (line.ends_with('.') && !line.ends_with("..") && !hasSeveralSentences(line)) {
        line.pop_back();
    }
    return line;
}

std::string withSingleQuotes(std::string_view sentence) {
    constexpr std::string_view beforeQuote = " (\n";
    constexpr std::string_view afterQuote = " .,:;)\n";
    const auto isOneOf = [](std::string_view characters, char character) {
        return characters.find(character) != std::string_view::npos;
    };
    std::string text(sentence);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '"' || (i > 0 && !isOneOf(beforeQuote, text[i - 1]))) {
            continue;
        }
        std::size_t end = text.find('"', i + 1);
        while (end != std::string::npos && end + 1 < text.size() &&
               !isOneOf(afterQuote, text[end + 1])) {
            end = text.find('"', end + 1);
        }
        if (end == std::string::npos) {
            break;
        }
        text[i] = text[end] = '\'';
        i = end;
    }
    return text;
}

std::string errorLines(const NEBSourceControlError& error) {
    auto suggestion = error.localizedRecoverySuggestion();
    std::string description = error.localizedDescription().value_or("");
    std::string toolOutput = error.text.value_or("");
    if (toolOutput.find(description) == std::string::npos) {
        description = withSingleQuotes(description);
    }
    if (suggestion == NEBSourceControlAdviceOfHints(error.hints)) {
        description = NEBSourceControlTextWithoutHints(description);
        toolOutput = NEBSourceControlTextWithoutHints(toolOutput);
    } else if (suggestion) {
        suggestion = withSingleQuotes(*suggestion);
    }
    description = trimmed(description);
    toolOutput = trimmed(toolOutput);
    if (description.empty()) {
        description = "The operation failed with the error " + std::to_string(error.code) + " of " +
                      error.domain + ".";
    }
    std::vector<std::string> rest = printableLines(description);
    const std::string message = takeSentence(rest);
    std::string lines = "nebsc: " + message + "\n";
    if (suggestion) {
        for (const std::string& line : printableLines(*suggestion)) {
            // Omit git's note on how to disable the hint.
            lines += line.starts_with("Disable this message with ") ? "" : line + "\n";
        }
    }
    appendIndented(lines, rest);
    if (description.find(toolOutput) == std::string::npos) {
        appendIndented(lines, printableLines(toolOutput));
    }
    if (!error.files.empty()) {
        appendIndented(lines, printableFilesOmittedBy({description, toolOutput}, error));
    }
    return lines;
}

}  // namespace neb::nebsc
