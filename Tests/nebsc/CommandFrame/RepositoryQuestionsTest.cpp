// The questions of the discovery, and its answers as bytes.

#include "CommandFrame/RepositoryQuestions.h"

#include <gmock/gmock.h>

namespace neb::nebsc {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

const std::string commit = "5e1c309dae7f45e0f39b1bf3ac3cd9db12e7d689";
const std::string other = "0123456789abcdef0123456789abcdef01234567";

ChildOutcome outcomeOf(int exitStatus, const std::string& output) {
    return {TerminationStatus::exited(exitStatus), output, {}};
}

TEST(RepositoryQuestions, AsksEverythingInOneCall) {
    EXPECT_THAT(argumentsFor({}, "/w"),
                ElementsAre("rev-parse", "--is-inside-work-tree", "--show-toplevel", "--verify",
                            "--quiet", "HEAD"));
    EXPECT_THAT(
        argumentsFor({.revisions = {"v1", "a"}, .asksUpstream = true}, "/w"),
        ElementsAre("rev-parse", "--is-inside-work-tree", "--show-toplevel", "HEAD", "v1^{commit}",
                    "a^{commit}", "--symbolic-full-name", "HEAD", "@{upstream}"));
    EXPECT_EQ(argumentsFor({.revisions = {"v1"}}, "/w\nx"), argumentsFor({}, "/w\nx"));
    const RepositoryQuestions many{.revisions = std::vector<std::string>(1000, "a")};
    EXPECT_LT(argumentsFor(many, "/w").size(), 20U);
}

TEST(RepositoryQuestions, ReadsTheBasicAnswers) {
    const RepositoryAnswers answers =
        answersIn(outcomeOf(0, "true\n/a\nb\n" + commit + "\n"), {}, "/a\nb");
    EXPECT_TRUE(answers.isRepository);
    EXPECT_EQ(answers.top, "/a\nb");
    EXPECT_EQ(answers.hasCommits, true);
    EXPECT_EQ(answersIn(outcomeOf(1, "true\n/a\n"), {}, "/a").hasCommits, false);
    EXPECT_EQ(answersIn(outcomeOf(128, "true\n/a\n"), {}, "/a").hasCommits, std::nullopt);
    const RepositoryAnswers bare = answersIn(outcomeOf(128, "false\n"), {}, "/a");
    EXPECT_TRUE(bare.isRepository);
    EXPECT_EQ(bare.top, std::nullopt);
    EXPECT_EQ(bare.hasCommits, std::nullopt);
    EXPECT_FALSE(answersIn(outcomeOf(128, ""), {}, "/a").isRepository);
}

TEST(RepositoryQuestions, ReadsAnswersUntilTheFirstThatIsMissing) {
    const RepositoryQuestions questions{.revisions = {"v1", "a.c", "v2"}, .asksBranch = true};
    const auto read = [&](int exitStatus, const std::string& rest) {
        return answersIn(outcomeOf(exitStatus, "true\n/w\n" + rest), questions, "/w/src");
    };
    const RepositoryAnswers file = read(128, commit + "\n" + other + "\na.c^{commit}\n");
    EXPECT_EQ(file.top, "/w");
    EXPECT_EQ(file.hasCommits, true);
    EXPECT_THAT(file.revisions.commits,
                UnorderedElementsAre(Pair("v1", other), Pair("a.c", std::nullopt)));
    EXPECT_EQ(file.revisions.head, std::nullopt);
    // A file named HEAD, and no commit: git repeats the remaining arguments.
    const RepositoryAnswers unborn = read(128, "HEAD\nv1^{commit}\n");
    EXPECT_EQ(unborn.hasCommits, std::nullopt);
    EXPECT_THAT(unborn.revisions.commits, IsEmpty());
    // A git that was killed has said nothing about the next revision.
    const RepositoryAnswers killed = answersIn(
        {TerminationStatus::signalled(9), "true\n/w\n" + commit + "\n", {}}, questions, "/w");
    EXPECT_THAT(killed.revisions.commits, IsEmpty());
}

TEST(RepositoryQuestions, ReadsTheBranchAndItsUpstream) {
    const auto read = [](int exitStatus, const std::string& rest) {
        return answersIn(outcomeOf(exitStatus, "true\n/w\n" + commit + "\n" + rest),
                         {.asksUpstream = true}, "/w")
            .revisions;
    };
    const RevisionAnswers both = read(0, "refs/heads/main\nrefs/remotes/origin/main\n");
    EXPECT_EQ(both.head, "refs/heads/main");
    EXPECT_EQ(both.upstream, "refs/remotes/origin/main");
    EXPECT_EQ(read(128, "refs/heads/main\n").head, "refs/heads/main");
    EXPECT_EQ(read(128, "refs/heads/main\n").upstream, std::nullopt);
    EXPECT_EQ(read(128, "HEAD\n").head, "HEAD");
    // One name is ambiguous, and it is not clear which one.
    EXPECT_EQ(read(0, "refs/remotes/origin/main\n").head, std::nullopt);
    EXPECT_EQ(read(128, "").head, std::nullopt);
}

TEST(RepositoryQuestions, ReadsTheBranchAlone) {
    const RepositoryQuestions questions{.asksBranch = true};
    EXPECT_THAT(argumentsFor(questions, "/w"),
                ElementsAre("rev-parse", "--is-inside-work-tree", "--show-toplevel", "HEAD",
                            "--symbolic-full-name", "HEAD"));
    const auto head = [&](int exitStatus, const std::string& rest) {
        return answersIn(outcomeOf(exitStatus, "true\n/w\n" + commit + "\n" + rest), questions,
                         "/w")
            .revisions.head;
    };
    EXPECT_EQ(head(0, "refs/heads/main\n"), "refs/heads/main");
    EXPECT_EQ(head(0, ""), std::nullopt);
    EXPECT_EQ(head(128, ""), std::nullopt);
}

TEST(RepositoryQuestions, SplitsRanges) {
    EXPECT_THAT(revisionsToAskFor("v1"), ElementsAre("v1"));
    EXPECT_THAT(revisionsToAskFor("a..b"), ElementsAre("a", "b"));
    EXPECT_THAT(revisionsToAskFor("a...b"), ElementsAre("a", "b"));
    EXPECT_THAT(revisionsToAskFor("..b"), ElementsAre("HEAD", "b"));
    EXPECT_THAT(revisionsToAskFor("a.."), ElementsAre("a", "HEAD"));
    for (const char* argument : {"", "..", "...", "-x", "^a", "a..-x", "a..^b", "a..b..c"}) {
        EXPECT_THAT(revisionsToAskFor(argument), IsEmpty()) << argument;
    }
}

}  // namespace
}  // namespace neb::nebsc
