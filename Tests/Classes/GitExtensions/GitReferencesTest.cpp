#include "GitExtensions/GitReferences.h"

#include <gmock/gmock.h>

#include <map>
#include <sstream>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Text.h"
#include "Support/HygienicTest.h"
#include "Support/RecordParts.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::shared_ptr<NEBSourceControlRequest> referencesOf(const std::string& location) {
    return requestFor(NEBSourceControlRequestReferences, location);
}

/// Returns the records by name.
std::map<std::string, NEBDictionary> byName(const NEBSourceControlResult& records) {
    std::map<std::string, NEBDictionary> all;
    for (const NEBDictionary& record : records) {
        all[std::string(record.text(NEBSourceControlOperationNameKey))] = record;
    }
    return all;
}

std::map<std::string, NEBDictionary> performed(const std::string& location) {
    const auto operation = perform(referencesOf(location));
    EXPECT_EQ(operation->error(), std::nullopt);
    return byName(operation->result().value_or(NEBSourceControlResult()));
}

std::string trimmedGit(const TestRepository& repository, std::vector<std::string> arguments) {
    return std::string(trimmed(repository.git(std::move(arguments))));
}

// ---- the command ------------------------------------------------------------------------------

TEST(ReferencesCommand, ListsBranchesAndTagsOrWhatIsBelowTheDestination) {
    const auto request = referencesOf("/w");
    const GitReferencesOperation operation(request);
    ASSERT_EQ(operation.arguments().size(), 6U);
    EXPECT_EQ(operation.arguments()[0], "for-each-ref");
    EXPECT_THAT(std::vector(operation.arguments().begin() + 2, operation.arguments().end()),
                ElementsAre("--", "refs/heads", "refs/remotes", "refs/tags"));
    request->destination = "-x";
    request->options = NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, "/r.git"}};
    const GitReferencesOperation other(request);
    EXPECT_EQ(other.arguments().front(), "--git-dir=/r.git");
    EXPECT_THAT(std::vector(other.arguments().end() - 2, other.arguments().end()),
                ElementsAre("--", "-x"));
}

// ---- the parser -------------------------------------------------------------------------------

const std::string id(40, 'a');
const std::string otherId(40, 'b');

std::string recordText(const std::string& name, const std::string& rest) {
    return name + "\n" + id + "\n" + rest + std::string(1, '\0') + "\n";
}

TEST(ReferencesParser, ReadsEveryField) {
    const auto records = recordsOf<GitReferencesOperation>(
        referencesOf("/w"),
        recordText("refs/heads/main",
                   "commit\n\n\n1600000000 -0130\n*\nrefs/remotes/origin/main\nahead 12, behind 3\n"
                   "Say hello\n/w\n/x") +
            recordText("refs/tags/v1", "tag\n" + otherId + "\n\n5 +0000\n \n\n\nOne\n") +
            recordText("refs/remotes/o/HEAD", "commit\n\nrefs/remotes/o/main\n\n \n\nahead 1\n\n"));
    EXPECT_THAT(
        records,
        ElementsAre(
            NEBDictionary{{NEBSourceControlOperationNameKey, "refs/heads/main"},
                          {NEBSourceControlOperationObjectIDKey, id},
                          {NEBSourceControlOperationObjectTypeKey, "commit"},
                          {NEBSourceControlOperationTimeKey, 1600000000},
                          {NEBSourceControlOperationTimeOffsetKey, -90},
                          {NEBSourceControlOperationIsCurrentKey, true},
                          {NEBSourceControlOperationUpstreamKey, "refs/remotes/origin/main"},
                          {NEBSourceControlOperationAheadKey, 12},
                          {NEBSourceControlOperationBehindKey, 3},
                          {NEBSourceControlOperationSubjectKey, "Say hello"},
                          {NEBSourceControlOperationWorktreeKey, "/w\n/x"}},
            NEBDictionary{{NEBSourceControlOperationNameKey, "refs/tags/v1"},
                          {NEBSourceControlOperationObjectIDKey, id},
                          {NEBSourceControlOperationObjectTypeKey, "tag"},
                          {NEBSourceControlOperationPeeledIDKey, otherId},
                          {NEBSourceControlOperationTimeKey, 5},
                          {NEBSourceControlOperationTimeOffsetKey, 0},
                          {NEBSourceControlOperationSubjectKey, "One"}},
            NEBDictionary{{NEBSourceControlOperationNameKey, "refs/remotes/o/HEAD"},
                          {NEBSourceControlOperationObjectIDKey, id},
                          {NEBSourceControlOperationObjectTypeKey, "commit"},
                          {NEBSourceControlOperationSymbolicTargetKey, "refs/remotes/o/main"}}));
}

TEST(ReferencesParser, KeepsTheBytesOfNamesThatAreNotUTF8) {
    const auto records = recordsOf<GitReferencesOperation>(
        referencesOf("/w"),
        recordText("refs/heads/b\xe4r", "commit\n\n\nx\n \nrefs/\xff\ngone\ns\xe4t\n/w\xe4"));
    ASSERT_EQ(records.size(), 1U);
    const NEBDictionary& record = records.front();
    EXPECT_EQ(record.text(NEBSourceControlOperationNameKey), "refs/heads/b\uFFFDr");
    EXPECT_EQ(record.value(NEBSourceControlOperationNameBytesKey),
              NEBValue::ofBytes("refs/heads/b\xe4r"));
    EXPECT_EQ(record.value(NEBSourceControlOperationUpstreamBytesKey),
              NEBValue::ofBytes("refs/\xff"));
    EXPECT_EQ(record.value(NEBSourceControlOperationUpstreamIsGoneKey), NEBValue(true));
    EXPECT_EQ(record.value(NEBSourceControlOperationWorktreeBytesKey), NEBValue::ofBytes("/w\xe4"));
    EXPECT_EQ(record.text(NEBSourceControlOperationSubjectKey), "s\uFFFDt");
    EXPECT_FALSE(record.contains(NEBSourceControlOperationTimeKey));
    EXPECT_FALSE(record.contains(NEBSourceControlOperationAheadKey));
}

/// What a killed git wrote last is no record.
TEST(ReferencesParser, LeavesOutARecordWithoutItsEnd) {
    EXPECT_THAT(recordsOf<GitReferencesOperation>(referencesOf("/w"), ""), IsEmpty());
    EXPECT_THAT(recordsOf<GitReferencesOperation>(referencesOf("/w"), "refs/heads/ma"), IsEmpty());
}

// ---- repositories -----------------------------------------------------------------------------

class References : public HygienicTest {
protected:
    TestRepository repository;
};

TEST_F(References, OfARepositoryWithoutCommitsAreNone) {
    EXPECT_THAT(performed(repository.path()), IsEmpty());
}

/// A second reader: names and ids of show-ref, counts of rev-list, everything else of one command
/// for each reference.
TEST_F(References, AreThoseOfPlumbing) {
    repository.commitFile("a.c", "1", "Say hello\n\nAll of it.");
    for (const char* name : {"it's", "\"quoted\"", "b\xe4r", "a/-dash", "\u00fc", "x%00y"}) {
        repository.git({"update-ref", std::string("refs/heads/") + name, "HEAD"});
    }
    repository.git({"tag", "light"});
    repository.git({"tag", "-a", "-m", "Tagged", "v1"});
    repository.git({"tag", "-a", "-m", "Twice", "v2", "v1"});
    repository.git({"update-ref", "refs/tags/blob", "HEAD:a.c"});
    repository.git({"update-ref", "refs/other/hidden", "HEAD"});
    const auto records = performed(repository.path());
    std::istringstream lines(repository.git({"show-ref"}));
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line);) {
        const std::string name = line.substr(line.find(' ') + 1);
        if (name.starts_with("refs/other/")) {
            continue;
        }
        ++count;
        const auto found = records.find(textReplacingInvalidBytes(name));
        ASSERT_NE(found, records.end()) << name;
        const NEBDictionary& record = found->second;
        EXPECT_EQ(record.text(NEBSourceControlOperationObjectIDKey),
                  line.substr(0, line.find(' ')));
        EXPECT_EQ(record.text(NEBSourceControlOperationObjectTypeKey),
                  trimmedGit(repository, {"cat-file", "-t", name}));
        const bool isText = isUTF8(name);
        EXPECT_EQ(record.value(NEBSourceControlOperationNameBytesKey),
                  isText ? NEBValue() : NEBValue::ofBytes(name));
    }
    EXPECT_EQ(records.size(), count);
    EXPECT_EQ(records.at("refs/tags/v1").text(NEBSourceControlOperationPeeledIDKey),
              trimmedGit(repository, {"rev-parse", "HEAD"}));
    EXPECT_EQ(records.at("refs/tags/v1").text(NEBSourceControlOperationSubjectKey), "Tagged");
    EXPECT_EQ(records.at("refs/tags/v1").value(NEBSourceControlOperationTimeKey),
              NEBValue(1600000000));
    EXPECT_EQ(records.at("refs/heads/main").text(NEBSourceControlOperationSubjectKey), "Say hello");
    EXPECT_FALSE(records.at("refs/tags/blob").contains(NEBSourceControlOperationTimeKey));
}

TEST_F(References, CompareABranchWithItsUpstream) {
    repository.commitFile("a.c", "1");
    const TestRepository clone(repository.path());
    clone.git({"checkout", "-q", "-b", "gone", "--track", "origin/main"});
    clone.git({"config", "branch.gone.merge", "refs/heads/nosuch"});
    clone.git({"checkout", "-q", "main"});
    clone.commitFile("b.c", "1");
    clone.commitFile("c.c", "1");
    repository.commitFile("a.c", "2");
    clone.git({"fetch", "-q"});
    const auto records = performed(clone.path());
    const NEBDictionary& main = records.at("refs/heads/main");
    EXPECT_EQ(main.text(NEBSourceControlOperationUpstreamKey), "refs/remotes/origin/main");
    EXPECT_EQ(trimmedGit(clone, {"rev-list", "--left-right", "--count", "main...origin/main"}),
              main.value(NEBSourceControlOperationAheadKey).description() + "\t" +
                  main.value(NEBSourceControlOperationBehindKey).description());
    EXPECT_EQ(main.value(NEBSourceControlOperationIsCurrentKey), NEBValue(true));
    EXPECT_TRUE(records.at("refs/heads/gone").contains(NEBSourceControlOperationUpstreamIsGoneKey));
    EXPECT_EQ(
        records.at("refs/remotes/origin/HEAD").text(NEBSourceControlOperationSymbolicTargetKey),
        "refs/remotes/origin/main");
}

TEST_F(References, NameTheWorkingCopyOfABranch) {
    repository.commitFile("a.c", "1");
    const TemporaryFolder folder;
    const std::string linked = folder.path("li\nnk\xe4");
    repository.git({"worktree", "add", "-q", "-b", "side", linked});
    const auto here = performed(repository.path());
    EXPECT_EQ(here.at("refs/heads/side").value(NEBSourceControlOperationWorktreeBytesKey),
              NEBValue::ofBytes(linked));
    EXPECT_FALSE(here.at("refs/heads/side").contains(NEBSourceControlOperationIsCurrentKey));
    EXPECT_EQ(here.at("refs/heads/main").text(NEBSourceControlOperationWorktreeKey),
              repository.path());
    const auto there = performed(linked);
    EXPECT_TRUE(there.at("refs/heads/side").contains(NEBSourceControlOperationIsCurrentKey));
    repository.git({"checkout", "-q", "--detach"});
    EXPECT_FALSE(performed(repository.path())
                     .at("refs/heads/main")
                     .contains(NEBSourceControlOperationIsCurrentKey));
}

TEST_F(References, OfABareAShallowAndASHA256Repository) {
    repository.commitFile("a.c", "1");
    repository.commitFile("a.c", "2");
    const TemporaryFolder folder;
    repository.git({"clone", "-q", "--bare", "--depth=1", "file://" + repository.path(),
                    folder.path("bare.git")});
    EXPECT_EQ(performed(folder.path("bare.git")).size(), 1U);
    repository.git({"init", "-q", "--object-format=sha256", folder.path("new")});
    repository.git({"-C", folder.path("new"), "commit", "-q", "--allow-empty", "-m", "x"});
    const auto records = performed(folder.path("new"));
    EXPECT_EQ(records.at("refs/heads/main").text(NEBSourceControlOperationObjectIDKey).size(), 64U);
}

TEST_F(References, BelowADestinationAndDeliveredToASink) {
    repository.commitFile("a.c", "1");
    repository.git({"branch", "topic/one"});
    repository.git({"branch", "topical"});
    const auto request = referencesOf(repository.path());
    request->destination = "refs/heads/topic";
    NEBSourceControlResult records;
    const auto operation = performWithSink(request, records);
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->deliveredRecordCount(), 1U);
    ASSERT_EQ(byName(records).count("refs/heads/topic/one"), 1U);
}

TEST_F(References, AreNotNamedByPatterns) {
    repository.commitFile("a.c", "1");
    for (const char* pattern :
         {"refs/heads/*", "refs/head?", "refs/heads/[m]ain", "refs/\\heads"}) {
        const auto request = referencesOf(repository.path());
        request->destination = pattern;
        EXPECT_THAT(perform(request)->error(),
                    HasErrorClass(NEBSourceControlRequestInvalidErrorClass))
            << pattern;
    }
}

}  // namespace
}  // namespace neb::test
