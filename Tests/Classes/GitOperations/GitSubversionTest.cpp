#include "GitOperations/GitSubversion.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

using test::commandLinesOf;
using test::HasErrorClass;
using test::ReportCollector;
using test::requestFor;
using test::TestRepository;
using test::valuesOf;
using testing::ElementsAre;
using testing::IsEmpty;

std::shared_ptr<NEBSourceControlRequest> subversionRequest(std::int32_t type,
                                                           NEBValue destination = {}) {
    auto made = requestFor(type, "/w");
    made->destination = std::move(destination);
    made->options = NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, "/r/.git"}};
    return made;
}

// ---- the command lines ------------------------------------------------------------------------

TEST(SubversionArguments, AreFixedAndWithoutDefaultArguments) {
    EXPECT_THAT(
        GitFetchSVNRemoteNameOperation(subversionRequest(NEBSourceControlRequestListRemotes))
            .arguments(),
        ElementsAre("config", "--get", "svn-remote.svn.fetch"));
    EXPECT_THAT(GitSvnFetchOperation(subversionRequest(NEBSourceControlRequestFetch)).arguments(),
                ElementsAre("svn", "fetch"));
    EXPECT_THAT(GitSvnRebaseOperation(
                    subversionRequest(NEBSourceControlRequestUpdate, "refs/remotes/git-svn"))
                    .arguments(),
                ElementsAre("rebase", "-s", "recursive", "-X", "ours", "refs/remotes/git-svn"));
}

TEST(SubversionArguments, ReadTheNameInTheFolderOfTheOnlyFile) {
    const auto folderFor = [](std::optional<std::vector<NEBValue>> files) {
        auto asked = subversionRequest(NEBSourceControlRequestListRemotes);
        asked->files = std::move(files);
        return GitFetchSVNRemoteNameOperation(asked).currentDirectoryPath();
    };
    EXPECT_EQ(folderFor(valuesOf({"/other"})), "/other");
    EXPECT_EQ(folderFor(valuesOf({"file:///a%20b"})), "/a b");
    EXPECT_EQ(folderFor(valuesOf({"svn://h/p"})), "/w");
    EXPECT_EQ(folderFor(valuesOf({"/a", "/b"})), "/w");
    EXPECT_EQ(folderFor(std::nullopt), "/w");
}

TEST(SubversionArguments, ReportARebaseWithoutTarget) {
    const ReportCollector collector;
    EXPECT_THAT(GitSvnRebaseOperation(subversionRequest(NEBSourceControlRequestUpdate)).arguments(),
                ElementsAre("rebase", "-s", "recursive", "-X", "ours"));
    static_cast<void>(GitSvnRebaseOperation(subversionRequest(NEBSourceControlRequestUpdate, 7)));
    static_cast<void>(GitSvnRebaseOperation(subversionRequest(NEBSourceControlRequestUpdate, "")));
    static_cast<void>(GitSvnRebaseOperation(subversionRequest(NEBSourceControlRequestUpdate, "x")));
    ASSERT_EQ(collector.reports().size(), 3U);
    for (const LOMAssertionReport& report : collector.reports()) {
        EXPECT_EQ(report.function, "-[GitSvnRebaseOperation initWithRequest:]");
        EXPECT_EQ(report.file, "Classes/GitOperations");
        EXPECT_EQ(report.line, 1804);
    }
    EXPECT_EQ(collector.reports()[0].message,
              "self.request.destination should be a non-empty string, but it is nil");
    EXPECT_EQ(collector.reports()[0].condition, "(self.request.destination) != nil");
    EXPECT_EQ(collector.reports()[1].message,
              "self.request.destination should be a non-empty string, but it is 7");
    EXPECT_EQ(collector.reports()[1].condition,
              "CFGetTypeID(self.request.destination) == CFStringGetTypeID()");
    EXPECT_EQ(collector.reports()[2].message,
              "self.request.destination should be a non-empty string, but it's an empty string");
    EXPECT_EQ(collector.reports()[2].condition,
              "![@\"\" isEqualToString:(self.request.destination)]");
}

// ---- what git prints --------------------------------------------------------------------------

std::optional<NEBSourceControlResult> nameIn(const std::optional<Data>& output) {
    GitFetchSVNRemoteNameOperation operation(subversionRequest(NEBSourceControlRequestListRemotes));
    operation.setData(output);
    operation.parseData();
    return operation.result();
}

NEBSourceControlResult name(const std::string& text) {
    return {{{NEBSourceControlOperationRemoteNameKey, text},
             {NEBSourceControlOperationTypeKey, "fetch"}}};
}

TEST(SubversionName, IsTheLastComponentOfTheReference) {
    EXPECT_EQ(nameIn(":refs/remotes/git-svn\n"), name("git-svn"));
    EXPECT_EQ(nameIn("trunk:refs/remotes/origin/trunk\n"), name("trunk"));
    EXPECT_EQ(nameIn("a:b:refs/remotes/c"), name("c"));
    EXPECT_EQ(nameIn("refs/remotes/x/"), name("x")) << "without a colon";
    EXPECT_EQ(nameIn("x"), name("x"));
}

TEST(SubversionName, WithoutComponentIsAnEmptyRecord) {
    EXPECT_EQ(nameIn("trunk:\n"), NEBSourceControlResult{NEBDictionary()});
    EXPECT_EQ(nameIn("\n"), NEBSourceControlResult{NEBDictionary()});
    EXPECT_EQ(nameIn(""), std::nullopt);
    EXPECT_EQ(nameIn(std::nullopt), std::nullopt);
}

struct SubversionFetched {
    SubversionFetched(const std::optional<Data>& output, const std::optional<Data>& errors)
        : operation(subversionRequest(NEBSourceControlRequestFetch)) {
        operation.setData(output);
        operation.setErrorData(errors);
        operation.parseData();
    }
    GitSvnFetchOperation operation;
};

TEST(SubversionFetchOutput, IgnoresTheUsualMessagesOfTheBridge) {
    for (const char* harmless :
         {"Couldn't find revmap for svn://h/p\n", "W: -empty_dir: keep\nmore\n",
          "Found possible branch point: x => y, 4\nz\nSuccessfully followed parent\n"}) {
        const SubversionFetched fetched("", harmless);
        EXPECT_EQ(fetched.operation.errorData(), std::nullopt) << harmless;
        EXPECT_EQ(fetched.operation.result(), NEBSourceControlResult{}) << harmless;
    }
}

TEST(SubversionFetchOutput, KeepsOtherMessages) {
    for (const char* kept : {"Found possible branch point: x => y, 4\n", " Couldn't find revmap\n",
                             "Successfully followed parent\nFound possible branch point\n",
                             "W: +empty_dir: hollow\n", ""}) {
        const SubversionFetched fetched("r1", kept);
        EXPECT_EQ(fetched.operation.errorData(), kept);
        EXPECT_EQ(fetched.operation.result(), std::nullopt) << kept;
    }
    const SubversionFetched withoutOutput(std::nullopt, "Couldn't find revmap\n");
    EXPECT_EQ(withoutOutput.operation.errorData(), "Couldn't find revmap\n");
    EXPECT_EQ(withoutOutput.operation.result(), std::nullopt);
}

// ---- the description of the remote ------------------------------------------------------------

class SubversionRemote : public test::HygienicTest {
protected:
    [[nodiscard]] std::shared_ptr<GitListSVNRemoteOperation> list() const {
        auto operation = std::make_shared<GitListSVNRemoteOperation>(
            requestFor(NEBSourceControlRequestListRemotes, repository.path()));
        operation->setCommandLog(std::make_shared<NEBSourceControlCommandLog>());
        operation->start();
        return operation;
    }
    void configure(const std::string& key, const std::string& value) const {
        repository.git({"config", "svn-remote.svn." + key, value});
    }

    TestRepository repository;
};

TEST_F(SubversionRemote, IsOneRecord) {
    configure("url", "svn://h/p");
    configure("fetch", "trunk:refs/remotes/origin/trunk");
    const ReportCollector collector;
    const auto operation = list();
    EXPECT_EQ(operation->error(), std::nullopt);
    EXPECT_EQ(
        operation->result(),
        (NEBSourceControlResult{{{NEBSourceControlOperationUsesGitSVNKey, true},
                                 {NEBSourceControlOperationRemoteOriginKey, "svn://h/p"},
                                 {NEBSourceControlOperationRepositoryRootKey, repository.path()},
                                 {NEBSourceControlOperationRemoteNameKey, "trunk"},
                                 {NEBSourceControlOperationTypeKey, "fetch"}}}));
    EXPECT_THAT(commandLinesOf(*operation), ElementsAre("config --get svn-remote.svn.url",
                                                        "config --get svn-remote.svn.fetch"));
    EXPECT_THAT(collector.reports(), IsEmpty());
    EXPECT_EQ(operation->className(), "GitListSVNRemoteOperation");
    EXPECT_FALSE(operation->command().has_value());
    EXPECT_NE(operation->operationQueue(), nullptr);
}

TEST_F(SubversionRemote, WithoutANameIsReportedAndHasTheOtherEntries) {
    configure("url", "svn://h/p");
    const ReportCollector collector;
    EXPECT_EQ(list()->result(),
              (NEBSourceControlResult{
                  {{NEBSourceControlOperationUsesGitSVNKey, true},
                   {NEBSourceControlOperationRemoteOriginKey, "svn://h/p"},
                   {NEBSourceControlOperationRepositoryRootKey, repository.path()}}}));
    ASSERT_EQ(collector.reports().size(), 1U);
    const LOMAssertionReport& report = collector.reports().front();
    const std::string condition =
        "[fetchSVNRemoteOriginOperation.result count] == "
        "[fetchSVNRemoteNameOperation.result count]";
    EXPECT_EQ(report.file, "Classes/GitOperations");
    EXPECT_EQ(report.function, "-[GitListSVNRemoteOperation main]");
    EXPECT_EQ(report.line, 1405);
    EXPECT_EQ(report.message, "Assertion failed: " + condition);
    EXPECT_EQ(report.condition, condition);
}

TEST_F(SubversionRemote, ThatDoesNotExistIsAnEmptyResult) {
    EXPECT_EQ(list()->result(), NEBSourceControlResult{});
    EXPECT_EQ(list()->error(), std::nullopt);
    configure("fetch", "trunk:refs/remotes/origin/trunk");
    const ReportCollector collector;
    EXPECT_EQ(list()->result(), NEBSourceControlResult{}) << "a name without a URL";
    EXPECT_EQ(collector.reports().size(), 1U);
}

TEST_F(SubversionRemote, StopsAtAnErrorOfTheFirstQuery) {
    repository.write(".git/config", "[core\n");
    const auto operation = list();
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlConfigurationBrokenErrorClass));
    EXPECT_EQ(operation->result(), std::nullopt);
    EXPECT_EQ(operation->commandLog()->runs().size(), 1U);
}

}  // namespace
}  // namespace neb
