#include "GitExtensions/GitSubmodules.h"

#include "Classes/GitExtensions/ExtensionTest.h"

namespace neb::test {
namespace {

using testing::IsEmpty;

class Submodules : public ExtensionTest {
protected:
    [[nodiscard]] NEBDictionary only() const {
        const auto records = recordsOf(request(NEBSourceControlRequestSubmodules));
        EXPECT_EQ(records.size(), 1U);
        return records.at(0);
    }
};

TEST_F(Submodules, AreNoneInAnOrdinaryRepository) {
    EXPECT_THAT(recordsOf(request(NEBSourceControlRequestSubmodules)), IsEmpty());
    const TemporaryFolder folder;
    EXPECT_EQ(errorClassOf(requestFor(NEBSourceControlRequestSubmodules, folder.path())),
              "not-a-repository");
}

TEST_F(Submodules, HaveAStateOfTheirOwn) {
    const TestRepository inner;
    inner.commitFile("a", "1");
    const std::string path = "s ub\xe4";
    repository.git(
        {"submodule", "add", "-q", "--name", "n.a me", "-b", "main", inner.path(), path});
    repository.git({"commit", "-q", "-m", "x"});
    NEBDictionary record = only();
    EXPECT_EQ(record.text(NEBSourceControlOperationNameKey), "n.a me");
    EXPECT_EQ(nameIn(record), path);
    EXPECT_EQ(record.text(NEBSourceControlOperationURLKey), inner.path());
    EXPECT_EQ(record.text(NEBSourceControlOperationBranchKey), "main");
    EXPECT_EQ(record.text(NEBSourceControlOperationStateKey), "current");
    EXPECT_EQ(record.text(NEBSourceControlOperationIndexObjectIDKey),
              lineOf(repository, {"rev-parse", ":" + path}));
    EXPECT_EQ(record.text(NEBSourceControlOperationObjectIDKey),
              lineOf(inner, {"rev-parse", "HEAD"}));
    repository.git({"-C", path, "commit", "-q", "--allow-empty", "-m", "y"});
    record = only();
    EXPECT_EQ(record.text(NEBSourceControlOperationStateKey), "other commit");
    EXPECT_EQ(record.text(NEBSourceControlOperationObjectIDKey),
              lineOf(repository, {"-C", path, "rev-parse", "HEAD"}));
    repository.git({"submodule", "deinit", "-q", "--force", path});
    EXPECT_EQ(only().text(NEBSourceControlOperationStateKey), "not initialized");
    repository.git({"submodule", "init", "-q", path});
    record = only();
    EXPECT_EQ(record.text(NEBSourceControlOperationStateKey), "not cloned");
    EXPECT_FALSE(record.contains(NEBSourceControlOperationObjectIDKey))
        << "not the commit of the repository around it";
}

}  // namespace
}  // namespace neb::test
