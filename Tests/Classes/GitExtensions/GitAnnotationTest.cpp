#include "GitExtensions/GitAnnotation.h"

#include <sstream>

#include "Classes/GitExtensions/ExtensionTest.h"

namespace neb::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::shared_ptr<NEBSourceControlRequest> annotationRequest() {
    auto request = requestFor(NEBSourceControlRequestAnnotation, "/w");
    request->files = valuesOf({"f"});
    return request;
}

TEST(AnnotationCommand, TakesUnsavedTextFromStandardInput) {
    auto request = annotationRequest();
    request->startingRevision = "v1";
    request->options = NEBDictionary{{NEBSourceControlRequestOptionContent, "a\n"},
                                     {NEBSourceControlRequestOptionFirstLine, 2},
                                     {NEBSourceControlRequestOptionIgnoreWhiteSpace, true},
                                     {NEBSourceControlRequestOptionDetectCopies, true}};
    const GitAnnotationOperation operation(request);
    EXPECT_THAT(operation.arguments(), ElementsAre("blame", "--porcelain", "--root", "-w", "-C",
                                                   "-L2,", "--contents", "-", "v1", "--", "f"));
    EXPECT_EQ(operation.input(), Data("a\n"));
}

TEST(AnnotationParser, ReadsGroups) {
    const std::string header =
        "author Ann\nauthor-mail <a@x>\nauthor-time 5\nauthor-tz +0100\n"
        "committer Ben\ncommitter-mail <b@x>\ncommitter-time 6\n"
        "committer-tz -0100\nsummary Sub\nprevious " +
        a40 + " f\n";
    const auto records = recordsOf<GitAnnotationOperation>(
        annotationRequest(),
        a40 + " 3 1 2\n" + header + "filename \"t\\tf\"\n\tone\n" + a40 + " 4 2\n\tauthor x\n" +
            z40 + " 3 3 1\nauthor Not Committed Yet\nfilename f\n\t\xe4\n" + a40 + " 9 4 1\n\t\n");
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0], (NEBDictionary{{NEBSourceControlOperationFirstLineKey, 1},
                                         {NEBSourceControlOperationLineCountKey, 2},
                                         {NEBSourceControlOperationOriginalLineKey, 3},
                                         {NEBSourceControlOperationLinesKey,
                                          std::vector<NEBValue>{"one", "author x"}},
                                         {NEBSourceControlOperationObjectIDKey, a40},
                                         {NEBSourceControlOperationAuthorKey, "Ann"},
                                         {NEBSourceControlOperationAuthorEmailKey, "a@x"},
                                         {NEBSourceControlOperationAuthorTimeKey, 5},
                                         {NEBSourceControlOperationAuthorTimeOffsetKey, 60},
                                         {NEBSourceControlOperationCommitterKey, "Ben"},
                                         {NEBSourceControlOperationCommitterEmailKey, "b@x"},
                                         {NEBSourceControlOperationCommitterTimeKey, 6},
                                         {NEBSourceControlOperationCommitterTimeOffsetKey, -60},
                                         {NEBSourceControlOperationSubjectKey, "Sub"},
                                         {NEBSourceControlOperationPreviousIDKey, a40},
                                         {NEBSourceControlOperationOriginalPathKey, "t\tf"}}));
    EXPECT_EQ(records[1], (NEBDictionary{{NEBSourceControlOperationFirstLineKey, 3},
                                         {NEBSourceControlOperationLineCountKey, 1},
                                         {NEBSourceControlOperationOriginalLineKey, 3},
                                         {NEBSourceControlOperationLinesKey,
                                          std::vector<NEBValue>{NEBValue::ofBytes("\xe4")}},
                                         {NEBSourceControlOperationIsUncommittedKey, true},
                                         {NEBSourceControlOperationOriginalPathKey, "f"}}));
    EXPECT_EQ(records[2].text(NEBSourceControlOperationAuthorKey), "Ann") << "said once";
}

class Annotation : public ExtensionTest {};

/// A second reader: the line format of git, which repeats everything for each line.
TEST_F(Annotation, IsThatOfPlumbing) {
    for (const std::string& name : hostileNames) {
        repository.commitFile("./" + name, "one\ntwo\n", "First");
        repository.commitFile("./" + name, "one\nnew\ntwo\n", "Second");
        repository.write("./" + name, "one\nnew\ntwo\nlast\n");
        const auto records = recordsOf(fileRequest(NEBSourceControlRequestAnnotation, name));
        std::vector<std::string> ids;
        for (const NEBDictionary& record : records) {
            for (int i = 0; i < record.value(NEBSourceControlOperationLineCountKey).integer();
                 ++i) {
                ids.push_back(record.contains(NEBSourceControlOperationIsUncommittedKey)
                                  ? z40
                                  : std::string(record.text(NEBSourceControlOperationObjectIDKey)));
            }
            EXPECT_EQ(nameIn(record, NEBSourceControlOperationOriginalPathKey,
                             NEBSourceControlOperationOriginalPathBytesKey),
                      name);
        }
        std::vector<std::string> expected;
        std::istringstream lines(
            repository.git({"--literal-pathspecs", "blame", "-s", "-l", "--root", "--", name}));
        for (std::string line; std::getline(lines, line);) {
            expected.push_back(line.substr(0, 40));
        }
        EXPECT_EQ(ids, expected) << name;
    }
}

TEST_F(Annotation, OfUnsavedTextARangeAndAnEmptyFile) {
    repository.commitFile("f", "one\ntwo\n");
    repository.commitFile("empty", "");
    auto asked = fileRequest(NEBSourceControlRequestAnnotation, "f",
                             {{NEBSourceControlRequestOptionContent, "zero\none\ntwo\n"}});
    auto records = recordsOf(asked);
    ASSERT_EQ(records.size(), 2U);
    EXPECT_TRUE(records[0].contains(NEBSourceControlOperationIsUncommittedKey));
    EXPECT_EQ(records[1].value(NEBSourceControlOperationFirstLineKey), NEBValue(2));
    asked = fileRequest(
        NEBSourceControlRequestAnnotation, "f",
        {{NEBSourceControlRequestOptionFirstLine, 2}, {NEBSourceControlRequestOptionLastLine, 2}});
    records = recordsOf(asked);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].value(NEBSourceControlOperationLinesKey),
              NEBValue(std::vector<NEBValue>{"two"}));
    EXPECT_THAT(recordsOf(fileRequest(NEBSourceControlRequestAnnotation, "empty")), IsEmpty());
    EXPECT_EQ(errorClassOf(fileRequest(NEBSourceControlRequestAnnotation, "nosuch")),
              "path-unknown");
}

}  // namespace
}  // namespace neb::test
