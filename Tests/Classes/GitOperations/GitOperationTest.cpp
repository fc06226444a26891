#include "GitOperations/GitOperation.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <set>
#include <thread>

#include "LOMFoundation/LOMDeveloperPaths.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Support/Matchers.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

using test::requestFor;
using testing::ElementsAre;
using testing::IsEmpty;

std::optional<std::string> folderFor(std::optional<std::string> location) {
    return GitOperation(requestFor(NEBSourceControlRequestStatus, std::move(location)))
        .currentDirectoryPath();
}

TEST(GitWorkingDirectory, IsTheLocation) {
    EXPECT_EQ(folderFor("/Users/x/project"), "/Users/x/project");
    EXPECT_EQ(folderFor("file:///Users/x/project"), "/Users/x/project");
    EXPECT_EQ(folderFor("file:///Users/x/my%20project"), "/Users/x/my project");
    EXPECT_EQ(folderFor("~/project"), "~/project");
}

TEST(GitWorkingDirectory, StaysUnsetForAnyOtherLocation) {
    EXPECT_EQ(folderFor("https://example.org/project.git"), std::nullopt);
    EXPECT_EQ(folderFor("git@example.org:project.git"), std::nullopt);
    EXPECT_EQ(folderFor("relative/folder"), std::nullopt);
    EXPECT_EQ(folderFor(""), std::nullopt);
    EXPECT_EQ(folderFor(std::nullopt), std::nullopt);
    auto request = requestFor(NEBSourceControlRequestStatus, "/w");
    request->sourceTree = nullptr;
    EXPECT_EQ(GitOperation(request).currentDirectoryPath(), std::nullopt);
}

std::vector<std::string> defaultArguments(std::optional<NEBDictionary> options) {
    auto request = requestFor(NEBSourceControlRequestLog, "/w");
    request->options = std::move(options);
    return GitOperation(request).defaultArguments();
}

TEST(GitDefaultArguments, NameTheRepositoryThenTheWorkTree) {
    const std::string home = std::getenv("HOME");
    // The work tree's tilde is kept on purpose.
    EXPECT_THAT(defaultArguments(
                    NEBDictionary{{NEBSourceControlRequestOptionWorkingCopyPath, "~/repo"},
                                  {NEBSourceControlRequestOptionRepositoryPath, "~/repo/.git"}}),
                ElementsAre("--git-dir=" + home + "/repo/.git", "--work-tree=~/repo"));
    EXPECT_THAT(
        defaultArguments(NEBDictionary{{NEBSourceControlRequestOptionRepositoryPath, "/r"}}),
        ElementsAre("--git-dir=/r"));
    EXPECT_THAT(
        defaultArguments(NEBDictionary{{NEBSourceControlRequestOptionWorkingCopyPath, "/w"}}),
        ElementsAre("--work-tree=/w"));
}

TEST(GitDefaultArguments, AreEmptyWithoutOptions) {
    EXPECT_THAT(defaultArguments(std::nullopt), IsEmpty());
    EXPECT_THAT(defaultArguments(NEBDictionary{{NEBSourceControlRequestOptionBranch, "b"}}),
                IsEmpty());
}

TEST(GitOperationClass, NeedsOnlyARequest) {
    EXPECT_EQ(initWithRequest<GitOperation>(nullptr), nullptr);
    const auto operation =
        initWithRequest<GitOperation>(requestFor(NEBSourceControlRequestStatus, "/w"));
    EXPECT_EQ(operation->className(), "GitOperation");
    EXPECT_THAT(operation->arguments(), IsEmpty());
}

TEST(GitLaunchPath, IsSearchedOncePerProcess) {
    std::set<std::string> paths;
    std::vector<std::thread> threads;
    std::mutex mutex;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            GitOperation operation(requestFor(NEBSourceControlRequestStatus, "/w"));
            const std::string path = operation.launchPath();
            const std::lock_guard lock(mutex);
            paths.insert(path);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const std::string folder = LOMDeveloperPaths::defaultPaths()
                                   .binSearchPathForPlatform(std::nullopt)
                                   .preferredDirectoryPath()
                                   .pathString();
    EXPECT_THAT(paths, ElementsAre(folder + "/git"));
    LOMDeveloperPaths::defaultPaths().setPreferredBinaryDirectory(
        LOMFilePath::filePathForPathString("/elsewhere"));
    EXPECT_EQ(GitOperation(requestFor(NEBSourceControlRequestStatus, "/w")).launchPath(),
              folder + "/git");
    LOMDeveloperPaths::defaultPaths().setPreferredBinaryDirectory(std::nullopt);
}

}  // namespace
}  // namespace neb
