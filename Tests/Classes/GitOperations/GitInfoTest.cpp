#include "GitOperations/GitInfo.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

using test::commandLinesOf;
using test::HasErrorClass;
using test::perform;
using test::requestFor;
using test::TestRepository;
using test::valuesOf;
using testing::ElementsAre;
using testing::IsEmpty;

std::shared_ptr<NEBSourceControlRequest> info(std::optional<std::string> location,
                                              std::optional<std::vector<NEBValue>> files = {}) {
    auto made = requestFor(NEBSourceControlRequestInfo, std::move(location));
    made->files = std::move(files);
    return made;
}

// ---- the questions ----------------------------------------------------------------------------

TEST(ConfiguredURL, IsReadByItsKey) {
    auto asked = info("/w");
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, "/r/.git"}};
    EXPECT_THAT(GitFetchRemoteOriginOperation(asked).arguments(),
                ElementsAre("config", "--get", "remote.origin.url"))
        << "no default arguments";
    EXPECT_THAT(GitFetchSVNRemoteOriginOperation(asked).arguments(),
                ElementsAre("config", "--get", "svn-remote.svn.url"));
}

template <typename Op>
std::optional<std::string> folderFor(std::optional<std::vector<NEBValue>> files) {
    return Op(info("/w", std::move(files))).currentDirectoryPath();
}

TEST(ConfiguredURL, IsReadInTheFolderOfTheOnlyFile) {
    EXPECT_EQ(folderFor<GitFetchRemoteOriginOperation>(valuesOf({"/other"})), "/other");
    EXPECT_EQ(folderFor<GitFetchSVNRemoteOriginOperation>(valuesOf({"/other"})), "/other");
    EXPECT_EQ(folderFor<GitFetchRemoteOriginOperation>(valuesOf({"file:///a%20b"})), "/a b");
    EXPECT_EQ(folderFor<GitFetchRemoteOriginOperation>(valuesOf({"~/p"})), "~/p");
}

TEST(ConfiguredURL, IsReadInTheSourceTreeOtherwise) {
    EXPECT_EQ(folderFor<GitFetchRemoteOriginOperation>(std::nullopt), "/w");
    EXPECT_EQ(folderFor<GitFetchRemoteOriginOperation>(valuesOf({})), "/w");
    EXPECT_EQ(folderFor<GitFetchRemoteOriginOperation>(valuesOf({"/a", "/b"})), "/w");
    EXPECT_EQ(folderFor<GitFetchRemoteOriginOperation>(valuesOf({"relative"})), "/w");
    EXPECT_EQ(folderFor<GitFetchRemoteOriginOperation>(valuesOf({"https://h/p"})), "/w");
    EXPECT_EQ(folderFor<GitFetchRemoteOriginOperation>(std::vector<NEBValue>{NEBValue()}), "/w");
}

template <typename Op>
std::optional<NEBSourceControlResult> resultOf(std::optional<std::string> location,
                                               const std::string& output) {
    Op operation(info(std::move(location)));
    operation.setData(output);
    operation.parseData();
    return operation.result();
}

TEST(ConfiguredURL, IsARecordWithTheFolder) {
    const NEBDictionary record{
        {NEBSourceControlOperationRemoteOriginKey, "https://example.org/p.git"},
        {NEBSourceControlOperationRepositoryRootKey, "/w"}};
    EXPECT_EQ(resultOf<GitFetchRemoteOriginOperation>("/w", "https://example.org/p.git\n"),
              NEBSourceControlResult{record});
    EXPECT_EQ(resultOf<GitFetchSVNRemoteOriginOperation>("/w", "https://example.org/p.git\n"),
              NEBSourceControlResult{record});
}

TEST(ConfiguredURL, HasNoFolderIfNoneIsSet) {
    EXPECT_EQ(
        resultOf<GitFetchRemoteOriginOperation>(std::nullopt, "/p\n"),
        NEBSourceControlResult{(NEBDictionary{{NEBSourceControlOperationRemoteOriginKey, "/p"}})});
}

TEST(ConfiguredURL, ThatIsNotSetHasNoResult) {
    EXPECT_EQ(resultOf<GitFetchRemoteOriginOperation>("/w", ""), std::nullopt);
    EXPECT_EQ(resultOf<GitFetchSVNRemoteOriginOperation>("/w", ""), std::nullopt);
}

// ---- real repositories ------------------------------------------------------------------------

class Info : public test::HygienicTest {
protected:
    static constexpr const char* originQuestion = "config --get remote.origin.url";
    static constexpr const char* subversionQuestion = "config --get svn-remote.svn.url";

    static NEBDictionary record(const std::string& url, const std::string& folder) {
        return {{NEBSourceControlOperationRemoteOriginKey, url},
                {NEBSourceControlOperationRepositoryRootKey, folder}};
    }

    TestRepository repository;
};

TEST_F(Info, IsTheURLOfOriginAfterOneQuery) {
    repository.git({"remote", "add", "origin", "https://example.org/p.git"});
    repository.git({"config", "svn-remote.svn.url", "svn://example.org/p"});
    const auto operation = perform(info(repository.path()));
    EXPECT_EQ(operation->className(), "GitInfoOperation");
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_THAT(*operation->result(),
                ElementsAre(record("https://example.org/p.git", repository.path())));
    EXPECT_THAT(commandLinesOf(*operation), ElementsAre(originQuestion));
}

TEST_F(Info, IsTheSubversionURLWithoutOrigin) {
    repository.git({"config", "svn-remote.svn.url", "svn://example.org/p"});
    const auto operation = perform(info(repository.path()));
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_THAT(*operation->result(),
                ElementsAre(record("svn://example.org/p", repository.path())));
    EXPECT_THAT(commandLinesOf(*operation), ElementsAre(originQuestion, subversionQuestion));
}

TEST_F(Info, IsOneEmptyRecordWhereThereIsNeither) {
    const auto operation = perform(info(repository.path()));
    EXPECT_EQ(operation->error(), std::nullopt);
    ASSERT_TRUE(operation->result());
    EXPECT_THAT(*operation->result(), ElementsAre(NEBDictionary()));
    EXPECT_THAT(commandLinesOf(*operation), ElementsAre(originQuestion, subversionQuestion));
}

TEST_F(Info, OfOneFolderIsAskedForThereByBothQuestions) {
    const TestRepository other;
    other.git({"config", "svn-remote.svn.url", "svn://example.org/other"});
    const auto operation = perform(info(repository.path(), valuesOf({other.path()})));
    EXPECT_THAT(*operation->result(), ElementsAre(record("svn://example.org/other", other.path())));
}

TEST_F(Info, EndsWithTheFirstQuestionsErrorAndNoResult) {
    repository.write(".git/config", "[core\n");
    const auto operation = perform(info(repository.path()));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlConfigurationBrokenErrorClass));
    EXPECT_EQ(operation->result(), std::nullopt);
    EXPECT_THAT(commandLinesOf(*operation), ElementsAre(originQuestion));
}

TEST_F(Info, ThatAlreadyHasAnErrorDoesNothing) {
    repository.git({"remote", "add", "origin", "https://example.org/p.git"});
    GitInfoOperation operation(info(repository.path()));
    operation.setCommandLog(std::make_shared<NEBSourceControlCommandLog>());
    operation.setError(NEBSourceControlError::withDescription(-7, "before"));
    operation.start();
    EXPECT_EQ(operation.error()->code, -7);
    EXPECT_EQ(operation.result(), std::nullopt);
    EXPECT_THAT(operation.commandLog()->runs(), IsEmpty());
    EXPECT_EQ(operation.operationQueue(), nullptr);
}

}  // namespace
}  // namespace neb
