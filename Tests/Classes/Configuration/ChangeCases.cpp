#include "Classes/Configuration/ChangeCases.h"

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"

namespace neb::test {

namespace {

using Request = NEBSourceControlRequest;

/// Staged and unstaged changes, and an untracked file.
const std::string someChanges = R"(
printf 'changed\n' >>a.c
printf 'new\n' >new.c
git add new.c
rm dir/b.c
printf 'u\n' >untracked.c
)";

/// Sets the options, and what a request that contacts a server needs.
void setOptions(Request& request, NEBDictionary options) {
    request.options = std::move(options);
    request.repositoryToAuthenticate = request.sourceTree;
}

void setAction(Request& request, const char* action) {
    setOptions(request, {{NEBSourceControlRequestOptionAction, action}});
}

std::vector<RequestCase> indexCases() {
    return {
        {"Stage", NEBSourceControlRequestStage, someChanges,
         [](const World& /*world*/, Request& request) {
             request.files = {NEBValue("a.c"), NEBValue("dir")};
         }},
        {"StagePatch", NEBSourceControlRequestStage, someChanges,
         [](const World& world, Request& request) {
             setOptions(request, {{NEBSourceControlRequestOptionPatch,
                                   world.run("git diff --no-textconv --no-ext-diff -- a.c")}});
         }},
        {"Unstage", NEBSourceControlRequestUnstage, someChanges,
         [](const World& /*world*/, Request& /*request*/) {}},
        {"Discard", NEBSourceControlRequestDiscard, someChanges,
         [](const World& /*world*/, Request& request) {
             setOptions(request, {{NEBSourceControlRequestOptionForce, true},
                                  {NEBSourceControlRequestOptionIncludeUntracked, true}});
         }},
        {"DiscardRefused", NEBSourceControlRequestDiscard, someChanges,
         [](const World& /*world*/, Request& /*request*/) {}},
        {"CreateCommit", NEBSourceControlRequestCreateCommit, someChanges,
         [](const World& /*world*/, Request& request) {
             setOptions(request, {{NEBSourceControlRequestOptionMessage, "Änderung\n\n# kept"},
                                  {NEBSourceControlRequestOptionAll, true}});
         }},
    };
}

std::vector<RequestCase> stashCases() {
    return {
        {"StashPush", NEBSourceControlRequestStash, someChanges,
         [](const World& /*world*/, Request& request) { setAction(request, "push"); }},
        {"StashList", NEBSourceControlRequestStash, "",
         [](const World& /*world*/, Request& /*request*/) {}},
        {"StashShow", NEBSourceControlRequestStash, "",
         [](const World& /*world*/, Request& request) { setAction(request, "show"); }},
        {"StashPop", NEBSourceControlRequestStash, "",
         [](const World& /*world*/, Request& request) { setAction(request, "pop"); }},
    };
}

std::vector<RequestCase> historyCases() {
    return {
        {"Publish", NEBSourceControlRequestPublish, "",
         [](const World& /*world*/, Request& request) {
             request.destination = "refs/heads/new";
             setOptions(request, {{NEBSourceControlRequestOptionRemoteName, "origin"},
                                  {NEBSourceControlRequestOptionBranch, "rival"}});
         }},
        {"PublishRejected", NEBSourceControlRequestPublish,
         "printf 'own\\n' >own.c; git add own.c; git commit -q -m Own\n",
         [](const World& /*world*/, Request& request) {
             setOptions(request, {{NEBSourceControlRequestOptionRemoteName, "origin"},
                                  {NEBSourceControlRequestOptionBranch, "main"}});
         }},
        {"Integrate", NEBSourceControlRequestIntegrate, "",
         [](const World& /*world*/, Request& request) { setOptions(request, {}); }},
        {"IntegrateWithConflict", NEBSourceControlRequestIntegrate, "",
         [](const World& /*world*/, Request& request) {
             request.destination = "rival";
             setOptions(request, {{NEBSourceControlRequestOptionStrategy, "merge"}});
         }},
        {"IntegrateByRebase", NEBSourceControlRequestIntegrate,
         "printf 'own\\n' >own.c; git add own.c; git commit -q -m 'fixup! Move'\n",
         [](const World& /*world*/, Request& request) {
             request.destination = "topic";
             setOptions(request, {{NEBSourceControlRequestOptionStrategy, "rebase"}});
         }},
        {"Pick", NEBSourceControlRequestPick, "",
         [](const World& /*world*/, Request& request) { request.startingRevision = "topic"; }},
        {"Reset", NEBSourceControlRequestPick, "",
         [](const World& /*world*/, Request& request) {
             request.startingRevision = "v1";
             setOptions(request, {{NEBSourceControlRequestOptionAction, "reset"},
                                  {NEBSourceControlRequestOptionResetMode, "hard"}});
         }},
        {"Tag", NEBSourceControlRequestTag, "",
         [](const World& /*world*/, Request& request) {
             request.destination = "v9";
             setOptions(request, {{NEBSourceControlRequestOptionMessage, "Nine"}});
         }},
        {"Finish", NEBSourceControlRequestFinish, "git merge -q rival || true",
         [](const World& /*world*/, Request& request) { setAction(request, "abort"); }},
    };
}

std::vector<RequestCase> repositoryCases() {
    return {
        {"ChangeBranch", NEBSourceControlRequestChangeBranch, "",
         [](const World& /*world*/, Request& request) {
             request.destination = "renamed";
             setOptions(request, {{NEBSourceControlRequestOptionAction, "rename"},
                                  {NEBSourceControlRequestOptionBranch, "rival"}});
         }},
        {"WorktreeAdd", NEBSourceControlRequestWorktrees, "",
         [](const World& world, Request& request) {
             request.destination = world.path("added");
             setOptions(request, {{NEBSourceControlRequestOptionAction, "add"},
                                  {NEBSourceControlRequestOptionBranch, "rival"}});
         }},
        {"WorktreeRemove", NEBSourceControlRequestWorktrees, "git worktree add -q ../added rival",
         [](const World& world, Request& request) {
             request.destination = world.path("added");
             setAction(request, "remove");
         }},
        {"SubmoduleInit", NEBSourceControlRequestSubmodules,
         "git config -f .gitmodules submodule.s.path sub\ngit config -f .gitmodules "
         "submodule.s.url ../s\ngit update-index --add --cacheinfo 160000,$(git rev-parse "
         "HEAD),sub",
         [](const World& /*world*/, Request& request) { setAction(request, "init"); }},
        {"SetSetting", NEBSourceControlRequestSettings, "",
         [](const World& /*world*/, Request& request) {
             setOptions(request, {{NEBSourceControlRequestOptionAction, "set"},
                                  {NEBSourceControlRequestOptionSettingNames, "neb.test"},
                                  {NEBSourceControlRequestOptionValue, "1"}});
         }},
    };
}

}  // namespace

std::vector<RequestCase> changeCases() {
    std::vector<RequestCase> all = indexCases();
    for (const auto& family : {stashCases(), historyCases(), repositoryCases()}) {
        all.insert(all.end(), family.begin(), family.end());
    }
    return all;
}

}  // namespace neb::test
