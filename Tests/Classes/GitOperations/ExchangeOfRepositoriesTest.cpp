// Fetches, pulls and pushes between real repositories, and over the network of this machine.

#include "GitOperations/GitExchange.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <thread>

#include "Classes/GitOperations/ExchangeRequests.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/LoopbackServer.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

namespace fs = std::filesystem;
using test::HasErrorClass;
using test::IsSourceControlError;
using test::LoopbackServer;
using test::perform;
using test::requestFor;
using test::TemporaryFolder;
using test::TestRepository;
using test::exchange::branchKey;
using test::exchange::content;
using test::exchange::remoteNameKey;
using test::exchange::request;
using testing::ElementsAre;
using testing::HasSubstr;

class Sharing : public test::HygienicTest {
protected:
    void SetUp() override {
        HygienicTest::SetUp();
        ann = std::make_unique<TestRepository>();
        ann->git({"init", "--quiet", "--bare", bare()});
        ann->commitFile("a", "1\n2\n3\n");
        ann->git({"remote", "add", "origin", bare()});
        ann->git({"push", "-q", "-u", "origin", "main"});
        ben = std::make_unique<TestRepository>(bare());
    }
    void TearDown() override {
        ann.reset();
        ben.reset();
        HygienicTest::TearDown();
    }

    [[nodiscard]] std::string bare() const { return folder.path("shared.git"); }
    [[nodiscard]] static std::shared_ptr<NEBSourceControlOperation> run(
        const TestRepository& who, std::int32_t type, const std::string& branch = "main",
        const std::string& destination = "main", const std::string& remote = "origin") {
        auto asked = request(type, NEBDictionary{{remoteNameKey, remote}, {branchKey, branch}},
                             destination, who.path());
        asked->options->set(NEBSourceControlRequestOptionPullByFastForwarding, true);
        return perform(asked);
    }
    [[nodiscard]] static auto push(const TestRepository& who, const std::string& branch = "main",
                                   const std::string& destination = "main",
                                   const std::string& remote = "origin") {
        return run(who, 33, branch, destination, remote);
    }
    [[nodiscard]] static auto fetch(const TestRepository& who,
                                    const std::string& remote = "origin") {
        return run(who, 37, "main", "main", remote);
    }
    [[nodiscard]] static auto pull(const TestRepository& who, const std::string& branch = "main") {
        return run(who, 13, branch);
    }
    [[nodiscard]] static std::string head(const TestRepository& who) {
        return who.git({"rev-parse", "HEAD"});
    }
    [[nodiscard]] std::string shared(const std::string& branch = "main") const {
        return ann->git({"--git-dir=" + bare(), "rev-parse", branch});
    }
    void bareHook(const std::string& name, const std::string& script) const {
        folder.writeProgram("shared.git/hooks/" + name, "#!/bin/sh\n" + script + "\n");
    }

    TemporaryFolder folder;
    std::unique_ptr<TestRepository> ann, ben;
};

TEST_F(Sharing, PushesAndPulls) {
    ann->commitFile("a", "1\n2\nann\n");
    const auto pushed = push(*ann);
    EXPECT_EQ(pushed->error(), std::nullopt);
    EXPECT_THAT(pushed->result()->front().value(NEBSourceControlOperationContentKey).description(),
                HasSubstr("main -> main"));
    EXPECT_EQ(shared(), head(*ann));
    const auto fetched = fetch(*ben);
    EXPECT_EQ(fetched->error(), std::nullopt);
    EXPECT_EQ(fetched->result(), NEBSourceControlResult{});
    EXPECT_EQ(ben->git({"rev-parse", "origin/main"}), head(*ann));
    const auto pulled = pull(*ben);
    EXPECT_EQ(pulled->error(), std::nullopt);
    EXPECT_THAT(pulled->result()->front().value(NEBSourceControlOperationContentKey).description(),
                HasSubstr("Fast-forward"));
    EXPECT_EQ(head(*ben), head(*ann));
}

TEST_F(Sharing, ReportsThatNothingIsNew) {
    EXPECT_THAT(pull(*ben)->error(), IsSourceControlError(-34, HasSubstr("is up to date")));
    const auto pushed = push(*ann);
    EXPECT_EQ(pushed->error(), std::nullopt);
    EXPECT_EQ(pushed->result(), content("Everything up-to-date"));
}

TEST_F(Sharing, ReportsARejectedPushBesideItsContent) {
    ann->commitFile("a", "ann\n");
    ben->commitFile("b", "ben\n");
    EXPECT_EQ(push(*ann)->error(), std::nullopt);
    const auto refused = push(*ben);
    EXPECT_THAT(refused->error(),
                IsSourceControlError(-32, HasSubstr("does not have the latest remote changes")));
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlRemoteAheadErrorClass));
    EXPECT_THAT(refused->result()->front().value(NEBSourceControlOperationContentKey).description(),
                HasSubstr("[rejected]"));
    EXPECT_EQ(shared(), head(*ann));
    EXPECT_THAT(pull(*ben)->error(), HasErrorClass(NEBSourceControlDivergedErrorClass));
    EXPECT_THAT(pull(*ben)->error(), IsSourceControlError(-200, testing::_));
}

TEST_F(Sharing, PullKeepsLocalChangesThatItWouldOverwrite) {
    ann->commitFile("a", "ann\n");
    EXPECT_EQ(push(*ann)->error(), std::nullopt);
    ben->write("a", "mine\n");
    const auto refused = pull(*ben);
    EXPECT_THAT(refused->error(), IsSourceControlError(-31, HasSubstr("uncommitted changes")));
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlLocalChangesErrorClass));
    EXPECT_EQ(ben->git({"status", "--porcelain"}), " M a\n");
    ben->git({"checkout", "-q", "a"});
    ann->commitFile("new", "ann\n");
    EXPECT_EQ(push(*ann)->error(), std::nullopt);
    ben->write("new", "mine\n");
    EXPECT_THAT(pull(*ben)->error(), HasErrorClass(NEBSourceControlUntrackedInTheWayErrorClass));
}

TEST_F(Sharing, ReportsAPullOfAnUnknownBranch) {
    EXPECT_THAT(pull(*ben, "nosuch")->error(),
                HasErrorClass(NEBSourceControlRemoteBranchUnknownErrorClass));
}

TEST_F(Sharing, PushCreatesABranch) {
    ann->git({"branch", "feature/x.y"});
    EXPECT_EQ(push(*ann, "feature/x.y", "feature/Grüße")->error(), std::nullopt);
    EXPECT_EQ(shared("feature/Grüße"), head(*ann));
    EXPECT_THAT(push(*ann, "nosuch", "x")->error(),
                HasErrorClass(NEBSourceControlNothingToPushFromErrorClass));
}

TEST_F(Sharing, ReportsWhichHookRefusesAPush) {
    ann->commitFile("a", "ann\n");
    const std::string before = shared();
    bareHook("pre-receive", "echo policy: no; exit 1");
    const auto refused = push(*ann);
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlRemoteHookRefusedErrorClass));
    EXPECT_THAT(*refused->error()->text, HasSubstr("policy: no"));
    EXPECT_EQ(shared(), before);
    fs::remove(folder.path("shared.git/hooks/pre-receive"));
    ann->write(".git/hooks/pre-push", "#!/bin/sh\necho not on a Friday >&2\nexit 1\n");
    fs::permissions(ann->path(".git/hooks/pre-push"), fs::perms(0755));
    const auto local = push(*ann);
    EXPECT_THAT(local->error(), HasErrorClass(NEBSourceControlLocalHookRefusedErrorClass));
    EXPECT_THAT(local->error(),
                IsSourceControlError(-1, "A hook of the repository refused the push."));
    EXPECT_THAT(*local->error()->text, HasSubstr("not on a Friday"));
    EXPECT_EQ(shared(), before);
    for (const char* words : {"fatal: not a git repository", "error: lint failed", "CONFLICT (x)",
                              "Permission denied by policy"}) {
        ann->write(".git/hooks/pre-push",
                   std::string("#!/bin/sh\necho '") + words + "' >&2\nexit 1\n");
        EXPECT_THAT(push(*ann)->error(), HasErrorClass(NEBSourceControlLocalHookRefusedErrorClass))
            << words;
    }
}

TEST_F(Sharing, TakesTheCodeOfARefusedPushFromTheErrorTable) {
    ann->commitFile("a", "ann\n");
    ann->write(".git/hooks/pre-push", "#!/bin/sh\necho 'key: Permission denied' >&2\nexit 1\n");
    fs::permissions(ann->path(".git/hooks/pre-push"), fs::perms(0755));
    EXPECT_THAT(push(*ann)->error(),
                IsSourceControlError(
                    -21, "Authentication failed because the name or password was incorrect."));
    EXPECT_THAT(push(*ann)->error(), HasErrorClass(NEBSourceControlLocalHookRefusedErrorClass));
    fs::remove(ann->path(".git/hooks/pre-push"));
    bareHook("pre-receive", "echo 'Transaction is out of date'; exit 1");
    const auto refused = push(*ann);
    EXPECT_EQ(refused->error()->code, -32);
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlRemoteHookRefusedErrorClass));
}

/// Runs a push with a stand-in for git that prints these lines and exits with status 1.
NEBSourceControlError errorOfPush(const test::TemporaryFolder& folder, const std::string& lines) {
    folder.write("git", "#!/bin/sh\ncat >&2 <<'end'\n" + lines + "end\nexit 1\n");
    fs::permissions(folder.path("git"), fs::perms(0755));
    auto request = test::requestFor(NEBSourceControlRequestPush, folder.path());
    request->destination = "main";
    request->options.emplace();
    request->options->set(NEBSourceControlRequestOptionRemoteName, "origin");
    request->options->set(NEBSourceControlRequestOptionBranch, "main");
    test::StandIn<GitPushOperation> operation(folder.path("git"), std::move(request));
    operation.start();
    return operation.error().value_or(NEBSourceControlError());
}

TEST(PushError, PrefersTheErrorTableToARefusalByAHook) {
    const test::TemporaryFolder folder;
    const auto error = errorOfPush(folder,
                                   "error: SSL certificate problem: unable to get local issuer\n"
                                   "error: failed to push some refs to 'https://h/x.git'\n");
    EXPECT_EQ(error.code, -21);
    EXPECT_EQ(error.localizedDescription(), "The server certificate failed to verify.");
    EXPECT_EQ(error.errorClass, NEBSourceControlCertificateUntrustedErrorClass);
}

TEST(PushError, AFailedTransferIsNeverUpToDate) {
    const test::TemporaryFolder folder;
    const std::string rest =
        "send-pack: unexpected disconnect while reading sideband packet\n"
        "fatal: the remote end hung up unexpectedly\nEverything up-to-date\n";
    for (const char* last : {"", "error: failed to push some refs to 'https://h/x.git'\n"}) {
        auto error = errorOfPush(folder,
                                 "error: RPC failed; HTTP 413 curl 22 The requested URL returned "
                                 "error: 413\n" +
                                     rest + last);
        EXPECT_EQ(error.code, -1);
        EXPECT_EQ(error.errorClass, NEBSourceControlHTTPRefusedErrorClass);
        error = errorOfPush(folder, rest + last);
        EXPECT_EQ(error.code, -20);
        EXPECT_EQ(error.errorClass, NEBSourceControlConnectionCutErrorClass);
    }
    EXPECT_EQ(errorOfPush(folder, "Everything up-to-date\n").code, -25);
}

/// The word "fatal" in a message of the server or a branch name is not an error.
TEST_F(Sharing, IgnoresTheOutputOfASuccessfulPush) {
    ann->commitFile("a", "ann\n");
    bareHook("post-receive", "echo a fatal warning");
    EXPECT_EQ(push(*ann, "main", "fatal-fix")->error(), std::nullopt);
    EXPECT_EQ(shared("fatal-fix"), head(*ann));
    for (const char* words : {"fatal: Authentication failed", "fatal path not found"}) {
        bareHook("post-receive", std::string("echo '") + words + "'");
        ann->commitFile("a", words);
        EXPECT_EQ(push(*ann)->error(), std::nullopt) << words;
        EXPECT_EQ(shared(), head(*ann));
    }
}

TEST_F(Sharing, ReportsAFetchFromAnUnknownRemote) {
    EXPECT_THAT(fetch(*ben, "nosuch")->error(),
                HasErrorClass(NEBSourceControlRepositoryNotFoundErrorClass));
    EXPECT_THAT(push(*ben, "main", "main", "nosuch")->error(),
                HasErrorClass(NEBSourceControlRepositoryNotFoundErrorClass));
    fs::remove_all(bare());
    EXPECT_THAT(fetch(*ben)->error(), HasErrorClass(NEBSourceControlRepositoryNotFoundErrorClass));
    EXPECT_THAT(pull(*ben)->error(), HasErrorClass(NEBSourceControlRepositoryNotFoundErrorClass));
}

/// git prints nothing then. If this counted as success, the local tag would be taken for that of
/// the remote.
TEST_F(Sharing, ReportsARejectedTag) {
    ann->git({"tag", "v1"});
    ann->git({"push", "-q", "origin", "v1"});
    ben->commitFile("b", "b");
    ben->git({"tag", "v1"});
    ben->git({"config", "remote.origin.fetch", "refs/tags/*:refs/tags/*"});
    const auto refused = fetch(*ben);
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlReferenceRejectedErrorClass));
    EXPECT_THAT(refused->error(), IsSourceControlError(-1, HasSubstr("differs from the remote's")));
    EXPECT_THAT(*refused->error()->text,
                testing::MatchesRegex(" ! .rejected. +v1 +-> v1 +.would clobber existing tag.\n"));
    EXPECT_EQ(refused->command()->arguments, (std::vector<std::string>{"fetch", "-q", "origin"}));
    EXPECT_EQ(ben->git({"rev-parse", "v1"}), head(*ben));
}

TEST_F(Sharing, ReportsASilentFetchWithoutAReason) {
    const auto asked = request(NEBSourceControlRequestFetch,
                               NEBDictionary{{remoteNameKey, "origin"}}, {}, ben->path());
    test::StandIn<GitFetchOperation> silent(folder.writeProgram("git", "#!/bin/sh\nexit 1\n"),
                                            asked);
    silent.setCommandLog(std::make_shared<NEBSourceControlCommandLog>());
    silent.start();
    EXPECT_THAT(silent.error(), HasErrorClass(NEBSourceControlUnknownErrorClass));
    EXPECT_THAT(silent.error(), IsSourceControlError(-1, HasSubstr("status 1")));
    EXPECT_THAT(test::commandLinesOf(silent),
                ElementsAre("fetch -q origin",
                            "fetch --dry-run --no-auto-gc --no-recurse-submodules origin"));
}

/// A remote helper that fails silently, which makes git fail silently.
TEST_F(Sharing, ReportsASilentFailure) {
    folder.writeProgram("bin/git-remote-silent", "#!/bin/sh\nread -r question\nexit 1\n");
    const std::string path = ::getenv("PATH");
    ::setenv("PATH", (folder.path("bin") + ":" + path).c_str(), 1);
    ben->git({"remote", "add", "far", "silent::x"});
    const auto silentPull = run(*ben, 13, "main", "main", "far");
    const auto silentFetch = fetch(*ben, "far");
    const auto silentPush = push(*ben, "main", "main", "far");
    ::setenv("PATH", path.c_str(), 1);
    for (const auto& operation : {silentPull, silentFetch, silentPush}) {
        ASSERT_TRUE(operation->error()) << operation->className();
        EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlUnknownErrorClass));
    }
}

// ---- the network, on this machine alone -------------------------------------------------------

class Network : public Sharing {};

TEST_F(Network, ReportsAClosedPort) {
    ben->git({"remote", "add", "far", "http://127.0.0.1:1/x.git"});
    EXPECT_THAT(fetch(*ben, "far")->error(), IsSourceControlError(-20, testing::_));
    EXPECT_THAT(fetch(*ben, "far")->error(),
                HasErrorClass(NEBSourceControlHostUnreachableErrorClass));
    EXPECT_THAT(push(*ben, "main", "main", "far")->error(),
                HasErrorClass(NEBSourceControlHostUnreachableErrorClass));
}

TEST_F(Network, FailsAtOnceIfCredentialsAreNeeded) {
    const LoopbackServer server(
        "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"x\"\r\n"
        "Content-Length: 0\r\nConnection: close\r\n\r\n");
    ben->git({"remote", "add", "far", server.url()});
    const auto refused = fetch(*ben, "far");
    EXPECT_THAT(refused->error(), IsSourceControlError(-21, testing::_));
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlCredentialsNeededErrorClass));
    std::string url = server.url();
    url.insert(url.find("127"), "user:secret@");
    ben->git({"remote", "add", "known", url});
    EXPECT_THAT(fetch(*ben, "known")->error(),
                HasErrorClass(NEBSourceControlCredentialsRefusedErrorClass));
    EXPECT_THAT(push(*ben, "main", "main", "known")->error(),
                HasErrorClass(NEBSourceControlCredentialsRefusedErrorClass));
}

TEST_F(Network, CancelsAFetchFromASilentServer) {
    const LoopbackServer server("");
    ben->git({"remote", "add", "far", server.url()});
    for (const std::int32_t type : {NEBSourceControlRequestFetch, NEBSourceControlRequestPush,
                                    NEBSourceControlRequestUpdate}) {
        auto asked = request(type, NEBDictionary{{remoteNameKey, "far"}, {branchKey, "main"}},
                             "main", ben->path());
        asked->options->set(NEBSourceControlRequestOptionPullByFastForwarding, true);
        const auto operation = GitController().operationForRequest(asked);
        std::thread canceller([&] {
            while (!server.wasAsked()) {
                std::this_thread::yield();
            }
            operation->cancel();
        });
        operation->start();
        canceller.join();
        EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlCancelledErrorClass)) << type;
    }
}

TEST_F(Network, CancelsTheDryRunAfterASilentFetch) {
    const LoopbackServer server("");
    ben->git({"remote", "add", "far", server.url()});
    test::StandIn<GitFetchOperation> silent(
        folder.writeProgram("git", "#!/bin/sh\nexit 1\n"),
        request(NEBSourceControlRequestFetch, NEBDictionary{{remoteNameKey, "far"}}, {},
                ben->path()));
    std::thread canceller([&] {
        while (!server.wasAsked()) {
            std::this_thread::yield();
        }
        silent.cancel();
    });
    silent.start();
    canceller.join();
    EXPECT_THAT(silent.error(), HasErrorClass(NEBSourceControlCancelledErrorClass));
}

}  // namespace
}  // namespace neb
