#include "Platform/DateFormatter.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

namespace neb {
namespace {

std::optional<std::int64_t> secondsOf(std::string_view text) {
    const auto date = DateFormatter().dateFromString(text);
    return date ? std::optional(date->time_since_epoch().count()) : std::nullopt;
}

TEST(DateFormatter, ParsesADateWithAnOffset) {
    EXPECT_EQ(secondsOf("2020-09-13 17:28:20 +0100"), 1600014500);
    EXPECT_EQ(secondsOf("2020-09-13 16:28:20 +0000"), 1600014500);
    EXPECT_EQ(secondsOf("2020-09-13 16:28:20 -0000"), 1600014500);
    EXPECT_EQ(secondsOf("2020-09-13 21:58:20 +0530"), 1600014500);
    EXPECT_EQ(secondsOf("2020-09-13 12:58:20 -0330"), 1600014500);
    EXPECT_EQ(secondsOf("2020-09-14 06:28:20 +1400"), 1600014500);
    EXPECT_EQ(secondsOf("2020-09-13 04:28:20 -1200"), 1600014500);
    EXPECT_EQ(secondsOf("2020-09-13 22:13:20 +0545"), 1600014500);
}

TEST(DateFormatter, ParsesTheOtherFormatsOfAnOffset) {
    EXPECT_EQ(secondsOf("1970-01-01 00:00:00 Z"), 0);
    EXPECT_EQ(secondsOf("1970-01-01 01:30:00 +01:30"), 0);
    EXPECT_EQ(secondsOf("1969-12-31 22:30:00 -01:30"), 0);
}

/// git prints the offset of a commit as it is, and its last two digits are minutes.
TEST(DateFormatter, ParsesOffsetsOutOfRange) {
    EXPECT_EQ(secondsOf("1970-01-01 01:39:00 +0099"), 0);
    EXPECT_EQ(secondsOf("1970-01-05 04:39:00 +9999"), 0);
    EXPECT_EQ(secondsOf("1970-01-22 14:00:00 +51800"), 0);
}

TEST(DateFormatter, ParsesDistantYears) {
    EXPECT_EQ(secondsOf("1970-01-01 00:00:00 +0000"), 0);
    EXPECT_EQ(secondsOf("1969-12-31 23:59:59 +0000"), -1);
    EXPECT_EQ(secondsOf("1900-03-01 00:00:00 +0000"), -2203891200);
    EXPECT_EQ(secondsOf("1600-02-29 12:00:00 +0000"), -11670955200);
    EXPECT_EQ(secondsOf("0000-01-01 00:00:00 +0000"), -62167219200);
    EXPECT_EQ(secondsOf("2038-01-19 03:14:08 +0000"), 2147483648);
    EXPECT_EQ(secondsOf("2100-01-01 00:00:00 +0000"), 4102444800);
    EXPECT_EQ(secondsOf("9999-12-31 23:59:59 +0000"), 253402300799);
    EXPECT_EQ(secondsOf("10000-01-01 00:00:00 +0000"), 253402300800);
    EXPECT_EQ(secondsOf("2147485547-12-31 23:59:59 +0000"), 67768036191676799);
}

TEST(DateFormatter, AgreesWithTheCalendarOfTheSystem) {
    for (std::int64_t seconds = -3000000000; seconds < 6000000000; seconds += 987654) {
        const std::time_t time = seconds;
        std::tm parts{};
        ASSERT_NE(::gmtime_r(&time, &parts), nullptr);
        char text[64];
        ASSERT_GT(std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S +0000", &parts), 0U);
        ASSERT_EQ(secondsOf(text), seconds) << text;
    }
}

TEST(DateFormatter, DoesNotDependOnTheTimeZoneOfTheProcess) {
    for (const char* zone : {"America/New_York", "Europe/Berlin", "Asia/Kolkata", "UTC-13"}) {
        ::setenv("TZ", zone, 1);
        ::tzset();
        // Next to the hours at which daylight saving time begins and ends.
        EXPECT_EQ(secondsOf("2021-03-14 02:30:00 +0000"), 1615689000) << zone;
        EXPECT_EQ(secondsOf("2021-10-31 02:30:00 +0100"), 1635643800) << zone;
    }
    ::unsetenv("TZ");
    ::tzset();
}

TEST(DateFormatter, RejectsEverythingElse) {
    for (const char* text : {"",
                             " ",
                             "yesterday",
                             "2020-09-13",
                             "2020-09-13 17:28:20",
                             "2020-09-13 17:28:20 ",
                             "2020-09-13 17:28:20 +",
                             "2020-09-13 17:28:20 +01",
                             "2020-09-13 17:28:20 +010",
                             "2020-09-13 17:28:20 0100",
                             "2020-09-13 17:28:20 +01:0",
                             "2020-09-13 17:28:20 +1:00",
                             "2020-09-13 17:28:20 +0100 ",
                             " 2020-09-13 17:28:20 +0100",
                             "2020-09-13 17:28:20 +0100x",
                             "2020-09-13T17:28:20 +0100",
                             "2020-09-13 17:28:20+0100",
                             "2020-9-13 17:28:20 +0100",
                             "2020-09-3 17:28:20 +0100",
                             "2020-09-13 7:28:20 +0100",
                             "020-09-13 17:28:20 +0100",
                             "2020-00-13 17:28:20 +0100",
                             "2020-13-13 17:28:20 +0100",
                             "2020-09-00 17:28:20 +0100",
                             "2020-09-31 17:28:20 +0100",
                             "2021-02-29 17:28:20 +0100",
                             "1900-02-29 17:28:20 +0100",
                             "2020-09-13 24:00:00 +0100",
                             "2020-09-13 17:60:20 +0100",
                             "2020-09-13 17:28:60 +0100",
                             "-2020-09-13 17:28:20 +0100",
                             "+2020-09-13 17:28:20 +0100",
                             "2020--9-13 17:28:20 +0100",
                             "2020-09-13 17:28:20 +-100",
                             "2020-09-13 17:28:20 z",
                             "2020-09-13  7:28:20 +0100",
                             "999999999999-01-01 00:00:00 +0000",
                             "2020-09-13 17:28:20 +1234567890",
                             "99999999999999999999-01-01 00:00:00 +0000"}) {
        EXPECT_EQ(secondsOf(text), std::nullopt) << text;
    }
    EXPECT_EQ(secondsOf("2020-02-29 00:00:00 +0000"), 1582934400);
    EXPECT_EQ(secondsOf("2000-02-29 00:00:00 +0000"), 951782400);
}

}  // namespace
}  // namespace neb
