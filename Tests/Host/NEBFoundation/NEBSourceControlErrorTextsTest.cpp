// Exact messages of git, ssh, curl and git svn, and the classes that they show.

#include <gtest/gtest.h>

#include "NEBFoundation/ErrorCatalogue/ErrorCatalogueRows.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Support/ErrorTexts.h"

namespace neb {
namespace {

class MessagesOfGit : public testing::TestWithParam<test::TextOfGit> {};

TEST_P(MessagesOfGit, HasTheClass) {
    EXPECT_EQ(NEBSourceControlErrorClassOfText(GetParam().text), GetParam().errorClass)
        << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Texts, MessagesOfGit,
                         testing::ValuesIn(test::textsOfGit().begin(), test::textsOfGit().end()));
INSTANTIATE_TEST_SUITE_P(Families, MessagesOfGit,
                         testing::ValuesIn(test::familyTexts().begin(), test::familyTexts().end()));

/// Returns a text that matches the pattern, with a name where the pattern begins or ends with a
/// quote.
std::string textMatching(const ErrorPattern& pattern, const std::string& beginning) {
    std::string text(pattern.first);
    if (text.starts_with('\n')) {
        text.erase(0, 1);
    } else {
        text.insert(0, beginning + (text.starts_with('\'') ? "'x" : ""));
    }
    text += text.ends_with('\'') ? "x" : "";
    text += text.ends_with("'x") && !pattern.second.starts_with('\'') ? "' " : "";
    text += pattern.second;
    return text + (pattern.second.ends_with('\'') && pattern.second.size() > 1 ? "x'" : "");
}

/// A pattern whose texts an earlier row matches has no effect.
void expectEveryPatternDecides(ErrorCatalogueTable rows, const std::string& beginning) {
    for (const ErrorCatalogueRow& row : rows) {
        for (const ErrorPattern& pattern : row.patterns) {
            const std::string text = textMatching(pattern, beginning);
            EXPECT_EQ(NEBSourceControlErrorClassOfText(text), row.errorClass) << text;
        }
    }
}

TEST(ErrorCatalogueRows, EveryPatternDecides) {
    for (const ErrorCatalogueTable rows : errorCatalogueTables()) {
        expectEveryPatternDecides(rows, "x: ");
    }
}

TEST(ErrorCatalogueRows, EveryGeneralPatternDecides) {
    expectEveryPatternDecides(errorGeneralRows(), "fatal: ");
}

TEST(ErrorCatalogueRows, GeneralPatternsMatchOnlyErrorsOfGit) {
    EXPECT_EQ(NEBSourceControlErrorClassOfText("error: could not write 'x'"),
              NEBSourceControlIOErrorClass);
    for (const char* text : {"lint: could not write 'x'", "warning: could not write 'x'",
                             "hint: could not write 'x'", "remote: error: could not write 'x'"}) {
        EXPECT_EQ(NEBSourceControlErrorClassOfText(text), NEBSourceControlUnknownErrorClass)
            << text;
    }
}

TEST(LongTexts, TheCauseIsFoundAtTheBeginningAndAtTheEnd) {
    std::string lines;
    while (lines.size() < 1000000) {
        lines += "error: something without a cause\n";
    }
    const std::string cause = "fatal: unable to write: No space left on device\n";
    EXPECT_EQ(NEBSourceControlErrorClassOfText(cause + lines), NEBSourceControlDiskFullErrorClass);
    EXPECT_EQ(NEBSourceControlErrorClassOfText(lines + cause), NEBSourceControlDiskFullErrorClass);
    EXPECT_EQ(NEBSourceControlErrorClassOfText(lines), NEBSourceControlUnknownErrorClass);
}

TEST(LongTexts, WarningsAreRemovedBeforeTheMiddle) {
    std::string warnings;
    while (warnings.size() < 1000000) {
        warnings += "warning: something else\n";
    }
    EXPECT_EQ(NEBSourceControlErrorClassOfText(warnings + "fatal: bad revision 'x'\n" + warnings),
              NEBSourceControlRevisionUnknownErrorClass);
}

}  // namespace
}  // namespace neb
