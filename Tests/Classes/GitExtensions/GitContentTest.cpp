#include "GitExtensions/GitContent.h"

#include "Classes/GitExtensions/ExtensionTest.h"

namespace neb::test {
namespace {

using testing::ElementsAre;

TEST(ContentCommand, NamesTheObject) {
    auto request = requestFor(NEBSourceControlRequestContent, "/w");
    request->files = valuesOf({"/w/dir/a"});
    EXPECT_THAT(GitContentOperation(request).arguments(),
                ElementsAre("cat-file", "blob", "HEAD:dir/a"));
    request->files = valuesOf({"dir/a"});
    request->startingRevision = "v1";
    request->options = NEBDictionary{{NEBSourceControlRequestOptionApplyFilters, true}};
    EXPECT_THAT(GitContentOperation(request).arguments(),
                ElementsAre("cat-file", "--filters", "v1:dir/a"));
    request->options->set(NEBSourceControlRequestOptionStage, 2);
    EXPECT_THAT(GitContentOperation(request).arguments(),
                ElementsAre("cat-file", "--filters", ":2:dir/a"));
}

class Content : public ExtensionTest {
protected:
    static std::string contentOf(const std::shared_ptr<NEBSourceControlRequest>& asked) {
        const auto records = recordsOf(asked);
        EXPECT_EQ(records.size(), 1U);
        const Data* bytes = records.at(0).value(NEBSourceControlOperationContentBytesKey).bytes();
        EXPECT_NE(bytes == nullptr,
                  records.at(0).contains(NEBSourceControlOperationContentKey) == false);
        return bytes != nullptr
                   ? std::string(bytes->bytes())
                   : std::string(records.at(0).text(NEBSourceControlOperationContentKey));
    }
};

TEST_F(Content, IsThatOfTheCommitTheIndexAndAStage) {
    const std::string binary("\0\xff\r\n\n", 5);
    for (const std::string& name : hostileNames) {
        repository.write(name, binary + name);
    }
    repository.write("empty", "");
    repository.git({"add", "-A"});
    repository.git({"commit", "-q", "-m", "x"});
    for (const std::string& name : hostileNames) {
        EXPECT_EQ(contentOf(fileRequest(NEBSourceControlRequestContent, name)), binary + name);
    }
    EXPECT_EQ(contentOf(fileRequest(NEBSourceControlRequestContent, repository.path("empty"))), "");
    repository.write("empty", "staged\n");
    repository.git({"add", "empty"});
    repository.write("empty", "unstaged\n");
    EXPECT_EQ(contentOf(fileRequest(NEBSourceControlRequestContent, "empty",
                                    {{NEBSourceControlRequestOptionStage, 0}})),
              "staged\n");
    repository.git({"commit", "-q", "-a", "-m", "y"});
    stopInConflict(repository);
    EXPECT_EQ(contentOf(fileRequest(NEBSourceControlRequestContent, "c",
                                    {{NEBSourceControlRequestOptionStage, 1}})),
              "base\n");
    EXPECT_EQ(contentOf(fileRequest(NEBSourceControlRequestContent, "c",
                                    {{NEBSourceControlRequestOptionStage, 3}})),
              "theirs\n");
}

TEST_F(Content, IsConvertedOnlyWhenAsked) {
    repository.commitFile(".gitattributes", "*.txt text eol=crlf\n");
    repository.commitFile("a.txt", "one\r\ntwo\r\n");
    EXPECT_EQ(contentOf(fileRequest(NEBSourceControlRequestContent, "a.txt")), "one\ntwo\n");
    EXPECT_EQ(contentOf(fileRequest(NEBSourceControlRequestContent, "a.txt",
                                    {{NEBSourceControlRequestOptionApplyFilters, true}})),
              "one\r\ntwo\r\n");
}

TEST_F(Content, OfNoFileIsAnErrorWithoutAResult) {
    repository.commitFile("dir/a", "1");
    for (const char* path : {"nosuch", "dir"}) {
        const auto operation = perform(fileRequest(NEBSourceControlRequestContent, path));
        EXPECT_TRUE(operation->error().has_value()) << path;
        EXPECT_FALSE(operation->result().has_value()) << path;
    }
}

TEST_F(Content, OfABareAndAPartialRepository) {
    repository.commitFile("a", "1\n");
    repository.git({"config", "uploadpack.allowFilter", "true"});
    const TemporaryFolder folder;
    repository.git({"clone", "-q", "--bare", repository.path(), folder.path("b.git")});
    auto asked = requestFor(NEBSourceControlRequestContent, folder.path("b.git"));
    asked->files = valuesOf({"a"});
    EXPECT_EQ(contentOf(asked), "1\n");
    repository.git({"clone", "-q", "--bare", "--filter=blob:none", "file://" + repository.path(),
                    folder.path("p.git")});
    asked = requestFor(NEBSourceControlRequestContent, folder.path("p.git"));
    asked->files = valuesOf({"a"});
    EXPECT_EQ(errorClassOf(asked), "objects-missing");
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionFetchMissingObjects, true}};
    EXPECT_EQ(contentOf(asked), "1\n");
}

}  // namespace
}  // namespace neb::test
