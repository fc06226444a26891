#include "GitExtensions/GitStash.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <sstream>

#include "Classes/GitExtensions/ChangeRequests.h"
#include "Support/RecordParts.h"

namespace neb::test {
namespace {

using testing::Contains;
using testing::ElementsAre;

NEBDictionary stashAction(const char* action) {
    return {{NEBSourceControlRequestOptionAction, action}};
}

class Stash : public ChangeTest {
protected:
    /// Stashes a change of the file "a.c".
    void stash(const std::string& bytes) const {
        repository.write("a.c", bytes);
        repository.git({"stash", "push", "-q", "-m", bytes});
    }
    [[nodiscard]] Operation performedOn(const std::string& stash, const char* action) const {
        const auto request = requestOf(NEBSourceControlRequestStash, stashAction(action));
        request->startingRevision = stash;
        return performed(request);
    }
};

TEST_F(Stash, ParserReadsAndLeavesOutARecordWithoutItsEnd) {
    const std::string id(40, 'a');
    const auto request = requestFor(NEBSourceControlRequestStash, "/w");
    EXPECT_THAT(
        recordsOf<GitStashListOperation>(
            request, id + "\n1600000000 -0130\nOn main: x\xe4\n" + std::string(1, '\0') + id),
        ElementsAre(NEBDictionary{{NEBSourceControlOperationNameKey, "stash@{0}"},
                                  {NEBSourceControlOperationObjectIDKey, id},
                                  {NEBSourceControlOperationTimeKey, 1600000000},
                                  {NEBSourceControlOperationTimeOffsetKey, -90},
                                  {NEBSourceControlOperationSubjectKey, "On main: x\uFFFD\n"}}));
}

TEST_F(Stash, ListIsThatOfTheReflog) {
    EXPECT_EQ(performed(NEBSourceControlRequestStash)->result(), NEBSourceControlResult());
    repository.commitFile("a.c", "1");
    stash("2");
    stash("3");
    const auto operation = performed(NEBSourceControlRequestStash);
    std::vector<std::string> ids;
    std::istringstream lines(git({"log", "-g", "--format=%H", "refs/stash"}));
    for (std::string id; std::getline(lines, id);) {
        ids.push_back(id);
    }
    EXPECT_EQ(textsOf(*operation, NEBSourceControlOperationObjectIDKey), ids);
    EXPECT_THAT(textsOf(*operation, NEBSourceControlOperationNameKey),
                ElementsAre("stash@{0}", "stash@{1}"));
    EXPECT_THAT(textsOf(*operation, NEBSourceControlOperationSubjectKey),
                ElementsAre("On main: 3", "On main: 2"));
}

TEST_F(Stash, PushesWhatTheRequestNames) {
    repository.commitFile("other", "1");
    for (const std::string& name : hostileNames) {
        repository.write(name, "1");
    }
    repository.write("star", "untracked");
    repository.write("other", "2");
    NEBDictionary options = stashAction("push");
    options.set(NEBSourceControlRequestOptionIncludeUntracked, true);
    options.set(NEBSourceControlRequestOptionMessage, "--quiet\nx");
    const auto operation = performed(NEBSourceControlRequestStash, options, hostileNames);
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_THAT(textsOf(*operation, NEBSourceControlOperationObjectIDKey),
                ElementsAre(git({"rev-parse", "refs/stash"})));
    EXPECT_EQ(status(), std::string(" M other\0?? star\0", 17));
    const auto shown = performed(NEBSourceControlRequestStash, stashAction("show"));
    EXPECT_THAT(pathsOf(*shown), testing::UnorderedElementsAreArray(hostileNames));
    EXPECT_THAT(textsOf(*shown, NEBSourceControlOperationStateKey), Contains("untracked"));
}

TEST_F(Stash, PushKeepsTheIndexAndSaysThatThereWasNothing) {
    repository.commitFile("a.c", "1");
    EXPECT_EQ(performed(NEBSourceControlRequestStash, stashAction("push"))->result(),
              NEBSourceControlResult());
    repository.write("a.c", "2");
    repository.git({"add", "a.c"});
    NEBDictionary options = stashAction("push");
    options.set(NEBSourceControlRequestOptionKeepIndex, true);
    EXPECT_EQ(performed(NEBSourceControlRequestStash, options)->error(), std::nullopt);
    EXPECT_EQ(status(), std::string("M  a.c\0", 7));
}

TEST_F(Stash, ShowsAppliesPopsAndDrops) {
    repository.commitFile("a.c", "1");
    stash("2");
    const auto shown = performed(NEBSourceControlRequestStash, stashAction("show"));
    EXPECT_EQ(shown->result(),
              NEBSourceControlResult({{{NEBSourceControlOperationStateKey, "modified"},
                                       {NEBSourceControlOperationPathKey, "a.c"}}}));
    const auto applied = performed(NEBSourceControlRequestStash, stashAction("apply"));
    EXPECT_EQ(applied->error(), std::nullopt);
    EXPECT_THAT(textsOf(*applied, NEBSourceControlOperationKindKey), ElementsAre("head"));
    EXPECT_EQ(status(), std::string(" M a.c\0", 7));
    EXPECT_THAT(performed(NEBSourceControlRequestStash, stashAction("pop"))->error(),
                HasErrorClass(NEBSourceControlLocalChangesErrorClass));
    repository.git({"checkout", "-q", "a.c"});
    EXPECT_EQ(performed(NEBSourceControlRequestStash, stashAction("pop"))->error(), std::nullopt);
    EXPECT_EQ(git({"stash", "list"}), "");
    stash("3");
    const std::string id = git({"rev-parse", "refs/stash"});
    EXPECT_EQ(performed(NEBSourceControlRequestStash, stashAction("drop"))->result(),
              NEBSourceControlResult({{{NEBSourceControlOperationNameKey, "stash@{0}"},
                                       {NEBSourceControlOperationObjectIDKey, id}}}));
    EXPECT_EQ(git({"stash", "list"}), "");
}

/// git itself replaces them and prints nothing.
TEST_F(Stash, KeepsUntrackedFilesInPlaceOfDeletedOnes) {
    repository.commitFile("dir/a.c", "1");
    std::filesystem::remove_all(repository.path("dir"));
    repository.write("dir", "own");
    const auto refused = performed(NEBSourceControlRequestStash, stashAction("push"));
    EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlUntrackedInTheWayErrorClass));
    EXPECT_THAT(refused->error()->files, ElementsAre("dir"));
    EXPECT_EQ(status(), std::string(" D dir/a.c\0?? dir\0", 18));
    NEBDictionary options = stashAction("push");
    options.set(NEBSourceControlRequestOptionIncludeUntracked, true);
    EXPECT_EQ(performed(NEBSourceControlRequestStash, options)->error(), std::nullopt);
    EXPECT_EQ(git({"show", "stash^3:dir"}), "own");
    EXPECT_EQ(status(), "");
}

TEST_F(Stash, StagesAgainWhatWasStaged) {
    repository.commitFile("a.c", "1");
    repository.write("a.c", "2");
    repository.git({"add", "a.c"});
    repository.git({"stash", "push", "-q"});
    NEBDictionary options = stashAction("pop");
    options.set(NEBSourceControlRequestOptionRestoreIndex, true);
    EXPECT_EQ(performed(NEBSourceControlRequestStash, options)->error(), std::nullopt);
    EXPECT_EQ(status(), std::string("M  a.c\0", 7));
}

/// The index of a stash changes with each new one.
TEST_F(Stash, IsFoundByItsId) {
    repository.commitFile("a.c", "1");
    stash("2");
    const std::string id = git({"rev-parse", "refs/stash"});
    stash("3");
    EXPECT_EQ(performedOn(id, "drop")->error(), std::nullopt);
    EXPECT_THAT(
        textsOf(*performed(NEBSourceControlRequestStash), NEBSourceControlOperationSubjectKey),
        ElementsAre("On main: 3"));
    EXPECT_THAT(performedOn(id, "drop")->error(),
                HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
}

TEST_F(Stash, IsNoOtherCommit) {
    repository.commitFile("a.c", "1");
    repository.git({"checkout", "-q", "-b", "side"});
    repository.commitFile("b.c", "1");
    repository.git({"checkout", "-q", "main"});
    repository.git({"merge", "-q", "--no-ff", "-m", "Like a stash", "side"});
    repository.git({"branch", "stash"});
    for (const std::string& name : {std::string("HEAD"), std::string("main"), head(),
                                    std::string("stash@{0}"), std::string("stash")}) {
        EXPECT_THAT(performedOn(name, "show")->error(),
                    HasErrorClass(NEBSourceControlRevisionUnknownErrorClass))
            << name;
    }
    stash("2");
    const std::string id = git({"rev-parse", "refs/stash"});
    for (const std::string& name :
         {id, std::string("stash@{0}"), std::string("refs/stash"), std::string("refs/stash@{0}")}) {
        EXPECT_THAT(pathsOf(*performedOn(name, "show")), ElementsAre("a.c")) << name;
    }
    EXPECT_THAT(performedOn(head(), "show")->error(),
                HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
}

TEST_F(Stash, NamesTheFileThatGitDoesNotKnow) {
    repository.commitFile("a.c", "1");
    repository.write("a.c", "2");
    repository.write("untracked", "2");
    for (const char* name : {"nosuch", "untracked", "no[such]"}) {
        const auto refused = performed(NEBSourceControlRequestStash, stashAction("push"),
                                       std::vector<std::string>{"a.c", name});
        EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlPathUnknownErrorClass));
        EXPECT_THAT(refused->error()->files, ElementsAre(name));
    }
    EXPECT_EQ(git({"stash", "list"}), "");
}

TEST_F(Stash, ThatConflictsIsKeptAndListsTheConflict) {
    repository.commitFile("a.c", "1\n");
    stash("2\n");
    repository.commitFile("a.c", "3\n");
    const auto operation = performed(NEBSourceControlRequestStash, stashAction("pop"));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlConflictErrorClass));
    EXPECT_THAT(textsOf(*operation, NEBSourceControlOperationKindKey),
                ElementsAre("head", "conflict"));
    EXPECT_EQ(operation->result()->back().text(NEBSourceControlOperationConflictKey),
              "both modified");
    EXPECT_NE(git({"stash", "list"}), "");
}

TEST_F(Stash, NamesTheUntrackedFilesThatItDoesNotRestore) {
    repository.commitFile("a.c", "1\n");
    repository.write("new", "mine\n");
    repository.git({"stash", "push", "-q", "--include-untracked"});
    repository.write("new", "other\n");
    for (const char* action : {"apply", "pop"}) {
        const auto operation = performed(NEBSourceControlRequestStash, stashAction(action));
        EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlUntrackedInTheWayErrorClass));
        EXPECT_THAT(operation->error()->files, ElementsAre("new"));
        EXPECT_THAT(operation->error()->localizedDescription().value_or(""),
                    testing::HasSubstr("The stash is kept."));
    }
    EXPECT_NE(git({"stash", "list"}), "");
}

/// git itself prints nothing.
TEST_F(Stash, NamesTheLockThatPreventsIt) {
    repository.commitFile("a.c", "1\n");
    repository.write("a.c", "2\n");
    repository.write(".git/index.lock", "");
    const auto locked = performed(NEBSourceControlRequestStash, stashAction("push"));
    EXPECT_THAT(locked->error(), HasErrorClass(NEBSourceControlIndexLockedErrorClass));
    std::filesystem::remove(repository.path(".git/index.lock"));
    EXPECT_EQ(performed(NEBSourceControlRequestStash, stashAction("push"))->error(), std::nullopt);
}

TEST_F(Stash, SaysWhyNot) {
    EXPECT_THAT(performed(NEBSourceControlRequestStash, stashAction("push"))->error(),
                HasErrorClass(NEBSourceControlNoCommitsYetErrorClass));
    repository.commitFile("a.c", "1");
    for (const char* action : {"show", "apply", "pop", "drop"}) {
        EXPECT_THAT(performed(NEBSourceControlRequestStash, stashAction(action))->error(),
                    HasErrorClass(NEBSourceControlRevisionUnknownErrorClass))
            << action;
        EXPECT_THAT(performedOn("--index", action)->error(),
                    HasErrorClass(NEBSourceControlRevisionUnknownErrorClass))
            << action;
    }
    EXPECT_THAT(performed(NEBSourceControlRequestStash, stashAction("clear"))->error(),
                HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
}

}  // namespace
}  // namespace neb::test
