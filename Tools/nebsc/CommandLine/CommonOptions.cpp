#include "CommandLine/CommonOptions.h"

#include <algorithm>

namespace neb::nebsc {

namespace {

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
    {versionOption, "Show the versions of nebsc, the plug-in and git"},
    {"-h,--help", "Show help for nebsc or for the command"},
};

}  // namespace

std::span<const Parameter> commonOptions() {
    return options;
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
