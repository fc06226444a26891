#include "GitExtensions/GitChanges.h"

#include <array>
#include <filesystem>

#include "Classes/GitExtensions/ExtensionTest.h"

namespace neb::test {
namespace {

using testing::IsSupersetOf;

std::shared_ptr<NEBSourceControlRequest> changesRequest() {
    return requestFor(NEBSourceControlRequestChanges, "/w");
}

NEBDictionary hunkOf(std::array<int, 4> ranges, std::vector<NEBValue> lines) {
    return {{NEBSourceControlOperationOldStartKey, ranges[0]},
            {NEBSourceControlOperationOldCountKey, ranges[1]},
            {NEBSourceControlOperationNewStartKey, ranges[2]},
            {NEBSourceControlOperationNewCountKey, ranges[3]},
            {NEBSourceControlOperationLinesKey, std::move(lines)}};
}

TEST(ChangesCommand, ComparesWhatTheRequestNames) {
    const auto comparisonOf = [](const std::shared_ptr<NEBSourceControlRequest>& request) {
        const std::vector<std::string> arguments = GitChangesOperation(request).arguments();
        std::string text;
        for (std::size_t i = 10; i < arguments.size(); ++i) {
            text += arguments[i] + " ";
        }
        return text;
    };
    auto request = changesRequest();
    EXPECT_EQ(comparisonOf(request), "--ours -- ");
    request->startingRevision = "a";
    EXPECT_EQ(comparisonOf(request), "a -- ");
    request->endingRevision = "b";
    EXPECT_EQ(comparisonOf(request), "a b -- ");
    request->options = NEBDictionary{{NEBSourceControlRequestOptionDiffFromCommonAncestor, true}};
    EXPECT_EQ(comparisonOf(request), "a...b -- ");
    request->options = NEBDictionary{{NEBSourceControlRequestOptionStaged, true},
                                     {NEBSourceControlRequestOptionContextLines, 0}};
    EXPECT_EQ(comparisonOf(request), "--unified=0 --cached a -- ");
    request = changesRequest();
    request->endingRevision = "b";
    EXPECT_EQ(comparisonOf(request), "HEAD b -- ");
}

TEST(ChangesParser, ReadsFilesAndHunks) {
    const auto records = recordsOf<GitChangesOperation>(
        changesRequest(),
        "diff --git a/a b.c b/a b.c\nindex " + a40 + ".." + b40 +
            " 100644\n--- a/a b.c\t\n+++ b/a b.c\t\n@@ -1,2 +1,3 @@ int f()\n "
            "one\n--- x\n+diff --git a/x b/x\n"
            "+\xe4\n\\ No newline at end of file\n@@ -9 +10,0 @@\n-nine\n"
            "diff --git \"a/q\\\"\" \"b/q\\\"\"\nold mode 100644\nnew mode 100755\n"
            "diff --git a/o b/n\nsimilarity index 90%\nrename from o\nrename to n\n"
            "diff --git a/new b/new\nnew file mode 100644\nindex " +
            z40 + ".." + a40 +
            "\n--- /dev/null\n+++ b/new\n@@ -0,0 +1 @@\n+x\n"
            "diff --git a/bin b/bin\ndeleted file mode 100644\nindex " +
            a40 + ".." + z40 + "\nBinary files a/bin and /dev/null differ\n");
    ASSERT_EQ(records.size(), 5U);
    NEBDictionary first =
        hunkOf({1, 2, 1, 3}, {" one", "--- x", "+diff --git a/x b/x", NEBValue::ofBytes("+\xe4"),
                              "\\ No newline at end of file"});
    first.set(NEBSourceControlOperationHeadingKey, "int f()");
    EXPECT_EQ(records[0],
              (NEBDictionary{{NEBSourceControlOperationPathKey, "a b.c"},
                             {NEBSourceControlOperationOldModeKey, "100644"},
                             {NEBSourceControlOperationNewModeKey, "100644"},
                             {NEBSourceControlOperationOldObjectIDKey, a40},
                             {NEBSourceControlOperationNewObjectIDKey, b40},
                             {NEBSourceControlOperationStateKey, "modified"},
                             {NEBSourceControlOperationAddedLinesKey, 2},
                             {NEBSourceControlOperationDeletedLinesKey, 2},
                             {NEBSourceControlOperationHunksKey,
                              std::vector<NEBValue>{first, hunkOf({9, 1, 10, 0}, {"-nine"})}}}));
    EXPECT_EQ(records[1].text(NEBSourceControlOperationPathKey), "q\"");
    EXPECT_EQ(records[1].text(NEBSourceControlOperationNewModeKey), "100755");
    EXPECT_EQ(records[2].text(NEBSourceControlOperationStateKey), "renamed");
    EXPECT_EQ(records[2].text(NEBSourceControlOperationPathKey), "n");
    EXPECT_EQ(records[2].text(NEBSourceControlOperationOriginalPathKey), "o");
    EXPECT_EQ(records[2].value(NEBSourceControlOperationSimilarityKey), NEBValue(90));
    EXPECT_EQ(records[3].text(NEBSourceControlOperationStateKey), "added");
    EXPECT_FALSE(records[3].contains(NEBSourceControlOperationOldObjectIDKey));
    EXPECT_EQ(records[4].text(NEBSourceControlOperationStateKey), "deleted");
    EXPECT_EQ(records[4].text(NEBSourceControlOperationPathKey), "bin");
    EXPECT_TRUE(records[4].contains(NEBSourceControlOperationIsBinaryKey));
    EXPECT_FALSE(records[4].contains(NEBSourceControlOperationHunksKey));
}

class Changes : public ExtensionTest {
protected:
    /// Expects the paths and counts of --numstat for the same comparison.
    void expectCounts(const std::shared_ptr<NEBSourceControlRequest>& asked,
                      std::vector<std::string> comparison) const {
        std::vector<std::string> arguments{"diff", "--numstat", "-z", "--no-renames"};
        arguments.insert(arguments.end(), comparison.begin(), comparison.end());
        std::map<std::string, std::string> expected;
        for (const std::string& field : nulFields(repository.git(arguments))) {
            const std::size_t path = field.rfind('\t', field.find('\t', field.find('\t') + 1));
            expected[field.substr(path + 1)] = field.substr(0, path);
        }
        EXPECT_FALSE(expected.empty());
        std::map<std::string, std::string> counts;
        for (const auto& [path, record] : byPath(recordsOf(asked))) {
            const bool isBinary = record.contains(NEBSourceControlOperationIsBinaryKey);
            counts[path] =
                isBinary
                    ? "-\t-"
                    : record.value(NEBSourceControlOperationAddedLinesKey).description() + "\t" +
                          record.value(NEBSourceControlOperationDeletedLinesKey).description();
        }
        EXPECT_EQ(counts, expected);
    }
};

TEST_F(Changes, AreThoseOfPlumbing) {
    commitHostileNames(repository);
    repository.write("binary", std::string("\0\1", 2));
    repository.write("empty", "");
    repository.git({"add", "-A"});
    repository.git({"commit", "-q", "-m", "More"});
    for (const std::string& name : hostileNames) {
        repository.write(name, "one\nchanged\nnew \xe4\n");
    }
    repository.write("binary", std::string("\0\2", 2));
    const auto asked = request(NEBSourceControlRequestChanges);
    expectCounts(asked, {});
    repository.git({"add", "--", "new\nline", "binary", "b\xe4r"});
    expectCounts(asked, {});
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionStaged, true}};
    expectCounts(asked, {"--cached"});
    repository.git({"commit", "-q", "-a", "-m", "Change"});
    asked->options.reset();
    asked->startingRevision = "HEAD~1";
    asked->endingRevision = "HEAD";
    expectCounts(asked, {"HEAD~1", "HEAD"});
    asked->files = valuesOf({"st*r"});
    EXPECT_EQ(recordsOf(asked).size(), 1U);
}

/// The hunks of a record are a patch that git applies.
TEST_F(Changes, HaveHunksThatCanBeStaged) {
    repository.commitFile("f", "1\n2\n3\n4\n5\n6\n7\n8\n9\n");
    repository.write("f", "one\n2\n3\n4\n5\n6\n7\n8\nnine");
    const auto records = recordsOf(request(NEBSourceControlRequestChanges));
    const auto* hunks = records.at(0).value(NEBSourceControlOperationHunksKey).array();
    ASSERT_EQ(hunks->size(), 2U);
    const NEBDictionary& hunk = *hunks->at(1).dictionary();
    std::string patch = "--- a/f\n+++ b/f\n@@ -" +
                        hunk.value(NEBSourceControlOperationOldStartKey).description() + "," +
                        hunk.value(NEBSourceControlOperationOldCountKey).description() + " +" +
                        hunk.value(NEBSourceControlOperationNewStartKey).description() + "," +
                        hunk.value(NEBSourceControlOperationNewCountKey).description() + " @@\n";
    for (const NEBValue& line : *hunk.value(NEBSourceControlOperationLinesKey).array()) {
        patch += line.description() + "\n";
    }
    repository.gitWithInput({"apply", "--cached"}, patch);
    EXPECT_EQ(repository.git({"show", ":f"}), "1\n2\n3\n4\n5\n6\n7\n8\nnine");
}

TEST_F(Changes, OfAConflictCompareOurSide) {
    stopInConflict(repository);
    const auto records = byPath(recordsOf(request(NEBSourceControlRequestChanges)));
    ASSERT_TRUE(records.contains("c"));
    EXPECT_EQ(records.at("c").text(NEBSourceControlOperationOldObjectIDKey),
              lineOf(repository, {"rev-parse", ":2:c"}));
}

TEST_F(Changes, OfATypeChangeAnUnbornBranchAndABareRepository) {
    repository.write("f", "1\n");
    repository.git({"add", "f"});
    auto asked = request(NEBSourceControlRequestChanges);
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionStaged, true}};
    EXPECT_EQ(byPath(recordsOf(asked)).at("f").text(NEBSourceControlOperationStateKey), "added");
    repository.git({"commit", "-q", "-m", "x"});
    std::filesystem::remove(repository.path("f"));
    std::filesystem::create_symlink("target", repository.path("f"));
    const auto records = recordsOf(request(NEBSourceControlRequestChanges));
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].text(NEBSourceControlOperationStateKey), "deleted");
    EXPECT_EQ(records[1].text(NEBSourceControlOperationNewModeKey), "120000");
    const TemporaryFolder folder;
    repository.git({"init", "-q", "--bare", folder.path("b.git")});
    EXPECT_EQ(errorClassOf(requestFor(NEBSourceControlRequestChanges, folder.path("b.git"))),
              "no-work-tree");
}

}  // namespace
}  // namespace neb::test
