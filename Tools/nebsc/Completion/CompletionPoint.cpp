#include "Completion/CompletionPoint.h"

#include <algorithm>

#include "CommandLine/CommandLine.h"
#include "Commands/Commands.h"

namespace neb::nebsc {

namespace {

using Kind = CompletionPoint::Kind;

constexpr std::string_view helpCommand = "help";
constexpr Parameter helpOption{"-h,--help", "Say what the command does, with an example"};

/// The option that is spelled so; absent when there is none.
const Parameter* optionNamed(std::string_view spelling, const Command* command) {
    for (const Parameter* option : optionsOf(command)) {
        const auto spellings = spellingsOf(*option);
        if (std::find(spellings.begin(), spellings.end(), spelling) != spellings.end()) {
            return option;
        }
    }
    return nullptr;
}

/// Follows the words one by one.
class Walk {
public:
    void pass(const std::string& word);
    [[nodiscard]] CompletionPoint stopAt(const std::string& word) &&;

private:
    void passOption(const std::string& word);
    [[nodiscard]] bool isOption(std::string_view word) const {
        return !_areOptionsOver && word.size() > 1 && word.starts_with('-');
    }
    [[nodiscard]] bool isCommandExpected() const {
        return _point.command == nullptr && !_point.isForHelp && !_areOptionsOver && !_isLost;
    }
    [[nodiscard]] const Parameter* parameterAtPlace() const;

    CompletionPoint _point{.kind = Kind::command, .commands = allCommands()};
    /// An option that still waits for its value.
    const Parameter* _openOption = nullptr;
    bool _areOptionsOver = false;
    /// A word is none of nebsc's commands: nothing is known of what follows.
    bool _isLost = false;
};

void Walk::pass(const std::string& word) {
    if (_openOption != nullptr) {
        if (_openOption->name == folderOption) {
            _point.folders.push_back(word);
        }
        _openOption = nullptr;
    } else if (word == helpCommand && isCommandExpected()) {
        _point.isForHelp = true;
    } else if (word == "--" && !_areOptionsOver) {
        _areOptionsOver = true;
    } else if (isOption(word)) {
        passOption(word);
    } else {
        const auto named = std::find_if(_point.commands.begin(), _point.commands.end(),
                                        [&word](const Command* row) { return row->name == word; });
        if (named != _point.commands.end()) {
            _point.command = *named;
            _point.commands = (*named)->commands;
        } else {
            _isLost = _isLost || _point.command == nullptr;
            _point.commands = {};
            _point.formerWords.push_back(word);
        }
    }
}

/// "--name value", "--name=value", "-n value" or "-nvalue".
void Walk::passOption(const std::string& word) {
    const bool isLong = word.starts_with("--");
    const std::size_t end = isLong ? std::min(word.find('='), word.size()) : 2;
    const Parameter* option = optionNamed(std::string_view(word).substr(0, end), _point.command);
    if (option != nullptr) {
        _point.formerOptions.push_back(option);
        _openOption = option->takes != Takes::nothing && end == word.size() ? option : nullptr;
        if (option->name == folderOption && _openOption == nullptr) {
            _point.folders.push_back(word.substr(end));
        }
    }
}

/// The last one that may be repeated takes all words that are left.
const Parameter* Walk::parameterAtPlace() const {
    std::size_t left = _point.formerWords.size();
    if (_point.command != nullptr) {
        for (const Parameter& parameter : _point.command->parameters) {
            if (!parameter.isOption() && (left-- == 0 || parameter.isRepeated())) {
                return &parameter;
            }
        }
    }
    return nullptr;
}

CompletionPoint Walk::stopAt(const std::string& word) && {
    _point.text = word;
    const std::size_t equals = word.find('=');
    if (_openOption != nullptr) {
        _point.kind = Kind::value;
        _point.parameter = _openOption;
    } else if (!_areOptionsOver && word.starts_with("--") && equals != std::string::npos) {
        const Parameter* option =
            optionNamed(std::string_view(word).substr(0, equals), _point.command);
        const bool hasValue = option != nullptr && option->takes != Takes::nothing;
        _point.kind = hasValue ? Kind::value : Kind::nothing;
        _point.parameter = option;
        _point.head = word.substr(0, equals + 1);
        _point.text = word.substr(equals + 1);
    } else if (!_areOptionsOver && word.starts_with('-')) {
        _point.kind = Kind::option;
    } else if (_point.commands.empty()) {
        _point.parameter = parameterAtPlace();
        _point.kind = _point.parameter != nullptr ? Kind::value : Kind::nothing;
    }
    if (_isLost || (_point.isForHelp && _point.kind == Kind::value)) {
        _point.kind = Kind::nothing;
    }
    return std::move(_point);
}

}  // namespace

CompletionPoint completionPointOf(std::span<const std::string> words) {
    Walk walk;
    if (words.empty()) {
        return std::move(walk).stopAt("");
    }
    for (const std::string& word : words.first(words.size() - 1)) {
        walk.pass(word);
    }
    return std::move(walk).stopAt(words.back());
}

std::vector<std::string_view> spellingsOf(const Parameter& option) {
    const std::size_t comma = option.name.find(',');
    return comma == std::string_view::npos
               ? std::vector{option.name}
               : std::vector{option.name.substr(0, comma), option.name.substr(comma + 1)};
}

std::vector<const Parameter*> optionsOf(const Command* command) {
    std::vector<const Parameter*> options;
    if (command != nullptr) {
        for (const Parameter& parameter : command->parameters) {
            if (parameter.isOption()) {
                options.push_back(&parameter);
            }
        }
    }
    for (const Parameter& option : commonParameters()) {
        if (command == nullptr || option.name != folderOption) {
            options.push_back(&option);
        }
    }
    options.push_back(&helpOption);
    return options;
}

}  // namespace neb::nebsc
