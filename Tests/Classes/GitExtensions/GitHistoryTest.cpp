#include "GitExtensions/GitHistory.h"

#include <sstream>

#include "Classes/GitExtensions/ExtensionTest.h"

namespace neb::test {
namespace {

using testing::Contains;
using testing::ElementsAre;

std::shared_ptr<NEBSourceControlRequest> historyRequest() {
    auto request = requestFor(NEBSourceControlRequestHistory, "/w");
    request->options = NEBDictionary{{NEBSourceControlRequestOptionLogOutputFilesChanged, true},
                                     {NEBSourceControlRequestOptionLineCounts, true}};
    return request;
}

TEST(HistoryParser, ReadsCommitsAndTheirFiles) {
    using std::string_literals::operator""s;
    const std::string header = "\nAnn\na@x\n5 +0100\nBen\nb@x\n6 -0230\n";
    const auto records = recordsOf<GitHistoryOperation>(
        historyRequest(), "commit " + a40 + "\n" + b40 + " " + a40 +
                              "\nHEAD -> refs/heads/m, tag: refs/tags/v, refs/heads/b\xe4" +
                              header + "Sub\nBody\n\nmore\n\0"s + "\n:100644 100755 " + a40 + " " +
                              b40 + " M\0commit x\0:100644 100644 "s + a40 + " " + a40 +
                              " R90\0:old\0new\0001\t2\tcommit x\0-\t-\t\0:old\0new\0"s +
                              "commit " + b40 + "\n\ngrafted, HEAD" + header + "Last\n\0"s);
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].text(NEBSourceControlOperationObjectIDKey), a40);
    EXPECT_EQ(records[0].value(NEBSourceControlOperationParentsKey),
              NEBValue(std::vector<NEBValue>{b40, a40}));
    EXPECT_EQ(records[0].value(NEBSourceControlOperationReferencesKey),
              NEBValue(std::vector<NEBValue>{"refs/heads/m", "refs/tags/v",
                                             NEBValue::ofBytes("refs/heads/b\xe4")}));
    EXPECT_EQ(records[0].value(NEBSourceControlOperationAuthorTimeKey), NEBValue(5));
    EXPECT_EQ(records[0].value(NEBSourceControlOperationAuthorTimeOffsetKey), NEBValue(60));
    EXPECT_EQ(records[0].value(NEBSourceControlOperationCommitterTimeOffsetKey), NEBValue(-150));
    EXPECT_EQ(records[0].text(NEBSourceControlOperationCommitterKey), "Ben");
    EXPECT_EQ(records[0].text(NEBSourceControlOperationSubjectKey), "Sub");
    EXPECT_EQ(records[0].text(NEBSourceControlOperationBodyKey), "Body\n\nmore");
    const auto* files = records[0].value(NEBSourceControlOperationChangesKey).array();
    ASSERT_TRUE(files != nullptr && files->size() == 2);
    EXPECT_EQ(files->at(0), NEBValue(NEBDictionary{{NEBSourceControlOperationOldModeKey, "100644"},
                                                   {NEBSourceControlOperationNewModeKey, "100755"},
                                                   {NEBSourceControlOperationOldObjectIDKey, a40},
                                                   {NEBSourceControlOperationNewObjectIDKey, b40},
                                                   {NEBSourceControlOperationStateKey, "modified"},
                                                   {NEBSourceControlOperationPathKey, "commit x"},
                                                   {NEBSourceControlOperationAddedLinesKey, 1},
                                                   {NEBSourceControlOperationDeletedLinesKey, 2}}));
    EXPECT_EQ(files->at(1).dictionary()->text(NEBSourceControlOperationOriginalPathKey), ":old");
    EXPECT_TRUE(files->at(1).dictionary()->contains(NEBSourceControlOperationIsBinaryKey));
    EXPECT_TRUE(records[1].contains(NEBSourceControlOperationIsGraftedKey));
    EXPECT_TRUE(records[1].contains(NEBSourceControlOperationIsHEADKey));
    EXPECT_FALSE(records[1].contains(NEBSourceControlOperationParentsKey));
    EXPECT_FALSE(records[1].contains(NEBSourceControlOperationChangesKey));
}

class History : public ExtensionTest {
protected:
    /// Returns the subjects of the commits.
    static std::vector<std::string> subjectsOf(
        const std::shared_ptr<NEBSourceControlRequest>& request) {
        std::vector<std::string> subjects;
        for (const NEBDictionary& record : recordsOf(request)) {
            subjects.emplace_back(record.text(NEBSourceControlOperationSubjectKey));
        }
        return subjects;
    }
    [[nodiscard]] std::vector<std::string> subjectsWith(NEBDictionary options) const {
        auto asked = request(NEBSourceControlRequestHistory);
        asked->options = std::move(options);
        return subjectsOf(asked);
    }
};

/// A second reader: rev-list for order and parents, one command per commit for texts and files.
TEST_F(History, IsThatOfPlumbing) {
    commitHostileNames(repository);
    repository.git({"checkout", "-q", "-b", "topic"});
    repository.git({"mv", "b\xe4r", "moved\n"});
    repository.git(
        {"commit", "-q", "-m", "Move\n\nbody\n\ncommit x\n:x", "--author=J\u00fcrg <j@x>"});
    repository.git({"checkout", "-q", "main"});
    repository.commitFile("a\nb", "1\n", "Add");
    repository.git({"merge", "-q", "--no-ff", "-m", "Merge", "topic"});
    repository.git({"tag", "-a", "-m", "x", "v1", "HEAD~1"});
    auto asked = request(NEBSourceControlRequestHistory);
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionLogOutputFilesChanged, true},
                                   {NEBSourceControlRequestOptionLineCounts, true}};
    const auto records = recordsOf(asked);
    std::istringstream lines(repository.git({"rev-list", "--parents", "HEAD"}));
    std::size_t position = 0;
    for (std::string line; std::getline(lines, line); ++position) {
        ASSERT_LT(position, records.size());
        const NEBDictionary& record = records[position];
        const std::string id(record.text(NEBSourceControlOperationObjectIDKey));
        std::string parents = id;
        if (const auto* ids = record.value(NEBSourceControlOperationParentsKey).array()) {
            for (const NEBValue& parent : *ids) {
                parents += " " + parent.description();
            }
        }
        EXPECT_EQ(parents, line);
        const auto format = [&](const char* placeholder) {
            return lineOf(repository, {"show", "-s", std::string("--format=") + placeholder, id});
        };
        EXPECT_EQ(record.text(NEBSourceControlOperationSubjectKey), format("%s"));
        EXPECT_EQ(record.text(NEBSourceControlOperationBodyKey), format("%b"));
        EXPECT_EQ(record.text(NEBSourceControlOperationAuthorKey), format("%an"));
        EXPECT_EQ(record.value(NEBSourceControlOperationCommitterTimeKey).description(),
                  format("%ct"));
        std::vector<std::string> paths;
        if (const auto* files = record.value(NEBSourceControlOperationChangesKey).array()) {
            for (const NEBValue& file : *files) {
                paths.push_back(nameIn(*file.dictionary()));
            }
        }
        EXPECT_EQ(paths, nulFields(repository.git({"show", "--format=", "--name-only", "-z", "-M",
                                                   "--diff-merges=first-parent", id})));
    }
    EXPECT_EQ(position, records.size());
    EXPECT_EQ(records[0].value(NEBSourceControlOperationReferencesKey),
              NEBValue(std::vector<NEBValue>{"refs/heads/main"}));
}

TEST_F(History, SelectsCommits) {
    repository.commitFile("a", "1\n", "First.");
    repository.commitFile("a", "2\n", "Second");
    repository.git({"branch", "side"});
    repository.git({"mv", "a", "b"});
    repository.git({"commit", "-q", "-m", "Third", "--author=Zo\u00eb <z@x>"});
    EXPECT_THAT(subjectsWith({}), ElementsAre("Third", "Second", "First."));
    EXPECT_THAT(subjectsWith({{NEBSourceControlRequestOptionLogOutputLimit, 1}}),
                ElementsAre("Third"));
    EXPECT_THAT(subjectsWith({{NEBSourceControlRequestOptionReverse, true}}),
                ElementsAre("First.", "Second", "Third"));
    EXPECT_THAT(subjectsWith({{NEBSourceControlRequestOptionSearchMessage, "t."}}),
                ElementsAre("First."))
        << "a literal text";
    EXPECT_THAT(subjectsWith({{NEBSourceControlRequestOptionSearchMessage, "SECOND"},
                              {NEBSourceControlRequestOptionIgnoreCase, true}}),
                ElementsAre("Second"));
    EXPECT_THAT(subjectsWith({{NEBSourceControlRequestOptionSearchAuthor, "Zo\u00eb"}}),
                ElementsAre("Third"));
    EXPECT_THAT(subjectsWith({{NEBSourceControlRequestOptionSearchContent, "2"}}),
                Contains("Second"));
    EXPECT_THAT(subjectsWith({{NEBSourceControlRequestOptionSince, "2030-01-01"}}), ElementsAre());
    EXPECT_THAT(subjectsWith({{NEBSourceControlRequestOptionOrder, "topology"}}).size(), 3U);
    EXPECT_THAT(subjectsWith({{NEBSourceControlRequestOptionStartingRevisions,
                               std::vector<NEBValue>{"side", "main"}},
                              {NEBSourceControlRequestOptionExcludedRevisions,
                               std::vector<NEBValue>{"main~2"}}}),
                testing::UnorderedElementsAre("Third", "Second"));
    auto asked = fileRequest(NEBSourceControlRequestHistory, "b");
    EXPECT_THAT(subjectsOf(asked), ElementsAre("Third"));
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionFollow, true}};
    EXPECT_THAT(subjectsOf(asked), ElementsAre("Third", "Second", "First."));
    asked = request(NEBSourceControlRequestHistory);
    asked->startingRevision = "side";
    asked->endingRevision = "main~2";
    EXPECT_THAT(subjectsOf(asked), ElementsAre("Second"));
}

TEST_F(History, OfAFileConnectsItsCommitsOnRequest) {
    repository.commitFile("a", "1", "First");
    repository.commitFile("b", "1", "Other");
    repository.commitFile("a", "2", "Second");
    auto asked = fileRequest(NEBSourceControlRequestHistory, "a");
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionRewriteParents, true}};
    const auto records = recordsOf(asked);
    ASSERT_EQ(records.size(), 2U);
    const auto* parents = records[0].value(NEBSourceControlOperationParentsKey).array();
    ASSERT_NE(parents, nullptr);
    EXPECT_EQ(parents->at(0).string(), records[1].text(NEBSourceControlOperationObjectIDKey));
    EXPECT_FALSE(records[1].contains(NEBSourceControlOperationParentsKey));
}

TEST_F(History, OfAnUnbornAShallowAndASHA256Repository) {
    EXPECT_EQ(errorClassOf(request(NEBSourceControlRequestHistory)), "no-commits-yet");
    repository.commitFile("a", "1", "First");
    repository.commitFile("a", "2", "Second");
    const TemporaryFolder folder;
    repository.git({"clone", "-q", "--bare", "--depth=1", "file://" + repository.path(),
                    folder.path("s.git")});
    const auto shallow =
        recordsOf(requestFor(NEBSourceControlRequestHistory, folder.path("s.git")));
    ASSERT_EQ(shallow.size(), 1U);
    EXPECT_TRUE(shallow[0].contains(NEBSourceControlOperationIsGraftedKey));
    EXPECT_FALSE(shallow[0].contains(NEBSourceControlOperationParentsKey));
    repository.git({"init", "-q", "--object-format=sha256", folder.path("n")});
    repository.git({"-C", folder.path("n"), "commit", "-q", "--allow-empty", "-m", "x"});
    EXPECT_EQ(recordsOf(requestFor(NEBSourceControlRequestHistory, folder.path("n")))
                  .at(0)
                  .text(NEBSourceControlOperationObjectIDKey)
                  .size(),
              64U);
}

TEST_F(History, HasNoAuthorInAMalformedCommit) {
    repository.write("commit", "tree " + lineOf(repository, {"write-tree"}) +
                                   "\nauthor no mail 5\ncommitter no mail 5\n\n%aN\n");
    auto asked = request(NEBSourceControlRequestHistory);
    asked->startingRevision =
        lineOf(repository, {"hash-object", "-t", "commit", "-w", "--literally", "commit"});
    const NEBDictionary record = recordsOf(asked).at(0);
    for (const NEBConstant key :
         {NEBSourceControlOperationAuthorKey, NEBSourceControlOperationAuthorEmailKey,
          NEBSourceControlOperationCommitterKey, NEBSourceControlOperationCommitterEmailKey}) {
        EXPECT_FALSE(record.contains(key)) << record.text(key);
    }
    EXPECT_EQ(record.text(NEBSourceControlOperationSubjectKey), "%aN");
}

TEST_F(History, KnowsItsOrders) {
    repository.commitFile("a", "1\n");
    const auto asked = request(NEBSourceControlRequestHistory);
    for (const char* order : {"date", "author date", "topology"}) {
        asked->options = NEBDictionary{{NEBSourceControlRequestOptionOrder, order}};
        EXPECT_EQ(recordsOf(asked).size(), 1U) << order;
    }
    for (const char* order : {"topologic", ""}) {
        asked->options = NEBDictionary{{NEBSourceControlRequestOptionOrder, order}};
        EXPECT_EQ(errorClassOf(asked), "request-invalid") << order;
        EXPECT_TRUE(perform(asked)->commandLog()->runs().empty()) << "git is not asked";
    }
}

/// A partial clone fetches only with the option.
TEST_F(History, OfAPartialCloneFetchesOnlyWhenAsked) {
    repository.commitFile("a", "1\n", "First");
    repository.commitFile("a", "2\n", "Second");
    repository.git({"config", "uploadpack.allowFilter", "true"});
    const TemporaryFolder folder;
    const std::string clone = folder.path("p");
    repository.git({"clone", "-q", "--filter=blob:none", "file://" + repository.path(), clone});
    const auto asked = requestFor(NEBSourceControlRequestHistory, clone);
    EXPECT_EQ(recordsOf(asked).size(), 2U);
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionLineCounts, true}};
    EXPECT_EQ(errorClassOf(asked), "objects-missing");
    asked->options->set(NEBSourceControlRequestOptionFetchMissingObjects, true);
    EXPECT_EQ(recordsOf(asked).size(), 2U);
}

}  // namespace
}  // namespace neb::test
