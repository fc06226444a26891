// The width of text on a terminal, and dates in the local time zone.

#include "Terminal/TextWidth.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/ioctl.h>

#include "Platform/FileDescriptor.h"
#include "Terminal/LocalTime.h"

namespace neb::nebsc {
namespace {

TEST(TextWidth, CountsColumns) {
    EXPECT_EQ(columnsOf(""), 0U);
    EXPECT_EQ(columnsOf("abc"), 3U);
    EXPECT_EQ(columnsOf("Gr\xC3\xBC\xC3\x9F"), 4U);
    EXPECT_EQ(columnsOf("e\xCC\x81"), 1U);                 // e and a combining accent
    EXPECT_EQ(columnsOf("\xE4\xBD\xA0\xE5\xA5\xBD"), 4U);  // two wide characters
    EXPECT_EQ(columnsOf("a\xE4z"), 3U);                    // not UTF-8
    EXPECT_EQ(columnsOf("a\xC3"), 2U);                     // truncated
}

TEST(TextWidth, PadsToAColumn) {
    EXPECT_EQ(paddedTo(4, "\xE4\xBD\xA0"), "\xE4\xBD\xA0  ");
    EXPECT_EQ(paddedTo(2, "abc"), "abc");
}

NEBDate at(std::int64_t seconds) {
    return NEBDate(std::chrono::seconds(seconds));
}

TEST(LocalTime, FollowsTheTimeZone) {
    ::setenv("TZ", "IST-5:30", 1);
    EXPECT_EQ(localMinute(at(1600000000)), "2020-09-13 17:56");
    EXPECT_EQ(localSecondWithZone(at(1600000000)), "2020-09-13 17:56:40 +0530");
    EXPECT_EQ(localMinute(at(-60)), "1970-01-01 05:29");
    ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    EXPECT_EQ(localSecondWithZone(at(1600000000)), "2020-09-13 14:26:40 +0200");
    EXPECT_EQ(localSecondWithZone(at(1606000000)), "2020-11-22 00:06:40 +0100");
    EXPECT_EQ(localMinute(at(9000000000)), "2255-03-14 17:00");
    ::setenv("TZ", "UTC", 1);
    EXPECT_EQ(localMinute(at(-30000000000)), "1019-05-04 18:40");
    EXPECT_NE(localMinute(NEBDate(NEBDate::duration::max())), "");
    ::unsetenv("TZ");
}

TEST(CutTo, LeavesTextThatFits) {
    EXPECT_EQ(truncated(3, "abc"), "abc");
    EXPECT_EQ(truncated(4, "漢字"), "漢字");
    EXPECT_EQ(truncated(5, ""), "");
}

TEST(CutTo, TruncatesLongText) {
    EXPECT_EQ(truncated(3, "abcd"), "ab…");
    EXPECT_EQ(truncated(1, "abcd"), "…");
    EXPECT_EQ(truncated(4, "漢字字"), "漢…");
    EXPECT_EQ(truncated(3, "e\u0301e\u0301e\u0301x"), "e\u0301e\u0301…");
}

TEST(Fitting, ReturnsAllTextWithoutATerminal) {
    EXPECT_EQ(fitting(-1, 5, "abc"), "abc");
    EXPECT_EQ(wrapped(-1, 5, "a b c"), "a b c");
}

/// A terminal of 20 columns.
class FittingATerminal : public testing::Test {
protected:
    void SetUp() override {
        winsize size{};
        size.ws_col = 20;
        ASSERT_TRUE(::grantpt(_terminal.get()) == 0 && ::unlockpt(_terminal.get()) == 0);
        ASSERT_EQ(::ioctl(_terminal.get(), TIOCSWINSZ, &size), 0);
    }
    FileDescriptor _terminal{::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)};
};

TEST_F(FittingATerminal, TruncatesAndWraps) {
    EXPECT_EQ(columnsOfTerminal(_terminal.get()), 20U);
    EXPECT_EQ(fitting(_terminal.get(), 15, "12345"), "12345");
    EXPECT_EQ(fitting(_terminal.get(), 15, "123456"), "1234…");
    EXPECT_EQ(fitting(_terminal.get(), 25, "12"), "…");
    EXPECT_EQ(wrapped(_terminal.get(), 10, "a bc def ghij klmno verylongword x"),
              "a bc def\n          ghij klmno\n          verylongword\n          x");
}

}  // namespace
}  // namespace neb::nebsc
