#include "Commands/HunkNavigation.h"

#include <regex.h>

#include <array>
#include <charconv>

#include "Platform/Text.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// A compiled regular expression; see regcomp(3).
class LinePattern {
public:
    explicit LinePattern(const std::string& pattern)
        : _status(::regcomp(&_expression, pattern.c_str(), REG_EXTENDED | REG_NOSUB)) {}
    LinePattern(const LinePattern&) = delete;
    LinePattern& operator=(const LinePattern&) = delete;
    ~LinePattern() {
        if (_status == 0) {
            ::regfree(&_expression);
        }
    }

    /// Why the pattern is invalid; empty if it is valid.
    [[nodiscard]] std::string failure() const {
        std::array<char, 200> text{};
        if (_status != 0) {
            ::regerror(_status, &_expression, text.data(), text.size());
        }
        return text.data();
    }
    [[nodiscard]] bool matchesLineOf(std::string_view text) const {
        bool isFound = false;
        forEachLine(text, [&](std::string_view line) {
            isFound =
                isFound || ::regexec(&_expression, std::string(line).c_str(), 0, nullptr, 0) == 0;
        });
        return isFound;
    }

private:
    regex_t _expression{};
    int _status;
};

bool isOpen(const FileChoices& file, std::size_t choice) {
    return file.choices()[choice].decision == Decision::open;
}

/// Returns the lines of a hunk and its first changed line, at most so many bytes of it.
std::string summaryOf(const std::string& text) {
    constexpr std::size_t width = 60;
    std::string_view ranges, change;
    forEachLine(text, [&](std::string_view line) {
        if (line.starts_with("@@")) {
            ranges = ranges.empty() ? line.substr(0, line.find(" @@", 1)) : ranges;
        } else if (change.empty() && (line.starts_with('+') || line.starts_with('-'))) {
            change = line.substr(0, width);
        }
    });
    return printable(ranges.substr(std::min<std::size_t>(ranges.size(), 3))) + "  " +
           printable(textReplacingInvalidBytes(change));
}

}  // namespace

std::optional<std::size_t> nextOpen(const FileChoices& file, std::size_t choice) {
    for (std::size_t i = choice + 1; i < file.choices().size(); ++i) {
        if (isOpen(file, i)) {
            return i;
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> previousOpen(const FileChoices& file, std::size_t choice) {
    for (std::size_t i = choice; i > 0; --i) {
        if (isOpen(file, i - 1)) {
            return i - 1;
        }
    }
    return std::nullopt;
}

std::size_t openAfter(const FileChoices& file, std::size_t choice) {
    for (std::size_t i = 1; i <= file.choices().size(); ++i) {
        const std::size_t candidate = (choice + i) % file.choices().size();
        if (isOpen(file, candidate)) {
            return candidate;
        }
    }
    return file.choices().size();
}

std::string listOfChoices(const FileChoices& file) {
    std::string list;
    for (std::size_t i = 0; i < file.choices().size(); ++i) {
        const Decision decision = file.choices()[i].decision;
        const char mark = decision == Decision::taken  ? '+'
                          : decision == Decision::left ? '-'
                                                       : ' ';
        list += mark + std::to_string(i + 1) + ": " + summaryOf(file.text(i)) + "\n";
    }
    return list;
}

ChoiceFound choiceWithNumber(const FileChoices& file, std::string_view number) {
    std::size_t value = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error != std::errc() || end != number.data() + number.size() || value == 0 ||
        value > file.choices().size()) {
        return {.failure = inQuotes(printable(number)) + " is not a number from 1 to " +
                           std::to_string(file.choices().size())};
    }
    return {.choice = value - 1};
}

ChoiceFound choiceLike(const FileChoices& file, std::size_t choice, const std::string& pattern) {
    const LinePattern expression(pattern);
    if (const std::string failure = expression.failure(); !failure.empty()) {
        return {.failure = inQuotes(printable(pattern)) + " is no regular expression: " + failure};
    }
    for (std::size_t i = 1; i <= file.choices().size(); ++i) {
        const std::size_t candidate = (choice + i) % file.choices().size();
        if (expression.matchesLineOf(file.text(candidate))) {
            return {.choice = candidate};
        }
    }
    return {.failure = "No change in the file matches " + inQuotes(printable(pattern))};
}

}  // namespace neb::nebsc
