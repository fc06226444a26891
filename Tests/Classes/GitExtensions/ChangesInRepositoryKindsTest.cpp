// Every type that changes something, in every kind of repository: it works, or says why not.

#include <filesystem>
#include <fstream>

#include "Classes/GitExtensions/RepositoryKinds.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using Request = NEBSourceControlRequest;

/// A change that a repository of two commits with the file "f" and a remote allows.
struct KindOfChange {
    const char* name;
    std::int32_t type;
    /// Absent: no action.
    const char* action;
    void (*fill)(Request& request, const std::string& remote);
};

void fillNothing(Request& /*request*/, const std::string& /*remote*/) {}

void setOption(Request& request, NEBConstant key, NEBValue value) {
    request.options->set(key, std::move(value));
}

/// A file "new" is untracked, and "f" has another line, where there is a working copy.
const KindOfChange kindsOfChange[] = {
    {"stage", NEBSourceControlRequestStage, nullptr, fillNothing},
    {"unstage", NEBSourceControlRequestUnstage, nullptr, fillNothing},
    {"discard", NEBSourceControlRequestDiscard, nullptr,
     [](Request& request, const std::string& /*remote*/) {
         setOption(request, NEBSourceControlRequestOptionForce, true);
     }},
    {"stash", NEBSourceControlRequestStash, "push", fillNothing},
    {"commit", NEBSourceControlRequestCreateCommit, nullptr,
     [](Request& request, const std::string& /*remote*/) {
         setOption(request, NEBSourceControlRequestOptionMessage, "Message");
         setOption(request, NEBSourceControlRequestOptionAllowEmptyCommit, true);
     }},
    {"publish", NEBSourceControlRequestPublish, nullptr,
     [](Request& request, const std::string& remote) {
         setOption(request, NEBSourceControlRequestOptionRemoteName, remote);
         setOption(request, NEBSourceControlRequestOptionBranch, "HEAD");
         request.destination = "refs/heads/published";
     }},
    {"integrate", NEBSourceControlRequestIntegrate, nullptr,
     [](Request& request, const std::string& remote) {
         setOption(request, NEBSourceControlRequestOptionRemoteName, remote);
         setOption(request, NEBSourceControlRequestOptionBranch, "main");
     }},
    {"reset", NEBSourceControlRequestPick, "reset",
     [](Request& request, const std::string& /*remote*/) { request.startingRevision = "HEAD"; }},
    {"revert", NEBSourceControlRequestPick, "revert",
     [](Request& request, const std::string& /*remote*/) { request.startingRevision = "HEAD"; }},
    {"tag", NEBSourceControlRequestTag, nullptr,
     [](Request& request, const std::string& /*remote*/) { request.destination = "v1"; }},
    {"submodules", NEBSourceControlRequestSubmodules, "init", fillNothing},
    {"worktrees", NEBSourceControlRequestWorktrees, "add",
     [](Request& request, const std::string& remote) {
         setOption(request, NEBSourceControlRequestOptionBranch, "added");
         setOption(request, NEBSourceControlRequestOptionCreateBranch, true);
         request.destination = remote + ".worktree";
     }},
    {"settings", NEBSourceControlRequestSettings, "set",
     [](Request& request, const std::string& /*remote*/) {
         setOption(request, NEBSourceControlRequestOptionSettingNames, "neb.test");
         setOption(request, NEBSourceControlRequestOptionValue, "1");
     }},
    {"finish", NEBSourceControlRequestFinish, "abort", fillNothing},
    {"change branch", NEBSourceControlRequestChangeBranch, "rename",
     [](Request& request, const std::string& /*remote*/) { request.destination = "renamed"; }},
};

/// The class of the error of a change in a kind of repository. All others work, except that only
/// two kinds have something to finish.
struct ChangeRefusal {
    std::string kind, change, errorClass;
};

const ChangeRefusal changeRefusals[] = {
    {"unborn", "stash", "no-commits-yet"},
    {"unborn", "publish", "nothing-to-push-from"},
    {"unborn", "reset", "no-commits-yet"},
    {"unborn", "revert", "no-commits-yet"},
    {"unborn", "tag", "no-commits-yet"},
    {"unborn", "worktrees", "no-commits-yet"},
    {"bare", "stage", "no-work-tree"},
    {"bare", "unstage", "no-work-tree"},
    {"bare", "discard", "no-work-tree"},
    {"bare", "stash", "no-work-tree"},
    {"bare", "commit", "no-work-tree"},
    {"bare", "integrate", "no-work-tree"},
    {"bare", "reset", "no-work-tree"},
    {"bare", "revert", "no-work-tree"},
    {"bare", "submodules", "no-work-tree"},
    {"detached", "change branch", "no-current-branch"},
    // Without a checkout, all files count as deleted.
    {"partial", "revert", "local-changes"},
    // The remote has ids of the other kind.
    {"SHA-256", "publish", "remote-unsupported"},
    {"SHA-256", "integrate", "remote-unsupported"},
    {"in conflict", "unstage", "conflict-unresolved"},
    {"in conflict", "discard", "conflict-unresolved"},
    {"in conflict", "stash", "conflict-unresolved"},
    {"in conflict", "commit", "conflict-unresolved"},
    {"in conflict", "integrate", "conflict-unresolved"},
    {"in conflict", "reset", "conflict-unresolved"},
    {"in conflict", "revert", "conflict-unresolved"},
    {"in conflict", "finish", "(success)"},
    {"in a rebase", "unstage", "conflict-unresolved"},
    {"in a rebase", "discard", "conflict-unresolved"},
    {"in a rebase", "stash", "conflict-unresolved"},
    {"in a rebase", "commit", "conflict-unresolved"},
    {"in a rebase", "integrate", "conflict-unresolved"},
    {"in a rebase", "reset", "conflict-unresolved"},
    {"in a rebase", "revert", "conflict-unresolved"},
    {"in a rebase", "change branch", "no-current-branch"},
    {"in a rebase", "finish", "(success)"},
};

std::string expectedOfChange(const std::string& kind, const std::string& change) {
    for (const ChangeRefusal& refusal : changeRefusals) {
        if (refusal.kind == kind && refusal.change == change) {
            return refusal.errorClass;
        }
    }
    return change == "finish" ? "nothing-in-progress" : "(success)";
}

/// The repository of a kind, and a copy of it that restores it.
class KindOnDisk {
public:
    explicit KindOnDisk(const RepositoryKind& kind) {
        _source.commitFile("f", "1\n", "First");
        _source.commitFile("f", "2\n", "Second");
        _source.git({"clone", "-q", "--bare", _source.path(), remote()});
        _location = kind.make(_source, _inner);
        if (kind.name != "bare") {
            const fs::path location = _location;
            std::ofstream(location / "new") << "new\n";
        }
        copy(_source.path(), _saved.path("source"));
        copy(_inner.path(), _saved.path("inner"));
        copy(remote(), _saved.path("remote"));
    }
    void restore() const {
        copy(_saved.path("source"), _source.path());
        copy(_saved.path("inner"), _inner.path());
        copy(_saved.path("remote"), remote());
    }
    [[nodiscard]] std::string location() const { return _location; }
    [[nodiscard]] std::string remote() const { return _folder.path("remote"); }

private:
    static void copy(const std::string& from, const std::string& to) {
        for (const auto& entry :
             fs::exists(to) ? fs::directory_iterator(to) : fs::directory_iterator()) {
            fs::remove_all(entry);
        }
        fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    }

    TestRepository _source;
    TemporaryFolder _folder, _inner, _saved;
    std::string _location;
};

class ChangesInRepositoryKinds : public HygienicTest {};

TEST_F(ChangesInRepositoryKinds, WorkOrAreRefusedWithTheReason) {
    for (const RepositoryKind& kind : repositoryKinds()) {
        const KindOnDisk repository(kind);
        for (const KindOfChange& change : kindsOfChange) {
            repository.restore();
            const auto request = requestFor(change.type, repository.location());
            request->repositoryToAuthenticate = request->sourceTree;
            request->options.emplace();
            if (change.action != nullptr) {
                request->options->set(NEBSourceControlRequestOptionAction, change.action);
            }
            change.fill(*request, repository.remote());
            const auto operation = perform(request);
            const auto& error = operation->error();
            EXPECT_EQ(error ? error->errorClass.value_or("(none)") : "(success)",
                      expectedOfChange(kind.name, change.name))
                << kind.name << ": " << change.name << ": "
                << (error ? error->localizedDescription().value_or("(no sentence)") +
                                error->text.value_or("")
                          : "");
        }
    }
}

}  // namespace
}  // namespace neb::test
