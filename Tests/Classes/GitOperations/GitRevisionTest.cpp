#include "GitOperations/GitRevision.h"

#include <gtest/gtest.h>

#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {
namespace {

TEST(AbbreviatedRevision, IsTheFirstTwelveCharacters) {
    EXPECT_EQ(gitAbbreviatedRevision(""), "");
    EXPECT_EQ(gitAbbreviatedRevision("0123456"), "0123456");
    EXPECT_EQ(gitAbbreviatedRevision("0123456789ab"), "0123456789ab");
    EXPECT_EQ(gitAbbreviatedRevision("0123456789abc"), "0123456789ab");
    EXPECT_EQ(gitAbbreviatedRevision(std::string(40, 'f')), std::string(12, 'f'));
    EXPECT_EQ(gitAbbreviatedRevision("ääääääääääääX"), "ääääääääääää") << "no half character";
}

TEST(SymbolicRevision, IsOneOfFourNames) {
    for (const NEBConstant name :
         {NEBSourceControlLocalRevisionName, NEBSourceControlInMemoryRevisionName,
          NEBSourceControlHEADRevisionName, NEBSourceControlBASERevisionName}) {
        EXPECT_TRUE(gitIsSymbolicRevision(name)) << name.text();
    }
    for (const NEBValue& other : {NEBValue("HEAD"), NEBValue(""), NEBValue(), NEBValue(0)}) {
        EXPECT_FALSE(gitIsSymbolicRevision(other));
    }
}

TEST(RevisionOfCommit, IsHEADForTwoOfThem) {
    EXPECT_EQ(gitRevisionOfCommit(NEBSourceControlHEADRevisionName), NEBValue("HEAD"));
    EXPECT_EQ(gitRevisionOfCommit(NEBSourceControlBASERevisionName), NEBValue("HEAD"));
    for (const NEBValue& other :
         {NEBValue(NEBSourceControlLocalRevisionName),
          NEBValue(NEBSourceControlInMemoryRevisionName), NEBValue("topic"), NEBValue()}) {
        EXPECT_EQ(gitRevisionOfCommit(other), other);
    }
}

}  // namespace
}  // namespace neb
