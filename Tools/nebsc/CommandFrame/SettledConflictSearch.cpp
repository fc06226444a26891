#include "CommandFrame/SettledConflictSearch.h"

#include <algorithm>
#include <set>
#include <utility>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Session/GitProgram.h"
#include "Session/GitVersion.h"
#include "Session/SettingName.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

/// A setting with a program that a merge runs, and its replacement: a driver that settles
/// everything, because the user's has run in the merge itself, and no filter.
struct ProgramSetting {
    std::string_view section, variable, replacement;
};

constexpr ProgramSetting programSettings[] = {
    {"merge", "driver", "true"}, {"filter", "clean", ""},         {"filter", "smudge", ""},
    {"filter", "process", ""},   {"filter", "required", "false"},
};

/// The merged side of an unfinished merge; see gitrevisions(7).
constexpr const char* mergeHead = "MERGE_HEAD";

SettledConflicts unknownConflicts(std::string reason) {
    return {.files = std::nullopt, .failure = std::move(reason)};
}

std::string shortened(const std::string& commit) {
    constexpr std::size_t length = 12;
    return commit.substr(0, length);
}

}  // namespace

// ---- before the merge -------------------------------------------------------------------------

/// git repeats a revision that it does not know, which has other characters than an id.
/// git-rev-parse(1) prints the right side of "A...B", the left side, and the merge bases with "^".
std::optional<SettledConflictSearch::Sides> SettledConflictSearch::sidesIn(
    const std::vector<std::string>& lines) {
    if (lines.size() < 2 || !isObjectId(lines[0]) || !isObjectId(lines[1])) {
        return std::nullopt;
    }
    Sides sides{.kept = lines[1], .leftOut = lines[0]};
    std::size_t next = 2;
    for (; next < lines.size() && lines[next].starts_with('^'); ++next) {
        const std::string base = lines[next].substr(1);
        if (base == sides.leftOut || base == sides.kept) {
            sides.contained = base;
        }
    }
    sides.wasMerging = next < lines.size() && isObjectId(lines[next]);
    return sides;
}

/// Asks for the merge last, because git ends at the first revision that does not exist.
void SettledConflictSearch::setSides(const std::string& kept, const std::string& leftOut) {
    _sides = sidesIn(_git.linesOf({"rev-parse", kept + "^{commit}..." + leftOut + "^{commit}",
                                   std::string(mergeHead) + "^{commit}"}));
}

// ---- after the merge ---------------------------------------------------------------------------

void SettledConflictSearch::run(Outcome& outcome) const {
    if (_sides) {
        outcome.settledConflicts = search();
    }
    if (outcome.error && outcome.settledConflicts) {
        removeUnsettled(*outcome.settledConflicts);
    }
}

bool SettledConflictSearch::hasMerged(const NEBSourceControlError& error) const {
    return error.errorClass == NEBSourceControlConflictErrorClass ||
           (_sides && !_sides->wasMerging && _git.commitId(mergeHead) == _sides->leftOut);
}

void SettledConflictSearch::removeUnsettled(SettledConflicts& conflicts) const {
    if (!conflicts.files) {
        return;
    }
    const ChildOutcome index = _git.run({"ls-files", "--stage", "-z"});
    if (!index.status.isSuccess()) {
        conflicts = unknownConflicts(reasonOf(index));
        return;
    }
    // git-ls-files(1): mode, object, stage (0: not in conflict), TAB, name.
    std::set<std::string> settled;
    for (const std::string& entry : splitAtNUL(index.output)) {
        const std::size_t tab = entry.find('\t');
        if (tab != std::string::npos && entry.substr(0, tab).ends_with(" 0")) {
            settled.insert(entry.substr(tab + 1));
        }
    }
    std::erase_if(*conflicts.files,
                  [&](const std::string& file) { return !settled.contains(file); });
}

std::optional<std::vector<std::string>> SettledConflictSearch::optionsDisablingPrograms() const {
    std::vector<std::string> options;
    const ChildOutcome settings =
        _git.run({"config", "--null", "--name-only", "--get-regexp", "^(merge|filter)\\."});
    for (const std::string& name : splitAtNUL(settings.output)) {
        const auto* setting = std::find_if(
            std::begin(programSettings), std::end(programSettings), [&](const auto& candidate) {
                return isSettingOf(candidate.section, candidate.variable, name);
            });
        if (setting == std::end(programSettings)) {
            continue;
        }
        if (name.find('=') != std::string::npos) {
            return std::nullopt;
        }
        options.insert(options.end(), {"-c", name + "=" + std::string(setting->replacement)});
    }
    return options;
}

SettledConflicts SettledConflictSearch::search() const {
    constexpr int hasConflicts = 1;
    if (_sides->contained) {
        return {.files = std::vector<std::string>{}, .failure = {}};
    }
    const auto version = gitVersionIn(_git.outputOf({"version"}).value_or(""));
    if (!version || !canMergeInMemory(*version)) {
        return unknownConflicts("this requires git " + oldestGitThatMergesInMemory().text() +
                                " or newer");
    }
    auto arguments = optionsDisablingPrograms();
    if (!arguments) {
        return unknownConflicts("the name of a merge driver or filter contains '='");
    }
    // git-merge-tree(1), OUTPUT: the tree, then the names, each followed by NUL.
    arguments->insert(arguments->end(), {"merge-tree", "--write-tree", "--name-only",
                                         "--no-messages", "-z", _sides->kept, _sides->leftOut});
    const ChildOutcome merge = _git.run(std::move(*arguments));
    if (!merge.status.isSuccess() && merge.status.exitStatus() != hasConflicts) {
        return unknownConflicts(reasonOf(merge));
    }
    std::vector<std::string> files = splitAtNUL(merge.output);
    if (files.empty()) {
        return unknownConflicts("git printed nothing");
    }
    files.erase(files.begin());
    return {.files = std::move(files), .failure = {}};
}

void SettledConflictSearch::report(const Outcome& outcome, const SideNames& names,
                                   CommandOutput& output) const {
    const auto& conflicts = outcome.settledConflicts;
    if (!conflicts || (conflicts->files && conflicts->files->empty())) {
        return;
    }
    const std::string kept(names.kept);
    const std::string leftOut(names.leftOut);
    if (conflicts->files) {
        output.standardError += diagnostic("Both sides changed the same lines or binary files; " +
                                           kept + " were kept and " + leftOut + " dropped in:");
        for (const std::string& file : *conflicts->files) {
            output.standardError += "    " + shownPath(_git.workingCopy(), file) + "\n";
        }
    } else {
        output.standardError +=
            diagnostic("Where both sides changed the same lines, " + kept + " were kept and " +
                       leftOut + " dropped; the files are not known: " + conflicts->failure + ".");
    }
    output.standardError +=
        inQuotes("git diff " + shortened(_sides->kept) + "..." + shortened(_sides->leftOut)) +
        " shows all changes of the side whose lines were dropped.\n";
}

}  // namespace neb::nebsc
