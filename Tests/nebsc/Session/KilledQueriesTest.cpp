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
JSON outcomeWithout(const std::string& killed, int type, const TestRepository& repository) {
    const TemporaryFolder folder;
    const std::string path = std::getenv("PATH");
    folder.writeProgram("git", "#!/bin/sh\ncase \"$*\" in *'" + killed +
                                   "'*) kill -9 $$;; esac\nPATH='" + path + "' exec git \"$@\"\n");
    const JSON request{{"type", type}, {"sourceTree", {{"location", repository.path()}}}};
    return runRequest(request.dump(), {.variables = {{"PATH", folder.path() + ":" + path}}}).json();
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

}  // namespace
}  // namespace neb::test
