// Requests that ask git several questions, of which one is killed: they have no answer then.

#include <gmock/gmock.h>

#include <cstdlib>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

using JSON = nlohmann::ordered_json;

/// Returns the outcome of a request whose git is killed if its arguments have this text.
JSON outcomeWithout(const std::string& killed, const JSON& request) {
    const TemporaryFolder folder;
    const std::string path = std::getenv("PATH");
    folder.writeProgram("git", "#!/bin/sh\ncase \"$*\" in *'" + killed +
                                   "'*) kill -9 $$;; esac\nPATH='" + path + "' exec git \"$@\"\n");
    return runRequest(request.dump(), {.variables = {{"PATH", folder.path() + ":" + path}}}).json();
}

JSON outcomeWithout(const std::string& killed, int type, const TestRepository& repository,
                    const std::string& file = "") {
    JSON request{{"type", type}, {"sourceTree", {{"location", repository.path()}}}};
    if (!file.empty()) {
        request["files"] = {file};
    }
    return outcomeWithout(killed, request);
}

TEST(KilledQueries, AreNoUnknownIdentity) {
    const TestRepository repository;
    for (const char* killed : {"GIT_AUTHOR_IDENT", "GIT_COMMITTER_IDENT"}) {
        const JSON outcome = outcomeWithout(killed, NEBSourceControlRequestSettings, repository);
        EXPECT_EQ(outcome["error"]["class"], "killed") << killed;
        EXPECT_TRUE(outcome["result"].is_null()) << killed;
    }
}

TEST(KilledQueries, AreNoMissingSubmodule) {
    const TestRepository other;
    other.commitFile("a", "1\n");
    const TestRepository repository;
    repository.git({"submodule", "--quiet", "add", other.path(), "lib"});
    for (const char* killed : {"describe", "ls-files", "verify --quiet HEAD"}) {
        const JSON outcome = outcomeWithout(killed, NEBSourceControlRequestSubmodules, repository);
        EXPECT_EQ(outcome["error"]["class"], "killed") << killed;
        EXPECT_TRUE(outcome["result"].is_null()) << killed;
    }
}

/// The git that an export pipes into tar, and the one that a list runs with the shell.
TEST(KilledQueries, AreNoDamagedArchiveAndNoFailureOfTheShell) {
    const TestRepository repository;
    repository.commitFile("dir/a", "1\n");
    const TemporaryFolder folder;
    JSON request{{"type", NEBSourceControlRequestExport},
                 {"sourceTree", {{"location", repository.path()}}},
                 {"startingRevision", "HEAD"},
                 {"destination", folder.path("a")},
                 {"files", {repository.path("dir/a")}}};
    EXPECT_EQ(outcomeWithout("archive", request)["error"]["class"], "killed");
    request["type"] = NEBSourceControlRequestList;
    request["files"] = {"dir"};
    EXPECT_EQ(outcomeWithout("ls-tree", request)["error"]["class"], "killed");
}

TEST(KilledQueries, AreNoMissingRemote) {
    const TestRepository repository;
    repository.git({"config", "svn-remote.svn.url", "https://example.org/svn"});
    repository.git({"config", "svn-remote.svn.fetch", ":refs/remotes/git-svn"});
    for (const char* killed : {"remote -v", "svn-remote.svn.url", "svn-remote.svn.fetch"}) {
        const JSON outcome = outcomeWithout(killed, NEBSourceControlRequestListRemotes, repository);
        EXPECT_EQ(outcome["error"]["class"], "killed") << killed;
        EXPECT_TRUE(outcome["result"].is_null()) << killed;
    }
}

TEST(KilledQueries, AreNoDamagedObject) {
    const TestRepository other;
    other.commitFile("a", "1\n");
    const TestRepository repository;
    repository.git({"submodule", "--quiet", "add", other.path(), "lib"});
    repository.git({"commit", "--quiet", "-m", "Add a submodule"});
    const auto classWithout = [&repository](const std::string& killed) {
        return outcomeWithout(killed, NEBSourceControlRequestContent, repository,
                              "lib")["error"]["class"];
    };
    EXPECT_EQ(classWithout("nothing"), "file-type-wrong");
    for (const char* killed : {"cat-file -t", "ls-tree"}) {
        EXPECT_EQ(classWithout(killed), "killed") << killed;
    }
}

TEST(KilledQueries, AreNoMissingBranch) {
    const TestRepository repository;
    repository.commitFile("a", "1\n");
    repository.git({"checkout", "--quiet", "--detach"});
    const JSON tree{{"location", repository.path()}, {"reachable", true}};
    const JSON request{{"type", NEBSourceControlRequestIntegrate},
                       {"sourceTree", tree},
                       {"repositoryToAuthenticate", tree}};
    const auto classWithout = [&request](const std::string& killed) {
        return outcomeWithout(killed, request)["error"]["class"];
    };
    EXPECT_EQ(classWithout("nothing"), "no-current-branch");
    for (const char* killed : {"@{upstream}", "--absolute-git-dir", "--unmerged"}) {
        EXPECT_EQ(classWithout(killed), "killed") << killed;
    }
}

}  // namespace
}  // namespace neb::test
