#include "GitOperations/GitMerge.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

#include <filesystem>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

namespace fs = std::filesystem;
using test::HasErrorClass;
using test::IsSourceControlError;
using test::perform;
using test::ReportCollector;
using test::requestFor;
using test::TestRepository;
using testing::ElementsAre;
using testing::HasSubstr;

std::shared_ptr<NEBSourceControlRequest> merge(NEBValue endingRevision, NEBValue destination,
                                               const std::string& location = "/w") {
    auto made = requestFor(NEBSourceControlRequestMerge, location);
    made->endingRevision = std::move(endingRevision);
    made->destination = std::move(destination);
    return made;
}

std::shared_ptr<NEBSourceControlRequest> mergeBase(NEBValue starting, NEBValue ending,
                                                   const std::string& location = "/w") {
    auto made = requestFor(NEBSourceControlRequestMergeBase, location);
    made->startingRevision = std::move(starting);
    made->endingRevision = std::move(ending);
    return made;
}

// ---- the command lines ------------------------------------------------------------------------

TEST(MergeArguments, NameTheEndingRevisionOrTheDestination) {
    EXPECT_THAT(GitMergeOperation(merge("v2", "topic")).arguments(),
                ElementsAre("merge", "-s", "recursive", "-X", "ours", "v2"));
    EXPECT_THAT(GitMergeOperation(merge({}, "topic")).arguments(),
                ElementsAre("merge", "-s", "recursive", "-X", "ours", "topic"));
    auto asked = merge({}, "topic");
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, "/r/.git"}};
    EXPECT_THAT(GitMergeOperation(asked).arguments(),
                ElementsAre("merge", "-s", "recursive", "-X", "ours", "topic"))
        << "no default arguments";
}

/// git then merges the upstream branch, as an update without a target requires.
TEST(MergeArguments, MayHaveNoTarget) {
    EXPECT_THAT(GitMergeOperation(merge({}, {})).arguments(),
                ElementsAre("merge", "-s", "recursive", "-X", "ours"));
}

TEST(MergeBaseArguments, AreBothRevisions) {
    EXPECT_THAT(GitMergeBaseOperation(mergeBase("a", "b")).arguments(),
                ElementsAre("merge-base", "a", "b"));
}

TEST(MergeBaseArguments, SymbolicNamesStandForHEAD) {
    for (const NEBConstant name :
         {NEBSourceControlLocalRevisionName, NEBSourceControlInMemoryRevisionName,
          NEBSourceControlHEADRevisionName, NEBSourceControlBASERevisionName}) {
        EXPECT_THAT(GitMergeBaseOperation(mergeBase(name, "b")).arguments(),
                    ElementsAre("merge-base", "HEAD", "b"));
        EXPECT_THAT(GitMergeBaseOperation(mergeBase("a", name)).arguments(),
                    ElementsAre("merge-base", "a", "HEAD"));
    }
    EXPECT_THAT(GitMergeBaseOperation(mergeBase(NEBSourceControlInMemoryRevisionName,
                                                NEBSourceControlLocalRevisionName))
                    .arguments(),
                ElementsAre("merge-base", "HEAD", "HEAD"));
}

struct ExpectedMergeReport {
    NEBValue starting, ending;
    int line;
    const char* message;
    const char* condition;
};

TEST(MergeBaseArguments, ReportAnythingButANonEmptyString) {
    const ExpectedMergeReport expected[] = {
        {{},
         "b",
         1344,
         "startingRevision should be a non-empty string, but it is nil",
         "(startingRevision) != nil"},
        {7, "b", 1344, "startingRevision should be a non-empty string, but it is 7",
         "CFGetTypeID(startingRevision) == CFStringGetTypeID()"},
        {"", "b", 1344, "startingRevision should be a non-empty string, but it's an empty string",
         "![@\"\" isEqualToString:(startingRevision)]"},
        {"a",
         {},
         1345,
         "endingRevision should be a non-empty string, but it is nil",
         "(endingRevision) != nil"},
        {"a", true, 1345, "endingRevision should be a non-empty string, but it is true",
         "CFGetTypeID(endingRevision) == CFStringGetTypeID()"},
        {"a", "", 1345, "endingRevision should be a non-empty string, but it's an empty string",
         "![@\"\" isEqualToString:(endingRevision)]"},
    };
    for (const ExpectedMergeReport& row : expected) {
        const ReportCollector collector;
        const GitMergeBaseOperation operation(mergeBase(row.starting, row.ending));
        ASSERT_EQ(collector.reports().size(), 1U) << row.message;
        const LOMAssertionReport& report = collector.reports().front();
        EXPECT_EQ(report.function, "-[GitMergeBaseOperation initWithRequest:]");
        EXPECT_EQ(report.file, "Classes/GitOperations");
        EXPECT_EQ(report.line, row.line);
        EXPECT_EQ(report.message, row.message);
        EXPECT_EQ(report.condition, row.condition);
        EXPECT_EQ(operation.arguments().front(), "merge-base") << "the work goes on";
    }
    const ReportCollector collector;
    EXPECT_THAT(GitMergeBaseOperation(mergeBase({}, {})).arguments(), ElementsAre("merge-base"));
    EXPECT_EQ(collector.reports().size(), 2U) << "the starting one first";
}

// ---- what git prints --------------------------------------------------------------------------

std::string baseIn(const std::optional<Data>& output) {
    GitMergeBaseOperation operation(mergeBase("a", "b"));
    operation.setData(output);
    operation.parseData();
    if (!operation.result()) {
        return "(no result)";
    }
    EXPECT_EQ(operation.result()->size(), 1U);
    return operation.result()->front().value(NEBSourceControlOperationRevisionKey).description();
}

TEST(MergeBaseOutput, IsTheRevisionCutToTwelveCharacters) {
    EXPECT_EQ(baseIn(std::string(40, 'c') + "\n"), std::string(12, 'c'));
    EXPECT_EQ(baseIn(std::string(40, 'c') + "\r\n"), std::string(12, 'c'));
    EXPECT_EQ(baseIn("0123456\n"), "0123456");
    EXPECT_EQ(baseIn("0123456789ab"), "0123456789ab");
}

TEST(MergeBaseOutput, OfSeveralLinesIsTheTextAfterTheLastLineEnd) {
    EXPECT_EQ(baseIn("one\ntwo"), "two");
    EXPECT_EQ(baseIn("one\ntwo\n"), "") << "of several lines, the last line end is kept";
}

TEST(MergeBaseOutput, WithoutTextHasNoResult) {
    EXPECT_EQ(baseIn(""), "(no result)");
    EXPECT_EQ(baseIn(std::nullopt), "(no result)");
}

// ---- real repositories ------------------------------------------------------------------------

class MergeInRepository : public test::HygienicTest {
protected:
    /// main and topic have diverged.
    void SetUp() override {
        HygienicTest::SetUp();
        repository.commitFile("a", "1\n2\n3\n");
        repository.commitFile("b", "b\n");
        parting = repository.git({"rev-parse", "HEAD"});
        repository.git({"checkout", "-q", "-b", "topic"});
        repository.commitFile("t", "topic\n");
        repository.git({"checkout", "-q", "main"});
        repository.commitFile("m", "main\n");
    }
    void commitOn(const std::string& branch, const std::string& name,
                  const std::string& bytes) const {
        repository.git({"checkout", "-q", branch});
        repository.commitFile(name, bytes);
        repository.git({"checkout", "-q", "main"});
    }
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> mergeIn(
        const std::string& revision) const {
        return perform(merge({}, revision, repository.path()));
    }
    [[nodiscard]] std::string head() const { return repository.git({"rev-parse", "HEAD"}); }
    [[nodiscard]] std::string status() const { return repository.git({"status", "--porcelain"}); }
    void hook(const std::string& script) const {
        repository.write(".git/hooks/commit-msg", "#!/bin/sh\n" + script + "\n");
        fs::permissions(repository.path(".git/hooks/commit-msg"), fs::perms(0755));
    }

    TestRepository repository;
    std::string parting;
};

TEST_F(MergeInRepository, MergesBothSides) {
    const auto operation = mergeIn("topic");
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->result(), std::nullopt);
    EXPECT_EQ(repository.git({"ls-files"}), "a\nb\nm\nt\n");
    EXPECT_EQ(repository.git({"rev-list", "--parents", "-1", "HEAD"}).size(), 3U * 41U);
    EXPECT_EQ(status(), "");
    const std::string merged = head();
    EXPECT_EQ(mergeIn("topic")->error(), std::nullopt) << "nothing new";
    EXPECT_EQ(head(), merged);
}

TEST_F(MergeInRepository, ResolvesConflictsInFavourOfTheCurrentBranch) {
    commitOn("topic", "a", "1\ntopic\n3\n");
    commitOn("main", "a", "1\nmain\n3\n");
    EXPECT_EQ(mergeIn("topic")->error(), std::nullopt);
    repository.write("expected", "1\nmain\n3\n");
    EXPECT_EQ(repository.git({"rev-parse", "HEAD:a"}), repository.git({"hash-object", "expected"}));
}

/// git reports it on standard output only.
TEST_F(MergeInRepository, ReportsAnUnresolvableConflict) {
    repository.git({"rm", "-q", "b"});
    repository.git({"commit", "-qm", "without b"});
    commitOn("topic", "b", "changed\n");
    const std::string before = head();
    const auto operation = mergeIn("topic");
    EXPECT_THAT(
        operation->error(),
        IsSourceControlError(-1, "There are conflicts that could not be resolved automatically."));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlConflictErrorClass));
    EXPECT_THAT(*operation->error()->text, HasSubstr("CONFLICT (modify/delete): b"));
    EXPECT_EQ(head(), before);
    EXPECT_THAT(mergeIn("topic")->error(),
                HasErrorClass(NEBSourceControlConflictUnresolvedErrorClass));
}

TEST_F(MergeInRepository, KeepsLocalChangesThatItWouldOverwrite) {
    commitOn("topic", "a", "topic\n");
    repository.write("a", "mine\n");
    const auto operation = mergeIn("topic");
    EXPECT_THAT(operation->error(),
                IsSourceControlError(-31, HasSubstr("\"demo\" has uncommitted changes")));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlLocalChangesErrorClass));
    EXPECT_EQ(status(), " M a\n");
}

TEST_F(MergeInRepository, ReportsAnUnknownOrUnrelatedTarget) {
    EXPECT_THAT(mergeIn("nosuch")->error(),
                HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
    repository.git({"checkout", "-q", "--orphan", "island"});
    repository.git({"commit", "-qm", "island"});
    repository.git({"checkout", "-q", "main"});
    EXPECT_THAT(mergeIn("island")->error(),
                HasErrorClass(NEBSourceControlUnrelatedHistoriesErrorClass));
}

TEST_F(MergeInRepository, ReportsAMissingTargetAndUpstream) {
    EXPECT_THAT(perform(merge({}, {}, repository.path()))->error(),
                HasErrorClass(NEBSourceControlNoUpstreamErrorClass));
}

TEST_F(MergeInRepository, MergesTheUpstreamWithoutATarget) {
    repository.git({"config", "branch.main.remote", "."});
    repository.git({"config", "branch.main.merge", "refs/heads/topic"});
    EXPECT_EQ(perform(merge({}, {}, repository.path()))->error(), std::nullopt);
    EXPECT_EQ(repository.git({"ls-files"}), "a\nb\nm\nt\n");
}

TEST_F(MergeInRepository, ReportsAHookThatRefusesWhateverItPrints) {
    hook("echo 'fatal: bad revision x' >&2; exit 1");
    const auto operation = mergeIn("topic");
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlLocalHookRefusedErrorClass));
    EXPECT_THAT(operation->error(),
                IsSourceControlError(-1,
                                     "The merge is done but not committed, because a hook of the "
                                     "repository refused the commit."));
}

TEST_F(MergeInRepository, FindsTheMergeBase) {
    const auto operation = perform(mergeBase("main", "topic", repository.path()));
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->result()->front().value(NEBSourceControlOperationRevisionKey),
              NEBValue(parting.substr(0, 12)));
    const auto ofHead = perform(mergeBase(NEBSourceControlInMemoryRevisionName,
                                          NEBSourceControlLocalRevisionName, repository.path()));
    EXPECT_EQ(ofHead->result()->front().value(NEBSourceControlOperationRevisionKey),
              NEBValue(head().substr(0, 12)));
}

TEST_F(MergeInRepository, FindsNoMergeBaseOfUnrelatedHistories) {
    repository.git({"checkout", "-q", "--orphan", "island"});
    repository.git({"commit", "-qm", "island"});
    const auto operation = perform(mergeBase("main", "island", repository.path()));
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(operation->result(), std::nullopt);
}

TEST_F(MergeInRepository, ReportsAMergeBaseOfAnUnknownRevision) {
    EXPECT_THAT(perform(mergeBase("main", "nosuch", repository.path()))->error(),
                HasErrorClass(NEBSourceControlRevisionUnknownErrorClass));
}

}  // namespace
}  // namespace neb
