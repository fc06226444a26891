#include "GitOperations/GitCommit.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

#include <filesystem>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

namespace fs = std::filesystem;
using test::HasErrorClass;
using test::IsSourceControlError;
using test::perform;
using test::requestFor;
using test::TestRepository;
using test::valuesOf;
using testing::ElementsAre;
using testing::HasSubstr;

using Options = std::optional<NEBDictionary>;

std::shared_ptr<NEBSourceControlRequest> commitRequest(
    Options options, std::optional<std::vector<NEBValue>> files = {},
    const std::string& location = "/w") {
    auto made = requestFor(NEBSourceControlRequestCommit, location);
    made->options = std::move(options);
    made->files = std::move(files);
    return made;
}

NEBDictionary message(const std::string& text) {
    return {{NEBSourceControlRequestOptionMessage, text}};
}

// ---- the command line -------------------------------------------------------------------------

TEST(CommitArguments, HaveTheMessageAndTheFiles) {
    EXPECT_THAT(GitCommitOperation(commitRequest(message("two\nlines"), valuesOf({"/w/a", "-b"})))
                    .arguments(),
                ElementsAre("commit", "-m", "two\nlines", "--", "/w/a", "-b"));
    EXPECT_THAT(GitCommitOperation(commitRequest(message("all"))).arguments(),
                ElementsAre("commit", "-m", "all", "--"));
    EXPECT_THAT(GitCommitOperation(commitRequest(message(""))).arguments(),
                ElementsAre("commit", "-m", "", "--"));
}

TEST(CommitArguments, OmitTheFilesWithoutAMessage) {
    EXPECT_THAT(GitCommitOperation(commitRequest(std::nullopt, valuesOf({"/w/a"}))).arguments(),
                ElementsAre("commit"));
    EXPECT_THAT(
        GitCommitOperation(
            commitRequest(NEBDictionary{{NEBSourceControlRequestOptionAllowEmptyCommit, true}},
                          valuesOf({"/w/a"})))
            .arguments(),
        ElementsAre("commit", "--allow-empty"));
}

TEST(CommitArguments, AllowAnEmptyCommitWhenTheOptionIsTrue) {
    for (const auto& [value, isAllowed] : {std::pair{NEBValue(true), true},
                                           {NEBValue(1), true},
                                           {NEBValue("yes"), true},
                                           {NEBValue(false), false},
                                           {NEBValue(0), false},
                                           {NEBValue("no"), false}}) {
        NEBDictionary options = message("m");
        options.set(NEBSourceControlRequestOptionAllowEmptyCommit, value);
        const auto arguments = GitCommitOperation(commitRequest(options)).arguments();
        EXPECT_EQ(arguments[1] == "--allow-empty", isAllowed) << value.description();
    }
}

TEST(CommitArguments, FollowTheDefaultArguments) {
    EXPECT_THAT(GitCommitOperation(commitRequest(NEBDictionary{
                                       {NEBSourceControlRequestOptionRepositoryPath, "/r/.git"},
                                       {NEBSourceControlRequestOptionWorkingCopyPath, "/r"},
                                       {NEBSourceControlRequestOptionMessage, "m"}}))
                    .arguments(),
                ElementsAre("--git-dir=/r/.git", "--work-tree=/r", "commit", "-m", "m", "--"));
}

// ---- what git prints --------------------------------------------------------------------------

std::string revisionIn(const std::string& output) {
    GitCommitOperation operation(commitRequest(message("m")));
    operation.setData(output);
    operation.parseData();
    if (!operation.result()) {
        return "(no result)";
    }
    EXPECT_EQ(operation.result()->size(), 1U);
    EXPECT_EQ(operation.result()->front().size(), 1U);
    return std::string(
        *operation.result()->front().value(NEBSourceControlOperationRevisionKey).string());
}

TEST(CommitOutput, HasTheRevisionAsSecondWord) {
    EXPECT_EQ(revisionIn("[main 0123456] a message\n 1 file changed, 1 insertion(+)\n"), "0123456");
    EXPECT_EQ(revisionIn("[main 0123456]\n"), "0123456") << "the one line's end is dropped";
    EXPECT_EQ(revisionIn("[zwölf/日 " + std::string(40, 'a') + "] m\n x\n"), std::string(12, 'a'));
    EXPECT_EQ(revisionIn("a  b"), "") << "two blanks: the second piece is empty";
    EXPECT_EQ(revisionIn("a [[]b[]"), "b");
    EXPECT_EQ(revisionIn("a [[0123456789ab] x"), "0123456789ab") << "trimmed before it is cut";
}

/// git prints a mark between branch and id for the first commit. The second word is used anyway,
/// cut to 12 characters: hosts have always received this text.
TEST(CommitOutput, OfTheFirstCommitHasItsMarkAsRevision) {
    EXPECT_EQ(revisionIn("[main (root-commit) 2f0f8a1] root\n 1 file changed\n"), "(root-commit");
}

/// The branch is printed as two words then, the second of which becomes the revision.
TEST(CommitOutput, OfADetachedHEADIsHEAD) {
    EXPECT_EQ(revisionIn("[detached HEAD 5eded5f] d\n 1 file changed\n"), "HEAD");
}

TEST(CommitOutput, OfOneWordClearsTheResult) {
    GitCommitOperation operation(commitRequest(message("m")));
    operation.setResult(NEBSourceControlResult{});
    operation.parseData();
    EXPECT_TRUE(operation.result().has_value()) << "no output object";
    operation.setData("");
    operation.parseData();
    EXPECT_TRUE(operation.result().has_value()) << "empty output";
    operation.setData("U\ta.txt\n");
    operation.parseData();
    EXPECT_FALSE(operation.result().has_value());
}

// ---- real repositories ------------------------------------------------------------------------

class CommitInRepository : public test::HygienicTest {
protected:
    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> commit(
        Options options, const std::vector<std::string>& names = {}) const {
        std::vector<NEBValue> files;
        for (const std::string& name : names) {
            files.emplace_back(repository.path(name));
        }
        return perform(commitRequest(std::move(options), files, repository.path()));
    }
    [[nodiscard]] std::string head() const { return repository.git({"rev-parse", "HEAD"}); }
    void hook(const std::string& name, const std::string& script) const {
        const std::string path = ".git/hooks/" + name;
        repository.write(path, "#!/bin/sh\n" + script + "\n");
        fs::permissions(repository.path(path), fs::perms(0755));
    }

    TestRepository repository;
};

TEST_F(CommitInRepository, CommitsStagedChanges) {
    repository.commitFile("a", "1");
    repository.write("a", "2");
    repository.write("b", "unstaged");
    repository.git({"add", "a"});
    const auto operation = commit(message("Grüße\n\nmore"));
    EXPECT_EQ(operation->error(), std::nullopt);
    const std::string revision(
        *operation->result()->front().value(NEBSourceControlOperationRevisionKey).string());
    EXPECT_EQ(head().substr(0, revision.size()), revision);
    EXPECT_GE(revision.size(), 7U);
    EXPECT_EQ(repository.git({"log", "-1", "--format=%B"}), "Grüße\n\nmore\n\n");
    EXPECT_EQ(repository.git({"status", "--porcelain"}), "?? b\n");
}

TEST_F(CommitInRepository, CommitsOnlyTheNamedFiles) {
    repository.commitFile("a", "1");
    repository.commitFile("b", "1");
    repository.write("a", "2");
    repository.write("b", "2");
    EXPECT_EQ(commit(message("m"), {"a"})->error(), std::nullopt);
    EXPECT_EQ(repository.git({"status", "--porcelain"}), " M b\n");
}

TEST_F(CommitInRepository, CommitsNothingIfAllowed) {
    repository.commitFile("a", "1");
    const std::string before = head();
    NEBDictionary options = message("empty");
    options.set(NEBSourceControlRequestOptionAllowEmptyCommit, true);
    EXPECT_EQ(commit(options)->error(), std::nullopt);
    EXPECT_NE(head(), before);
}

TEST_F(CommitInRepository, ReportsNothingToCommit) {
    repository.commitFile("a", "1");
    const std::string before = head();
    EXPECT_THAT(commit(message("m"))->error(),
                IsSourceControlError(-1, "There is nothing to commit."));
    repository.write("b", "new");
    EXPECT_THAT(commit(message("m"))->error(),
                IsSourceControlError(-1, HasSubstr("there are only untracked files")));
    repository.write("a", "2");
    const auto operation = commit(message("m"));
    EXPECT_THAT(operation->error(), IsSourceControlError(-1, HasSubstr("no changes are staged")));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlNothingToCommitErrorClass));
    EXPECT_EQ(operation->result(), std::nullopt) << "the first words name no commit";
    EXPECT_THAT(*operation->error()->text, HasSubstr("modified:   a")) << "the output of git";
    EXPECT_EQ(head(), before);
}

TEST_F(CommitInRepository, FailsWithoutAMessageAndOpensNoEditor) {
    repository.commitFile("a", "1");
    repository.write("a", "2");
    repository.git({"add", "a"});
    repository.git({"config", "core.editor", "sleep 600; true"});
    const std::string before = head();
    for (const Options& options : {Options(), Options(message(""))}) {
        const auto operation = commit(options);
        EXPECT_THAT(operation->error(),
                    IsSourceControlError(-1, "The commit has no message; nothing was committed."));
        EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlMessageEmptyErrorClass));
    }
    EXPECT_EQ(head(), before);
}

TEST_F(CommitInRepository, ReportsAMissingIdentity) {
    repository.git({"config", "user.useConfigOnly", "true"});
    repository.git({"config", "user.name", ""});
    repository.write("a", "1");
    repository.git({"add", "a"});
    const auto operation = commit(message("m"));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlIdentityUnknownErrorClass));
    EXPECT_THAT(operation->error(),
                IsSourceControlError(-1, HasSubstr("your name or your e-mail address")));
    EXPECT_THAT(*operation->error()->localizedRecoverySuggestion(), HasSubstr("user.email"));
}

TEST_F(CommitInRepository, ReportsAHookThatRefusesWithItsOutput) {
    repository.write("a", "1");
    repository.git({"add", "a"});
    hook("pre-commit", "echo 'Tabs in a, line 1'; exit 1");
    auto operation = commit(message("m"));
    EXPECT_THAT(operation->error(),
                IsSourceControlError(-1, "A hook of the repository refused the commit."));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlLocalHookRefusedErrorClass));
    EXPECT_EQ(operation->error()->text, "Tabs in a, line 1");

    hook("pre-commit", "exit 1");
    operation = commit(message("m"));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlLocalHookRefusedErrorClass))
        << "not a word";
    EXPECT_EQ(operation->error()->text, std::nullopt);

    hook("pre-commit", "exit 0");
    hook("commit-msg", "echo 'No ticket named' >&2; exit 3");
    operation = commit(message("m"));
    EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlLocalHookRefusedErrorClass));
    EXPECT_NE(repository.gitStatus({"rev-parse", "--verify", "-q", "HEAD"}), 0) << "committed";
}

/// The output of hooks is not an error of a successful commit either.
TEST_F(CommitInRepository, TakesNoClassFromTheOutputOfAHook) {
    repository.commitFile("z", "z");
    repository.write("a", "1");
    repository.git({"add", "a"});
    for (const char* words :
         {"lint.sh: permission denied", "nothing to commit", "Conflict (marker) found in a",
          "ssh: connect to host h: Connection refused", "fatal: not a git repository",
          "Already up to date", "error: lint failed"}) {
        hook("pre-commit", std::string("echo '") + words + "'; exit 1");
        const auto refused = commit(message("m"));
        EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlLocalHookRefusedErrorClass))
            << words;
        EXPECT_EQ(refused->error()->code, -1) << words;
        EXPECT_EQ(refused->error()->text, words);
        hook("pre-commit", std::string("echo '") + words + "'");
        NEBDictionary options = message("m");
        options.set(NEBSourceControlRequestOptionAllowEmptyCommit, true);
        EXPECT_EQ(commit(options)->error(), std::nullopt) << words;
    }
}

TEST_F(CommitInRepository, TakesTheCodeOfARefusalFromTheErrorTable) {
    repository.write("a", "1");
    repository.git({"add", "a"});
    const std::pair<const char*, std::pair<std::int64_t, const char*>> texts[] = {
        {"./lint.sh: Permission denied",
         {-21, "Authentication failed because the name or password was incorrect."}},
        {"fatal: path not found", {4, "This file does not exist at the requested revision."}},
    };
    for (const auto& [words, expected] : texts) {
        hook("pre-commit", std::string("echo '") + words + "'; exit 1");
        const auto refused = commit(message("m"));
        EXPECT_THAT(refused->error(), IsSourceControlError(expected.first, expected.second));
        EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlLocalHookRefusedErrorClass))
            << words;
        EXPECT_EQ(refused->error()->text, words);
    }
}

TEST_F(CommitInRepository, IgnoresTheOutputOfAHookThatAgrees) {
    repository.commitFile("z", "z");
    repository.write("a", "1");
    repository.git({"add", "a"});
    hook("pre-commit", "echo 'error: all is well' >&2");
    EXPECT_EQ(commit(message("m"))->error(), std::nullopt);
    // … and is not the cause of later failures.
    EXPECT_THAT(commit(message("m"))->error(),
                HasErrorClass(NEBSourceControlNothingToCommitErrorClass));
    hook("pre-commit", "echo fine >&2");
    EXPECT_THAT(commit(message("m"))->error(),
                HasErrorClass(NEBSourceControlNothingToCommitErrorClass));
}

/// git must flush each answer.
TEST_F(CommitInRepository, LetsAHookCommunicateWithItsGit) {
    repository.write("a", "1");
    repository.git({"add", "a"});
    const std::string in = repository.path(".git/in");
    const std::string out = repository.path(".git/out");
    hook("pre-commit", "mkfifo '" + in + "' '" + out +
                           "'\n"
                           "git hash-object --stdin-paths <'" +
                           in + "' >'" + out +
                           "' &\n"
                           "exec 3>'" +
                           in + "' 4<'" + out +
                           "'\n"
                           "echo a >&3\nread name <&4\necho a >&3\nread name <&4\nexec 3>&-\nwait");
    EXPECT_EQ(commit(message("m"))->error(), std::nullopt);
}

TEST_F(CommitInRepository, ReportsAnUnknownFileAndAnUnfinishedMerge) {
    repository.commitFile("a", "1");
    EXPECT_THAT(commit(message("m"), {"nothing"})->error(),
                HasErrorClass(NEBSourceControlPathUnknownErrorClass));
    repository.git({"checkout", "-q", "-b", "topic"});
    repository.commitFile("a", "topic");
    repository.git({"checkout", "-q", "main"});
    repository.commitFile("a", "main");
    EXPECT_NE(repository.gitStatus({"merge", "-q", "topic"}), 0);
    EXPECT_THAT(commit(message("m"))->error(),
                HasErrorClass(NEBSourceControlConflictUnresolvedErrorClass));
    EXPECT_EQ(commit(message("m"))->result(), std::nullopt);
    repository.write("a", "settled");
    repository.git({"add", "a"});
    EXPECT_THAT(commit(message("m"), {"a"})->error(),
                HasErrorClass(NEBSourceControlMergeUnfinishedErrorClass));
    EXPECT_EQ(commit(std::nullopt)->error(), std::nullopt) << "with the message git has prepared";
}

}  // namespace
}  // namespace neb
