#include "CommandLine/CommonOptions.h"

#include <algorithm>
#include <charconv>
#include <cmath>

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

}  // namespace

std::span<const Parameter> commonOptions() {
    return options;
}

std::optional<std::chrono::milliseconds> timeLimitIn(const Arguments& arguments) {
    const auto text = arguments.value(timeoutOption);
    if (!text) {
        return std::nullopt;
    }
    double seconds = 0;
    const auto [end, failure] = std::from_chars(text->data(), text->data() + text->size(), seconds,
                                                std::chars_format::fixed);
    const std::chrono::milliseconds limit(
        std::llround(std::clamp(seconds, 0.0, longestTimeLimit) * 1000));
    if (failure != std::errc() || !std::isfinite(seconds) || end != text->data() + text->size() ||
        limit.count() <= 0) {
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
