// Names of temporary files.

#include "NEBFoundation/NEBSourceControlTemporaryFile.h"

#include "NEBFoundation/NEBSourceControlRequest.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <set>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/Matchers.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

using testing::MatchesRegex;

TEST(TemporaryFile, IsNamedAfterTheFileWithARandomPrefix) {
    const test::TemporaryFolder folder;
    ::setenv("TMPDIR", folder.path().c_str(), 1);
    std::set<std::string> names;
    for (int i = 0; i < 100; ++i) {
        const LOMFilePath path =
            NEBSourceControl_filePathForTmpFileBasedOnFileName("/w/src/main.c");
        EXPECT_THAT(path.pathString(), MatchesRegex(folder.path() + "/[0-9A-F]{16}-main\\.c"));
        EXPECT_FALSE(path.existsInFileSystem());
        names.insert(path.pathString());
    }
    ::setenv("TMPDIR", "relative", 1);
    EXPECT_THAT(NEBSourceControl_filePathForTmpFileBasedOnFileName("a").pathString(),
                MatchesRegex("/tmp/.*-a"));
    ::setenv("TMPDIR", folder.path("missing").c_str(), 1);
    EXPECT_THAT(NEBSourceControl_filePathForTmpFileBasedOnFileName("a").pathString(),
                MatchesRegex("/tmp/.*-a"));
    ::unsetenv("TMPDIR");
    EXPECT_THAT(NEBSourceControl_filePathForTmpFileBasedOnFileName("a").pathString(),
                MatchesRegex("/tmp/.*-a"));
    EXPECT_EQ(names.size(), 100U);
}

/// Whoever gives a file the name of the target puts the head in front of it, and finds the head by
/// looking for the file's name.
TEST(TemporaryFile, HasNoPrefixThatMayContainTheName) {
    ::unsetenv("TMPDIR");
    for (const std::string name : {"A", "0", "-", "--", "-A", "BEEF-"}) {
        EXPECT_THAT(NEBSourceControl_filePathForTmpFileBasedOnFileName("/w/" + name).pathString(),
                    MatchesRegex("/tmp/[0-9A-F]{16}/" + name));
    }
    for (const std::string name : {"a", "A.c", "-x", "--x", "G"}) {
        const std::string path =
            NEBSourceControl_filePathForTmpFileBasedOnFileName("/w/" + name).pathString();
        EXPECT_EQ(path.find(name, 5), path.size() - name.size()) << path;
    }
}

TEST(TemporaryFile, OfALongNameIsInAFolderOfItsOwn) {
    ::unsetenv("TMPDIR");
    const std::string longest(255, 'n');
    EXPECT_THAT(NEBSourceControl_filePathForTmpFileBasedOnFileName("/w/" + longest).pathString(),
                MatchesRegex("/tmp/[0-9A-F]{16}/" + longest));
    EXPECT_THAT(NEBSourceControl_filePathForTmpFileBasedOnFileName(longest.substr(17)).pathString(),
                MatchesRegex("/tmp/[0-9A-F]{16}-" + longest.substr(17)));
    EXPECT_THAT(NEBSourceControl_filePathForTmpFileBasedOnFileName(longest.substr(16)).pathString(),
                MatchesRegex("/tmp/[0-9A-F]{16}/" + longest.substr(16)));
}

}  // namespace
}  // namespace neb
