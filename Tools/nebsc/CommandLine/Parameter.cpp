#include "CommandLine/Parameter.h"

#include "Platform/Text.h"

namespace neb::nebsc {

std::vector<std::string_view> spellingsOf(const Parameter& parameter) {
    std::vector<std::string_view> spellings;
    forEachField(parameter.name, ',',
                 [&spellings](std::string_view spelling) { spellings.push_back(spelling); });
    return spellings;
}

std::string longName(const Parameter& parameter) {
    return std::string(spellingsOf(parameter).back());
}

std::vector<std::string> choicesOf(const Parameter& parameter) {
    std::vector<std::string> choices;
    if (parameter.valueName.find('|') != std::string_view::npos) {
        forEachField(parameter.valueName, '|',
                     [&choices](std::string_view choice) { choices.emplace_back(choice); });
    }
    return choices;
}

}  // namespace neb::nebsc
