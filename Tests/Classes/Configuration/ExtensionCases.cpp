#include "Classes/Configuration/ExtensionCases.h"

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"

namespace neb::test {

namespace {

void nothingMore(const World& /*world*/, NEBSourceControlRequest& /*request*/) {}

void oneFile(const World& /*world*/, NEBSourceControlRequest& request) {
    request.files = {NEBValue("a.c")};
}

/// Staged and unstaged changes, a rename and an untracked file.
const std::string changes = R"(
printf 'changed\n' >>a.c
git mv old.c renamed.c
printf 'new\n' >new.c
git add new.c
printf 'u\n' >ü.txt
)";

}  // namespace

std::vector<RequestCase> extensionCases() {
    return {
        {"WorkingCopyState", NEBSourceControlRequestWorkingCopyState, changes, nothingMore},
        {"History", NEBSourceControlRequestHistory, "", nothingMore},
        {"HistoryWithFiles", NEBSourceControlRequestHistory, "",
         [](const World& /*world*/, NEBSourceControlRequest& request) {
             request.options =
                 NEBDictionary{{NEBSourceControlRequestOptionLogOutputFilesChanged, true},
                               {NEBSourceControlRequestOptionLineCounts, true}};
         }},
        {"Content", NEBSourceControlRequestContent, "", oneFile},
        {"Annotation", NEBSourceControlRequestAnnotation, changes, oneFile},
        {"Changes", NEBSourceControlRequestChanges, changes, nothingMore},
        {"ChangesStaged", NEBSourceControlRequestChanges, changes,
         [](const World& /*world*/, NEBSourceControlRequest& request) {
             request.options = NEBDictionary{{NEBSourceControlRequestOptionStaged, true}};
         }},
        {"References", NEBSourceControlRequestReferences, "git tag -a -m Second v2", nothingMore},
        {"UnfinishedOperation", NEBSourceControlRequestUnfinishedOperation,
         "git merge -q rival || true", nothingMore},
        {"Submodules", NEBSourceControlRequestSubmodules,
         "git config -f .gitmodules submodule.s.path sub\ngit config -f .gitmodules "
         "submodule.s.url ../s",
         nothingMore},
        {"Worktrees", NEBSourceControlRequestWorktrees, "", nothingMore},
        {"Settings", NEBSourceControlRequestSettings, "",
         [](const World& /*world*/, NEBSourceControlRequest& request) {
             request.options = NEBDictionary{
                 {NEBSourceControlRequestOptionSettingNames, std::vector<NEBValue>{"core.bare"}}};
         }},
        {"Tree", NEBSourceControlRequestTree, "",
         [](const World& /*world*/, NEBSourceControlRequest& request) {
             request.options = NEBDictionary{{NEBSourceControlRequestOptionRecursive, true}};
         }},
    };
}

}  // namespace neb::test
