#include "Platform/NewFile.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>

#include "Support/HygienicTest.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

namespace fs = std::filesystem;

class NewFileTest : public test::HygienicTest {
protected:
    /// Writes the draft of the file.
    void writeDraft(const NewFile& file, std::string_view text) {
        folder.write(fs::path(file.draft()).lexically_relative(folder.path()).string(), text);
    }
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(folder.path())) {
            found.push_back(entry.path().filename().string());
        }
        return found;
    }

    test::TemporaryFolder folder;
};

TEST_F(NewFileTest, AppearsWhenItIsPublished) {
    {
        NewFile file(folder.path("new"), "draft");
        ASSERT_FALSE(file.prepare());
        EXPECT_EQ(fs::path(file.draft()).filename(), "draft");
        EXPECT_EQ(fs::path(file.draft()).parent_path().parent_path(), folder.path());
        writeDraft(file, "text");
        EXPECT_FALSE(fs::exists(folder.path("new")));
        EXPECT_FALSE(file.publish());
    }
    EXPECT_EQ(folder.read("new"), "text");
    EXPECT_THAT(names(), testing::ElementsAre("new"));
}

TEST_F(NewFileTest, MayBeAFolder) {
    {
        NewFile file(folder.path("new"), "draft");
        ASSERT_FALSE(file.prepare());
        fs::create_directories(file.draft() + "/a");
        EXPECT_FALSE(file.publish());
    }
    EXPECT_TRUE(fs::is_directory(folder.path("new/a")));
    EXPECT_THAT(names(), testing::ElementsAre("new"));
}

TEST_F(NewFileTest, LeavesNothingUnlessItIsPublished) {
    {
        NewFile file(folder.path("new"), "draft");
        ASSERT_FALSE(file.prepare());
        fs::create_directories(file.draft() + "/a");
        fs::permissions(file.draft(), fs::perms::owner_read | fs::perms::owner_exec);
    }
    EXPECT_THAT(names(), testing::IsEmpty());
}

TEST_F(NewFileTest, NeverOverwrites) {
    NewFile file(folder.path("late"), "draft");
    ASSERT_FALSE(file.prepare());
    writeDraft(file, "ours");
    folder.write("late", "theirs");
    const auto failure = file.publish();
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->errorNumber, EEXIST);
    EXPECT_EQ(failure->description,
              "'" + folder.path("late") + "' could not be written: File exists.");
    EXPECT_EQ(folder.read("late"), "theirs");
}

TEST_F(NewFileTest, NeedsTheFolderOfItsPath) {
    NewFile file(folder.path("missing/new"), "draft");
    const auto failure = file.prepare();
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->errorNumber, ENOENT);
}

}  // namespace
}  // namespace neb
