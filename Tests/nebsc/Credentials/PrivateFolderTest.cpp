#include "Session/Credentials/PrivateFolder.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "Platform/FileDescriptor.h"
#include "Session/Credentials/AskpassProgram.h"
#include "Support/TemporaryFolder.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;

class PrivateFolder : public testing::Test {
protected:
    void SetUp() override {
        ::setenv("TMPDIR", parent.path().c_str(), 1);
        ::unsetenv("XDG_RUNTIME_DIR");
    }
    void TearDown() override { ::unsetenv("TMPDIR"); }

    /// Makes a private folder with a socket that was bound two minutes ago.
    [[nodiscard]] std::string folderWithSocket() {
        const std::string folder = nebsc::newPrivateFolder();
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = folder + "/" + std::string(nebsc::askpassSocketName);
        std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
        socket = FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        EXPECT_EQ(::bind(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        fs::create_symlink("/nosuch", folder + "/" + std::string(nebsc::askpassProgramName));
        makeOld(folder);
        return folder;
    }
    static void makeOld(const std::string& folder) {
        fs::last_write_time(folder, fs::file_time_type::clock::now() - std::chrono::minutes(2));
    }

    TemporaryFolder parent;
    FileDescriptor socket;
};

TEST_F(PrivateFolder, IsRemovedWhenNobodyListens) {
    const std::string folder = folderWithSocket();
    nebsc::removeAbandonedPrivateFolders();
    EXPECT_FALSE(fs::exists(folder));
    const std::string unfinished = nebsc::newPrivateFolder();
    makeOld(unfinished);
    nebsc::removeAbandonedPrivateFolders();
    EXPECT_FALSE(fs::exists(unfinished));
}

TEST_F(PrivateFolder, StaysWhileItIsUsed) {
    const std::string folder = folderWithSocket();
    ASSERT_EQ(::listen(socket.get(), 1), 0);
    const std::string fresh = nebsc::newPrivateFolder();
    nebsc::removeAbandonedPrivateFolders();
    EXPECT_TRUE(fs::exists(folder + "/" + std::string(nebsc::askpassSocketName)));
    EXPECT_TRUE(fs::exists(fresh));
}

TEST_F(PrivateFolder, StaysWithOtherFilesOrForOtherUsers) {
    const std::string filled = nebsc::newPrivateFolder();
    std::ofstream(filled + "/file").put('x');
    makeOld(filled);
    const std::string open = nebsc::newPrivateFolder();
    fs::permissions(open, fs::perms::others_read, fs::perm_options::add);
    makeOld(open);
    fs::create_directory(parent.path("target"));
    fs::create_directory_symlink(parent.path("target"), parent.path("nebsc-abcdef"));
    nebsc::removeAbandonedPrivateFolders();
    EXPECT_TRUE(fs::exists(filled + "/file"));
    EXPECT_TRUE(fs::exists(open));
    EXPECT_TRUE(fs::exists(parent.path("nebsc-abcdef")));
}

}  // namespace
}  // namespace neb::test
