#include "GitExtensions/GitTree.h"

#include <filesystem>

#include "Classes/GitExtensions/ExtensionTest.h"

namespace neb::test {
namespace {

using testing::ElementsAre;

TEST(TreeParser, ReadsEntriesBelowAFolder) {
    const std::string id(40, 'a');
    auto request = requestFor(NEBSourceControlRequestTree, "/w");
    request->files = valuesOf({"/w/d/"});
    const auto records = recordsOf<GitTreeOperation>(
        request, "100755 blob " + id + "      12\tr\tun\n" + '\0' + "040000 tree " + id +
                     "       -\te\xe4" + '\0' + "120000 blob " + id + "\te/l" + '\0' + "cut");
    EXPECT_THAT(
        records,
        ElementsAre(
            NEBDictionary{{NEBSourceControlOperationKindKey, "executable"},
                          {NEBSourceControlOperationNameKey, "r\tun\n"},
                          {NEBSourceControlOperationPathKey, "d/r\tun\n"},
                          {NEBSourceControlOperationModeKey, "100755"},
                          {NEBSourceControlOperationObjectIDKey, id},
                          {NEBSourceControlOperationSizeKey, 12}},
            NEBDictionary{{NEBSourceControlOperationKindKey, "folder"},
                          {NEBSourceControlOperationNameKey, "e\uFFFD"},
                          {NEBSourceControlOperationNameBytesKey, NEBValue::ofBytes("e\xe4")},
                          {NEBSourceControlOperationPathKey, "d/e\uFFFD"},
                          {NEBSourceControlOperationPathBytesKey, NEBValue::ofBytes("d/e\xe4")},
                          {NEBSourceControlOperationModeKey, "040000"},
                          {NEBSourceControlOperationObjectIDKey, id}},
            NEBDictionary{{NEBSourceControlOperationKindKey, "symbolic link"},
                          {NEBSourceControlOperationNameKey, "l"},
                          {NEBSourceControlOperationPathKey, "d/e/l"},
                          {NEBSourceControlOperationModeKey, "120000"},
                          {NEBSourceControlOperationObjectIDKey, id}}));
}

class Tree : public ExtensionTest {};

/// A second reader: the paths of ls-tree in another form, and size and type of each object.
TEST_F(Tree, IsThatOfPlumbing) {
    commitHostileNames(repository);
    repository.write("d\n/e/f", "12345");
    std::filesystem::create_symlink("target", repository.path("d\n/link"));
    repository.git({"add", "-A"});
    repository.git({"commit", "-q", "-m", "x"});
    auto asked = request(NEBSourceControlRequestTree);
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionRecursive, true}};
    const auto records = byPath(recordsOf(asked));
    const auto paths =
        nulFields(repository.git({"ls-tree", "-r", "-t", "-z", "--name-only", "HEAD"}));
    EXPECT_EQ(records.size(), paths.size());
    for (const std::string& path : paths) {
        ASSERT_TRUE(records.contains(path)) << path;
        const NEBDictionary& record = records.at(path);
        const std::string id(record.text(NEBSourceControlOperationObjectIDKey));
        EXPECT_EQ(id, lineOf(repository, {"rev-parse", "HEAD:" + path}));
        const bool isFolder = lineOf(repository, {"cat-file", "-t", id}) == "tree";
        EXPECT_EQ(record.text(NEBSourceControlOperationKindKey) == "folder", isFolder);
        EXPECT_EQ(isFolder ? "(null)" : lineOf(repository, {"cat-file", "-s", id}),
                  record.value(NEBSourceControlOperationSizeKey).description());
    }
    asked = fileRequest(NEBSourceControlRequestTree, "d\n");
    const auto below = byPath(recordsOf(asked));
    ASSERT_EQ(below.size(), 2U);
    EXPECT_EQ(below.at("d\n/link").text(NEBSourceControlOperationKindKey), "symbolic link");
    EXPECT_EQ(nameIn(below.at("d\n/e"), NEBSourceControlOperationNameKey,
                     NEBSourceControlOperationNameBytesKey),
              "e");
}

TEST_F(Tree, OfNoFolderIsAnError) {
    EXPECT_NE(errorClassOf(request(NEBSourceControlRequestTree)), "(success)");
    repository.commitFile("a", "1");
    EXPECT_NE(errorClassOf(fileRequest(NEBSourceControlRequestTree, "nosuch")), "(success)");
    EXPECT_NE(errorClassOf(fileRequest(NEBSourceControlRequestTree, "a")), "(success)");
}

TEST_F(Tree, OfAPartialCloneNeedsNoSizes) {
    repository.commitFile("a", "1");
    repository.git({"config", "uploadpack.allowFilter", "true"});
    const TemporaryFolder folder;
    repository.git({"clone", "-q", "--bare", "--filter=blob:none", "file://" + repository.path(),
                    folder.path("p.git")});
    const auto asked = requestFor(NEBSourceControlRequestTree, folder.path("p.git"));
    EXPECT_EQ(errorClassOf(asked), "objects-missing");
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionOmitSizes, true}};
    EXPECT_EQ(recordsOf(asked).size(), 1U);
}

}  // namespace
}  // namespace neb::test
