// The value of --timeout.

#include <gmock/gmock.h>

#include <chrono>

#include "CommandLine/CommonOptions.h"
#include "CommandLine/UsageError.h"

namespace neb::nebsc {
namespace {

using namespace std::chrono_literals;

std::optional<std::chrono::milliseconds> limitOf(const std::string& text) {
    Arguments arguments;
    arguments.set(timeoutOption, {text});
    return timeLimitIn(arguments);
}

TEST(TimeLimit, IsAbsentWithoutTheOption) {
    EXPECT_EQ(timeLimitIn(Arguments{}), std::nullopt);
}

TEST(TimeLimit, IsInSeconds) {
    EXPECT_EQ(limitOf("30"), 30s);
    EXPECT_EQ(limitOf("007"), 7s);
    EXPECT_EQ(limitOf("0.5"), 500ms);
    EXPECT_EQ(limitOf(".5"), 500ms);
    EXPECT_EQ(limitOf("5."), 5s);
    EXPECT_EQ(limitOf("1.2345"), 1235ms);
    EXPECT_EQ(limitOf("0.0005"), 1ms);
}

/// Longer than any process runs.
TEST(TimeLimit, IsBounded) {
    EXPECT_EQ(limitOf("99999999999999999999"), 1'000'000'000s);
}

TEST(TimeLimit, RefusesWhatIsNotANumberAboveZero) {
    for (const char* text : {"", "0", "0.0", "0.0004", "-1", "+1", "x", "1s", "1e3", "0x10", "1,5",
                             "1.2.3", ".", "..", " 1", "1 ", "nan", "inf", "-inf"}) {
        EXPECT_THROW(static_cast<void>(limitOf(text)), UsageError) << "'" << text << "'";
    }
    EXPECT_THROW(static_cast<void>(limitOf(std::string(400, '9'))), UsageError);
}

}  // namespace
}  // namespace neb::nebsc
