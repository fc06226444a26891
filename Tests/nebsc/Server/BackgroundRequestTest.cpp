// The member "background" of requests to `nebsc serve` and `nebsc request`.

#include <gmock/gmock.h>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"
#include "nebsc/Server/ServerClient.h"
#include "nebsc/Server/SlowGit.h"

namespace neb::test {
namespace {

/// A git that appends the value of GIT_OPTIONAL_LOCKS to a file.
class BackgroundRequest : public testing::Test {
protected:
    using JSON = ServerClient::JSON;

    [[nodiscard]] JSON status(bool isBackground) const {
        JSON request = requestAbout(NEBSourceControlRequestStatus, repository.path());
        request["background"] = isBackground;
        return request;
    }
    JSON call(std::string_view method, JSON params) {
        if (++id == 1) {
            client.initialize();
        }
        client.send(id, method, std::move(params));
        return client.answerTo(id);
    }

    const TestRepository repository;
    const TemporaryFolder folder;
    const StandInGit git{repository.path(),
                         "[ \"$1\" = status ] && echo \"${GIT_OPTIONAL_LOCKS-}\" >> '" +
                             folder.path("locks") + "'\nexec /usr/bin/git \"$@\""};
    ServerClient client{{git.path()}};
    int id = 0;
};

TEST_F(BackgroundRequest, TakesNoOptionalLocks) {
    EXPECT_EQ(call("sourceControl/perform", status(true))["result"]["error"], nullptr);
    EXPECT_EQ(folder.read("locks"), "0\n");
    EXPECT_EQ(call("sourceControl/perform", status(false))["result"]["error"], nullptr);
    EXPECT_EQ(folder.read("locks"), "0\n\n");
}

TEST_F(BackgroundRequest, TakesNoneInPagesEither) {
    call("sourceControl/open", {{"request", status(true)}, {"pageSize", 10}});
    EXPECT_EQ(folder.read("locks"), "0\n");
}

TEST_F(BackgroundRequest, IsKnownToTheRequestCommand) {
    EXPECT_EQ(runRequest(status(true).dump(), {.variables = {git.path()}}).json()["error"],
              nullptr);
    EXPECT_EQ(folder.read("locks"), "0\n");
}

TEST_F(BackgroundRequest, IsEitherTrueOrFalse) {
    JSON request = status(true);
    request["background"] = "yes";
    const JSON error = call("sourceControl/perform", request)["error"];
    EXPECT_EQ(error["code"], -32602);
    EXPECT_EQ(error["message"],
              "The request's member 'background' is a string; expected true or false.");
}

}  // namespace
}  // namespace neb::test
