#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"

#include <gmock/gmock.h>

#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "Support/ErrorTexts.h"
#include "Support/Matchers.h"

namespace neb {
namespace {

using test::HasErrorClass;
using test::IsSourceControlError;
using test::requestFor;

class Catalogue : public testing::TestWithParam<test::CatalogueText> {};

TEST_P(Catalogue, HasTheClassAndCodeOfTheText) {
    const auto error = NEBSourceControlErrorFromText(
        GetParam().text, *requestFor(NEBSourceControlRequestLog, std::nullopt));
    EXPECT_EQ(NEBSourceControlErrorClassOfText(GetParam().text), GetParam().errorClass);
    EXPECT_EQ(error.errorClass, GetParam().errorClass);
    EXPECT_EQ(error.code, GetParam().code);
    EXPECT_EQ(error.text, GetParam().text);
    const test::CatalogueText& expected = GetParam();
    const bool isText = error.errorClass == NEBSourceControlUnknownErrorClass ||
                        error.code == -200 || error.code == -300;
    const auto* known = NEBSourceControlErrorClassNamed(expected.errorClass);
    ASSERT_NE(known, nullptr) << expected.errorClass;
    EXPECT_EQ(error.localizedDescription(),
              expected.description != nullptr ? expected.description
              : isText                        ? expected.text
                       : formattedText(known->description, {std::string("demo")}));
    EXPECT_EQ(error.localizedRecoverySuggestion().value_or(""),
              expected.suggestion != nullptr ? expected.suggestion : known->advice);
}

INSTANTIATE_TEST_SUITE_P(Texts, Catalogue,
                         testing::ValuesIn(test::catalogueTexts().begin(),
                                           test::catalogueTexts().end()));

TEST(ErrorClasses, MessagesFromTheRemoteDoNotCount) {
    EXPECT_EQ(NEBSourceControlErrorClassOfText(
                  "remote: Permission denied\nremote: fatal: not a git repository\n"),
              NEBSourceControlUnknownErrorClass);
    EXPECT_EQ(NEBSourceControlErrorClassOfText(
                  "remote: error: Permission denied (publickey)\n ! [remote rejected] main -> main "
                  "(pre-receive hook declined)\n"),
              NEBSourceControlRemoteHookRefusedErrorClass);
    EXPECT_EQ(NEBSourceControlErrorClassOfText("the remote: not a git repository"),
              NEBSourceControlNotARepositoryErrorClass)
        << "only lines that begin with the prefix are from the remote";
}

TEST(ErrorClasses, AnErrorPrecedesWarningsAndHints) {
    EXPECT_EQ(NEBSourceControlErrorClassOfText(
                  "warning: unable to access '/h/.config/git/ignore': Permission denied\n"
                  "fatal: bad revision 'nosuch'\n"),
              NEBSourceControlRevisionUnknownErrorClass);
    EXPECT_EQ(
        NEBSourceControlErrorClassOfText("hint: CONFLICT (content)\nfatal: bad revision 'x'\n"),
        NEBSourceControlRevisionUnknownErrorClass);
}

TEST(ErrorClasses, NamesInQuotesDoNotCount) {
    const std::pair<const char*, std::string_view> texts[] = {
        {"fatal: pathspec 'sync conflict (1).txt' did not match any files",
         NEBSourceControlPathUnknownErrorClass},
        {"error: pathspec 'connection timed out' did not match any file(s) known to git",
         NEBSourceControlPathUnknownErrorClass},
        {"error: pathspec 'it's permission denied' did not match any file(s)",
         NEBSourceControlPathUnknownErrorClass},
        {"On branch main\nUntracked files:\n\tmy conflict (1).txt\n\nnothing added to commit",
         NEBSourceControlNothingToCommitErrorClass},
        {"To https://h/git-lfs/x.git\n ! [rejected]  a -> a (fetch first)\nerror: failed to push "
         "some refs to 'https://h/git-lfs/x.git'",
         NEBSourceControlRemoteAheadErrorClass},
        {"fatal: repository 'http://h/permission denied.git/' not found",
         NEBSourceControlRepositoryNotFoundErrorClass},
        {"lint: request timed out", NEBSourceControlUnknownErrorClass},
        {"error: something about 'permission denied'", NEBSourceControlUnknownErrorClass},
        {"fatal: couldn't find remote ref 'bad revision '",
         NEBSourceControlRemoteBranchUnknownErrorClass},
        {"error: 'permission denied without an end", NEBSourceControlPermissionDeniedErrorClass},
        {"On branch multi-pack-index\nnothing to commit, working tree clean",
         NEBSourceControlNothingToCommitErrorClass},
    };
    for (const auto& [text, errorClass] : texts) {
        EXPECT_EQ(NEBSourceControlErrorClassOfText(text), errorClass) << text;
    }
}

TEST(ErrorClasses, SubjectsOfCommitsDoNotCount) {
    const std::pair<const char*, std::string_view> texts[] = {
        {"error: could not apply 1db7596... handle No space left on device\n"
         "Could not apply 1db7596... handle No space left on device",
         NEBSourceControlConflictErrorClass},
        {"Rebasing (1/2)\rRebasing (2/2)\rerror: could not apply 1db7596... Permission denied",
         NEBSourceControlConflictErrorClass},
        {"dropping 1db7596 out of memory -- patch contents already upstream\n"
         "error: could not apply 2db7596... one",
         NEBSourceControlConflictErrorClass},
        {"Applying: handle Permission denied\nPatch failed at 0001 handle Permission denied\n"
         "CONFLICT (content): Merge conflict in f",
         NEBSourceControlConflictErrorClass},
        {"Previous HEAD position was 1db7596 Input/output error\nHEAD is now at 2db7596 early EOF\n"
         "error: pathspec 'x' did not match any file(s) known to git",
         NEBSourceControlPathUnknownErrorClass},
        {"error: could not revert 1db7596... Permission denied",
         NEBSourceControlMergeFailedErrorClass},
        {"Rebasing (1/1)\rfatal: bad pack compression level 'x'",
         NEBSourceControlConfigurationBrokenErrorClass},
    };
    for (const auto& [text, errorClass] : texts) {
        EXPECT_EQ(NEBSourceControlErrorClassOfText(text), errorClass) << text;
    }
}

TEST(ErrorClasses, ALineOfQuotesTakesLinearTime) {
    std::string text = "fatal: bad object x";
    for (int i = 0; i < 1000000; ++i) {
        text += " 'a";  // opening quotes without a closing one
    }
    EXPECT_EQ(NEBSourceControlErrorClassOfText(text), NEBSourceControlRevisionUnknownErrorClass);
    EXPECT_EQ(NEBSourceControlErrorClassOfText("'"), NEBSourceControlUnknownErrorClass);
    EXPECT_EQ(NEBSourceControlErrorClassOfText("''"), NEBSourceControlUnknownErrorClass);
}

TEST(ErrorClasses, ThePartsOfAPatternMatchInOrder) {
    EXPECT_EQ(NEBSourceControlErrorClassOfText("does not match any src refspec "),
              NEBSourceControlUnknownErrorClass);
    EXPECT_EQ(NEBSourceControlErrorClassOfText("remote:fatal: not a git repository"),
              NEBSourceControlUnknownErrorClass);
}

TEST(ErrorClasses, ACausePrecedesItsConsequences) {
    EXPECT_EQ(NEBSourceControlErrorClassOfText("fatal: Could not read from remote repository.\n"
                                               "ssh: connect to host h port 1: Connection refused"),
              NEBSourceControlHostUnreachableErrorClass);
}

TEST(ErrorClasses, AnEmptyTextHasNoClass) {
    EXPECT_EQ(NEBSourceControlErrorClassOfText(""), NEBSourceControlUnknownErrorClass);
    EXPECT_EQ(NEBSourceControlErrorClassOfText("\n\n"), NEBSourceControlUnknownErrorClass);
    EXPECT_EQ(NEBSourceControlErrorClassOfText(std::string("\0\xFF\n", 3)),
              NEBSourceControlUnknownErrorClass);
}

}  // namespace
}  // namespace neb
