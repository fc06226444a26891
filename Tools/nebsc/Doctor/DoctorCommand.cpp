#include <unistd.h>

#include <algorithm>
#include <array>

#include "Commands/Commands.h"
#include "Doctor/Diagnosis.h"
#include "JSON/OutcomeJSON.h"
#include "Session/OperationRun.h"
#include "Session/Paths.h"
#include "Terminal/Colour.h"
#include "Terminal/PrintableText.h"
#include "Terminal/ProgressIndicator.h"
#include "Terminal/TextWidth.h"

namespace neb::nebsc {

namespace {

struct HealthWord {
    Health health;
    std::string_view word;
    Colour colour;
};

constexpr std::array<HealthWord, 3> healthWords{{
    {Health::ok, "ok", Colour::green},
    {Health::note, "note", Colour::yellow},
    {Health::problem, "problem", Colour::boldRed},
}};

const HealthWord& wordOf(Health health) {
    return *std::find_if(healthWords.begin(), healthWords.end(),
                         [health](const HealthWord& row) { return row.health == health; });
}

std::string textOf(const std::vector<Finding>& findings, bool isColoured) {
    constexpr std::size_t healthColumns = 9;
    std::size_t subjectColumns = 0;
    for (const Finding& finding : findings) {
        subjectColumns = std::max(subjectColumns, finding.subject.size() + 2);
    }
    const std::size_t indent = healthColumns + subjectColumns;
    std::string text;
    for (const Finding& finding : findings) {
        const HealthWord& word = wordOf(finding.health);
        text += (isColoured ? coloured(word.word, word.colour) : std::string(word.word)) +
                std::string(healthColumns - word.word.size(), ' ') +
                paddedTo(subjectColumns, finding.subject) +
                wrapped(STDOUT_FILENO, indent, printable(finding.text)) + "\n";
        if (!finding.advice.empty()) {
            text += std::string(indent, ' ') +
                    wrapped(STDOUT_FILENO, indent, printable(finding.advice)) + "\n";
        }
    }
    return text;
}

nlohmann::ordered_json jsonOf(const std::vector<Finding>& findings, bool isInOrder) {
    auto array = nlohmann::ordered_json::array();
    for (const Finding& finding : findings) {
        array.push_back(
            {{"health", wordOf(finding.health).word},
             {"subject", finding.subject},
             {"text", finding.text},
             {"advice", finding.advice.empty() ? nlohmann::ordered_json()
                                               : nlohmann::ordered_json(finding.advice)}});
    }
    return {{"isInOrder", isInOrder}, {"findings", std::move(array)}};
}

CommandOutput run(const CommandCall& call) {
    const PathSearch folder = findCurrentFolder();
    if (!folder.path) {
        return refusal(folder.failure, exitFailed);
    }
    Interruption interruption;
    std::optional<ProgressIndicator> sign(std::in_place, call.command.activity,
                                          !call.session.trace().isOn());
    const std::vector<Finding> findings = diagnose(
        interruption, call.session.trace(),
        {.plugIn = call.plugIn, .folder = *folder.path, .isFull = call.arguments.has("--full")});
    sign.reset();
    const bool isInOrder =
        std::none_of(findings.begin(), findings.end(),
                     [](const Finding& finding) { return finding.health == Health::problem; });
    CommandOutput output{
        .standardOutput = call.isJSON ? lineOfJSON(jsonOf(findings, isInOrder))
                                      : textOf(findings, wantsColour(call.colours, STDOUT_FILENO)),
        .standardError = {},
        .exitStatus = isInOrder ? exitDone : exitFailed};
    const std::optional<int> signalNumber = interruption.end();
    if (signalNumber) {
        output.standardOutput.clear();
    }
    noteInterruption(output, signalNumber);
    return output;
}

constexpr Parameter parameters[] = {
    {"--full", "Run git fsck too, which reads every object of the repository"},
};

}  // namespace

constinit const Command doctorCommand{
    .name = "doctor",
    .group = inspectGroup,
    .summary = "Check git, the repository and the settings for problems, and say how to fix them",
    .details =
        "Checks git and the plug-in; of the repository lock files, the index, every reference,\n"
        "the HEAD commit with its root tree, packs, alternates, worktrees, unfinished work and\n"
        "hooks; then settings and environment variables that are ignored here, the identity for\n"
        "commits, and credentials. Changes nothing, runs no hooks and fetches nothing. Takes a\n"
        "few seconds at most, but with --full as long as git fsck needs. The exit status is 1\n"
        "where there is a problem.\n\n"
        "Examples:\n"
        "  nebsc doctor\n"
        "  nebsc doctor --full    read every object too, to find damage anywhere\n"
        "  nebsc doctor --json    the same for a program to read\n",
    .parameters = parameters,
    .activity = "Checking",
    .needsPlugIn = false,
    .run = run,
};

}  // namespace neb::nebsc
