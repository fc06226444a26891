// The answers of `nebsc stage --patch` that go to another change.

#include "nebsc/Commands/HunkTest.h"

namespace neb::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// Three hunks, which change the lines 3, 20 and 37.
class HunkNavigation : public HunkTest {
protected:
    void SetUp() override { change("a", {3, 20, 37}); }

    void expectStaged(const std::string& answers, const std::vector<int>& lines) const {
        const NebscOutcome outcome = answering({"stage", "-p"}, answers);
        EXPECT_EQ(outcome.errors, "") << answers;
        EXPECT_EQ(content("a"), numberedLines(lines)) << answers << outcome.output;
        repository.git({"reset", "--quiet"});
    }
};

TEST_F(HunkNavigation, LeavesAHunkUndecidedAndComesBackToIt) {
    expectStaged("j\ny\nn\ny\n", {3, 20});
    expectStaged("J\ny\nn\nn\n", {20});
    expectStaged("j\nj\ny\nn\ny\n", {20, 37});
    expectStaged("j\nj\nk\ny\nq\n", {20});
    expectStaged("J\nJ\nK\nK\ny\nq\n", {3});
}

TEST_F(HunkNavigation, TheRestOfAFileIsWhatIsUndecided) {
    expectStaged("j\na\nn\n", {20, 37});
    expectStaged("j\nd\ny\n", {3});
    expectStaged("j\nj\nn\nj\nK\na\n", {3, 20});
}

TEST_F(HunkNavigation, ADecisionCanBeChanged) {
    const NebscOutcome outcome = answering({"stage", "-p"}, "y\nK\nn\nK\ny\ny\nn\n");
    EXPECT_THAT(outcome.output,
                AllOf(HasSubstr("(1/3) Stage this hunk [y,n,q,a,d,j,J,g,/,?]? @@ -17"),
                      HasSubstr("(2/3) Stage this hunk [y,n,q,a,d,K,j,J,g,/,?]? @@ -1,6"),
                      HasSubstr("(1/3) Stage this hunk (was: y) [y,n,q,a,d,j,J,g,/,?]? @@ -17"),
                      HasSubstr("(1/3) Stage this hunk (was: n) [")));
    EXPECT_EQ(content("a"), numberedLines({3, 20}));
}

TEST_F(HunkNavigation, OffersOnlyTheKeysThatWork) {
    const NebscOutcome outcome = answering({"stage", "-p"}, "k\nK\nj\nj\nj\nJ\n?\nq\n");
    EXPECT_THAT(
        outcome.output,
        AllOf(HasSubstr("(2/3) Stage this hunk [y,n,q,a,d,k,K,j,J,g,/,?]? @@ -34"),
              HasSubstr("(3/3) Stage this hunk [y,n,q,a,d,k,K,g,/,?]? y - stage this hunk\n"),
              HasSubstr("k - leave this hunk undecided, go to the previous undecided one\n"
                        "K - leave this hunk undecided, go to the previous one\n"
                        "g - go to the change with a number\n"
                        "/ - search for a change that matches a regular expression\n"
                        "? - show this help\n"),
              Not(HasSubstr("(3/3) Stage this hunk [y,n,q,a,d,k,K,j"))));
    EXPECT_EQ(content("a"), numberedLines({}));
    repository.write("a", numberedLines({3}));
    EXPECT_THAT(answering({"stage", "-p"}, "j\nJ\nk\nK\ng\n/x\n").output,
                Not(HasSubstr("undecided")));
}

TEST_F(HunkNavigation, GoesToANumber) {
    expectStaged("g3\ny\nq\n", {37});
    expectStaged("G 2\ny\nq\n", {20});
    expectStaged("g\n2\ny\nq\n", {20});
    expectStaged("g\n\ny\nq\n", {3});
    for (const char* number : {"0", "4", "x", "2x", "-1", "99999999999999999999"}) {
        EXPECT_THAT(answering({"stage", "-p"}, "g" + std::string(number) + "\nq\n").output,
                    HasSubstr("'" + std::string(number) + "' is not a number from 1 to 3.\n@@ -1"));
    }
    EXPECT_THAT(answering({"stage", "-p"}, "y\nn\ng\n").output,
                HasSubstr("?]? +1: -1,6 +1,6  -line 3\n-2: -17,7 +17,7  -line 20\n"
                          " 3: -34,7 +34,7  -line 37\nGo to the change with the number: \n"));
    repository.git({"reset", "--quiet"});
}

TEST_F(HunkNavigation, SearchesForAHunk) {
    expectStaged("/line 35\ny\nq\n", {37});
    expectStaged("/^-line (20|21)$\ny\nq\n", {20});
    expectStaged("/changed\n/changed\ny\nq\n", {37});
    expectStaged("/^@@ -1,\ny\nq\n", {3});
    expectStaged("/\nline 35\ny\nq\n", {37});
    expectStaged("/\n\ny\nq\n", {3});
    EXPECT_THAT(answering({"stage", "-p"}, "/no such\n/(\nq\n").output,
                AllOf(HasSubstr("No change in the file matches 'no such'.\n@@ -1"),
                      HasSubstr("'(' is no regular expression: ")));
}

TEST_F(HunkNavigation, TheEndOfTheInputIsNoAnswer) {
    for (const char* answers : {"y\ng", "y\n/"}) {
        expectStaged(answers, {3});
    }
}

TEST_F(HunkNavigation, SearchesInLinesWithNULBytes) {
    std::string bytes(9000, 'x');
    bytes += "\n1\n2\n3\n4\n5\n6\n7\n8\n";
    repository.commitFile("b", bytes);
    repository.write("b", "first\n" + bytes + std::string("\0NUL\nlast\n", 10));
    EXPECT_THAT(answering({"stage", "-p", "b"}, "/last\ny\nq\n").errors, "");
    EXPECT_THAT(content("b"), AllOf(Not(HasSubstr("first")), HasSubstr("last")));
}

}  // namespace
}  // namespace neb::test
