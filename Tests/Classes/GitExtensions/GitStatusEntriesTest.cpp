#include "GitExtensions/GitStatusEntries.h"

#include <gmock/gmock.h>

namespace neb::test {
namespace {

using testing::IsEmpty;

TEST(StatusEntries, HaveLettersAndAPath) {
    using namespace std::string_view_literals;
    const auto entries = gitStatusEntries("AM new\0 D b\xe4r\0?? -> x\nd/\0UU c\0AA d\0DD e\0"sv);
    ASSERT_EQ(entries.size(), 6U);
    EXPECT_EQ(entries[0].path, "new");
    EXPECT_EQ(entries[0].letterOfIndex(), 'A');
    EXPECT_EQ(entries[0].letterOfFile(), 'M');
    EXPECT_EQ(entries[1].path, "b\xe4r");
    EXPECT_EQ(entries[1].letterOfIndex(), 'D');
    EXPECT_EQ(entries[1].letterOfFile(), 'D');
    EXPECT_EQ(entries[2].path, "-> x\nd/");
    for (std::size_t i = 0; i < entries.size(); ++i) {
        EXPECT_EQ(entries[i].isUntracked(), i == 2) << i;
        EXPECT_EQ(entries[i].isConflict(), i > 2) << i;
        EXPECT_EQ(entries[i].letterOfFile() == 'U', i > 2) << i;
        EXPECT_EQ(entries[i].letterOfIndex() == 'U', i > 2) << i;
    }
}

TEST(StatusEntries, IgnoreWhatHasAnotherForm) {
    for (const std::string_view output :
         {std::string_view(), std::string_view("\0", 1), std::string_view("M\0 M \0", 6),
          std::string_view(" M a")}) {
        EXPECT_THAT(gitStatusEntries(output), IsEmpty()) << output;
    }
}

}  // namespace
}  // namespace neb::test
