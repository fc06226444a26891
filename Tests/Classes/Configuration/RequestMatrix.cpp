#include "Classes/Configuration/RequestMatrix.h"

#include <ostream>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Support/RequestRun.h"

namespace neb::test {

namespace {

using Request = NEBSourceControlRequest;

/// Changes of every kind: staged and not, a rename, something deleted, something untracked.
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

/// "LOCAL:THERE" of the remote "origin".
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

/// With a commit of the local branch on top, so that a rebase has something to do.
const std::string ownCommit = "printf 'own\\n' >own.c; git add own.c; git commit -q -m Own\n";

std::vector<RequestCase> changesOfFiles() {
    return {
        {"AddOne", 0, changes,
         [](const World& world, Request& request) {
             request.destination = world.repository("untracked.c");
         }},
        {"AddAll", 0, changes, nothingMore},
        {"AddFiles", 6, changes,
         [](const World& world, Request& request) {
             setFiles(request, world, {"ü.txt", "folder", "a.c"});
         }},
        {"AddUnknown", 6, "",
         [](const World& world, Request& request) { setFiles(request, world, {"nosuch"}); }},
        {"Ignore", 4, changes, nothingMore},
        {"Remove", 5, changes,
         [](const World& world, Request& request) {
             setFiles(request, world, {"a.c", "é.txt"});
         }},
        {"RemoveUnknown", 5, "",
         [](const World& world, Request& request) { setFiles(request, world, {"é-nosuch"}); }},
        {"Revert", 7, changes,
         [](const World& world, Request& request) {
             setFiles(request, world, {"a.c", "sp ace.txt"});
         }},
        {"RevertUnknown", 7, "",
         [](const World& world, Request& request) { setFiles(request, world, {"nosuch"}); }},
        {"MakeDirectory", 8, "",
         [](const World& world, Request& request) {
             request.destination = world.repository("made/here");
         }},
        {"Copy", 10, "",
         [](const World& world, Request& request) {
             setFiles(request, world, {"é.txt"});
             request.destination = world.repository("copied é.txt");
         },
         false, "git add 'copied é.txt'"},
        {"Move", 11, "",
         [](const World& world, Request& request) {
             setFiles(request, world, {"é.txt"});
             request.destination = world.repository("moved é.txt");
         }},
        {"MoveOntoAnother", 11, "",
         [](const World& world, Request& request) {
             setFiles(request, world, {"é.txt"});
             request.destination = world.repository("a.c");
         }},
        {"Commit", 3, changes,
         [](const World& /*world*/, Request& request) {
             request.options =
                 NEBDictionary{{NEBSourceControlRequestOptionMessage, "Änderung\n\n# no comment"}};
         }},
        {"CommitFile", 3, changes,
         [](const World& world, Request& request) {
             setFiles(request, world, {"sp ace.txt"});
             request.options = NEBDictionary{{NEBSourceControlRequestOptionMessage, "One file"}};
         }},
        {"CommitNothing", 3, "",
         [](const World& /*world*/, Request& request) {
             request.options = NEBDictionary{{NEBSourceControlRequestOptionMessage, "Nothing"}};
         },
         true},
    };
}

std::vector<RequestCase> branches() {
    return {
        {"CreateBranch", 1, "",
         [](const World& /*world*/, Request& request) {
             request.destination = "made";
             request.options =
                 NEBDictionary{{NEBSourceControlRequestOptionSourceLocation, "topic"}};
         }},
        {"CreateBranchTwice", 1, "",
         [](const World& /*world*/, Request& request) { request.destination = "topic"; }},
        {"DeleteBranch", 2, "",
         [](const World& /*world*/, Request& request) { request.destination = "done"; }},
        {"DeleteUnmerged", 2, "",
         [](const World& /*world*/, Request& request) { request.destination = "rival"; }},
        {"DeleteForced", 2, "",
         [](const World& /*world*/, Request& request) {
             request.destination = "rival";
             request.options = NEBDictionary{{NEBSourceControlRequestOptionForce, true}};
         }},
        {"Checkout", 14, "",
         [](const World& /*world*/, Request& request) { request.destination = "topic"; }},
        {"CheckoutTag", 14, "",
         [](const World& /*world*/, Request& request) { request.destination = "v1"; }},
        {"CheckoutFromDetached", 14, "git checkout -q v1",
         [](const World& /*world*/, Request& request) { request.destination = "main"; }},
        {"CheckoutUnknown", 14, "",
         [](const World& /*world*/, Request& request) { request.destination = "nosuch"; }},
        {"Merge", 9, "",
         [](const World& /*world*/, Request& request) { request.destination = "topic"; }},
        {"MergeRival", 9, "",
         [](const World& /*world*/, Request& request) { request.destination = "rival"; }},
        {"MergeWithConflict", 9, "git checkout -q rival; git rm -q a.c; git commit -q -m Away\n",
         [](const World& /*world*/, Request& request) { request.destination = "main"; }},
        {"MergeUnknown", 9, "",
         [](const World& /*world*/, Request& request) { request.destination = "nosuch"; }},
        {"MergeBase", 39, "",
         [](const World& /*world*/, Request& request) {
             request.startingRevision = "main";
             request.endingRevision = "topic";
         }},
        {"ListBranches", 25, "",
         [](const World& /*world*/, Request& request) { setRemote(request); }},
        {"CurrentBranch", 26, "git checkout -q topic", nothingMore},
        {"TrackingBranchName", 38, "",
         [](const World& /*world*/, Request& request) {
             request.options = NEBDictionary{{NEBSourceControlRequestOptionBranch, "main"}};
         }},
    };
}

std::vector<RequestCase> history() {
    return {
        {"Status", 15, changes, nothingMore},
        {"StatusOfFolder", 15, changes,
         [](const World& world, Request& request) {
             request.destination = world.repository("folder");
         }},
        {"List", 17, "",
         [](const World& /*world*/, Request& request) { request.files = valuesOf({"dir"}); }},
        {"Log", 18, "", nothingMore},
        {"LogWithFiles", 18, "",
         [](const World& /*world*/, Request& request) {
             request.options =
                 NEBDictionary{{NEBSourceControlRequestOptionLogOutputFilesChanged, true},
                               {NEBSourceControlRequestOptionLogOutputLimit, 4}};
         }},
        {"LogOfFile", 18, "",
         [](const World& world, Request& request) {
             setFiles(request, world, {"moved.c"});
             request.options =
                 NEBDictionary{{NEBSourceControlRequestOptionLogOutputFilesChanged, true}};
         }},
        {"LogOfUnknown", 18, "",
         [](const World& /*world*/, Request& request) { request.startingRevision = "nosuch"; }},
        {"Info", 19, "", nothingMore},
        {"Blame", 28, "",
         [](const World& world, Request& request) { setFiles(request, world, {"a.c"}); }},
        {"BlameAtRevision", 28, "",
         [](const World& world, Request& request) {
             setFiles(request, world, {"moved.c"});
             request.startingRevision = "main";
         }},
        {"BlameOfUnknown", 28, "",
         [](const World& world, Request& request) { setFiles(request, world, {"nosuch"}); }},
        {"Diff", 30, changes, nothingMore},
        {"DiffOfRevisions", 30, "",
         [](const World& /*world*/, Request& request) {
             request.startingRevision = "v1";
             request.endingRevision = "main";
         }},
        {"DiffNames", 30, changes,
         [](const World& /*world*/, Request& request) {
             request.options =
                 NEBDictionary{{NEBSourceControlRequestOptionDiffFileNameAndStatusOnly, true}};
         }},
        {"DiffAfterTouch", 30, "touch -d '2001-01-01 00:00' a.c", nothingMore},
        {"ExportFiles", 20, "",
         [](const World& world, Request& request) {
             setFiles(request, world, {"é.txt"});
             request.startingRevision = "main";
         }},
        {"Export", 21, "",
         [](const World& world, Request& request) {
             setFiles(request, world, {"dir/b.c"});
             request.startingRevision = "v1";
             request.destination = world.path("tmp/exported b.c");
         }},
        {"ExportTree", 22, "",
         [](const World& world, Request& request) {
             request.startingRevision = "main";
             request.destination = world.path("tmp/tree");
         }},
    };
}

std::vector<RequestCase> exchange() {
    return {
        {"ListRemotes", 24, "", nothingMore},
        {"ListBranchesThere", 25, "",
         [](const World& world, Request& request) {
             setRepository(request, world.repository(), true);
             setRemote(request);
             request.files = valuesOf({world.path("remote.git")});
         }},
        {"ListRemoteBranches", 31, "", nothingMore},
        {"ListRemoteBranchesOfURL", 32, "",
         [](const World& world, Request& request) {
             request.files = valuesOf({"file://" + world.path("remote.git")});
         }},
        {"CreateRepository", 27, "mkdir ../made",
         [](const World& world, Request& request) {
             request.sourceTree->location = world.path("made");
         }},
        {"CreateBareRepository", 27, "",
         [](const World& world, Request& request) {
             request.options = NEBDictionary{
                 {NEBSourceControlRequestOptionRepositoryPath, world.path("made.git")}};
         }},
        {"Clone", 29, "mkdir ../cloned",
         [](const World& world, Request& request) {
             request.sourceTree->location = world.path("remote.git");
             request.destination = world.path("cloned");
             setRemote(request);
         }},
        {"CloneOfNothing", 29, "mkdir ../cloned",
         [](const World& world, Request& request) {
             request.sourceTree->location = world.path("nosuch.git");
             request.destination = world.path("cloned");
             setRemote(request);
         }},
        {"Push", 33, ownCommit + "git pull -q --rebase origin main\n",
         [](const World& /*world*/, Request& request) { setPush(request, "main", "main"); }},
        {"PushOfNewBranch", 33, "",
         [](const World& /*world*/, Request& request) { setPush(request, "rival", "new"); }},
        {"PushRejected", 33, ownCommit,
         [](const World& /*world*/, Request& request) { setPush(request, "main", "main"); }},
        {"AddRemote", 34, "",
         [](const World& world, Request& request) {
             request.destination = "second";
             request.files = valuesOf({world.path("other")});
         }},
        {"AddRemoteTwice", 34, "",
         [](const World& world, Request& request) {
             request.destination = "origin";
             request.files = valuesOf({world.path("other")});
         }},
        {"RemoveRemote", 35, "",
         [](const World& /*world*/, Request& request) { request.destination = "origin"; }},
        {"RemoveUnknownRemote", 35, "",
         [](const World& /*world*/, Request& request) { request.destination = "nosuch"; }},
        {"TrackRemoteBranch", 36, "",
         [](const World& /*world*/, Request& request) {
             request.destination = "tracking";
             request.options = NEBDictionary{{NEBSourceControlRequestOptionRemoteName, "origin"},
                                             {NEBSourceControlRequestOptionBranch, "news"}};
         }},
        {"Fetch", 37, "",
         [](const World& /*world*/, Request& request) {
             setRemote(request);
             request.options = NEBDictionary{{NEBSourceControlRequestOptionRemoteName, "origin"}};
         }},
        {"FetchOfNothing", 37, "",
         [](const World& /*world*/, Request& request) {
             setRemote(request);
             request.options = NEBDictionary{{NEBSourceControlRequestOptionRemoteName, "nosuch"}};
         }},
        {"Pull", 13, "", [](const World& /*world*/, Request& request) { setPull(request); }},
        {"PullOfNothingNew", 13, "git pull -q --ff-only origin main",
         [](const World& /*world*/, Request& request) { setPull(request); }},
        {"PullThatDiverges", 13, ownCommit,
         [](const World& /*world*/, Request& request) { setPull(request); }},
        {"UpdateByMerge", 13, ownCommit + "git fetch -q origin",
         [](const World& /*world*/, Request& request) {
             setRemote(request);
             request.destination = "origin/main";
         }},
        {"UpdateByRebase", 13, ownCommit + "git fetch -q origin",
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
        for (const auto& family : {changesOfFiles(), branches(), history(), exchange()}) {
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
