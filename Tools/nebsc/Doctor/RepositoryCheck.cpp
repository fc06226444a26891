#include <filesystem>

#include "CommandFrame/UnfinishedWork.h"
#include "Doctor/Checks.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Session/GitProgram.h"
#include "Session/Paths.h"

namespace neb::nebsc {

namespace {

/// Returns the command that makes git trust a folder, copied from git's own message.
std::string trustCommandIn(std::string_view stderrText) {
    constexpr std::string_view command = "git config --global --add safe.directory ";
    const std::size_t position = stderrText.find(command);
    if (position == std::string_view::npos) {
        return std::string(command) + "FOLDER, with the folder that 'git status' prints.";
    }
    stderrText.remove_prefix(position);
    return std::string(stderrText.substr(0, stderrText.find('\n')));
}

/// Returns the path of the ".git" in the folder or in its nearest parent; empty without one.
std::string nearestDotGit(const std::string& folder) {
    for (std::filesystem::path current = folder;; current = current.parent_path()) {
        if (std::string path = (current / ".git").string(); isAnythingAt(path)) {
            return path;
        }
        if (current == current.parent_path()) {
            return "";
        }
    }
}

void addFailure(Examination& examination, const ChildOutcome& outcome) {
    const auto errorClass = NEBSourceControlErrorClassOfText(outcome.errorOutput);
    if (errorClass == NEBSourceControlOwnerNotTrustedErrorClass) {
        examination.add(
            Health::problem, "repository", "owned by another user; git refuses to use it",
            globalSettingAdvice("If you trust it", trustCommandIn(outcome.errorOutput)));
    } else if (errorClass != NEBSourceControlNotARepositoryErrorClass) {
        examination.add(Health::problem, "repository", "git cannot read it: " + reasonOf(outcome));
    } else if (const std::string dotGit = nearestDotGit(examination.folder()); !dotGit.empty()) {
        examination.add(Health::problem, "repository",
                        dotGit + " exists, but git does not recognize it: " + reasonOf(outcome),
                        "Check its HEAD, objects and refs; a .git file names another folder.");
    } else {
        examination.add(Health::note, "repository",
                        examination.folder() + " is not in a repository",
                        "'nebsc init' creates one, 'nebsc clone' copies one.");
    }
}

}  // namespace

void checkRepository(Examination& examination) {
    const ChildOutcome outcome =
        examination.query({"rev-parse", "--path-format=absolute", "--git-dir"});
    if (!outcome.status.isSuccess()) {
        addFailure(examination, outcome);
        return;
    }
    RepositoryLayout layout{
        .gitFolder = trimmedOutputOf(outcome).value_or(""), .commonFolder = {}, .workingCopy = {}};
    layout.commonFolder = trimmedOutputOf(examination.query({"rev-parse", "--path-format=absolute",
                                                             "--git-common-dir"}))
                              .value_or(layout.gitFolder);
    layout.workingCopy =
        trimmedOutputOf(examination.query({"rev-parse", "--show-toplevel"})).value_or("");
    if (!layout.workingCopy.empty() && !isFolder(layout.workingCopy)) {
        examination.add(
            Health::problem, "repository",
            "the working copy " + layout.workingCopy + " is not a folder",
            "'git config --show-origin core.worktree' shows the setting that names it.");
    } else {
        examination.add(Health::ok, "repository",
                        layout.workingCopy.empty()
                            ? layout.gitFolder + ", without a working copy"
                            : "working copy " + layout.workingCopy + ", whose owner git trusts");
    }
    examination.repository = std::move(layout);
}

void checkUnfinishedWork(Examination& examination) {
    for (const UnfinishedWork& row : unfinishedWorkIn(examination.repository->gitFolder)) {
        examination.add(Health::note, "unfinished", std::string(row.work) + " is in progress",
                        std::string(row.advice));
    }
}

}  // namespace neb::nebsc
