#include "GitOperations/GitNewRepository.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

namespace fs = std::filesystem;
using test::AsOrdinaryUser;
using test::HasErrorClass;
using test::IsSourceControlError;
using test::perform;
using test::requestFor;
using test::TemporaryFolder;
using test::TestRepository;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* excluded = ".DS_Store\nUserInterface.vkuserstate";

std::shared_ptr<NEBSourceControlRequest> create(std::optional<std::string> location,
                                                std::optional<NEBDictionary> options = {}) {
    auto made = requestFor(NEBSourceControlRequestCreateRepository, std::move(location));
    made->options = std::move(options);
    return made;
}

NEBDictionary repositoryPath(const std::string& path) {
    return {{NEBSourceControlRequestOptionRepositoryPath, path}};
}

std::shared_ptr<NEBSourceControlRequest> clone(std::optional<std::string> location,
                                               NEBValue destination) {
    auto made = requestFor(NEBSourceControlRequestClone, std::move(location));
    made->destination = std::move(destination);
    made->repositoryToAuthenticate = made->sourceTree;
    return made;
}

// ---- the command lines ------------------------------------------------------------------------

TEST(CreateArguments, MakeABareRepositoryAtARepositoryPath) {
    const std::string home = std::getenv("HOME");
    EXPECT_THAT(GitCreateRepositoryOperation(create("/w", repositoryPath("~/r.git"))).arguments(),
                ElementsAre("--git-dir=" + home + "/r.git", "init", "--bare", "--quiet"));
}

TEST(CreateArguments, MakeAnOrdinaryOneWithoutIt) {
    EXPECT_THAT(GitCreateRepositoryOperation(create("/w")).arguments(),
                ElementsAre("init", "--quiet"));
    EXPECT_THAT(
        GitCreateRepositoryOperation(
            create("/w", NEBDictionary{{NEBSourceControlRequestOptionWorkingCopyPath, "/w"}}))
            .arguments(),
        ElementsAre("--work-tree=/w", "init", "--quiet"));
    EXPECT_EQ(GitCreateRepositoryOperation(create("file:///w%20w")).currentDirectoryPath(), "/w w");
}

TEST(CloneArguments, NameSourceAndDestinationAndRunInTheLatter) {
    auto asked = clone("https://example.org/p.git", "/there/p");
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, "/r"},
                                   {NEBSourceControlRequestOptionBranch, "topic"}};
    const GitCloneOperation operation(asked);
    EXPECT_THAT(operation.arguments(),
                ElementsAre("clone", "--recursive", "-q", "--branch", "topic",
                            "https://example.org/p.git", "/there/p"))
        << "without default arguments";
    EXPECT_EQ(operation.currentDirectoryPath(), "/there/p");
}

TEST(CloneArguments, WithoutADestinationNameNoneAndStayInTheSource) {
    const GitCloneOperation operation(clone("/w/source", {}));
    EXPECT_THAT(operation.arguments(), ElementsAre("clone", "--recursive", "-q", "/w/source"));
    EXPECT_EQ(operation.currentDirectoryPath(), "/w/source");
    const GitCloneOperation remote(clone("https://example.org/p.git", {}));
    EXPECT_EQ(remote.currentDirectoryPath(), std::nullopt);
    EXPECT_THAT(GitCloneOperation(clone(std::nullopt, "/there")).arguments(),
                ElementsAre("clone", "--recursive", "-q", "/there"));
}

// ---- creating ---------------------------------------------------------------------------------

class NewRepository : public test::HygienicTest {
protected:
    [[nodiscard]] std::string path(const std::string& name) const { return folder.path(name); }

    TemporaryFolder folder;
};

TEST_F(NewRepository, HasItsListOfExcludedFilesToTheByte) {
    fs::create_directory(path("new"));
    const auto operation = perform(create(path("new")));
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->result(), std::nullopt);
    EXPECT_EQ(folder.read("new/.git/info/exclude"), excluded);
    folder.write("new/.DS_Store", "x");
    folder.write("new/UserInterface.vkuserstate", "x");
    auto status = requestFor(NEBSourceControlRequestStatus, path("new"));
    EXPECT_THAT(*perform(status)->result(), IsEmpty()) << "git reads the list";
}

TEST_F(NewRepository, OverAnExistingOneReplacesTheWholeList) {
    const TestRepository repository;
    repository.commitFile("a", "a");
    repository.write(".git/info/exclude", std::string(500, '#') + "\n*.o\n");
    EXPECT_EQ(perform(create(repository.path()))->error(), std::nullopt);
    EXPECT_EQ(repository.git({"rev-list", "--count", "HEAD"}), "1\n");
    EXPECT_EQ(TemporaryFolder().read(repository.path(".git/info/exclude")), excluded);
}

TEST_F(NewRepository, ThatIsBareKeepsGitsOwnList) {
    const auto operation = perform(create(std::nullopt, repositoryPath(path("bare.git"))));
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_TRUE(fs::exists(path("bare.git/HEAD")));
    EXPECT_NE(folder.read("bare.git/info/exclude"), excluded);
    EXPECT_FALSE(fs::exists(path("bare.git/.git")));
}

TEST_F(NewRepository, InAFolderThatIsNotThereSaysSo) {
    EXPECT_THAT(perform(create(path("missing")))->error(),
                HasErrorClass(NEBSourceControlNotStartedErrorClass));
    EXPECT_FALSE(fs::exists(path("missing")));
    const auto bare = perform(create(std::nullopt, repositoryPath(path("x/y/bare.git"))));
    EXPECT_THAT(bare->error(), HasErrorClass(NEBSourceControlDestinationMissingErrorClass));
}

TEST_F(NewRepository, WithoutAnInfoFolderIsTheWritesOwnError) {
    fs::create_directory(path("template"));
    fs::create_directory(path("new"));
    ::setenv("GIT_TEMPLATE_DIR", path("template").c_str(), 1);
    const auto operation = perform(create(path("new")));
    ::unsetenv("GIT_TEMPLATE_DIR");
    EXPECT_TRUE(fs::exists(path("new/.git/HEAD")));
    ASSERT_TRUE(operation->error());
    EXPECT_EQ(operation->error()->domain, "NEBPOSIXErrorDomain");
    EXPECT_EQ(operation->error()->code, ENOENT);
    EXPECT_EQ(operation->error()->localizedDescription(),
              "The file \"" + path("new/.git/info/exclude") +
                  "\" could not be written: No such file or directory.");
}

TEST_F(NewRepository, WhoseListMayNotBeWrittenIsTheWritesOwnError) {
    const AsOrdinaryUser user;
    const TemporaryFolder own;
    fs::create_directories(own.path("new/.git/info"));
    own.write("new/.git/info/exclude", "kept");
    fs::permissions(own.path("new/.git/info/exclude"), fs::perms(0444));
    const auto operation = perform(create(own.path("new")));
    ASSERT_TRUE(operation->error());
    EXPECT_EQ(operation->error()->domain, "NEBPOSIXErrorDomain");
    EXPECT_EQ(operation->error()->code, EACCES);
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlPermissionDeniedErrorClass));
    EXPECT_EQ(own.read("new/.git/info/exclude"), "kept");
}

TEST_F(NewRepository, ThatGitFailsToMakeLeavesTheListAlone) {
    fs::create_directories(path("new/.git/info"));
    folder.write("new/.git/info/exclude", "kept");
    folder.write("new/.git/config", "[core\n");
    const auto operation = perform(create(path("new")));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlConfigurationBrokenErrorClass));
    EXPECT_EQ(folder.read("new/.git/info/exclude"), "kept");
}

/// The command is quiet: any output means that it failed.
TEST_F(NewRepository, IsAFailureWhenGitPrintsAnything) {
    fs::create_directories(path("new/.git/info"));
    const std::string git = folder.writeProgram("git", "#!/bin/sh\nprintf 'one\\ntwo\\n'\n");
    test::StandIn<GitCreateRepositoryOperation> operation(git, create(path("new")));
    operation.start();
    EXPECT_THAT(operation.error(),
                IsSourceControlError(-1, "Cannot initialize a git repository: (one\ntwo\n)"));
    EXPECT_EQ(operation.error()->localizedRecoverySuggestion(), std::nullopt);
    EXPECT_EQ(operation.result(), std::nullopt);
    EXPECT_FALSE(fs::exists(path("new/.git/info/exclude")));
}

// ---- cloning ----------------------------------------------------------------------------------

class Cloning : public NewRepository {
protected:
    void SetUp() override {
        NewRepository::SetUp();
        source.commitFile("a", "a");
        source.git({"branch", "topic"});
        source.git({"tag", "v1"});
        fs::create_directory(path("there"));
    }
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> cloneHere(
        std::optional<NEBDictionary> options = {}) const {
        auto asked = clone(source.path(), path("there"));
        asked->options = std::move(options);
        return perform(asked);
    }

    TestRepository source;
};

TEST_F(Cloning, BringsTheFilesIntoTheDestination) {
    const auto operation = cloneHere();
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->result(), std::nullopt);
    EXPECT_EQ(folder.read("there/a"), "a");
}

TEST_F(Cloning, ChecksTheBranchOut) {
    EXPECT_EQ(cloneHere(NEBDictionary{{NEBSourceControlRequestOptionBranch, "topic"}})->error(),
              std::nullopt);
    EXPECT_EQ(folder.read("there/.git/HEAD"), "ref: refs/heads/topic\n");
}

TEST_F(Cloning, NoticesOfASuccessAreNoError) {
    EXPECT_EQ(cloneHere(NEBDictionary{{NEBSourceControlRequestOptionBranch, "v1"}})->error(),
              std::nullopt)
        << "a tag: on no branch";
    const TestRepository empty;
    fs::create_directory(path("second"));
    EXPECT_EQ(perform(clone(empty.path(), path("second")))->error(), std::nullopt)
        << "an empty repository";
}

TEST_F(Cloning, BringsSubmodulesToo) {
    const TestRepository outer;
    outer.git({"submodule", "--quiet", "add", source.path(), "inner"});
    outer.git({"commit", "-qm", "with a submodule"});
    EXPECT_EQ(perform(clone(outer.path(), path("there")))->error(), std::nullopt);
    EXPECT_EQ(folder.read("there/inner/a"), "a");
}

TEST_F(Cloning, ThatCannotBeSaysWhy) {
    folder.write("full/file", "x");
    const auto full = perform(clone(source.path(), path("full")));
    EXPECT_THAT(full->error(), HasErrorClass(NEBSourceControlDestinationExistsErrorClass));
    EXPECT_EQ(folder.read("full/file"), "x");
    EXPECT_THAT(perform(clone(path("nothing.git"), path("there")))->error(),
                HasErrorClass(NEBSourceControlRepositoryNotFoundErrorClass));
    EXPECT_THAT(cloneHere(NEBDictionary{{NEBSourceControlRequestOptionBranch, "nosuch"}})->error(),
                HasErrorClass(NEBSourceControlRemoteBranchUnknownErrorClass));
    EXPECT_THAT(perform(clone(source.path(), path("missing")))->error(),
                HasErrorClass(NEBSourceControlNotStartedErrorClass))
        << "git runs in the destination, which must exist";
}

TEST_F(Cloning, IsCancelledWithNothingLeftBehind) {
    const std::string git =
        folder.writeProgram("git", "#!/bin/sh\necho $$ >'" + path("pid") + "'\nexec sleep 600\n");
    test::StandIn<GitCloneOperation> operation(git, clone(source.path(), path("there")));
    std::thread canceller([&] {
        while (folder.read("pid").empty()) {
            std::this_thread::yield();
        }
        operation.cancel();
    });
    operation.start();
    canceller.join();
    EXPECT_THAT(operation.error(), HasErrorClass(NEBSourceControlCancelledErrorClass));
    EXPECT_FALSE(test::isLiveProcess(std::stoi(folder.read("pid"))));
}

}  // namespace
}  // namespace neb
