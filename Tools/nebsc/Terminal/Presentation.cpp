#include "Terminal/Presentation.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <initializer_list>
#include <unordered_set>
#include <utility>
#include <vector>

#include "NEBFoundation/NEBSourceControlErrorDetails.h"
#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

std::string hexByte(unsigned char byte) {
    return {hexDigits[byte >> 4U], hexDigits[byte & 0xFU]};
}

std::string controlCharacter(unsigned char byte) {
    switch (byte) {
        case '\n':
            return "\\n";
        case '\t':
            return "\\t";
        case '\r':
            return "\\r";
        default:
            return "\\x" + hexByte(byte);
    }
}

bool isControlCharacter(unsigned char byte) {
    constexpr unsigned char firstPrintable = 0x20;
    constexpr unsigned char deletion = 0x7F;
    return byte < firstPrintable || byte == deletion;
}

/// Whether the well-formed text has one of U+0080 to U+009F at `place`.
bool isC1(std::string_view text, std::size_t place) {
    return text[place] == '\xC2' && static_cast<unsigned char>(text[place + 1]) < 0xA0;
}

/// Whether the character turns the direction of the text around it: U+202A to U+202E, U+2066 to
/// U+2069.
bool isDirection(std::string_view character) {
    return (character >= "\xE2\x80\xAA" && character <= "\xE2\x80\xAE") ||
           (character >= "\xE2\x81\xA6" && character <= "\xE2\x81\xA9");
}

struct ColourSequence {
    Colour colour;
    std::string_view sequence;
};

constexpr std::array<ColourSequence, 6> colourSequences{{
    {Colour::bold, "\x1b[1m"},
    {Colour::red, "\x1b[31m"},
    {Colour::boldRed, "\x1b[1;31m"},
    {Colour::green, "\x1b[32m"},
    {Colour::yellow, "\x1b[33m"},
    {Colour::cyan, "\x1b[36m"},
}};

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

/// What git marks its lines with, for a person a sentence: "fatal: no such path 'a'" is "No such
/// path 'a'.".
std::string asSentence(std::string_view text, bool goesOn) {
    for (const std::string_view mark : {"fatal: ", "error: ", "fatal: "}) {
        if (text.starts_with(mark)) {
            text = trimmed(text.substr(mark.size()));
        }
    }
    std::string sentence(text);
    // Not a name, as in "a.c: needs merge", and none that is never written otherwise.
    const std::string_view word = text.substr(0, text.find_first_of(" ,"));
    const auto isSmall = [](char character) { return character >= 'a' && character <= 'z'; };
    if (word.size() < text.size() && word != "git" &&
        std::all_of(word.begin(), word.end(), isSmall)) {
        sentence.front() = static_cast<char>(sentence.front() - 'a' + 'A');
    }
    if (sentence.ends_with(':') && !goesOn) {
        sentence.pop_back();
    }
    const bool isEnded = sentence.ends_with('.') || sentence.ends_with('!') ||
                         sentence.ends_with('?') || sentence.ends_with(':');
    return sentence + (isEnded ? "" : ".");
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
    const std::string text{trimmed(*sentence)};
    lines.erase(sentence);
    return asSentence(text, !lines.empty());
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

std::string printable(std::string_view bytes) {
    std::string result;
    result.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size();) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        const std::size_t length = lengthOfCharacterAt(bytes, i);
        if (isControlCharacter(byte)) {
            result += controlCharacter(byte);
        } else if (length == 0) {
            result += "\\x" + hexByte(byte);
        } else if (isC1(bytes, i)) {
            result += "\\u00" + hexByte(static_cast<unsigned char>(bytes[i + 1]));
        } else if (isDirection(bytes.substr(i, length))) {
            const auto second = static_cast<unsigned char>(bytes[i + 1]);
            const auto third = static_cast<unsigned char>(bytes[i + 2]);
            result += "\\u20" +
                      hexByte(static_cast<unsigned char>((second & 0x03U) << 6U | (third & 0x3FU)));
        } else {
            result += bytes.substr(i, length);
        }
        i += std::max<std::size_t>(length, 1);
    }
    return result;
}

std::string printableLine(std::string_view bytes) {
    const bool hasReturn = bytes.ends_with('\r');
    bytes.remove_suffix(hasReturn ? 1 : 0);
    std::string line;
    forEachPiece(bytes, '\t', [&line, &bytes](std::string_view piece) {
        line.append(piece.data() == bytes.data() ? "" : "\t").append(printable(piece));
    });
    return line + (hasReturn ? "\r" : "");
}

std::string inQuotes(std::string_view text) {
    return std::string("\"").append(text).append("\"");
}

bool wantsColour(Colours colours, int descriptor) {
    if (colours != Colours::automatic) {
        return colours == Colours::always;
    }
    const auto variable = [](const char* name) {
        const char* value = std::getenv(name);
        return std::string_view(value == nullptr ? "" : value);
    };
    return ::isatty(descriptor) == 1 && variable("NO_COLOR").empty() && variable("TERM") != "dumb";
}

std::string coloured(std::string_view text, Colour colour) {
    for (const ColourSequence& row : colourSequences) {
        if (row.colour == colour) {
            return std::string(row.sequence).append(text).append("\x1b[0m");
        }
    }
    return std::string(text);
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
    std::string lines = "nebsc: " + takeSentence(rest) + "\n";
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
