// What git, ssh, curl and the Subversion bridge say to the letter, and the class that it shows.

#include <gtest/gtest.h>

#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogueRows.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Support/ErrorTexts.h"

namespace neb {
namespace {

class SaidByGit : public testing::TestWithParam<test::TextOfGit> {};

TEST_P(SaidByGit, ShowsTheClass) {
    EXPECT_EQ(NEBSourceControlErrorClassOfText(GetParam().text), GetParam().errorClass)
        << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Texts, SaidByGit,
                         testing::ValuesIn(test::textsOfGit().begin(), test::textsOfGit().end()));
INSTANTIATE_TEST_SUITE_P(Families, SaidByGit,
                         testing::ValuesIn(test::familyTexts().begin(), test::familyTexts().end()));

/// A text that the sign is in, with a name where it has the beginning or the end of one.
std::string textWith(const ErrorTextSign& sign, const std::string& beginning) {
    std::string text(sign.first);
    if (text.starts_with('\n')) {
        text.erase(0, 1);
    } else {
        text.insert(0, beginning + (text.starts_with('\'') ? "'x" : ""));
    }
    text += text.ends_with('\'') ? "x" : "";
    text += text.ends_with("'x") && !sign.second.starts_with('\'') ? "' " : "";
    text += sign.second;
    return text + (sign.second.ends_with('\'') && sign.second.size() > 1 ? "x'" : "");
}

/// A sign that an earlier row takes for its own decides nothing.
void expectNoSignInVain(std::span<const ErrorCatalogueRow> rows, const std::string& beginning) {
    for (const ErrorCatalogueRow& row : rows) {
        for (const ErrorTextSign& sign : row.signs) {
            const std::string text = textWith(sign, beginning);
            if (!sign.first.empty()) {
                EXPECT_EQ(NEBSourceControlErrorClassOfText(text), row.errorClass) << text;
            }
        }
    }
}

TEST(ErrorCatalogueRows, HaveNoSignInVain) {
    expectNoSignInVain(errorCatalogueRows(), "x: ");
}

TEST(ErrorCatalogueRows, OfGeneralTextsHaveNoSignInVain) {
    expectNoSignInVain(generalErrorCatalogueRows(), "fatal: ");
}

TEST(ErrorCatalogueRows, OfGeneralTextsTakeOnlyWhatGitSaysItself) {
    EXPECT_EQ(NEBSourceControlErrorClassOfText("error: could not write 'x'"),
              NEBSourceControlIOErrorClass);
    for (const char* text : {"lint: could not write 'x'", "warning: could not write 'x'",
                             "hint: could not write 'x'", "remote: error: could not write 'x'"}) {
        EXPECT_EQ(NEBSourceControlErrorClassOfText(text), NEBSourceControlUnknownErrorClass)
            << text;
    }
}

TEST(SaidByGitAtLength, TheCauseStandsAtTheBeginningOrAtTheEnd) {
    std::string lines;
    while (lines.size() < 1000000) {
        lines += "error: nothing that says why\n";
    }
    const std::string cause = "fatal: unable to write: No space left on device\n";
    EXPECT_EQ(NEBSourceControlErrorClassOfText(cause + lines), NEBSourceControlDiskFullErrorClass);
    EXPECT_EQ(NEBSourceControlErrorClassOfText(lines + cause), NEBSourceControlDiskFullErrorClass);
    EXPECT_EQ(NEBSourceControlErrorClassOfText(lines), NEBSourceControlUnknownErrorClass);
}

TEST(SaidByGitAtLength, WarningsAreLeftOutBeforeTheMiddleIs) {
    std::string warnings;
    while (warnings.size() < 1000000) {
        warnings += "warning: something else\n";
    }
    EXPECT_EQ(NEBSourceControlErrorClassOfText(warnings + "fatal: bad revision 'x'\n" + warnings),
              NEBSourceControlRevisionUnknownErrorClass);
}

}  // namespace
}  // namespace neb
