#include <unistd.h>

#include <algorithm>
#include <array>

#include "Commands/Commands.h"
#include "Doctor/Diagnosis.h"
#include "JSON/OutcomeJSON.h"
#include "Session/OperationRun.h"
#include "Session/Paths.h"
#include "Terminal/Colour.h"
#include "Terminal/LabelTable.h"
#include "Terminal/PrintableText.h"
#include "Terminal/ProgressIndicator.h"
#include "Terminal/TextWidth.h"

namespace neb::nebsc {

namespace {

constexpr std::array<LabelRow<Health>, 3> healthLabels{{
    {Health::ok, "ok", Colour::green},
    {Health::note, "note", Colour::yellow},
    {Health::problem, "problem", Colour::boldRed},
}};

std::string textOf(const std::vector<Finding>& findings, bool isColoured) {
    constexpr std::size_t healthColumns = 9;
    std::size_t subjectColumns = 0;
    for (const Finding& finding : findings) {
        subjectColumns = std::max(subjectColumns, finding.subject.size() + 2);
    }
    const std::size_t indent = healthColumns + subjectColumns;
    std::string text;
    for (const Finding& finding : findings) {
        text += paddedLabel(labelOf(healthLabels, finding.health), healthColumns, isColoured) +
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
            {{"health", labelOf(healthLabels, finding.health).text},
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
    Interruption interruption(call.timeLimit);
    std::optional<ProgressIndicator> indicator(std::in_place, call.command.activity,
                                               !call.session.trace().isOn());
    const std::vector<Finding> findings = diagnose(
        interruption, call.session.trace(),
        {.plugIn = call.plugIn, .folder = *folder.path, .isFull = call.arguments.has("--full")});
    indicator.reset();
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
    noteEndOfTime(output, interruption);
    noteInterruption(output, signalNumber);
    return output;
}

constexpr Parameter parameters[] = {
    {"--full", "Also run git fsck, which reads every object of the repository"},
};

}  // namespace

constinit const Command doctorCommand{
    .name = "doctor",
    .group = inspectGroup,
    .summary = "Check git, the repository and the settings for problems, and say how to fix them",
    .details =
        "Checks git, the plug-in and the system; in the repository: lock files, the\n"
        "index, references, the HEAD commit and its root tree, packs, alternates,\n"
        "worktrees, operations in progress and hooks; for the user: settings and\n"
        "environment variables that nebsc ignores, the identity for commits, and\n"
        "credentials. Then measures what makes git slow in the repository. Changes\n"
        "nothing, runs no hooks and fetches nothing. Takes a few seconds; with --full as\n"
        "long as git fsck. Exits with status 1 if it finds a problem.\n"
        "\n"
        "Examples:\n"
        "  nebsc doctor\n"
        "  nebsc doctor --full    also read every object, to find all damage\n"
        "  nebsc doctor --json    print the findings as JSON\n",
    .parameters = parameters,
    .activity = "Checking",
    .needsPlugIn = false,
    .run = run,
};

}  // namespace neb::nebsc
