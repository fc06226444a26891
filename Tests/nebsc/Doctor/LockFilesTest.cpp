#include "Doctor/LockFiles.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "Support/HygienicTest.h"
#include "Support/TemporaryFolder.h"

namespace neb::test {
namespace {

using nebsc::findLockFiles;
using testing::ElementsAre;

class LockFiles : public HygienicTest {
protected:
    [[nodiscard]] std::vector<std::string> found() const {
        std::vector<std::string> names;
        for (const NEBSourceControlLockFile& lock :
             findLockFiles({folder.path(".git")}, folder.path())) {
            names.push_back(lock.path.substr(folder.path(".git/").size()));
        }
        return names;
    }

    TemporaryFolder folder;
};

TEST_F(LockFiles, OfSubmodulesAreFound) {
    folder.write(".git/index.lock", "");
    folder.write(".git/modules/plain/HEAD", "");
    folder.write(".git/modules/plain/index.lock", "");
    folder.write(".git/modules/libraries/deep/HEAD", "");
    folder.write(".git/modules/libraries/deep/refs/heads/main.lock", "");
    folder.write(".git/modules/libraries/deep/modules/inner/HEAD", "");
    folder.write(".git/modules/libraries/deep/modules/inner/objects/pack/x.lock", "");
    EXPECT_THAT(
        found(),
        ElementsAre("index.lock", "modules/libraries/deep/modules/inner/objects/pack/x.lock",
                    "modules/libraries/deep/refs/heads/main.lock", "modules/plain/index.lock"));
}

TEST_F(LockFiles, AfterAnUnreadableFolderAreFound) {
    for (const char* name : {"a", "m", "z"}) {
        folder.write(std::string(".git/refs/heads/") + name + "/x.lock", "");
    }
    const std::string unreadable = folder.path(".git/refs/heads/m");
    ASSERT_EQ(::chmod(unreadable.c_str(), 0), 0);
    const std::vector<std::string> names = [this] {
        const AsOrdinaryUser ordinary;
        return found();
    }();
    ASSERT_EQ(::chmod(unreadable.c_str(), 0755), 0);
    EXPECT_THAT(names, ElementsAre("refs/heads/a/x.lock", "refs/heads/z/x.lock"));
}

TEST_F(LockFiles, AreNotFoundWithoutARepository) {
    EXPECT_THAT(found(), ElementsAre());
}

}  // namespace
}  // namespace neb::test
