#include "NEBFoundation/NEBSourceControlOutputExcerpt.h"

#include <gmock/gmock.h>

#include <string>
#include <string_view>

#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"

namespace neb::test {
namespace {

constexpr std::size_t half = NEBSourceControlLongestMessages / 2;
constexpr std::size_t deviation = 4096 + 64;
const std::string mark = "[some text is left out here]\n";

/// Returns the excerpt that an error has as its text.
std::string excerptOf(std::string_view text) {
    return NEBSourceControlErrorWithoutDetails(text, NEBSourceControlRequest()).text.value_or("");
}

/// The parts of an excerpt.
struct Parts {
    std::string first;
    std::string mark;
    std::string last;
};

Parts partsOf(std::string_view text) {
    const std::string excerpt = excerptOf(text);
    const std::size_t mark = excerpt.find('[');
    const std::size_t last = excerpt.find("]\n") + 2;
    EXPECT_LE(excerpt.size(), NEBSourceControlLongestMessages);
    EXPECT_EQ(excerptOf(excerpt), excerpt);
    return {excerpt.substr(0, mark), excerpt.substr(mark, last - mark), excerpt.substr(last)};
}

void expectAboutHalf(const std::string& part) {
    EXPECT_GE(part.size(), half - deviation);
    EXPECT_LE(part.size(), half);
}

/// Returns a text that is too long, of this line alone.
std::string repeated(std::string_view line) {
    std::string text;
    while (text.size() <= 2 * NEBSourceControlLongestMessages) {
        text += line;
    }
    return text;
}

const std::string longLine(4 * NEBSourceControlLongestMessages, 'x');

TEST(OutputExcerpt, KeepsHalfOfALongLineAfterAShortOne) {
    const Parts parts = partsOf("error: first\n" + longLine);
    EXPECT_TRUE(parts.first.starts_with("error: first\nxxx"));
    expectAboutHalf(parts.first);
    expectAboutHalf(parts.last);
}

TEST(OutputExcerpt, KeepsHalfOfALongLineBeforeAShortOne) {
    const Parts parts = partsOf(longLine + "\nfatal: last\n");
    EXPECT_TRUE(parts.last.ends_with("xxx\nfatal: last\n"));
    expectAboutHalf(parts.first);
    expectAboutHalf(parts.last);
}

TEST(OutputExcerpt, CutsBetweenLinesThatAreNotVeryLong) {
    const std::string line = std::string(4000, 'y') + "\n";
    const std::string text = repeated(line);
    const Parts parts = partsOf(text);
    expectAboutHalf(parts.first);
    expectAboutHalf(parts.last);
    EXPECT_EQ(parts.first.size() % line.size(), 0U);
    EXPECT_EQ(parts.last.size() % line.size(), 0U);
    EXPECT_EQ(parts.mark, mark);
}

TEST(OutputExcerpt, LeavesWarningsOutFirst) {
    const std::string warnings = repeated("warning: something else\n");
    const std::string errors = "fatal: bad revision 'x'\n hint without an end";
    EXPECT_EQ(excerptOf(warnings + errors), mark + errors);
    EXPECT_EQ(excerptOf("error: x\n" + warnings + "y\nwarning: z\n" + warnings),
              mark + "error: x\ny\n");
}

TEST(OutputExcerpt, KeepsWarningsIfThereIsNothingElse) {
    const Parts parts = partsOf(repeated("warning: something else\n"));
    expectAboutHalf(parts.first);
    expectAboutHalf(parts.last);
}

}  // namespace
}  // namespace neb::test
