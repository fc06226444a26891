#include "Classes/Configuration/RequestMatrix.h"

#include <ostream>

#include "Classes/Configuration/ChangeCases.h"
#include "Classes/Configuration/ExtensionCases.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/RequestRun.h"

namespace neb::test {

namespace {

using Request = NEBSourceControlRequest;

/// Staged and unstaged changes, a rename, a deleted and an untracked file.
const std::string changes = R"(
printf 'changed\n' >>a.c
git mv old.c renamed.c
printf 'new\n' >new.c
git add new.c
rm dir/b.c
printf 'u\n' >untracked.c
mkdir folder
printf 'u\n' >folder/u.c
printf 'ü\n' >ü.txt
printf 'x\n' >>'sp ace.txt'
)";

void nothingMore(const World& /*world*/, Request& /*request*/) {}

void setFiles(Request& request, const World& world, const std::vector<std::string>& names) {
    request.files.emplace();
    for (const std::string& name : names) {
        request.files->emplace_back(world.repository(name));
    }
}

void setRemote(Request& request, bool isBridge = false) {
    request.remote = std::make_shared<NEBSourceControlRemote>();
    request.remote->representsGitSVNBridge = isBridge;
    request.repositoryToAuthenticate = request.sourceTree;
}

void setRepository(Request& request, std::string location, bool isRemote) {
    auto repository = std::make_shared<NEBSourceControlRepository>();
    repository->location = std::move(location);
    repository->name = "demo";
    repository->isRemoteDistributedRepository = isRemote;
    request.sourceTree = repository;
}

/// Pushes `local` to the branch `there` of the remote "origin".
void setPush(Request& request, const char* local, const char* there) {
    setRemote(request);
    request.destination = there;
    request.options = NEBDictionary{{NEBSourceControlRequestOptionRemoteName, "origin"},
                                    {NEBSourceControlRequestOptionBranch, local}};
}

void setPull(Request& request) {
    setRemote(request);
    request.destination = "origin";
    request.options = NEBDictionary{{NEBSourceControlRequestOptionRemoteName, "origin"},
                                    {NEBSourceControlRequestOptionBranch, "main"},
                                    {NEBSourceControlRequestOptionPullByFastForwarding, true}};
}

/// A local commit, so that a rebase has work to do.
const std::string ownCommit = "printf 'own\\n' >own.c; git add own.c; git commit -q -m Own\n";

std::vector<RequestCase> changesOfFiles() {
    return {
        {"AddOne", NEBSourceControlRequestAdd, changes,
         [](const World& world, Request& request) {
             request.destination = world.repository("untracked.c");
         }},
        {"AddAll", NEBSourceControlRequestAdd, changes, nothingMore},
        {"AddFiles", NEBSourceControlRequestAddFiles, changes,
         [](const World& world, Request& request) {
             setFiles(request, world, {"ü.txt", "folder", "a.c"});
         }},
        {"AddUnknown", NEBSourceControlRequestAddFiles, "",
         [](const World& world, Request& request) { setFiles(request, world, {"nosuch"}); }},
        {"Ignore", NEBSourceControlRequestIgnore, changes, nothingMore},
        {"Remove", NEBSourceControlRequestRemove, changes,
         [](const World& world, Request& request) {
             setFiles(request, world, {"a.c", "é.txt"});
         }},
        {"RemoveUnknown", NEBSourceControlRequestRemove, "",
         [](const World& world, Request& request) { setFiles(request, world, {"é-nosuch"}); }},
        {"Revert", NEBSourceControlRequestRevert, changes,
         [](const World& world, Request& request) {
             setFiles(request, world, {"a.c", "sp ace.txt"});
         }},
        {"RevertUnknown", NEBSourceControlRequestRevert, "",
         [](const World& world, Request& request) { setFiles(request, world, {"nosuch"}); }},
        {"MakeDirectory", NEBSourceControlRequestMakeDirectory, "",
         [](const World& world, Request& request) {
             request.destination = world.repository("made/here");
         }},
        {"Copy", NEBSourceControlRequestCopy, "",
         [](const World& world, Request& request) {
             setFiles(request, world, {"é.txt"});
             request.destination = world.repository("copied é.txt");
         },
         false, "git add 'copied é.txt'"},
        {"Move", NEBSourceControlRequestMove, "",
         [](const World& world, Request& request) {
             setFiles(request, world, {"é.txt"});
             request.destination = world.repository("moved é.txt");
         }},
        {"MoveOntoAnother", NEBSourceControlRequestMove, "",
         [](const World& world, Request& request) {
             setFiles(request, world, {"é.txt"});
             request.destination = world.repository("a.c");
         }},
    };
}

std::vector<RequestCase> commits() {
    return {
        {"Commit", NEBSourceControlRequestCommit, changes,
         [](const World& /*world*/, Request& request) {
             request.options =
                 NEBDictionary{{NEBSourceControlRequestOptionMessage, "Änderung\n\n# no comment"}};
         }},
        {"CommitFile", NEBSourceControlRequestCommit, changes,
         [](const World& world, Request& request) {
             setFiles(request, world, {"sp ace.txt"});
             request.options = NEBDictionary{{NEBSourceControlRequestOptionMessage, "One file"}};
         }},
        {"CommitNothing", NEBSourceControlRequestCommit, "",
         [](const World& /*world*/, Request& request) {
             request.options = NEBDictionary{{NEBSourceControlRequestOptionMessage, "Nothing"}};
         },
         true},
    };
}

std::vector<RequestCase> branches() {
    return {
        {"CreateBranch", NEBSourceControlRequestCreateBranch, "",
         [](const World& /*world*/, Request& request) {
             request.destination = "made";
             request.options =
                 NEBDictionary{{NEBSourceControlRequestOptionSourceLocation, "topic"}};
         }},
        {"CreateBranchTwice", NEBSourceControlRequestCreateBranch, "",
         [](const World& /*world*/, Request& request) { request.destination = "topic"; }},
        {"DeleteBranch", NEBSourceControlRequestDeleteBranch, "",
         [](const World& /*world*/, Request& request) { request.destination = "done"; }},
        {"DeleteUnmerged", NEBSourceControlRequestDeleteBranch, "",
         [](const World& /*world*/, Request& request) { request.destination = "rival"; }},
        {"DeleteForced", NEBSourceControlRequestDeleteBranch, "",
         [](const World& /*world*/, Request& request) {
             request.destination = "rival";
             request.options = NEBDictionary{{NEBSourceControlRequestOptionForce, true}};
         }},
        {"Checkout", NEBSourceControlRequestCheckout, "",
         [](const World& /*world*/, Request& request) { request.destination = "topic"; }},
        {"CheckoutTag", NEBSourceControlRequestCheckout, "",
         [](const World& /*world*/, Request& request) { request.destination = "v1"; }},
        {"CheckoutFromDetached", NEBSourceControlRequestCheckout, "git checkout -q v1",
         [](const World& /*world*/, Request& request) { request.destination = "main"; }},
        {"CheckoutUnknown", NEBSourceControlRequestCheckout, "",
         [](const World& /*world*/, Request& request) { request.destination = "nosuch"; }},
        {"Merge", NEBSourceControlRequestMerge, "",
         [](const World& /*world*/, Request& request) { request.destination = "topic"; }},
        {"MergeRival", NEBSourceControlRequestMerge, "",
         [](const World& /*world*/, Request& request) { request.destination = "rival"; }},
        {"MergeWithConflict", NEBSourceControlRequestMerge,
         "git checkout -q rival; git rm -q a.c; git commit -q -m Away\n",
         [](const World& /*world*/, Request& request) { request.destination = "main"; }},
        {"MergeUnknown", NEBSourceControlRequestMerge, "",
         [](const World& /*world*/, Request& request) { request.destination = "nosuch"; }},
        {"MergeBase", NEBSourceControlRequestMergeBase, "",
         [](const World& /*world*/, Request& request) {
             request.startingRevision = "main";
             request.endingRevision = "topic";
         }},
        {"ListBranches", NEBSourceControlRequestListBranches, "",
         [](const World& /*world*/, Request& request) { setRemote(request); }},
        {"CurrentBranch", NEBSourceControlRequestCurrentBranch, "git checkout -q topic",
         nothingMore},
        {"TrackingBranchName", NEBSourceControlRequestTrackingBranchName, "",
         [](const World& /*world*/, Request& request) {
             request.options = NEBDictionary{{NEBSourceControlRequestOptionBranch, "main"}};
         }},
    };
}

std::vector<RequestCase> history() {
    return {
        {"Status", NEBSourceControlRequestStatus, changes, nothingMore},
        {"StatusOfFolder", NEBSourceControlRequestStatus, changes,
         [](const World& world, Request& request) {
             request.destination = world.repository("folder");
         }},
        {"List", NEBSourceControlRequestList, "",
         [](const World& /*world*/, Request& request) { request.files = valuesOf({"dir"}); }},
        {"Log", NEBSourceControlRequestLog, "", nothingMore},
        {"LogWithFiles", NEBSourceControlRequestLog, "",
         [](const World& /*world*/, Request& request) {
             request.options =
                 NEBDictionary{{NEBSourceControlRequestOptionLogOutputFilesChanged, true},
                               {NEBSourceControlRequestOptionLogOutputLimit, 4}};
         }},
        {"LogOfFile", NEBSourceControlRequestLog, "",
         [](const World& world, Request& request) {
             setFiles(request, world, {"moved.c"});
             request.options =
                 NEBDictionary{{NEBSourceControlRequestOptionLogOutputFilesChanged, true}};
         }},
        {"LogOfUnknown", NEBSourceControlRequestLog, "",
         [](const World& /*world*/, Request& request) { request.startingRevision = "nosuch"; }},
        {"Info", NEBSourceControlRequestInfo, "", nothingMore},
        {"Blame", NEBSourceControlRequestBlame, "",
         [](const World& world, Request& request) { setFiles(request, world, {"a.c"}); }},
        {"BlameAtRevision", NEBSourceControlRequestBlame, "",
         [](const World& world, Request& request) {
             setFiles(request, world, {"moved.c"});
             request.startingRevision = "main";
         }},
        {"BlameOfUnknown", NEBSourceControlRequestBlame, "",
         [](const World& world, Request& request) { setFiles(request, world, {"nosuch"}); }},
        {"Diff", NEBSourceControlRequestDiff, changes, nothingMore},
        {"DiffOfRevisions", NEBSourceControlRequestDiff, "",
         [](const World& /*world*/, Request& request) {
             request.startingRevision = "v1";
             request.endingRevision = "main";
         }},
        {"DiffNames", NEBSourceControlRequestDiff, changes,
         [](const World& /*world*/, Request& request) {
             request.options =
                 NEBDictionary{{NEBSourceControlRequestOptionDiffFileNameAndStatusOnly, true}};
         }},
        {"DiffAfterTouch", NEBSourceControlRequestDiff, "touch -d '2001-01-01 00:00' a.c",
         nothingMore},
    };
}

std::vector<RequestCase> exports() {
    return {
        {"ExportFiles", NEBSourceControlRequestExportFiles, "",
         [](const World& world, Request& request) {
             setFiles(request, world, {"é.txt"});
             request.startingRevision = "main";
         }},
        {"Export", NEBSourceControlRequestExport, "",
         [](const World& world, Request& request) {
             setFiles(request, world, {"dir/b.c"});
             request.startingRevision = "v1";
             request.destination = world.path("tmp/exported b.c");
         }},
        {"ExportTree", NEBSourceControlRequestExportTree, "",
         [](const World& world, Request& request) {
             request.startingRevision = "main";
             request.destination = world.path("tmp/tree");
         }},
    };
}

std::vector<RequestCase> exchange() {
    return {
        {"ListRemotes", NEBSourceControlRequestListRemotes, "", nothingMore},
        {"ListBranchesThere", NEBSourceControlRequestListBranches, "",
         [](const World& world, Request& request) {
             setRepository(request, world.repository(), true);
             setRemote(request);
             request.files = valuesOf({world.path("remote.git")});
         }},
        {"ListRemoteBranches", NEBSourceControlRequestListRemoteBranches, "", nothingMore},
        {"ListRemoteBranchesOfURL", NEBSourceControlRequestListRemoteBranchesSecondForm, "",
         [](const World& world, Request& request) {
             request.files = valuesOf({"file://" + world.path("remote.git")});
         }},
    };
}

std::vector<RequestCase> newRepositories() {
    return {
        {"CreateRepository", NEBSourceControlRequestCreateRepository, "mkdir ../made",
         [](const World& world, Request& request) {
             request.sourceTree->location = world.path("made");
         }},
        {"CreateBareRepository", NEBSourceControlRequestCreateRepository, "",
         [](const World& world, Request& request) {
             request.options = NEBDictionary{
                 {NEBSourceControlRequestOptionRepositoryPath, world.path("made.git")}};
         }},
        {"Clone", NEBSourceControlRequestClone, "mkdir ../cloned",
         [](const World& world, Request& request) {
             request.sourceTree->location = world.path("remote.git");
             request.destination = world.path("cloned");
             setRemote(request);
         }},
        {"CloneOfNothing", NEBSourceControlRequestClone, "mkdir ../cloned",
         [](const World& world, Request& request) {
             request.sourceTree->location = world.path("nosuch.git");
             request.destination = world.path("cloned");
             setRemote(request);
         }},
        {"Push", NEBSourceControlRequestPush, ownCommit + "git pull -q --rebase origin main\n",
         [](const World& /*world*/, Request& request) { setPush(request, "main", "main"); }},
        {"PushOfNewBranch", NEBSourceControlRequestPush, "",
         [](const World& /*world*/, Request& request) { setPush(request, "rival", "new"); }},
        {"PushRejected", NEBSourceControlRequestPush, ownCommit,
         [](const World& /*world*/, Request& request) { setPush(request, "main", "main"); }},
    };
}

std::vector<RequestCase> remotes() {
    return {
        {"AddRemote", NEBSourceControlRequestAddRemote, "",
         [](const World& world, Request& request) {
             request.destination = "second";
             request.files = valuesOf({world.path("other")});
         }},
        {"AddRemoteTwice", NEBSourceControlRequestAddRemote, "",
         [](const World& world, Request& request) {
             request.destination = "origin";
             request.files = valuesOf({world.path("other")});
         }},
        {"RemoveRemote", NEBSourceControlRequestRemoveRemote, "",
         [](const World& /*world*/, Request& request) { request.destination = "origin"; }},
        {"RemoveUnknownRemote", NEBSourceControlRequestRemoveRemote, "",
         [](const World& /*world*/, Request& request) { request.destination = "nosuch"; }},
        {"TrackRemoteBranch", NEBSourceControlRequestTrackRemoteBranch, "",
         [](const World& /*world*/, Request& request) {
             request.destination = "tracking";
             request.options = NEBDictionary{{NEBSourceControlRequestOptionRemoteName, "origin"},
                                             {NEBSourceControlRequestOptionBranch, "news"}};
         }},
    };
}

std::vector<RequestCase> updates() {
    return {
        {"Fetch", NEBSourceControlRequestFetch, "",
         [](const World& /*world*/, Request& request) {
             setRemote(request);
             request.options = NEBDictionary{{NEBSourceControlRequestOptionRemoteName, "origin"}};
         }},
        {"FetchOfNothing", NEBSourceControlRequestFetch, "",
         [](const World& /*world*/, Request& request) {
             setRemote(request);
             request.options = NEBDictionary{{NEBSourceControlRequestOptionRemoteName, "nosuch"}};
         }},
        {"Pull", NEBSourceControlRequestUpdate, "",
         [](const World& /*world*/, Request& request) { setPull(request); }},
        {"PullOfNothingNew", NEBSourceControlRequestUpdate, "git pull -q --ff-only origin main",
         [](const World& /*world*/, Request& request) { setPull(request); }},
        {"PullThatDiverges", NEBSourceControlRequestUpdate, ownCommit,
         [](const World& /*world*/, Request& request) { setPull(request); }},
        {"UpdateByMerge", NEBSourceControlRequestUpdate, ownCommit + "git fetch -q origin",
         [](const World& /*world*/, Request& request) {
             setRemote(request);
             request.destination = "origin/main";
         }},
        {"UpdateByRebase", NEBSourceControlRequestUpdate, ownCommit + "git fetch -q origin",
         [](const World& /*world*/, Request& request) {
             setRemote(request, true);
             request.destination = "origin/main";
         }},
    };
}

}  // namespace

void PrintTo(const RequestCase& requestCase, std::ostream* stream) {
    *stream << requestCase.name;
}

const std::vector<RequestCase>& requestMatrix() {
    static const std::vector<RequestCase> matrix = [] {
        std::vector<RequestCase> all;
        for (const auto& family :
             {changesOfFiles(), commits(), branches(), history(), exports(), exchange(),
              newRepositories(), remotes(), updates(), extensionCases(), changeCases()}) {
            all.insert(all.end(), family.begin(), family.end());
        }
        return all;
    }();
    return matrix;
}

std::shared_ptr<NEBSourceControlRequest> preparedRequest(const World& world,
                                                         const RequestCase& requestCase) {
    world.run(requestCase.preparation);
    auto request = requestFor(requestCase.type, world.repository());
    requestCase.fill(world, *request);
    return request;
}

}  // namespace neb::test
