#include "Doctor/Checks.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Session/GitProgram.h"
#include "Session/GitVersion.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

void addFailure(Examination& examination, const ChildOutcome& outcome) {
    if (!outcome.status.started()) {
        examination.add(Health::problem, "git",
                        "cannot be started: " + outcome.status.description(),
                        "Install git, or add its folder to PATH.");
        return;
    }
    const bool isSetting = NEBSourceControlErrorClassOfText(outcome.errorOutput) ==
                           NEBSourceControlConfigurationBrokenErrorClass;
    examination.add(
        Health::problem, "git", gitPath() + " reports no version: " + reasonOf(outcome),
        isSetting ? "Fix or remove the line." : "See what 'git --version' prints in a shell.");
}

void addVersion(Examination& examination, const GitVersion& version, const std::string& text) {
    std::string missing;
    for (const std::string_view feature : featuresMissingIn(version)) {
        missing.append(missing.empty() ? "" : "; ").append(feature);
    }
    if (missing.empty()) {
        examination.add(Health::ok, "git", gitPath() + ", " + text);
    } else {
        examination.add(Health::problem, "git", gitPath() + ", " + text + ", lacks " + missing,
                        "Install git " + oldestGitWithAllFeatures().text() + " or newer.");
    }
}

void checkPrograms(Examination& examination) {
    const ChildOutcome outcome = examination.query({"--exec-path"});
    if (!outcome.status.isSuccess()) {
        examination.add(Health::problem, "git",
                        "does not report the folder of its programs: " + reasonOf(outcome));
        return;
    }
    examination.programs = trimmedOutputOf(outcome).value_or("");
    if (examination.isReachable("git-remote-https")) {
        examination.add(Health::ok, "https", "git supports HTTPS");
    } else {
        examination.add(Health::note, "https",
                        "git does not support HTTPS: git-remote-https is missing",
                        "Install git with support for curl.");
    }
}

}  // namespace

void checkGit(Examination& examination) {
    const ChildOutcome outcome = examination.query({"--version"});
    if (!outcome.status.isSuccess()) {
        addFailure(examination, outcome);
        return;
    }
    const std::string text = trimmedOutputOf(outcome).value_or("");
    const auto version = gitVersionIn(text);
    if (!version) {
        examination.add(Health::problem, "git",
                        gitPath() + " reports no version: " + inQuotes(text),
                        "Reinstall git, or add the folder of another git to PATH.");
        return;
    }
    examination.hasGit = true;
    addVersion(examination, *version, text);
    checkPrograms(examination);
}

void checkSubversion(Examination& examination) {
    if (examination.programs.empty()) {
        return;
    }
    if (examination.isReachable("git-svn")) {
        examination.add(Health::ok, "git-svn", "is installed");
    } else {
        examination.add(Health::note, "git-svn", "is not installed",
                        "Install git-svn to use Subversion repositories.");
    }
}

}  // namespace neb::nebsc
