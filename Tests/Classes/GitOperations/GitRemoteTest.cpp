#include "GitOperations/GitRemote.h"

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

std::shared_ptr<NEBSourceControlRequest> remoteRequest(
    std::int32_t type, NEBValue destination = {}, std::optional<std::vector<NEBValue>> files = {},
    const std::string& location = "/w") {
    auto made = requestFor(type, location);
    made->destination = std::move(destination);
    made->files = std::move(files);
    return made;
}

std::shared_ptr<NEBSourceControlRequest> withPaths(std::shared_ptr<NEBSourceControlRequest> asked) {
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, "/r/.git"},
                                   {NEBSourceControlRequestOptionWorkingCopyPath, "/r"}};
    return asked;
}

NEBDictionary remote(const std::string& name, const std::string& location,
                     const std::string& type = "") {
    NEBDictionary record{{NEBSourceControlOperationRemoteNameKey, name},
                         {NEBSourceControlOperationRemoteOriginKey, location}};
    if (!type.empty()) {
        record.set(NEBSourceControlOperationTypeKey, type);
    }
    return record;
}

// ---- the command lines ------------------------------------------------------------------------

TEST(RemoteArguments, FollowTheDefaultArguments) {
    EXPECT_THAT(GitListStandardRemotesOperation(remoteRequest(NEBSourceControlRequestListRemotes))
                    .arguments(),
                ElementsAre("remote", "-v"));
    EXPECT_THAT(GitListStandardRemotesOperation(
                    withPaths(remoteRequest(NEBSourceControlRequestListRemotes)))
                    .arguments(),
                ElementsAre("--git-dir=/r/.git", "--work-tree=/r", "remote", "-v"));
    EXPECT_THAT(
        GitAddRemoteOperation(withPaths(remoteRequest(NEBSourceControlRequestAddRemote, "mirror",
                                                      valuesOf({"/m.git"}))))
            .arguments(),
        ElementsAre("--git-dir=/r/.git", "--work-tree=/r", "remote", "add", "mirror", "/m.git"));
    EXPECT_THAT(GitRemoveRemoteOperation(
                    withPaths(remoteRequest(NEBSourceControlRequestRemoveRemote, "mirror")))
                    .arguments(),
                ElementsAre("--git-dir=/r/.git", "--work-tree=/r", "remote", "rm", "mirror"));
}

TEST(RemoteArguments, OmitMissingValues) {
    EXPECT_THAT(GitAddRemoteOperation(remoteRequest(NEBSourceControlRequestAddRemote)).arguments(),
                ElementsAre("remote", "add"));
    EXPECT_THAT(GitAddRemoteOperation(
                    remoteRequest(NEBSourceControlRequestAddRemote, "m", valuesOf({"/a", "/b"})))
                    .arguments(),
                ElementsAre("remote", "add", "m"))
        << "no one location";
    EXPECT_THAT(
        GitRemoveRemoteOperation(remoteRequest(NEBSourceControlRequestRemoveRemote)).arguments(),
        ElementsAre("remote", "rm"));
}

// ---- what git prints --------------------------------------------------------------------------

std::optional<NEBSourceControlResult> resultOf(const std::optional<Data>& output) {
    GitListStandardRemotesOperation operation(remoteRequest(NEBSourceControlRequestListRemotes));
    operation.setData(output);
    operation.parseData();
    return operation.result();
}

/// The last record is empty, which hosts rely on.
TEST(RemoteOutput, HasARecordPerDirectionAndAnEmptyOneAtTheEnd) {
    EXPECT_EQ(resultOf("origin\thttps://h/p.git (fetch)\norigin\thttps://h/p.git (push)\n"
                       "mirror\t/m.git (fetch)\nmirror\t/m.git (push)\n"),
              (NEBSourceControlResult{remote("origin", "https://h/p.git", "fetch"),
                                      remote("origin", "https://h/p.git", "push"),
                                      remote("mirror", "/m.git", "fetch"),
                                      remote("mirror", "/m.git", "push"), NEBDictionary()}));
}

TEST(RemoteOutput, CutsALocationAtItsFirstBlank) {
    EXPECT_EQ(resultOf("a\t/my repository (fetch)\n"),
              (NEBSourceControlResult{remote("a", "/my"), NEBDictionary()}));
}

TEST(RemoteOutput, HasNoTypeForOtherDirections) {
    EXPECT_EQ(resultOf("a\t/r (fetch) [blob:none]\nb\t/r (push) \nc\t/r (pull)\nd\t/r "),
              (NEBSourceControlResult{remote("a", "/r"), remote("b", "/r"), remote("c", "/r"),
                                      remote("d", "/r")}));
}

TEST(RemoteOutput, OmitsMissingParts) {
    const NEBDictionary nameAlone{{NEBSourceControlOperationRemoteNameKey, "a"}};
    const NEBDictionary locationAlone{{NEBSourceControlOperationRemoteOriginKey, "/r"}};
    const NEBDictionary typeAlone{{NEBSourceControlOperationTypeKey, "push"}};
    EXPECT_EQ(resultOf("a"), NEBSourceControlResult{nameAlone});
    EXPECT_EQ(resultOf("a\t"), NEBSourceControlResult{nameAlone});
    EXPECT_EQ(resultOf("\t/r"), NEBSourceControlResult{locationAlone});
    EXPECT_EQ(resultOf("\t (push)"), NEBSourceControlResult{typeAlone});
}

TEST(RemoteOutput, WithoutTextHasNoResult) {
    EXPECT_EQ(resultOf(""), std::nullopt);
    EXPECT_EQ(resultOf(std::nullopt), std::nullopt);
}

// ---- real repositories ------------------------------------------------------------------------

class Remotes : public test::HygienicTest {
protected:
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> run(
        std::int32_t type, NEBValue destination = {},
        std::optional<std::vector<NEBValue>> files = {}) const {
        return perform(
            remoteRequest(type, std::move(destination), std::move(files), repository.path()));
    }
    static constexpr const char* listing = "remote -v";
    static constexpr const char* svnURL = "config --get svn-remote.svn.url";
    static constexpr const char* svnFetch = "config --get svn-remote.svn.fetch";

    TestRepository repository;
};

TEST_F(Remotes, AreAddedListedAndRemoved) {
    EXPECT_EQ(
        run(NEBSourceControlRequestAddRemote, "origin", valuesOf({"https://h/p.git"}))->error(),
        std::nullopt);
    EXPECT_EQ(run(NEBSourceControlRequestAddRemote, "mirror", valuesOf({"/m.git"}))->result(),
              std::nullopt);
    repository.git({"remote", "set-url", "--push", "origin", "ssh://h/p.git"});
    auto list = run(NEBSourceControlRequestListRemotes);
    EXPECT_EQ(list->error(), std::nullopt);
    EXPECT_EQ(list->result(),
              (NEBSourceControlResult{remote("mirror", "/m.git", "fetch"),
                                      remote("mirror", "/m.git", "push"),
                                      remote("origin", "https://h/p.git", "fetch"),
                                      remote("origin", "ssh://h/p.git", "push"), NEBDictionary()}));
    EXPECT_THAT(commandLinesOf(*list), ElementsAre(listing, svnURL, svnFetch));
    EXPECT_EQ(run(NEBSourceControlRequestRemoveRemote, "mirror")->error(), std::nullopt);
    EXPECT_EQ(repository.git({"remote"}), "origin\n");
}

TEST_F(Remotes, AreEmptyWithoutRemotes) {
    EXPECT_EQ(run(NEBSourceControlRequestListRemotes)->result(), NEBSourceControlResult{});
}

TEST_F(Remotes, EndWithTheSubversionRepository) {
    repository.git({"remote", "add", "origin", "/o.git"});
    repository.git({"config", "svn-remote.svn.url", "svn://h/p"});
    repository.git({"config", "svn-remote.svn.fetch", "trunk:refs/remotes/svn/trunk"});
    const auto list = run(NEBSourceControlRequestListRemotes);
    EXPECT_EQ(list->result(),
              (NEBSourceControlResult{
                  remote("origin", "/o.git", "fetch"), remote("origin", "/o.git", "push"),
                  NEBDictionary(),
                  NEBDictionary{{NEBSourceControlOperationUsesGitSVNKey, true},
                                {NEBSourceControlOperationRemoteOriginKey, "svn://h/p"},
                                {NEBSourceControlOperationRepositoryRootKey, repository.path()},
                                {NEBSourceControlOperationRemoteNameKey, "trunk"},
                                {NEBSourceControlOperationTypeKey, "fetch"}}}));
}

TEST_F(Remotes, ThatCannotBeListedAreAnErrorWithoutFurtherCommands) {
    const test::TemporaryFolder folder;
    const auto list =
        perform(remoteRequest(NEBSourceControlRequestListRemotes, {}, {}, folder.path()));
    EXPECT_THAT(list->error(), HasErrorClass(NEBSourceControlNotARepositoryErrorClass));
    EXPECT_EQ(list->result(), std::nullopt);
    EXPECT_THAT(commandLinesOf(*list), ElementsAre(listing));
}

/// The remotes are read in the source tree, the Subversion repository in the folder of the file,
/// where the query fails.
TEST_F(Remotes, AreListedIfTheSubversionQueryFails) {
    repository.git({"remote", "add", "origin", "/o.git"});
    const TestRepository broken;
    broken.write(".git/config", "[core\n");
    auto asked = remoteRequest(NEBSourceControlRequestListRemotes, {}, valuesOf({broken.path()}),
                               repository.path());
    const auto list = perform(asked);
    EXPECT_EQ(list->error(), std::nullopt);
    EXPECT_EQ(list->result(),
              (NEBSourceControlResult{remote("origin", "/o.git", "fetch"),
                                      remote("origin", "/o.git", "push"), NEBDictionary()}));
    EXPECT_THAT(commandLinesOf(*list), ElementsAre(listing, svnURL));
}

TEST_F(Remotes, ReportFailedChanges) {
    repository.git({"remote", "add", "origin", "/o.git"});
    EXPECT_THAT(run(NEBSourceControlRequestAddRemote, "origin", valuesOf({"/x"}))->error(),
                HasErrorClass(NEBSourceControlRemoteExistsErrorClass));
    EXPECT_THAT(run(NEBSourceControlRequestAddRemote, "a b", valuesOf({"/x"}))->error(),
                HasErrorClass(NEBSourceControlRemoteNameInvalidErrorClass));
    EXPECT_THAT(run(NEBSourceControlRequestRemoveRemote, "nosuch")->error(),
                HasErrorClass(NEBSourceControlRemoteUnknownErrorClass));
    EXPECT_TRUE(run(NEBSourceControlRequestAddRemote)->error().has_value());
}

}  // namespace
}  // namespace neb
