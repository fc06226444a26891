#include "GitExtensions/GitStage.h"

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

constexpr const char* pathsFromInput = "--pathspec-from-file=-";
constexpr const char* pathsEndWithNUL = "--pathspec-file-nul";

}  // namespace

void GitStageOperation::perform() {
    if (hasPatch()) {
        applyPatch({"--cached"});
        return;
    }
    std::vector<std::string> arguments{"add", "--all"};
    if (hasOption(NEBSourceControlRequestOptionForce)) {
        arguments.emplace_back("--force");
    }
    if (request()->fileCount() == 0) {
        static_cast<void>(runChange(arguments));
        return;
    }
    arguments.insert(arguments.end(), {pathsFromInput, pathsEndWithNUL});
    static_cast<void>(runChange(arguments, gitNULSeparatedFiles(*request())));
}

bool GitUnstageOperation::keepsConflicts() {
    if (hasOption(NEBSourceControlRequestOptionForce)) {
        return true;
    }
    std::vector<std::string> arguments{"ls-files", "--unmerged", "-z", "--"};
    const auto names =
        request()->fileCount() == 0 ? std::vector<std::string>{":/"} : gitFileNames(*request());
    arguments.insert(arguments.end(), names.begin(), names.end());
    const auto conflicts = runQuery(request(), arguments);
    if (!goesOnAfter(*conflicts)) {
        return false;
    }
    if (!conflicts->output().empty()) {
        fail(NEBSourceControlConflictUnresolvedErrorClass,
             "There are unresolved conflicts, whose versions would be lost.");
        return false;
    }
    return true;
}

void GitUnstageOperation::perform() {
    if (hasPatch()) {
        applyPatch({"--cached", "--reverse"});
        return;
    }
    const auto head = keepsConflicts() ? queriedHead() : std::nullopt;
    if (!head) {
        return;
    }
    if (request()->fileCount() == 0) {
        static_cast<void>(
            runChange(head->empty() ? std::vector<std::string>{"reset", "--quiet"}
                                    : std::vector<std::string>{"restore", "--staged", "--", ":/"}));
        return;
    }
    std::vector<std::string> arguments{"restore", "--staged"};
    if (head->empty()) {
        arguments = {"rm", "--cached", "-r", "--force", "--quiet"};
    }
    arguments.insert(arguments.end(), {pathsFromInput, pathsEndWithNUL});
    static_cast<void>(runChange(arguments, gitNULSeparatedFiles(*request())));
}

}  // namespace neb
