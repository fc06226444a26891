#include "NEBFoundation/NEBSourceControlLockWait.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <thread>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlLockFile.h"
#include "Platform/FileDescriptor.h"
#include "Support/ChildLaunches.h"
#include "Support/HygienicTest.h"
#include "Support/ListOperation.h"
#include "Support/ScriptOperation.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

using std::chrono::milliseconds;
using test::HasErrorClass;
using testing::ElementsAre;
using testing::HasSubstr;

// ---- which failures -----------------------------------------------------------------------------

constexpr const char* lockedIndexText =
    "fatal: Unable to create '/w/.git/index.lock': File exists.\n\n"
    "Another git process seems to be running in this repository, e.g.\n"
    "an editor opened by 'git commit'.\n";
constexpr const char* lockedSettings =
    "error: could not lock config file .git/config: File exists\n";

/// Returns the pause after git has ended so; 0 for none.
milliseconds pauseAfter(std::vector<std::string> arguments, int status, std::string_view stderrText,
                        std::string_view output = "") {
    const std::vector<ChildLaunch> launches{test::program("/nosuch/git", std::move(arguments))};
    NEBSourceControlLockWait wait(launches, std::chrono::seconds(2));
    ChildOutcome outcome{.status = TerminationStatus::exited(status),
                         .output = Data(std::string(output)),
                         .errorOutput = Data(std::string(stderrText))};
    return wait.pauseAfter({outcome}).value_or(milliseconds(0));
}

constexpr milliseconds noPause{0};
constexpr milliseconds firstPause{50};

TEST(LockWait, IsForCommandsThatLockTheIndexFirst) {
    for (const char* command : {"add", "rm", "mv", "apply", "commit", "reset"}) {
        EXPECT_EQ(pauseAfter({command, "a"}, 128, lockedIndexText), firstPause) << command;
        EXPECT_EQ(pauseAfter({"-c", "a.b=c", "--git-dir=/r", command}, 128, lockedIndexText),
                  firstPause);
    }
    EXPECT_EQ(pauseAfter({"checkout", "topic", "--merge"}, 128, lockedIndexText), firstPause);
    EXPECT_EQ(
        pauseAfter({"commit", "-m", "x"}, 128, "warning: careful\n" + std::string(lockedIndexText)),
        firstPause);
    for (const char* command :
         {"merge", "pull", "rebase", "cherry-pick", "revert", "stash", "fetch", "nosuch", "-c"}) {
        EXPECT_EQ(pauseAfter({command, "push"}, 128, lockedIndexText), noPause) << command;
    }
    EXPECT_EQ(pauseAfter({}, 128, lockedIndexText), noPause);
}

TEST(LockWait, IsNotForGitThatMayHaveChangedSomething) {
    EXPECT_EQ(pauseAfter({"add", "a"}, 1, lockedIndexText), noPause);
    EXPECT_EQ(pauseAfter({"add", "a"}, 0, lockedIndexText), noPause);
    EXPECT_EQ(pauseAfter({"add", "a"}, 128, lockedIndexText, "output"), noPause);
    EXPECT_EQ(pauseAfter({"add", "a"}, 128, "fatal: another failure\n"), noPause);
    EXPECT_EQ(pauseAfter({"add", "a"}, 128, ""), noPause);
    const std::string byHook = std::string(lockedIndexText) + "fatal: cannot lock ref 'HEAD': …\n";
    EXPECT_EQ(pauseAfter({"commit", "-m", "x"}, 128, byHook), noPause)
        << "the hook printed the same";
    EXPECT_EQ(pauseAfter({"commit", "-m", "x"}, 128,
                         "fatal: Unable to create '/w/.git/HEAD.lock': File exists.\n"),
              noPause);
}

TEST(LockWait, IsForTheFirstChangeOfTheConfiguration) {
    const std::string settings = lockedSettings;
    EXPECT_EQ(pauseAfter({"config", "--local", "a.b", "c"}, 255, settings), firstPause);
    EXPECT_EQ(pauseAfter({"config", "--local", "a.b", "c"}, 255, settings + "more\n"), noPause);
    EXPECT_EQ(pauseAfter({"remote", "add", "o", "/u"}, 128,
                         settings + "fatal: could not set 'remote.o.url' to '/u'\n"),
              firstPause);
    EXPECT_EQ(pauseAfter({"remote", "add", "o", "/u"}, 128,
                         settings + "fatal: could not set 'remote.o.fetch' to '+refs/…'\n"),
              noPause)
        << "the remote exists by now";
    EXPECT_EQ(pauseAfter({"branch", "--set-upstream-to=o/main", "--", "main"}, 1,
                         settings + "error: unable to write upstream branch configuration\n"
                                    "hint: \nhint: After fixing …\n"),
              firstPause);
    EXPECT_EQ(pauseAfter({"branch", "topic", "o/main"}, 1,
                         settings + "error: unable to write upstream branch configuration\n"),
              noPause)
        << "the branch exists by now";
    EXPECT_EQ(pauseAfter({"remote", "rm", "add"}, 1, settings), noPause);
}

TEST(LockWait, PausesGrowUntilTheTimeIsOver) {
    const std::vector<ChildLaunch> launches{test::program("/nosuch/git", {"add"})};
    const std::vector<ChildOutcome> outcomes{{.status = TerminationStatus::exited(128),
                                              .output = {},
                                              .errorOutput = Data(std::string(lockedIndexText))}};
    NEBSourceControlLockWait wait(launches, std::chrono::hours(1));
    EXPECT_EQ(wait.pauseAfter(outcomes), milliseconds(50));
    EXPECT_EQ(wait.pauseAfter(outcomes), milliseconds(100));
    EXPECT_EQ(wait.pauseAfter(outcomes), milliseconds(200));
    EXPECT_EQ(wait.pauseAfter(outcomes), milliseconds(400));
    NEBSourceControlLockWait off(launches, milliseconds(0));
    EXPECT_EQ(off.pauseAfter(outcomes), std::nullopt);
    NEBSourceControlLockWait brief(launches, milliseconds(1));
    EXPECT_LE(brief.pauseAfter(outcomes), milliseconds(1));
}

// ---- operations ---------------------------------------------------------------------------------

/// Has a program "git" that counts its starts and finds the index locked.
class WaitingOperation : public test::HygienicTest {
protected:
    WaitingOperation() {
        folder.write("w/.git/HEAD", "ref: refs/heads/main\n");
        std::filesystem::create_directories(folder.path("w/.git/objects"));
        folder.write("w/.git/index.lock", "");
        useGit("");
    }

    /// `beginning`: what git does before it looks for the lock.
    void useGit(const std::string& beginning) const {
        const std::string lock = folder.path("w/.git/index.lock");
        folder.writeProgram("git", "#!/bin/sh\n" + beginning + "\nif [ -e '" + lock +
                                       "' ]; then echo \"fatal: Unable to create '" + lock +
                                       "': File exists.\" >&2; exit 128; fi; echo done\n");
    }

    template <typename Op>
    void prepare(Op& operation, const std::vector<std::string>& arguments) const {
        operation.setArguments(arguments);
        operation.setCurrentDirectoryPath(folder.path("w"));
        operation.setCommandLog(std::make_shared<NEBSourceControlCommandLog>());
    }

    [[nodiscard]] std::shared_ptr<test::ScriptOperation> git(
        const std::vector<std::string>& arguments, milliseconds lockWait) const {
        const auto operation = test::script("");
        operation->program = folder.path("git");
        prepare(*operation, arguments);
        operation->setLimits({.lockWait = lockWait});
        return operation;
    }

    /// Runs the operation, and calls the function as soon as git was started a second time.
    static void runAnd(test::ScriptOperation& operation,
                       const std::function<void()>& whileWaiting) {
        std::thread thread([&] {
            while (operation.commandLog()->runs().size() < 2) {
                std::this_thread::yield();
            }
            whileWaiting();
        });
        operation.start();
        thread.join();
    }

    test::TemporaryFolder folder;
};

TEST_F(WaitingOperation, SucceedsWhenTheLockIsReleased) {
    const auto operation = git({"add", "a"}, std::chrono::hours(1));
    runAnd(*operation, [this] { std::filesystem::remove(folder.path("w/.git/index.lock")); });
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->data(), Data("done\n"));
    EXPECT_GE(operation->commandLog()->runs().size(), 2U);
    EXPECT_EQ(operation->parses, 1);
}

TEST_F(WaitingOperation, ReportsPathAgeAndHolderOfALockThatStays) {
    const FileDescriptor held(
        ::open(folder.path("w/.git/index.lock").c_str(), O_RDONLY | O_CLOEXEC));
    const auto operation = git({"add", "a"}, milliseconds(60));
    operation->start();
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlIndexLockedErrorClass));
    EXPECT_GE(operation->commandLog()->runs().size(), 2U);
    const NEBDictionary& info = operation->error()->userInfo;
    EXPECT_EQ(info.text(NEBSourceControlErrorLockPathKey), folder.path("w/.git/index.lock"));
    EXPECT_TRUE(info.contains(NEBSourceControlErrorLockAgeKey));
    EXPECT_EQ(info.value(NEBSourceControlErrorLockHolderProcessKey), NEBValue(::getpid()));
    EXPECT_THAT(operation->error()->localizedRecoverySuggestion().value(),
                testing::AllOf(HasSubstr("index.lock\" is "),
                               HasSubstr("(process " + std::to_string(::getpid()) + ")")));
}

TEST_F(WaitingOperation, NamesNoHolderOfAnOrphanedLock) {
    const auto operation = git({"add", "a"}, milliseconds(0));
    operation->start();
    EXPECT_EQ(operation->commandLog()->runs().size(), 1U) << "the wait is switched off";
    EXPECT_FALSE(operation->error()->userInfo.contains(NEBSourceControlErrorLockHolderProcessKey));
    EXPECT_THAT(operation->error()->localizedRecoverySuggestion().value(),
                HasSubstr("old. If no git is running, delete it."));
}

TEST_F(WaitingOperation, EndsWhenItIsCancelled) {
    const auto operation = git({"add", "a"}, std::chrono::hours(1));
    runAnd(*operation, [&operation] { operation->cancel(); });
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlCancelledErrorClass));
    EXPECT_TRUE(std::filesystem::exists(folder.path("w/.git/index.lock")));
}

TEST_F(WaitingOperation, WaitsNoLongerThanItsTotalTime) {
    const auto operation = git({"add", "a"}, std::chrono::hours(1));
    operation->setLimits({.total = milliseconds(300), .lockWait = std::chrono::hours(1)});
    operation->start();
    EXPECT_TRUE(operation->error().has_value());
    EXPECT_LE(operation->commandLog()->runs().size(), 5U);
}

TEST_F(WaitingOperation, DoesNotRepeatDeliveredRecords) {
    class List : public test::ListOperation {
    public:
        explicit List(std::string program) : ListOperation(""), _program(std::move(program)) {}
        std::string launchPath() override { return _program; }

    private:
        std::string _program;
    };
    useGit("echo one; echo two");
    List list(folder.path("git"));
    prepare(list, {"add", "a"});
    NEBSourceControlResult records;
    list.setRecordSink([&records](const NEBSourceControlResult& batch) {
        records.insert(records.end(), batch.begin(), batch.end());
    });
    list.start();
    EXPECT_THAT(test::namesOf(records), ElementsAre("one", "two"));
    EXPECT_THAT(list.error(), HasErrorClass(NEBSourceControlIndexLockedErrorClass));
    EXPECT_EQ(list.commandLog()->runs().size(), 1U);
}

/// git exits with the status of the hook post-checkout.
TEST_F(WaitingOperation, DoesNotRepeatAHookAtTheEndOfACheckout) {
    useGit(
        "[ $1 != rev-parse ] || { echo .git/hooks/post-checkout; exit; }; "
        "echo start >>" +
        folder.path("starts"));
    git({"restore", "a"}, milliseconds(60))->start();
    EXPECT_TRUE(folder.read("starts").starts_with("start\nstart\n")) << "without a hook";
    folder.write("w/.git/hooks/post-checkout", "");
    std::filesystem::remove(folder.path("starts"));
    git({"restore", "a"}, milliseconds(60))->start();
    EXPECT_EQ(folder.read("starts"), "start\n");
}

TEST_F(WaitingOperation, DoesNotStartAMergeWhileTheIndexIsLocked) {
    ChildLaunch launch = test::program("/usr/bin/git", {"merge", "topic"});
    launch.currentDirectoryPath = folder.path("w");
    const std::vector<ChildLaunch> launches{launch};
    NEBSourceControlLockWait wait(launches, std::chrono::hours(1));
    EXPECT_EQ(wait.pauseBeforeStart(), milliseconds(50));
    EXPECT_EQ(wait.pauseBeforeStart(), milliseconds(100));
    std::filesystem::remove(folder.path("w/.git/index.lock"));
    EXPECT_EQ(wait.pauseBeforeStart(), std::nullopt);
}

TEST(ChildProcessWait, EndsWhenItIsCancelled) {
    ChildProcess process;
    EXPECT_TRUE(process.waitUnlessCancelled(milliseconds(0)));
    std::thread canceller([&process] { process.cancel(); });
    EXPECT_FALSE(process.waitUnlessCancelled(std::chrono::hours(1)));
    canceller.join();
    EXPECT_FALSE(process.waitUnlessCancelled(std::chrono::hours(1)));
}

TEST(LockAge, HasASuitableUnit) {
    using std::chrono::seconds;
    EXPECT_EQ(NEBSourceControlTextOfAge(seconds(0)), "0 s");
    EXPECT_EQ(NEBSourceControlTextOfAge(seconds(59)), "59 s");
    EXPECT_EQ(NEBSourceControlTextOfAge(seconds(60)), "1 minute");
    EXPECT_EQ(NEBSourceControlTextOfAge(seconds(7200)), "2 hours");
    EXPECT_EQ(NEBSourceControlTextOfAge(seconds(86400 * 3)), "3 days");
}

}  // namespace
}  // namespace neb
