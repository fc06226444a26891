#include "GitOperations/GitTrackedFiles.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

#include <filesystem>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

namespace fs = std::filesystem;
using test::AsOrdinaryUser;
using test::commandLinesOf;
using test::HasErrorClass;
using test::IsSourceControlError;
using test::perform;
using test::ReportCollector;
using test::requestFor;
using test::TestRepository;
using test::valuesOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::shared_ptr<NEBSourceControlRequest> filesRequest(std::int32_t type,
                                                      std::optional<std::vector<NEBValue>> files,
                                                      NEBValue destination = {},
                                                      const std::string& location = "/w") {
    auto made = requestFor(type, location);
    made->files = std::move(files);
    made->destination = std::move(destination);
    return made;
}

const NEBDictionary bothPaths{{NEBSourceControlRequestOptionRepositoryPath, "/r/.git"},
                              {NEBSourceControlRequestOptionWorkingCopyPath, "/r"}};

// ---- the command lines ------------------------------------------------------------------------

TEST(AddArguments, AreTheWholeWorkingCopyWithoutDestinationOrFiles) {
    EXPECT_THAT(GitAddOperation(filesRequest(NEBSourceControlRequestAdd, std::nullopt)).arguments(),
                ElementsAre("add", "--", "."));
    EXPECT_THAT(GitAddOperation(filesRequest(NEBSourceControlRequestAdd, valuesOf({}))).arguments(),
                ElementsAre("add", "--", "."));
}

TEST(AddArguments, AreOnlyTheDestinationIfSet) {
    EXPECT_THAT(GitAddOperation(filesRequest(NEBSourceControlRequestAdd, valuesOf({"/w/a", "/w/b"}),
                                             "/w/there"))
                    .arguments(),
                ElementsAre("add", "--", "/w/there"));
    const test::TemporaryFolder folder;
    EXPECT_THAT(
        GitAddOperation(filesRequest(NEBSourceControlRequestAdd, std::nullopt, folder.path()))
            .arguments(),
        ElementsAre("add", "--", folder.path()))
        << "no slash is put behind a destination";
}

TEST(AddArguments, FollowTheDefaultArguments) {
    auto asked = filesRequest(NEBSourceControlRequestAddFiles, valuesOf({"/r/a"}));
    asked->options = bothPaths;
    EXPECT_THAT(GitAddOperation(asked).arguments(),
                ElementsAre("--git-dir=/r/.git", "--work-tree=/r", "add", "--", "/r/a"));
}

TEST(AddArguments, AppendASlashToFolders) {
    const test::TemporaryFolder folder;
    fs::create_directory(folder.path("Sources"));
    folder.write("a.c", "a");
    fs::create_directory_symlink("Sources", folder.path("link"));
    EXPECT_THAT(
        GitAddOperation(
            filesRequest(NEBSourceControlRequestAddFiles,
                         valuesOf({folder.path("Sources"), folder.path("a.c"), folder.path("link"),
                                   folder.path("nothing"), folder.path("a.c") + "/", ""})))
            .arguments(),
        ElementsAre("add", "--", folder.path("Sources/"), folder.path("a.c"), folder.path("link"),
                    folder.path("nothing"), folder.path("a.c") + "/", ""))
        << "in the order given; a path with a slash is not looked up";
}

TEST(AddArguments, KeepTheEmptyName) {
    const test::TemporaryFolder folder;
    for (const std::int32_t type : {NEBSourceControlRequestAdd, NEBSourceControlRequestAddFiles}) {
        EXPECT_THAT(
            GitAddOperation(filesRequest(type, valuesOf({""}), {}, folder.path())).arguments(),
            ElementsAre("add", "--", ""))
            << "it names neither the root nor the working directory";
    }
}

TEST(AddArguments, ReportAFileThatIsNotAString) {
    const ReportCollector collector;
    const GitAddOperation operation(filesRequest(
        NEBSourceControlRequestAddFiles, std::vector<NEBValue>{"/w/a", NEBValue(), 7, "/w/b"}));
    EXPECT_THAT(operation.arguments(), ElementsAre("add", "--", "/w/a", "7", "/w/b"));
    ASSERT_EQ(collector.reports().size(), 2U);
    const LOMAssertionReport& absent = collector.reports()[0];
    EXPECT_EQ(absent.function, "-[GitAddOperation initWithRequest:]");
    EXPECT_EQ(absent.file, "Classes/GitOperations");
    EXPECT_EQ(absent.line, 672);
    EXPECT_EQ(absent.message,
              "pathString should be an instance inheriting from NSString, but it is nil");
    EXPECT_EQ(absent.condition, "(pathString) != nil");
    const LOMAssertionReport& number = collector.reports()[1];
    EXPECT_EQ(number.line, 672);
    EXPECT_EQ(number.message,
              "pathString should be an instance inheriting from NSString, but it is 7");
    EXPECT_EQ(number.condition, "[(id)(pathString) isKindOfClass:[NSString class]]");
}

TEST(RemoveArguments, AreAlwaysByForceAndRecursive) {
    EXPECT_THAT(GitRemoveOperation(
                    filesRequest(NEBSourceControlRequestRemove, valuesOf({"/w/a", "-b", "c/"})))
                    .arguments(),
                ElementsAre("rm", "-f", "-r", "--", "/w/a", "-b", "c/"));
    EXPECT_THAT(
        GitRemoveOperation(filesRequest(NEBSourceControlRequestRemove, std::nullopt)).arguments(),
        ElementsAre("rm", "-f", "-r", "--"));
    auto asked = filesRequest(NEBSourceControlRequestRemove, valuesOf({"/r/a"}));
    asked->options = bothPaths;
    EXPECT_THAT(GitRemoveOperation(asked).arguments(), ElementsAre("rm", "-f", "-r", "--", "/r/a"))
        << "no default arguments";
    EXPECT_THAT(GitRemoveOperation(filesRequest(NEBSourceControlRequestRemove,
                                                std::vector<NEBValue>{NEBValue(), "a"}))
                    .arguments(),
                ElementsAre("rm", "-f", "-r", "--", "a"))
        << "a file that is missing must not stand for one of some name";
}

/// A move has one destination, so that further files are ignored on purpose.
TEST(MoveArguments, AreTheFirstFileAndTheDestination) {
    EXPECT_THAT(GitMoveOperation(filesRequest(NEBSourceControlRequestMove,
                                              valuesOf({"/w/a", "/w/b", "/w/c"}), "/w/d"))
                    .arguments(),
                ElementsAre("mv", "/w/a", "/w/d"));
    auto asked = filesRequest(NEBSourceControlRequestMove, valuesOf({"/r/a"}), "/r/b");
    asked->options = bothPaths;
    EXPECT_THAT(GitMoveOperation(asked).arguments(), ElementsAre("mv", "/r/a", "/r/b"))
        << "neither -- nor default arguments";
    EXPECT_THAT(
        GitMoveOperation(filesRequest(NEBSourceControlRequestMove, std::nullopt)).arguments(),
        ElementsAre("mv"));
}

// ---- real repositories ------------------------------------------------------------------------

class TrackedFiles : public test::HygienicTest {
protected:
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> run(
        std::int32_t type, const std::vector<std::string>& names, NEBValue destination = {}) const {
        std::vector<NEBValue> files;
        for (const std::string& name : names) {
            files.emplace_back(repository.path(name));
        }
        return perform(filesRequest(type, files, std::move(destination), repository.path()));
    }
    [[nodiscard]] std::string tracked() const { return repository.git({"ls-files"}); }

    TestRepository repository;
};

TEST_F(TrackedFiles, AnAddStagesFilesAndFolders) {
    repository.write("src/deep/a.c", "a");
    repository.write("b.c", "b");
    repository.write("c.c", "c");
    const auto operation = run(NEBSourceControlRequestAddFiles, {"src", "b.c"});
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->result(), std::nullopt);
    EXPECT_EQ(tracked(), "b.c\nsrc/deep/a.c\n");
    EXPECT_EQ(run(NEBSourceControlRequestAdd, {})->error(), std::nullopt);
    EXPECT_EQ(tracked(), "b.c\nc.c\nsrc/deep/a.c\n");
}

TEST_F(TrackedFiles, AddWithRepositoryAndWorkTreeNeedsNoFolder) {
    repository.write("a", "a");
    auto asked = requestFor(NEBSourceControlRequestAddFiles, std::nullopt);
    asked->files = valuesOf({repository.path("a")});
    asked->options =
        NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, repository.path(".git")},
                      {NEBSourceControlRequestOptionWorkingCopyPath, repository.path()}};
    EXPECT_EQ(perform(asked)->error(), std::nullopt);
    EXPECT_EQ(tracked(), "a\n");
}

TEST_F(TrackedFiles, ReportAnAddOfAMissingFile) {
    repository.write("a", "a");
    const auto operation = run(NEBSourceControlRequestAddFiles, {"a", "nothing"});
    EXPECT_THAT(operation->error(),
                IsSourceControlError(-71, "This file does not exist in the index."));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlPathUnknownErrorClass));
    EXPECT_EQ(tracked(), "");
}

TEST_F(TrackedFiles, ReportAnIgnoredFileByName) {
    repository.write(".gitignore", "*.o\n");
    repository.write("x.o", "x");
    const auto operation = run(NEBSourceControlRequestAddFiles, {"x.o"});
    EXPECT_THAT(operation->error(), IsSourceControlError(-1, "An ignore rule excludes the files."));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlPathIgnoredErrorClass));
}

TEST_F(TrackedFiles, IgnoreAWarningOfASuccessfulAdd) {
    repository.git({"config", "core.autocrlf", "input"});
    repository.write("crlf.txt", "a\r\nb\r\n");
    EXPECT_EQ(run(NEBSourceControlRequestAddFiles, {"crlf.txt"})->error(), std::nullopt);
    EXPECT_EQ(tracked(), "crlf.txt\n");
}

TEST_F(TrackedFiles, ReportALockedIndex) {
    repository.write("a", "a");
    repository.write(".git/index.lock", "");
    EXPECT_THAT(run(NEBSourceControlRequestAddFiles, {"a"})->error(),
                HasErrorClass(NEBSourceControlIndexLockedErrorClass));
}

TEST_F(TrackedFiles, TreatNamesLiterally) {
    for (const char* name : {"glob[1].txt", "glob1.txt", "star*.txt", "star2.txt", ":x"}) {
        repository.write(name, name);
    }
    EXPECT_EQ(run(NEBSourceControlRequestAddFiles, {"glob[1].txt", "star*.txt", ":x"})->error(),
              std::nullopt);
    EXPECT_EQ(tracked(), ":x\nglob[1].txt\nstar*.txt\n");
    repository.git({"add", "."});
    EXPECT_EQ(run(NEBSourceControlRequestRemove, {"glob[1].txt"})->error(), std::nullopt);
    EXPECT_TRUE(fs::exists(repository.path("glob1.txt"))) << "an innocent file is gone";
    EXPECT_EQ(tracked(), ":x\nglob1.txt\nstar*.txt\nstar2.txt\n");
}

TEST_F(TrackedFiles, RemoveFoldersAndChangedFiles) {
    repository.commitFile("src/a", "a");
    repository.commitFile("b", "b");
    repository.commitFile("c", "c");
    repository.write("b", "changed");
    const auto operation = run(NEBSourceControlRequestRemove, {"src", "b"});
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->result(), std::nullopt);
    EXPECT_EQ(tracked(), "c\n");
    EXPECT_FALSE(fs::exists(repository.path("src")));
    EXPECT_FALSE(fs::exists(repository.path("b")));
}

TEST_F(TrackedFiles, ReportARemovalOfAnUntrackedFile) {
    repository.commitFile("a", "a");
    repository.write("untracked", "u");
    const auto operation = run(NEBSourceControlRequestRemove, {"a", "untracked"});
    EXPECT_THAT(operation->error(),
                IsSourceControlError(-71, "This file does not exist in the index."));
    EXPECT_EQ(tracked(), "a\n");
    EXPECT_TRUE(fs::exists(repository.path("a")));
    EXPECT_TRUE(fs::exists(repository.path("untracked")));
}

TEST_F(TrackedFiles, MoveOnlyTheFirstFile) {
    repository.commitFile("a", "a");
    repository.commitFile("b", "b");
    const auto operation = run(NEBSourceControlRequestMove, {"a", "b"}, repository.path("c"));
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->result(), std::nullopt);
    EXPECT_EQ(tracked(), "b\nc\n");
    EXPECT_FALSE(fs::exists(repository.path("a")));
}

TEST_F(TrackedFiles, ReportAnImpossibleMove) {
    repository.commitFile("a", "a");
    repository.commitFile("b", "b");
    repository.write("untracked", "u");
    fs::create_directory(repository.path("empty"));
    struct Case {
        const char *from, *to;
        std::int64_t code;
        std::string_view errorClass;
    };
    for (const Case& refused :
         {Case{"a", "b", -60, NEBSourceControlDestinationExistsErrorClass},
          Case{"untracked", "u2", -71, NEBSourceControlPathUnknownErrorClass},
          Case{"nothing", "x", -71, NEBSourceControlPathUnknownErrorClass},
          Case{"empty", "e2", -70, NEBSourceControlSourceDirectoryEmptyErrorClass},
          Case{"a", "no folder/a", -1, NEBSourceControlDestinationMissingErrorClass}}) {
        const auto operation =
            run(NEBSourceControlRequestMove, {refused.from}, repository.path(refused.to));
        EXPECT_THAT(operation->error(), IsSourceControlError(refused.code, testing::_))
            << refused.from;
        EXPECT_THAT(operation->error(), HasErrorClass(refused.errorClass)) << refused.from;
    }
    EXPECT_EQ(tracked(), "a\nb\n");
}

}  // namespace
}  // namespace neb
