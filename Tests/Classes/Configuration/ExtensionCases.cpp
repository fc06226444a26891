#include "Classes/Configuration/ExtensionCases.h"

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"

namespace neb::test {

namespace {

void noOptions(const World& /*world*/, NEBSourceControlRequest& /*request*/) {}

void oneFile(const World& /*world*/, NEBSourceControlRequest& request) {
    request.files = {NEBValue("a.c")};
}

/// Staged and unstaged changes, a rename and an untracked file.
const std::string changesOfEveryKind = R"(
printf 'changed\n' >>a.c
git mv old.c renamed.c
printf 'new\n' >new.c
git add new.c
printf 'u\n' >ü.txt
)";

}  // namespace

std::vector<RequestCase> extensionCases() {
    return {
        {"WorkingCopyState", NEBSourceControlRequestWorkingCopyState, changesOfEveryKind,
         noOptions},
        {"History", NEBSourceControlRequestHistory, "", noOptions},
        {"HistoryWithFiles", NEBSourceControlRequestHistory, "",
         [](const World& /*world*/, NEBSourceControlRequest& request) {
             request.options =
                 NEBDictionary{{NEBSourceControlRequestOptionLogOutputFilesChanged, true},
                               {NEBSourceControlRequestOptionLineCounts, true}};
         }},
        {"Content", NEBSourceControlRequestContent, "", oneFile},
        {"Annotation", NEBSourceControlRequestAnnotation, changesOfEveryKind, oneFile},
        {"Changes", NEBSourceControlRequestChanges, changesOfEveryKind, noOptions},
        {"ChangesStaged", NEBSourceControlRequestChanges, changesOfEveryKind,
         [](const World& /*world*/, NEBSourceControlRequest& request) {
             request.options = NEBDictionary{{NEBSourceControlRequestOptionStaged, true}};
         }},
        {"References", NEBSourceControlRequestReferences, "git tag -a -m Second v2", noOptions},
        {"UnfinishedOperation", NEBSourceControlRequestUnfinishedOperation,
         "git merge -q rival || true", noOptions},
        {"Submodules", NEBSourceControlRequestSubmodules,
         "git config -f .gitmodules submodule.s.path sub\ngit config -f .gitmodules "
         "submodule.s.url ../s",
         noOptions},
        {"Worktrees", NEBSourceControlRequestWorktrees, "", noOptions},
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
