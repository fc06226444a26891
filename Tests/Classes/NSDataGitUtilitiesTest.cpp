#include <gmock/gmock.h>

#include "NSData+GitUtilities.h"
#include "Support/Matchers.h"

namespace neb {
namespace {

using std::string_literals::operator""s;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(ComponentsSeparatedByNULL, EachNULEndsAPiece) {
    EXPECT_THAT(git_componentsSeparatedByNULLTerminator("a\0\0b"s), ElementsAre("a", "", "b"));
    EXPECT_THAT(git_componentsSeparatedByNULLTerminator("a\0"s), ElementsAre("a"));
    EXPECT_THAT(git_componentsSeparatedByNULLTerminator("a\0b\0"s), ElementsAre("a", "b"));
    EXPECT_THAT(git_componentsSeparatedByNULLTerminator("\0"s), ElementsAre(""));
    EXPECT_THAT(git_componentsSeparatedByNULLTerminator("\0a"s), ElementsAre("", "a"));
}

TEST(ComponentsSeparatedByNULL, APieceWithoutTerminatorIsReturnedWhole) {
    EXPECT_THAT(git_componentsSeparatedByNULLTerminator("one piece\n"s),
                ElementsAre("one piece\n"));
    EXPECT_THAT(git_componentsSeparatedByNULLTerminator("a\0rest"s), ElementsAre("a", "rest"));
}

TEST(ComponentsSeparatedByNULL, NoBytesAreNoPieces) {
    EXPECT_THAT(git_componentsSeparatedByNULLTerminator(""), IsEmpty());
}

TEST(ComponentsSeparatedByNULL, APieceThatIsNoTextIsDroppedWithoutAWord) {
    const test::ReportCollector collector;
    EXPECT_THAT(git_componentsSeparatedByNULLTerminator("a\0J\xFCrgen\0b\0\xE4"s),
                ElementsAre("a", "b"));
    EXPECT_THAT(git_componentsSeparatedByNULLTerminator("\xC3\xA4\0\xF0\x9F\x98\x80"s),
                ElementsAre("\xC3\xA4", "\xF0\x9F\x98\x80"));
    EXPECT_TRUE(collector.reports().empty());
}

TEST(ComponentsSeparatedByNULL, AreVisitedWithoutACopy) {
    const std::string data = "a\0\xE4\0\0b"s;
    std::vector<std::string_view> visited;
    git_forEachComponentSeparatedByNULLTerminator(
        data, [&visited](std::string_view component) { visited.push_back(component); });
    EXPECT_THAT(visited, ElementsAre("a", "", "b"));
    EXPECT_EQ(visited.front().data(), data.data());
}

}  // namespace
}  // namespace neb
