#include <unistd.h>

#include <algorithm>

#include "CommandFrame/CommandTask.h"
#include "CommandFrame/RecordNames.h"
#include "Commands/Commands.h"
#include "LOMFoundation/LOMPasswordRedaction.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view nameParameter = "NAME";
constexpr std::string_view valueParameter = "VALUE";
/// Stands for all settings; no setting has a name without a dot.
constexpr std::string_view listName = "list";
constexpr NameKeys valueKeys{NEBSourceControlOperationValueKey,
                             NEBSourceControlOperationValueBytesKey};

/// Returns a name or value, printable.
std::string shownText(const NEBDictionary& record, const NameKeys& keys) {
    return printable(bytesOfName(record, keys));
}

// ---- passwords of URLs ------------------------------------------------------------------------

void removePasswords(NEBDictionary& record) {
    for (const NameKeys& keys : {nameKeys, valueKeys}) {
        if (const auto text = record.value(keys.text).string()) {
            record.set(keys.text, textWithoutPasswords(*text));
        }
        if (const Data* bytes = record.value(keys.bytes).bytes()) {
            record.set(keys.bytes, NEBValue::ofBytes(Data(textWithoutPasswords(bytes->bytes()))));
        }
    }
}

void removePasswords(std::vector<std::string>& arguments) {
    std::ranges::transform(arguments, arguments.begin(), textWithoutPasswords);
}

/// Nothing that the command prints has a password, neither as text nor as JSON.
void removePasswords(Outcome& outcome) {
    if (outcome.result) {
        for (NEBDictionary& record : *outcome.result) {
            removePasswords(record);
        }
    }
    if (outcome.command) {
        removePasswords(outcome.command->arguments);
    }
    for (NEBSourceControlCommandRun& run : outcome.commands) {
        removePasswords(run.arguments);
    }
}

class ConfigTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override;
    /// A query for an identity or a setting that does not exist prints nothing.
    SilentFailure silentFailure() const override { return SilentFailure::isIgnored; }
    RequestResult perform() override;
    std::string adviceFor(const NEBSourceControlError& error) const override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    [[nodiscard]] bool isList() const {
        return !arguments().has(nameParameter) || argument(nameParameter) == listName;
    }
    [[nodiscard]] bool isChange() const {
        return arguments().has(valueParameter) || arguments().has("--unset");
    }
    /// Returns the settings of the outcome, in the requested scope.
    [[nodiscard]] NEBSourceControlResult settingsIn(const Outcome& outcome) const;
    [[nodiscard]] std::string textOfList(const NEBSourceControlResult& settings) const;

    /// Whether a change was refused because the setting has several values.
    bool _hasSeveralValues = false;
};

std::optional<CommandOutput> ConfigTask::validate() {
    if (arguments().has("--unset") && arguments().has(valueParameter)) {
        throw invalidArguments("expected no value with --unset");
    }
    if (isList() && isChange()) {
        throw invalidArguments("expected the name of a setting, such as user.name");
    }
    if (!isList() && argument(nameParameter).find('.') == std::string::npos) {
        throw invalidValue(nameParameter, "the name of a setting, such as user.name");
    }
    if (arguments().has("--all") && !isChange()) {
        throw invalidArguments("expected a value or --unset with --all");
    }
    return arguments().has("--global") ? std::nullopt : refusalOutsideRepository(git());
}

std::shared_ptr<NEBSourceControlRequest> ConfigTask::makeRequest() {
    auto request = newRequest(NEBSourceControlRequestSettings);
    request->options.emplace();
    if (isList()) {
        request->options->set(NEBSourceControlRequestOptionAll, true);
        return request;
    }
    request->options->set(NEBSourceControlRequestOptionSettingNames,
                          std::vector<NEBValue>{argument(nameParameter)});
    if (isChange()) {
        request->options->set(NEBSourceControlRequestOptionAction,
                              arguments().has("--unset") ? "unset" : "set");
        request->options->set(NEBSourceControlRequestOptionScope,
                              arguments().has("--global") ? "global" : "local");
    }
    if (const auto value = arguments().value(valueParameter)) {
        request->options->set(NEBSourceControlRequestOptionValue, *value);
    }
    if (arguments().has("--all")) {
        request->options->set(NEBSourceControlRequestOptionAll, true);
    }
    return request;
}

RequestResult ConfigTask::perform() {
    RequestResult result = CommandTask::perform();
    auto& outcome = result.outcome;
    if (outcome) {
        removePasswords(*outcome);
    }
    _hasSeveralValues =
        isChange() && outcome && outcome->error && outcome->result && outcome->result->size() > 1;
    return result;
}

std::string ConfigTask::adviceFor(const NEBSourceControlError& /*error*/) const {
    return _hasSeveralValues ? "'nebsc config --all' changes all of them." : "";
}

NEBSourceControlResult ConfigTask::settingsIn(const Outcome& outcome) const {
    NEBSourceControlResult settings;
    for (const NEBDictionary& record : outcome.result.value_or(NEBSourceControlResult())) {
        const bool isInScope = !arguments().has("--global") ||
                               record.text(NEBSourceControlOperationScopeKey) == "global";
        if (record.text(NEBSourceControlOperationKindKey) == "setting" && isInScope) {
            settings.push_back(record);
        }
    }
    return settings;
}

std::string ConfigTask::textOfList(const NEBSourceControlResult& settings) const {
    std::string lines;
    for (const NEBDictionary& record : settings) {
        lines += shownText(record, nameKeys);
        if (record.contains(NEBSourceControlOperationValueKey)) {
            lines += "=" + shownText(record, valueKeys);
        }
        lines += "\n";
    }
    return lines;
}

void ConfigTask::report(const Outcome& outcome, CommandOutput& output) {
    const NEBSourceControlResult settings = settingsIn(outcome);
    if (isList()) {
        output.standardOutput = textOfList(settings);
        return;
    }
    const std::string name = textWithoutPasswords(argument(nameParameter));
    if (isChange()) {
        output.standardOutput =
            (arguments().has("--unset") ? "Removed " : "Set ") + printable(inQuotes(name)) +
            (arguments().has("--global") ? " for all repositories of the user" : "") + ".\n";
    } else if (settings.empty()) {
        output = refusal("The setting " + inQuotes(name) + " is not set.", exitFailed);
    } else {
        // A name without a value means true.
        const NEBDictionary& last = settings.back();
        output.standardOutput =
            (last.contains(NEBSourceControlOperationValueKey) ? shownText(last, valueKeys)
                                                              : "true") +
            "\n";
    }
}

constexpr Parameter parameters[] = {
    {nameParameter, "The name of a setting, or 'list' for all settings, which is the default",
     Takes::text},
    {valueParameter,
     "The new value; default: print the value",
     Takes::text,
     Occurs::optionally,
     {},
     true},
    {"--unset", "Remove the setting"},
    {"--global", "The settings of the user, for all repositories; default: of this repository"},
    {"--all", "Replace or remove all values of a setting that has several"},
};

}  // namespace

constinit const Command configCommand{
    .name = "config",
    .group = changeGroup,
    .summary = "Show, set and remove settings of git",
    .details =
        "Shows the value that counts, wherever it is set; exits with status 1 if it is\n"
        "not set. Changes the settings of the repository, or with --global those of the\n"
        "user. Never prints a password that is part of a URL, also with --json.\n"
        "\n"
        "Examples:\n"
        "  nebsc config list                              all settings\n"
        "  nebsc config user.name                         the name in new commits\n"
        "  nebsc config user.email ann@example.com        in this repository\n"
        "  nebsc config --global user.name 'Ann Example'  in all repositories\n"
        "  nebsc config --unset user.email                remove it again\n",
    .parameters = parameters,
    .activity = "Reading",
    .isPaged = true,
    .run = runTask<ConfigTask>,
};

}  // namespace neb::nebsc
