#include "GitExtensions/GitPick.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "GitExtensions/GitRecordFields.h"
#include "GitExtensions/GitUnfinishedOperation.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Interceptor.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

/// Whether something other than a folder is at the path.
bool isFile(const std::string& path) {
    return interceptedFact("is file", path, [&path] {
        std::error_code ignored;
        const auto status = std::filesystem::symlink_status(path, ignored);
        return std::filesystem::exists(status) && !std::filesystem::is_directory(status);
    });
}

}  // namespace

void GitPickOperation::perform() {
    const std::string wanted = action("cherry-pick");
    if (wanted != "cherry-pick" && wanted != "revert" && wanted != "reset") {
        failForOption(NEBSourceControlRequestOptionAction);
        return;
    }
    if (!request()->startingRevision.isPresent()) {
        fail(NEBSourceControlRequestInvalidErrorClass, "The request lacks the name of a commit.");
        return;
    }
    if (wanted != "reset" && hasOption(NEBSourceControlRequestOptionDryRun)) {
        fail(NEBSourceControlRequestInvalidErrorClass,
             "Only a reset can report what it would throw away.");
        return;
    }
    if (!gitAcceptsInteger(*request(), NEBSourceControlRequestOptionMainline, 1)) {
        failForOption(NEBSourceControlRequestOptionMainline);
        return;
    }
    const auto commit = queriedCommit(request()->startingRevision);
    if (!commit) {
        return;
    }
    if (wanted == "reset") {
        reset(*commit);
    } else {
        applyCommit(wanted, *commit);
    }
}

void GitPickOperation::applyCommit(const std::string& command, const std::string& commit) {
    std::vector<std::string> arguments;
    if (command == "revert") {
        arguments.emplace_back("--no-edit");
    }
    const NEBValue& mainline = request()->option(NEBSourceControlRequestOptionMainline);
    if (mainline.isPresent()) {
        arguments.push_back("--mainline=" + mainline.description());
    }
    arguments.push_back(commit);
    runMerge({{}, command, arguments});
}

bool GitPickOperation::losesNoChanges(const NEBSourceControlResult& changes) {
    std::vector<std::string> lost;
    for (const NEBDictionary& change : changes) {
        if (change.text(NEBSourceControlOperationStateKey) != "deleted") {
            lost.emplace_back(change.text(NEBSourceControlOperationPathKey));
        }
    }
    if (!lost.empty()) {
        fail(NEBSourceControlLocalChangesErrorClass,
             "Local changes would be lost. The request does not allow to throw them away.",
             std::move(lost));
    }
    return !error();
}

/// Adds a record for each untracked file whose name a file of the commit has.
bool GitPickOperation::addOverwrittenFiles(const std::string& commit,
                                           NEBSourceControlResult& changes) {
    const auto top = queriedLine({"rev-parse", "--show-toplevel"});
    if (!top) {
        return false;
    }
    // Deleted means: the commit has it, but not the index.
    const auto query = runQuery(request(), {"diff", "--cached", "--name-only", "-z", "--no-renames",
                                            "--diff-filter=D", commit, "--", ":/"});
    if (!goesOnAfter(*query)) {
        return false;
    }
    for (const std::string& path : gitNULSeparatedPieces(query->output())) {
        if (isFile(pathByAppendingComponent(*top, path))) {
            NEBDictionary& record = changes.emplace_back();
            gitSetName(record, gitPathKeys, path);
            record.set(NEBSourceControlOperationStateKey, "untracked");
        }
    }
    return true;
}

/// A reset overwrites untracked files and prints nothing; `git read-tree -m -u` refuses to.
bool GitPickOperation::overwritesNoFiles(const std::string& commit) {
    return runChange({"read-tree", "-m", "-u", "--dry-run", commit});
}

bool GitPickOperation::endsNoConflict() {
    const auto conflicts = run<GitConflictsOperation>(request());
    if (goesOnAfter(*conflicts) &&
        !conflicts->result().value_or(NEBSourceControlResult()).empty()) {
        fail(NEBSourceControlConflictUnresolvedErrorClass,
             "There are unresolved conflicts, whose versions would be lost.");
    }
    return !error();
}

void GitPickOperation::reset(const std::string& commit) {
    constexpr std::string_view modes[] = {"soft", "mixed", "hard"};
    const NEBValue& option = request()->option(NEBSourceControlRequestOptionResetMode);
    const std::string mode = option.isPresent() ? option.description() : "mixed";
    if (std::ranges::find(modes, mode) == std::end(modes)) {
        failForOption(NEBSourceControlRequestOptionResetMode);
        return;
    }
    const bool isHard = mode == "hard";
    auto changes = isHard ? queriedLocalChanges() : NEBSourceControlResult();
    if (!changes) {
        return;
    }
    if (hasOption(NEBSourceControlRequestOptionDryRun)) {
        if (isHard && !addOverwrittenFiles(commit, *changes)) {
            return;
        }
        setResult(std::move(changes));
        return;
    }
    const bool mayLose = mode == "soft" || hasOption(NEBSourceControlRequestOptionForce);
    if (!mayLose &&
        !(isHard ? losesNoChanges(*changes) && overwritesNoFiles(commit) : endsNoConflict())) {
        return;
    }
    runStoppable({"reset", "--quiet", "--" + mode, commit, "--"});
}

}  // namespace neb
