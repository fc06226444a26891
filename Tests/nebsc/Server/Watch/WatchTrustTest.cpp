// A watch of a repository that the user does not trust.

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

#include "Support/TemporaryFolder.h"
#include "nebsc/Server/Watch/WatchTest.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;

/// git asks the remote for the folder that the sparse index lacks, with the program of the
/// repository, when it lists the files in that folder.
class WatchTrust : public WatchTest {
protected:
    WatchTrust() {
        repository.commitFile("keep/a", "1\n");
        repository.commitFile("dir/b", "2\n");
        repository.git({"sparse-checkout", "set", "--cone", "--sparse-index", "keep"});
        const std::string tree = repository.git({"rev-parse", "HEAD:dir"});
        fs::remove(repository.path(".git/objects/" + tree.substr(0, 2) + "/" +
                                   tree.substr(2, tree.size() - 3)));
        fs::create_directory(repository.path("dir"));
        repository.write("dir/new", "1\n");
        const std::string program =
            folder.writeProgram("ssh", "#!/bin/sh\ntouch '" + folder.path("ran") + "'\nexit 1\n");
        for (const auto& [name, value] :
             {std::pair<std::string, std::string>{"core.repositoryFormatVersion", "1"},
              {"extensions.partialClone", "origin"},
              {"remote.origin.promisor", "true"},
              {"remote.origin.url", "ssh://host.invalid/x"},
              {"core.sshCommand", program}}) {
            repository.git({"config", name, value});
        }
    }

    TemporaryFolder folder;
};

TEST_F(WatchTrust, RunsNoProgramOfTheRepository) {
    watch(repository.path(), true);
    EXPECT_FALSE(fs::exists(folder.path("ran")));
}

/// Otherwise the test above proves nothing.
TEST_F(WatchTrust, HasARepositoryWhoseProgramGitRuns) {
    const std::string command = "git -C '" + repository.path() +
                                "' ls-files --others --ignored --exclude-standard --directory"
                                " >/dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0);
    EXPECT_TRUE(fs::exists(folder.path("ran")));
}

}  // namespace
}  // namespace neb::test
