// Writes to a full disk or a read-only file system: they fail with the right error and leave no
// partial file.

#include <gmock/gmock.h>
#include <sys/mount.h>

#include <filesystem>
#include <fstream>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A file system of 1 MiB.
class SmallDisk {
public:
    SmallDisk() {
        fs::create_directory(path());
        _isMounted = ::mount("none", path().c_str(), "tmpfs", 0, "size=1m,nr_inodes=200") == 0;
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    ~SmallDisk() {
        if (_isMounted) {
            ::umount2(path().c_str(), MNT_DETACH);
        }
    }
    [[nodiscard]] bool isMounted() const { return _isMounted; }
    [[nodiscard]] std::string path() const { return _folder.path("disk"); }
    [[nodiscard]] std::string path(const std::string& name) const { return path() + "/" + name; }
    void makeReadOnly() const {
        EXPECT_EQ(::mount("none", path().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
    }
    void fill() const { std::ofstream(path("filler")) << std::string(2000000, 'x'); }
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(path())) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

private:
    TemporaryFolder _folder;
    bool _isMounted = false;
};

class FullDisk : public HygienicTest {
protected:
    void SetUp() override {
        HygienicTest::SetUp();
        if (!disk.isMounted()) {
            GTEST_SKIP() << "a small file system cannot be mounted here";
        }
    }
    /// Commits a file that is too big for the small disk to a repository on another disk.
    void makeBigFile() const {
        repository.commitFile("big", std::string(3000000, 'x'));
        repository.commitFile("small", "1\n");
    }

    TestRepository repository;
    SmallDisk disk;
};

TEST(ExcludeFile, ThatMeetsAFullDiskIsAnError) {
    const TemporaryFolder folder;
    fs::create_directories(folder.path("template/info"));
    fs::create_symlink("/dev/full", folder.path("template/info/exclude"));
    fs::create_directory(folder.path("new"));
    ::setenv("GIT_TEMPLATE_DIR", folder.path("template").c_str(), 1);
    const auto creation =
        perform(requestFor(NEBSourceControlRequestCreateRepository, folder.path("new")));
    ::unsetenv("GIT_TEMPLATE_DIR");
    EXPECT_THAT(creation->error(), HasErrorClass(NEBSourceControlDiskFullErrorClass));
    EXPECT_THAT(creation->error()->localizedDescription().value_or(""),
                HasSubstr(folder.path("new/.git/info/exclude")));
}

TEST_F(FullDisk, AnExportLeavesNoHalfFile) {
    makeBigFile();
    auto request = requestFor(NEBSourceControlRequestExport, repository.path());
    request->startingRevision = "HEAD";
    request->files = valuesOf({repository.path("big")});
    request->destination = disk.path("big");
    const auto operation = perform(request);
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlDiskFullErrorClass));
    EXPECT_EQ(operation->result(), std::nullopt);
    EXPECT_THAT(disk.names(), IsEmpty());
}

TEST_F(FullDisk, AnExportToATemporaryFileLeavesNone) {
    makeBigFile();
    ::setenv("TMPDIR", disk.path().c_str(), 1);
    auto request = requestFor(NEBSourceControlRequestExport, repository.path());
    request->startingRevision = "HEAD";
    request->files = valuesOf({repository.path("big")});
    const auto operation = perform(request);
    ::unsetenv("TMPDIR");
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlDiskFullErrorClass));
    EXPECT_THAT(disk.names(), IsEmpty());
}

TEST_F(FullDisk, AnExportOfTheTreeIsAnError) {
    makeBigFile();
    auto request = requestFor(NEBSourceControlRequestExportTree, repository.path());
    request->destination = disk.path("tree");
    request->startingRevision = "HEAD";
    const auto operation = perform(request);
    // git does not print the reason.
    EXPECT_THAT(operation->error()->text.value_or(""),
                HasSubstr("unable to write file " + disk.path("tree/big")));
}

TEST_F(FullDisk, ACopyLeavesNothing) {
    const TestRepository onDisk;
    fs::create_directory(disk.path("repository"));
    fs::create_symlink(disk.path("repository"), onDisk.path("link"));
    repository.git({"init", "--quiet", disk.path("repository")});
    repository.write("big", std::string(3000000, 'x'));
    auto request = requestFor(NEBSourceControlRequestCopy, disk.path("repository"));
    request->files = valuesOf({repository.path("big")});
    request->destination = disk.path("repository/copy");
    const auto operation = perform(request);
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlDiskFullErrorClass));
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(disk.path("repository"))) {
        names.push_back(entry.path().filename().string());
    }
    EXPECT_THAT(names, ElementsAre(".git"));
}

/// git exits with status 0 although it has not written the setting.
TEST_F(FullDisk, AnUpstreamThatWasNotSetIsAnError) {
    repository.commitFile("a", "1\n");
    repository.git({"clone", "--quiet", repository.path(), disk.path("clone")});
    repository.git({"-C", disk.path("clone"), "branch", "--unset-upstream"});
    disk.fill();
    auto request = requestFor(NEBSourceControlRequestChangeBranch, disk.path("clone"));
    request->destination = "origin/main";
    request->options = {{NEBSourceControlRequestOptionAction, "set-upstream"}};
    const auto operation = perform(request);
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlIOErrorClass));
    EXPECT_EQ(operation->result(), std::nullopt);
}

TEST_F(FullDisk, ACommandsExportLeavesNothing) {
    makeBigFile();
    const NebscOutcome outcome =
        runNebsc({"export", "HEAD", "big", disk.path("big")}, {.folder = repository.path()});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(outcome.errors,
                testing::AnyOf(HasSubstr("No space left on device"), HasSubstr("Wrote only ")));
    EXPECT_THAT(disk.names(), IsEmpty());
}

TEST_F(FullDisk, ANewFolderThatHasNoRoomIsAnError) {
    std::error_code full;
    for (int i = 0; i < 10000 && !full; ++i) {
        fs::create_directory(disk.path(std::to_string(i)), full);
    }
    auto request = requestFor(NEBSourceControlRequestMakeDirectory, disk.path());
    request->destination = disk.path("new/deep");
    EXPECT_THAT(perform(request)->error(), HasErrorClass(NEBSourceControlDiskFullErrorClass));
}

// ---- read-only --------------------------------------------------------------------------------

class ReadOnlyDisk : public FullDisk {
protected:
    void SetUp() override {
        FullDisk::SetUp();
        if (!disk.isMounted()) {
            return;
        }
        repository.git({"init", "--quiet", disk.path("w")});
        repository.git({"-C", disk.path("w"), "commit", "--quiet", "--allow-empty", "-m", "First"});
        fs::copy_file("/etc/passwd", disk.path("w/a"));
        repository.git({"-C", disk.path("w"), "add", "a"});
        repository.git({"-C", disk.path("w"), "commit", "--quiet", "-m", "Second"});
        repository.git({"-C", disk.path("w"), "branch", "topic", "HEAD~1"});
        disk.makeReadOnly();
    }
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> ask(std::int32_t type) const {
        return requestFor(type, disk.path("w"));
    }
};

TEST_F(ReadOnlyDisk, WhatOnlyReadsWorks) {
    for (const std::int32_t type :
         {NEBSourceControlRequestStatus, NEBSourceControlRequestLog,
          NEBSourceControlRequestCurrentBranch, NEBSourceControlRequestDiff}) {
        const auto operation = perform(ask(type));
        EXPECT_EQ(operation->error(), std::nullopt) << type;
    }
}

TEST_F(ReadOnlyDisk, WhatWritesIsAnErrorThatTellsIt) {
    std::vector<std::shared_ptr<NEBSourceControlRequest>> requests;
    for (const std::int32_t type :
         {NEBSourceControlRequestAdd, NEBSourceControlRequestRemove, NEBSourceControlRequestCommit,
          NEBSourceControlRequestCheckout, NEBSourceControlRequestCreateBranch,
          NEBSourceControlRequestMakeDirectory, NEBSourceControlRequestCopy,
          NEBSourceControlRequestAddRemote, NEBSourceControlRequestExport}) {
        requests.push_back(ask(type));
    }
    for (const auto& request : requests) {
        request->files = valuesOf({disk.path("w/a")});
    }
    requests[2]->options = NEBDictionary{{NEBSourceControlRequestOptionMessage, std::string("m")},
                                         {NEBSourceControlRequestOptionAllowEmptyCommit, true}};
    requests[2]->files.reset();
    requests[3]->destination = "topic";
    requests[4]->destination = "new";
    requests[5]->destination = disk.path("w/new");
    requests[6]->destination = disk.path("w/b");
    requests[7]->destination = "origin";
    requests[8]->destination = disk.path("w/exported-a");
    requests[8]->startingRevision = "HEAD";
    for (const auto& request : requests) {
        const auto operation = perform(request);
        ASSERT_TRUE(operation->error().has_value()) << request->type;
        const std::string told = operation->error()->text.value_or("") +
                                 operation->error()->localizedDescription().value_or("");
        EXPECT_THAT(told, HasSubstr("Read-only file system")) << request->type;
        EXPECT_EQ(operation->error()->errorClass, NEBSourceControlPermissionDeniedErrorClass)
            << request->type << told;
    }
}

}  // namespace
}  // namespace neb::test
