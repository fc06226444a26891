#include "CommandLine/CommonOptions.h"

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>

#include "CommandLine/UsageError.h"

namespace neb::nebsc {

namespace {

/// In seconds; some 30 years.
constexpr double longestTimeLimit = 1e9;

constexpr Parameter options[] = {
    {folderOption,
     "Run as if started in DIR; before the command only; if repeated, relative to the previous DIR",
     Takes::folder, Occurs::anyNumber, "DIR", true},
    {plugInOption, "Load this plug-in instead of the installed one", Takes::path,
     Occurs::optionally, "FILE"},
    {jsonOption, "Print one line of JSON instead of text"},
    {colourOption, "When to use colours; auto means on a terminal", Takes::text, Occurs::optionally,
     "auto|always|never"},
    {traceOption, "Report each program that is run on standard error"},
    {timeoutOption, "Stop with an error if it takes longer, for example 30 or 0.5", Takes::text,
     Occurs::optionally, "SECONDS"},
    {inspectOption, "Only read the repository, and run no program that it names"},
    {recordOption, "Record the requests and what git prints in a new file", Takes::pathAsWritten,
     Occurs::optionally, "FILE"},
    {anonymousOption, "Replace names and texts in the recording"},
    {versionOption, "Show the versions of nebsc, the plug-in and git"},
    {"-h,--help", "Show help for nebsc or for the command"},
};

/// Returns the value of decimal digits, with a point among, before or after them if there are
/// fractions; absent for any other text. std::from_chars() reads no fractions in libc++ before 20.
std::optional<double> decimalNumberIn(const std::string& text) {
    if (text.find_first_not_of("0123456789.") != std::string::npos) {
        return std::nullopt;
    }
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    double number = 0;
    stream >> number;
    return !stream.fail() && stream.eof() ? std::optional(number) : std::nullopt;
}

}  // namespace

std::span<const Parameter> commonOptions() {
    return options;
}

std::optional<std::chrono::milliseconds> timeLimitIn(const Arguments& arguments) {
    const auto text = arguments.value(timeoutOption);
    if (!text) {
        return std::nullopt;
    }
    const std::optional<double> seconds = decimalNumberIn(*text);
    const std::chrono::milliseconds limit(
        std::llround(std::min(seconds.value_or(0), longestTimeLimit) * 1000));
    if (limit.count() <= 0) {
        throw UsageError{.kind = UsageError::Kind::invalidValue,
                         .argument = *text,
                         .parameter = optionNamed(timeoutOption, nullptr),
                         .detail = "a number of seconds above 0"};
    }
    return limit;
}

std::vector<const Parameter*> optionsOf(const Command* command) {
    std::vector<const Parameter*> result;
    if (command != nullptr) {
        for (const Parameter& parameter : command->parameters) {
            if (parameter.isOption()) {
                result.push_back(&parameter);
            }
        }
    }
    for (const Parameter& option : commonOptions()) {
        if (command == nullptr || option.name != folderOption) {
            result.push_back(&option);
        }
    }
    return result;
}

const Parameter* optionNamed(std::string_view spelling, const Command* command) {
    for (const Parameter* option : optionsOf(command)) {
        const auto spellings = spellingsOf(*option);
        if (std::find(spellings.begin(), spellings.end(), spelling) != spellings.end()) {
            return option;
        }
    }
    return nullptr;
}

}  // namespace neb::nebsc
