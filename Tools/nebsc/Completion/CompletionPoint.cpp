#include "Completion/CompletionPoint.h"

#include "CommandLine/CommonOptions.h"
#include "Commands/Commands.h"

namespace neb::nebsc {

namespace {

using Kind = CompletionPoint::Kind;

/// The point after the "=" of "--option=value".
void findValueOfOption(CompletionPoint& point, std::size_t equals) {
    const Parameter* option = optionNamed(std::string_view(point.text).substr(0, equals),
                                          point.before.parsed().command());
    if (option != nullptr && !option->isFlag()) {
        point.kind = Kind::value;
        point.parameter = option;
        point.head = point.text.substr(0, equals + 1);
        point.text.erase(0, equals + 1);
    }
}

}  // namespace

CompletionPoint completionPointOf(std::span<const std::string> arguments) {
    CompletionPoint point{.before = CommandLineParser(allCommands())};
    if (!arguments.empty()) {
        for (const std::string& argument : arguments.first(arguments.size() - 1)) {
            point.before.parse(argument);
        }
        point.text = arguments.back();
    }
    const bool isOption = point.before.acceptsOptions() && point.text.starts_with('-');
    const std::size_t equals = point.text.find('=');
    if (point.before.pendingOption() != nullptr) {
        point.kind = Kind::value;
        point.parameter = point.before.pendingOption();
    } else if (isOption && point.text.starts_with("--") && equals != std::string::npos) {
        findValueOfOption(point, equals);
    } else if (isOption) {
        point.kind = Kind::option;
    } else if (!point.before.nextCommands().empty()) {
        point.kind = Kind::command;
    } else if (point.before.nextOperand() != nullptr && !isForHelp(point)) {
        point.kind = Kind::value;
        point.parameter = point.before.nextOperand();
    }
    return point;
}

bool isForHelp(const CompletionPoint& point) {
    return point.before.parsed().arguments.has(helpOption);
}

}  // namespace neb::nebsc
