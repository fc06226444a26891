#include "GitExtensions/GitDiscard.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "Classes/GitExtensions/ChangeRequests.h"

namespace neb::test {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;

const NEBDictionary discardByForce{{NEBSourceControlRequestOptionForce, true}};

class Discard : public ChangeTest {};

TEST_F(Discard, RefusesToLoseChangesUnlessTheRequestAllowsIt) {
    repository.commitFile("a.c", "1");
    repository.write("a.c", "2");
    for (const std::vector<std::string>& files : {std::vector<std::string>{"a.c"}, {}}) {
        const auto refused = performed(NEBSourceControlRequestDiscard, {}, files);
        EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlLocalChangesErrorClass));
        EXPECT_THAT(refused->error()->files, ElementsAre("a.c"));
        const auto asked = performed(NEBSourceControlRequestDiscard,
                                     {{NEBSourceControlRequestOptionDryRun, true}}, files);
        EXPECT_EQ(asked->error(), std::nullopt);
        EXPECT_EQ(asked->result(),
                  NEBSourceControlResult({{{NEBSourceControlOperationPathKey, "a.c"},
                                           {NEBSourceControlOperationStateKey, "modified"}}}));
        EXPECT_EQ(git({"diff", "--name-only"}), "a.c");
    }
    EXPECT_EQ(performed(NEBSourceControlRequestDiscard, discardByForce, {"a.c"})->error(),
              std::nullopt);
    EXPECT_EQ(status(), "");
}

TEST_F(Discard, RestoresADeletedFileWithoutForceAndKeepsStagedChanges) {
    repository.commitFile("a.c", "1");
    repository.write("a.c", "staged");
    repository.git({"add", "a.c"});
    std::remove(repository.path("a.c").c_str());
    const auto operation = performed(NEBSourceControlRequestDiscard);
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_THAT(textsOf(*operation, NEBSourceControlOperationStateKey), ElementsAre("deleted"));
    EXPECT_EQ(status(), std::string("M  a.c\0", 7));
}

TEST_F(Discard, NamesAFolderInPlaceOfAFile) {
    repository.commitFile("a.c", "1");
    std::remove(repository.path("a.c").c_str());
    repository.write("a.c/own", "2");
    const auto refused = performed(NEBSourceControlRequestDiscard, {}, {"a.c"});
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlLocalChangesErrorClass));
    EXPECT_THAT(refused->error()->files, ElementsAre("a.c"));
    const auto asked = performed(NEBSourceControlRequestDiscard,
                                 {{NEBSourceControlRequestOptionDryRun, true}}, {"a.c"});
    EXPECT_THAT(textsOf(*asked, NEBSourceControlOperationStateKey),
                ElementsAre("deleted", "untracked"));
    EXPECT_EQ(performed(NEBSourceControlRequestDiscard, discardByForce, {"a.c"})->error(),
              std::nullopt);
    EXPECT_EQ(status(), "");
}

TEST_F(Discard, ThrowsAwayOnlyTheNamedFiles) {
    for (const std::string& name : hostileNames) {
        repository.write(name, "1");
    }
    repository.write("star", "1");
    repository.git({"add", "."});
    repository.git({"commit", "-q", "-m", "m"});
    std::vector<std::string> left;
    for (const std::string& name : hostileNames) {
        repository.write(name, "2");
        left.push_back(name);
    }
    repository.write("star", "2");
    EXPECT_THAT(pathsOf(*performed(NEBSourceControlRequestDiscard,
                                   {{NEBSourceControlRequestOptionDryRun, true}}, left)),
                UnorderedElementsAreArray(left));
    for (const std::string& name : hostileNames) {
        EXPECT_EQ(performed(NEBSourceControlRequestDiscard, discardByForce, {name})->error(),
                  std::nullopt);
        std::erase(left, name);
        EXPECT_EQ(fieldCount(status(), '\0'), left.size() + 2);
    }
    EXPECT_EQ(status(), std::string(" M star\0", 8));
}

TEST_F(Discard, DeletesUntrackedFilesOnlyIfAskedTo) {
    repository.commitFile(".gitignore", "*.o\n");
    repository.write("a.o", "1");
    for (const std::string& name : hostileNames) {
        repository.write(name, "1");
        EXPECT_THAT(performed(NEBSourceControlRequestDiscard, discardByForce, {name})->error(),
                    HasErrorClass(NEBSourceControlPathUnknownErrorClass));
    }
    EXPECT_EQ(performed(NEBSourceControlRequestDiscard, discardByForce)->error(), std::nullopt);
    const NEBDictionary untracked{{NEBSourceControlRequestOptionIncludeUntracked, true}};
    const auto refused = performed(NEBSourceControlRequestDiscard, untracked);
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlLocalChangesErrorClass));
    EXPECT_THAT(pathsOf(*refused), UnorderedElementsAreArray(hostileNames));
    EXPECT_EQ(fieldCount(status(), '\0'), hostileNames.size() + 1);
    NEBDictionary both = untracked;
    both.set(NEBSourceControlRequestOptionForce, true);
    EXPECT_EQ(performed(NEBSourceControlRequestDiscard, both, {"-dash"})->error(), std::nullopt);
    EXPECT_EQ(fieldCount(status(), '\0'), hostileNames.size());
    EXPECT_EQ(performed(NEBSourceControlRequestDiscard, both)->error(), std::nullopt);
    EXPECT_EQ(status(), "");
    EXPECT_EQ(git({"ls-files", "--others"}), "a.o");
}

TEST_F(Discard, DeletesMoreUntrackedFilesThanOneCommandTakes) {
    repository.commitFile("a.c", "1");
    for (int i = 0; i < 450; ++i) {
        repository.write("new/" + std::to_string(i), "1");
    }
    const auto operation = performed(NEBSourceControlRequestDiscard,
                                     {{NEBSourceControlRequestOptionIncludeUntracked, true},
                                      {NEBSourceControlRequestOptionForce, true}});
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(pathsOf(*operation).size(), 450U);
    EXPECT_EQ(status(), "");
}

TEST_F(Discard, ThrowsAwayAHunk) {
    repository.commitFile("a.c", "1\n2\n3\n4\n5\n6\n7\n8\n9\n");
    repository.write("a.c", "one\n2\n3\n4\n5\n6\n7\n8\n9\n");
    NEBDictionary options{{NEBSourceControlRequestOptionPatch, repository.git({"diff"})}};
    repository.write("a.c", "one\n2\n3\n4\n5\n6\n7\n8\nnine\n");
    EXPECT_THAT(performed(NEBSourceControlRequestDiscard, options)->error(),
                HasErrorClass(NEBSourceControlLocalChangesErrorClass));
    EXPECT_EQ(git({"diff", "--numstat"}), "2\t2\ta.c");
    options.set(NEBSourceControlRequestOptionForce, true);
    const auto operation = performed(NEBSourceControlRequestDiscard, options);
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_THAT(pathsOf(*operation), ElementsAre("a.c"));
    EXPECT_EQ(git({"diff", "--numstat"}), "1\t1\ta.c");
    EXPECT_THAT(performed(NEBSourceControlRequestDiscard, options)->error(),
                HasErrorClass(NEBSourceControlPatchFailedErrorClass));
}

/// git itself replaces them and prints nothing.
TEST_F(Discard, KeepsUntrackedFilesInPlaceOfDeletedOnes) {
    repository.commitFile("sub/dir/a.c", "1");
    std::filesystem::remove_all(repository.path("sub/dir"));
    repository.write("sub/dir", "own");
    auto request = requestFor(NEBSourceControlRequestDiscard, repository.path("sub"));
    const auto refused = performed(request);
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlLocalChangesErrorClass));
    EXPECT_THAT(refused->error()->files, ElementsAre("dir"));
    EXPECT_THAT(pathsOf(*refused), ElementsAre("dir/a.c", "dir"));
    EXPECT_EQ(status(), std::string(" D sub/dir/a.c\0?? sub/dir\0", 26));
    NEBDictionary options = discardByForce;
    options.set(NEBSourceControlRequestOptionIncludeUntracked, true);
    request->options = options;
    EXPECT_EQ(performed(request)->error(), std::nullopt);
    EXPECT_EQ(status(), "");
}

TEST_F(Discard, NamesChangedSubmodulesOutsideTheLocation) {
    const TestRepository inner;
    inner.commitFile("f", "1");
    inner.commitFile("f", "2");
    repository.commitFile("d/e/a.c", "1");
    for (const char* name : {"sub", "d/sub", "b\xe4r/sub"}) {
        repository.git({"submodule", "--quiet", "add", inner.path(), std::string("./") + name});
    }
    repository.git({"commit", "-q", "-m", "Submodules"});
    repository.write("d/e/a.c", "2");
    repository.write("sub/f", "3");
    repository.write("b\xe4r/sub/f", "3");
    repository.git({"-C", "d/sub", "checkout", "-q", "HEAD~1"});
    const auto request = requestFor(NEBSourceControlRequestDiscard, repository.path("d/e"));
    request->options = discardByForce;
    for (const std::string file : {"../../sub", "../sub", "../../b\xe4r/sub"}) {
        request->files = valuesOf({file});
        const auto operation = performed(request);
        ASSERT_THAT(operation->error(), HasErrorClass(NEBSourceControlPathInSubmoduleErrorClass))
            << file;
        EXPECT_THAT(operation->error()->files, ElementsAre(file));
        EXPECT_THAT(pathsOf(*operation), ElementsAre());
    }
    request->files = valuesOf({"../..", "a.c"});
    const auto operation = performed(request);
    ASSERT_THAT(operation->error(), HasErrorClass(NEBSourceControlPathInSubmoduleErrorClass));
    EXPECT_THAT(operation->error()->files,
                UnorderedElementsAre("../../b\xe4r/sub", "../../sub", "../sub"));
    EXPECT_THAT(pathsOf(*operation), ElementsAre("a.c"));
    EXPECT_EQ(status(), std::string(" M b\xe4r/sub\0 M d/sub\0 M sub\0", 27));
}

TEST_F(Discard, TakesNoSideInAConflict) {
    makeConflictingBranch();
    EXPECT_NE(repository.gitStatus({"merge", "-q", "side"}), 0);
    EXPECT_THAT(performed(NEBSourceControlRequestDiscard, discardByForce, {"a.c"})->error(),
                HasErrorClass(NEBSourceControlConflictUnresolvedErrorClass));
    EXPECT_EQ(status(), std::string("UU a.c\0", 7));
}

}  // namespace
}  // namespace neb::test
