#include <algorithm>
#include <map>
#include <set>

#include "Doctor/Checks.h"
#include "Platform/Text.h"
#include "Session/GitProgram.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

namespace {

/// Findings of a kind beyond this number are only counted.
constexpr std::size_t mostFindings = 10;

/// A warning that git prints about a reference that it skips.
struct Warning {
    /// The text in front of the name.
    std::string_view text;
    Health health;
    std::string_view meaning;
};
constexpr Warning warnings[] = {
    {"warning: ignoring broken ref ", Health::problem, " names no object: its file is damaged"},
    {"warning: ignoring ref with broken name ", Health::note,
     " is not a valid reference name, so git ignores the file"},
    {"warning: ignoring dangling symref ", Health::note,
     " points to a reference that does not exist"},
};

std::string adviceOn(Examination& examination, const Warning& warning, const std::string& name) {
    const std::string removal = "rm " + shellQuoted(examination.gitPath(name));
    if (warning.health != Health::problem) {
        return "Remove it with: " + removal;
    }
    return "Run: " + removal + " && git update-ref " + shellQuoted(name) +
           " COMMIT; the last line of " + examination.gitPath("logs/" + name) +
           " names the COMMIT in its second column.";
}

std::vector<Finding> findingsIn(Examination& examination, std::string_view stderrText) {
    std::vector<Finding> findings;
    forEachField(stderrText, '\n', [&](std::string_view line) {
        for (const Warning& warning : warnings) {
            if (line.starts_with(warning.text)) {
                const std::string name(line.substr(warning.text.size()));
                const bool isShown = findings.size() < mostFindings;
                findings.push_back({warning.health, "references",
                                    name + std::string(warning.meaning),
                                    isShown ? adviceOn(examination, warning, name) : ""});
            }
        }
    });
    return findings;
}

using NamesByObject = std::multimap<std::string_view, std::string_view>;

/// Returns the names of the references by object, from a list of "OBJECT NAME" lines.
NamesByObject namesByObject(std::string_view list) {
    NamesByObject names;
    forEachField(list, '\n', [&names](std::string_view line) {
        const std::size_t blank = line.find(' ');
        if (blank != std::string_view::npos) {
            names.emplace(line.substr(0, blank), line.substr(blank + 1));
        }
    });
    return names;
}

/// Returns the objects that git cat-file(1) marks as missing. In a partial clone, git before 2.44
/// stops with an error that contains the first one.
std::set<std::string_view> missingObjectsIn(const ChildOutcome& outcome,
                                            const NamesByObject& names) {
    std::set<std::string_view> missing;
    forEachField(outcome.output, '\n', [&missing](std::string_view line) {
        constexpr std::string_view mark = " missing";
        if (line.ends_with(mark)) {
            missing.insert(line.substr(0, line.size() - mark.size()));
        }
    });
    forEachField(outcome.errorOutput, '\n', [&](std::string_view line) {
        forEachField(line, ' ', [&](std::string_view part) {
            if (names.contains(part)) {
                missing.insert(part);
            }
        });
    });
    return missing;
}

std::vector<Finding> findMissingObjects(Examination& examination, const NamesByObject& names) {
    const ChildOutcome outcome =
        examination.queryPipeline({"for-each-ref", "--format=%(objectname)"},
                                  {"cat-file", "--buffer", "--batch-check=%(objecttype)"});
    const std::set<std::string_view> missing = missingObjectsIn(outcome, names);
    std::vector<Finding> findings;
    for (const auto& [object, name] : names) {
        if (missing.contains(object)) {
            findings.push_back({Health::problem, "references",
                                std::string(name) + " names the object " + std::string(object) +
                                    ", which is missing",
                                "Repair packs reported as damaged. " +
                                    std::string(adviceOnLostObjects) +
                                    " If the object stays missing, delete the reference with: "
                                    "git update-ref -d " +
                                    shellQuoted(name)});
        }
    }
    if (hasTimedOut(outcome)) {
        findings.push_back({Health::note, "references",
                            "could not check whether the objects of all " +
                                std::to_string(names.size()) + " exist: " + reasonOf(outcome),
                            "'nebsc doctor --full' checks them without a time limit."});
    } else if (!outcome.status.isSuccess() && findings.empty()) {
        findings.push_back({Health::problem, "references",
                            "git cannot look up their objects: " + reasonOf(outcome)});
    }
    return findings;
}

void addUpToLimit(Examination& examination, const std::vector<Finding>& findings) {
    const std::size_t count = std::min(findings.size(), mostFindings);
    for (std::size_t i = 0; i < count; ++i) {
        const Finding& finding = findings[i];
        examination.add(finding.health, finding.subject, finding.text, finding.advice);
    }
    if (count < findings.size()) {
        examination.add(findings.back().health, "references",
                        "and " + std::to_string(findings.size() - count) + " more like these",
                        "'git for-each-ref' lists all of them.");
    }
}

}  // namespace

void checkReferences(Examination& examination) {
    const ChildOutcome list =
        examination.query({"for-each-ref", "--format=%(objectname) %(refname)"});
    if (!list.status.isSuccess()) {
        const std::string reason = reasonOf(list);
        const bool isPacked = reason.find("packed-refs") != std::string::npos;
        examination.add(
            Health::problem, "references", "git cannot read them: " + reason,
            isPacked ? "Fix or remove the line in " + examination.gitPath("packed-refs") : "");
        return;
    }
    const auto names = namesByObject(list.output);
    const std::vector<Finding> broken = findingsIn(examination, list.errorOutput);
    const std::vector<Finding> missing = findMissingObjects(examination, names);
    addUpToLimit(examination, broken);
    addUpToLimit(examination, missing);
    if (broken.empty() && missing.empty()) {
        examination.add(Health::ok, "references",
                        names.empty() ? "none yet"
                                      : "all " + std::to_string(names.size()) + " can be resolved");
    }
}

}  // namespace neb::nebsc
