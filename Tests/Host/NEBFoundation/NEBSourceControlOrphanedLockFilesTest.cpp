#include "NEBFoundation/NEBSourceControlOrphanedLockFiles.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "Support/ChildLaunches.h"
#include "Support/HygienicTest.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

/// Cancels a program named "git" that holds a file open. It is bash, so it has not recorded the
/// file and does not remove it.
class OrphanedLockFiles : public test::HygienicTest {
protected:
    OrphanedLockFiles() {
        std::filesystem::create_directories(folder.path("w/.git/objects"));
        folder.write("w/.git/HEAD", "ref: refs/heads/main\n");
        std::filesystem::copy_file("/bin/bash", folder.path("git"));
        ::mkfifo(folder.path("fifo").c_str(), S_IRUSR | S_IWUSR);
    }

    /// Whether the file is still there after the program that created it was cancelled. `commands`
    /// are run while descriptor 9 is the file.
    [[nodiscard]] bool remains(const std::string& file, const std::string& commands = "") const {
        const std::string ready = folder.path("ready");
        std::filesystem::remove(ready);
        ChildProcess process;
        std::thread canceller([&] {
            while (!std::filesystem::exists(ready)) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            process.cancel();
        });
        const std::string script = "exec 9>'" + folder.path(file) + "'; " + commands + "echo >'" +
                                   ready + "'; read -t 1000 <>'" + folder.path("fifo") + "'";
        const auto outcomes = NEBSourceControlRunChildren(
            process, {test::program(folder.path("git"), {"-c", script})}, {});
        canceller.join();
        EXPECT_FALSE(outcomes[0].status.isSuccess());
        return std::filesystem::exists(folder.path(file));
    }

    const test::TemporaryFolder folder;
};

TEST_F(OrphanedLockFiles, AreRemoved) {
    EXPECT_FALSE(remains("w/.git/index.lock"));
    std::filesystem::create_directories(folder.path("w/.git/refs/heads/deep"));
    EXPECT_FALSE(remains("w/.git/refs/heads/deep/topic.lock"));
}

TEST_F(OrphanedLockFiles, OfARepositoryThatIsBeingCreatedAreRemoved) {
    std::filesystem::create_directories(folder.path("made/.git/refs"));
    EXPECT_FALSE(remains("made/.git/HEAD.lock"));
    EXPECT_FALSE(remains("made/.git/config.lock"));
}

TEST_F(OrphanedLockFiles, OtherFilesStay) {
    EXPECT_TRUE(remains("w/Cargo.lock")) << "a file of the working tree";
    EXPECT_TRUE(remains("w/.git/index.loc")) << "not a lock file";
    EXPECT_TRUE(remains("w/.git/written.lock", "echo x >&9; ")) << "git has recorded the name";
}

TEST_F(OrphanedLockFiles, LockFilesOfOtherProcessesStay) {
    const std::string replaced = folder.path("w/.git/replaced.lock");
    EXPECT_TRUE(remains("w/.git/replaced.lock", "rm '" + replaced + "'; : >'" + replaced + "'; "));
    folder.write("w/.git/other.lock", "");
    EXPECT_FALSE(remains("w/.git/our.lock"));
    EXPECT_TRUE(std::filesystem::exists(folder.path("w/.git/other.lock")));
}

}  // namespace
}  // namespace neb
