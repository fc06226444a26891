// What text takes on a terminal, and instants on the person's clock.

#include "TextWidth.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include "LocalTime.h"

namespace neb::nebsc {
namespace {

TEST(TextWidth, CountsColumns) {
    EXPECT_EQ(columnsOf(""), 0U);
    EXPECT_EQ(columnsOf("abc"), 3U);
    EXPECT_EQ(columnsOf("Gr\xC3\xBC\xC3\x9F"), 4U);
    EXPECT_EQ(columnsOf("e\xCC\x81"), 1U);                 // e and an accent of its own
    EXPECT_EQ(columnsOf("\xE4\xBD\xA0\xE5\xA5\xBD"), 4U);  // two wide characters
    EXPECT_EQ(columnsOf("a\xE4z"), 3U);                    // no UTF-8
    EXPECT_EQ(columnsOf("a\xC3"), 2U);                     // cut off
}

TEST(TextWidth, PadsToAColumn) {
    EXPECT_EQ(paddedTo(4, "\xE4\xBD\xA0"), "\xE4\xBD\xA0  ");
    EXPECT_EQ(paddedTo(2, "abc"), "abc");
}

NEBDate at(std::int64_t seconds) {
    return NEBDate(std::chrono::seconds(seconds));
}

TEST(LocalTime, IsThatOfTheZone) {
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

}  // namespace
}  // namespace neb::nebsc
