// `nebsc status --short`, run as a program; StateCommandTest.cpp has the other forms.

#include <gmock/gmock.h>
#include <signal.h>

#include <filesystem>

#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using JSON = nlohmann::ordered_json;

/// A working copy with every state that is easy to create.
class StatusCommand : public testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"changed.c", "gone.c", "old name.c", "src/deep.c", "clean.c"}) {
            repository.commitFile(name, std::string("the content of ") + name + "\n");
        }
        repository.write("changed.c", "other\n");
        repository.write("src/deep.c", "other\n");
        fs::remove(repository.path("gone.c"));
        repository.git({"mv", "old name.c", "new name.c"});
        repository.write("Grüße.txt", "new");
        repository.git({"add", "Grüße.txt"});
        repository.write("src/new/a", "a");
    }

    [[nodiscard]] NebscOutcome status(std::vector<std::string> arguments,
                                      const std::string& folder = "") const {
        arguments.insert(arguments.begin(), {"status", "--short"});
        return runNebsc(arguments, {.folder = repository.path(folder)});
    }

    TestRepository repository;
};

TEST_F(StatusCommand, ShowsEachStateAndPathFromTheTop) {
    const NebscOutcome outcome = status({});
    EXPECT_EQ(outcome.output,
              "added      Grüße.txt\n"
              "modified   changed.c\n"
              "deleted    gone.c\n"
              "renamed    old name.c -> new name.c\n"
              "modified   src/deep.c\n"
              "untracked  src/new/\n");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(StatusCommand, ShowsPathsRelativeToTheCurrentFolder) {
    EXPECT_EQ(status({}, "src").output,
              "added      ../Grüße.txt\n"
              "modified   ../changed.c\n"
              "deleted    ../gone.c\n"
              "renamed    ../old name.c -> ../new name.c\n"
              "modified   deep.c\n"
              "untracked  new/\n");
    EXPECT_EQ(status({"."}, "src/new").output, "untracked  ./\n");
}

TEST_F(StatusCommand, LimitsTheStatusToAPath) {
    EXPECT_EQ(status({"changed.c"}).output, "modified   changed.c\n");
    EXPECT_EQ(status({"."}, "src").output, "modified   deep.c\nuntracked  new/\n");
    EXPECT_EQ(status({"../changed.c"}, "src").output, "modified   ../changed.c\n");
    EXPECT_EQ(status({repository.path("src/")}).output,
              "modified   src/deep.c\nuntracked  src/new/\n");
    EXPECT_EQ(status({"src/nowhere/../deep.c"}).output, "modified   src/deep.c\n");
}

TEST_F(StatusCommand, TheTopStandsForTheWholeWorkingCopy) {
    EXPECT_EQ(status({".."}, "src").output, status({}, "src").output);
    EXPECT_TRUE(
        runNebsc({"--json", "status", repository.path() + "/"}).json()["command"]["arguments"] ==
        JSON({"status", "--porcelain"}));
}

TEST_F(StatusCommand, ShowsAbsolutePathsInAnotherWorkingCopy) {
    const TemporaryFolder elsewhere;
    const NebscOutcome outcome =
        runNebsc({"status", "--short", repository.path("src")}, {.folder = elsewhere.path()});
    EXPECT_EQ(outcome.output, "modified   " + repository.path("src/deep.c") + "\nuntracked  " +
                                  repository.path("src/new/") + "\n");
}

TEST_F(StatusCommand, FindsTheWorkingCopyOfADeletedFile) {
    repository.commitFile("a/b/c.c", "c");
    fs::remove_all(repository.path("a"));
    EXPECT_EQ(status({"gone.c"}).output, "deleted    gone.c\n");
    EXPECT_EQ(status({"a/b/c.c"}).output, "deleted    a/b/c.c\n");
    EXPECT_EQ(status({"../a/b/"}, "src").output, "deleted    ../a/b/c.c\n");
}

TEST_F(StatusCommand, AFolderOutsideTheSparseCheckoutHasNoChanges) {
    repository.commitFile("left/l.c", "l");
    repository.commitFile("right/r.c", "r");
    repository.git({"checkout", "--quiet", "--force", "HEAD", "--", "."});
    repository.git({"sparse-checkout", "set", "--cone", "left"});
    ASSERT_FALSE(fs::exists(repository.path("right")));
    for (const char* path : {"right", "right/r.c"}) {
        const NebscOutcome outcome = status({path});
        EXPECT_EQ(outcome.output, "No changes in '" + std::string(path) + "'.\n");
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(outcome.exitStatus, 0);
    }
}

TEST_F(StatusCommand, ReportsAMissingPath) {
    const NebscOutcome outcome = status({"no/such.c"});
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors,
              "nebsc: 'no/such.c' exists neither on disk nor in the index of the working copy "
              "'repository'\n");
    EXPECT_EQ(outcome.exitStatus, 1);
    const NebscOutcome json = status({"--json", "no/such.c"});
    EXPECT_EQ(json.json()["result"], JSON::array());
    EXPECT_EQ(json.errors, outcome.errors);
    EXPECT_EQ(json.exitStatus, 1);
}

TEST_F(StatusCommand, ReportsThatThereAreNoChanges) {
    const NebscOutcome file = status({"clean.c"});
    EXPECT_EQ(file.output, "No changes in 'clean.c'.\n");
    EXPECT_EQ(file.exitStatus, 0);
    repository.git({"add", "--all"});
    repository.git({"commit", "--quiet", "-m", "all"});
    const NebscOutcome whole = status({}, "src");
    EXPECT_EQ(whole.output, "No changes in the working copy 'repository'.\n");
    EXPECT_EQ(whole.errors, "");
    EXPECT_EQ(whole.exitStatus, 0);
}

TEST_F(StatusCommand, ShowsConflicts) {
    repository.git({"reset", "--quiet", "--hard"});
    repository.git({"checkout", "--quiet", "-b", "topic"});
    repository.commitFile("clean.c", "topic\n");
    repository.git({"checkout", "--quiet", "main"});
    repository.commitFile("clean.c", "main\n");
    EXPECT_EQ(repository.gitStatus({"merge", "topic"}), 1);
    EXPECT_EQ(status({"clean.c"}).output, "conflict   clean.c (both modified)\n");
}

/// The stages of the index are 1 for the common ancestor, 2 for our side, 3 for theirs.
TEST_F(StatusCommand, ShowsTheKindOfEachConflict) {
    const std::string blob = repository.git({"rev-parse", "HEAD:clean.c"}).substr(0, 40);
    const std::pair<const char*, const char*> stagesOfNames[] = {
        {"DD", "1"},  {"AU", "2"},  {"UD", "12"}, {"UA", "3"},
        {"DU", "13"}, {"AA", "23"}, {"UU", "123"}};
    repository.git({"reset", "--quiet", "--hard"});
    fs::remove_all(repository.path("src/new"));
    std::string index;
    for (const auto& [name, stages] : stagesOfNames) {
        for (const char stage : std::string(stages)) {
            index.append("100644 " + blob + " ").append(1, stage).append("\t").append(name);
            index += "\n";
        }
    }
    repository.write(".git/new-index", index);
    ASSERT_EQ(runProgram("/bin/sh", {"-c", "git update-index --index-info < .git/new-index"},
                         {.folder = repository.path()})
                  .exitStatus,
              0);
    EXPECT_EQ(status({}).output,
              "conflict   AA (both added)\n"
              "conflict   AU (added by us)\n"
              "conflict   DD (both deleted)\n"
              "conflict   DU (deleted by us)\n"
              "conflict   UA (added by them)\n"
              "conflict   UD (deleted by them)\n"
              "conflict   UU (both modified)\n");
    const JSON records = status({"--json"}).json()["result"];
    ASSERT_EQ(records.size(), 7U);
    EXPECT_EQ(records[0]["NEBSourceControlOperationWCStatusKey"], 1) << "as the contract has it";
    EXPECT_EQ(records[2]["NEBSourceControlOperationWCStatusKey"], 2);
}

TEST_F(StatusCommand, ShowsUnusualNames) {
    repository.git({"reset", "--quiet", "--hard"});
    fs::remove_all(repository.path("src/new"));
    for (const char* name : {"a -> b", "\"q\"", " lead and trail ", "back\\slash", "tab\t"}) {
        repository.write(name, "");
    }
    repository.git({"mv", "clean.c", "x -> 'y'"});
    EXPECT_EQ(status({}).output,
              "renamed    clean.c -> x -> 'y'\n"
              "untracked   lead and trail \n"
              "untracked  \"q\"\n"
              "untracked  a -> b\n"
              "untracked  back\\slash\n"
              "untracked  tab\\t\n");
}

TEST_F(StatusCommand, ExpandsUntrackedFolders) {
    repository.write("src/new/deep/b", "b");
    EXPECT_EQ(status({"src/new"}).output, "untracked  src/new/\n");
    EXPECT_EQ(status({"--all", "src/new"}).output,
              "untracked  src/new/a\nuntracked  src/new/deep/b\n");
    EXPECT_THAT(status({"--all"}).output, HasSubstr("modified   src/deep.c\n"));
    const JSON json = status({"--all", "--json", "src/new"}).json();
    EXPECT_EQ(json["type"], NEBSourceControlRequestStatus);
    EXPECT_EQ(json["operation"], "StatusQuery");
    ASSERT_EQ(json["result"].size(), 2U);
    EXPECT_EQ(json["result"][1],
              JSON({{"NEBSourceControlOperationWCStatusKey", 256},
                    {"NEBSourceControlOperationPathKey", repository.path("src/new/deep/b")}}));
}

TEST_F(StatusCommand, ReportsAnUnreadableFolderBesideTheChanges) {
    const StandInGit git(repository.path(),
                         "printf ' M a.c\\0'; echo \"warning: could not open directory 'p/': "
                         "Permission denied\" >&2");
    const NebscOutcome outcome =
        runNebsc({"status", "--short"}, {.folder = repository.path(), .variables = {git.path()}});
    EXPECT_EQ(outcome.output, "modified   a.c\n");
    EXPECT_THAT(outcome.errors, HasSubstr("'p/'"));
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST_F(StatusCommand, JSONPrintsOnlyTheOutcome) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"status", "--json", "deep.c"},
          std::vector<std::string>{"--json", "status", "deep.c"}}) {
        const NebscOutcome outcome = runNebsc(arguments, {.folder = repository.path("src")});
        const JSON json = outcome.json();
        EXPECT_EQ(json["type"], NEBSourceControlRequestStatus);
        EXPECT_EQ(json["command"]["arguments"],
                  JSON({"status", "--porcelain", "--", repository.path("src/deep.c")}));
        EXPECT_EQ(json["command"]["currentDirectoryPath"], repository.path());
        ASSERT_EQ(json["result"].size(), 1U);
        EXPECT_EQ(json["result"][0]["NEBSourceControlOperationPathKey"],
                  repository.path("src/deep.c"));
        EXPECT_EQ(outcome.exitStatus, 0);
    }
}

TEST_F(StatusCommand, AcceptsPathsThatLookLikeCommandsOrOptions) {
    repository.write("types", "");
    repository.write("--json", "");
    repository.write("[a]", "");
    EXPECT_EQ(status({"types"}).output, "untracked  types\n");
    EXPECT_EQ(status({"--", "--json"}).output, "untracked  --json\n");
    EXPECT_EQ(status({"[a]"}).output, "untracked  [a]\n");
}

TEST_F(StatusCommand, EscapesControlCharactersInNames) {
    repository.write("red\x1b[31m.c", "");
    repository.write("next\nline", "");
    const NebscOutcome outcome = status({});
    EXPECT_THAT(outcome.output, HasSubstr("untracked  red\\x1b[31m.c\n"));
    EXPECT_THAT(outcome.output, HasSubstr("untracked  next\\nline\n"));
    const NebscOutcome missing = status({"\x1b[2J\n\xC2\x9B"});
    EXPECT_THAT(missing.errors, HasSubstr("'\\x1b[2J\\n\\u009b'"));
}

TEST_F(StatusCommand, EscapesControlCharactersInTheOutputOfGit) {
    const StandInGit git(repository.path(),
                         R"(printf ' M a\033[31m\177.c\0?? b\302\233\344.c\0!! no\0X  odd.c\0')");
    const NebscOutcome outcome =
        runNebsc({"status", "--short"}, {.folder = repository.path(), .variables = {git.path()}});
    EXPECT_EQ(outcome.output,
              "modified   a\\x1b[31m\\x7f.c\n"
              "untracked  b\\u009b\\xe4.c\n"
              "changed    odd.c\n");
}

TEST_F(StatusCommand, AcceptsAPathThatIsNotUTF8) {
    repository.write("lat\xE4.c", "");
    const NebscOutcome outcome = status({"lat\xE4.c"});
    EXPECT_EQ(outcome.output, "untracked  lat\\xe4.c\n");
    EXPECT_EQ(status({"--json", "lat\xE4.c"}).exitStatus, 0);
    const JSON all = status({"--all", "--json", "lat\xE4.c"}).json()["result"];
    EXPECT_EQ(all[0]["NEBSourceControlOperationPathKey"],
              "\"" + repository.path() + R"(/lat\344.c")");
    EXPECT_THAT(status({"none\xE4"}).errors, HasSubstr("'none\\xe4'"));
}

TEST_F(StatusCommand, ASymbolicLinkBelongsToItsWorkingCopy) {
    fs::create_symlink(repository.path("src"), repository.path("link"));
    EXPECT_EQ(status({"link"}).output, "untracked  link\n");
}

TEST_F(StatusCommand, FollowsASymbolicLinkFromOutsideTheWorkingCopy) {
    const TemporaryFolder elsewhere;
    fs::create_symlink(repository.path("src"), elsewhere.path("link"));
    EXPECT_EQ(runNebsc({"status", "--short", "link"}, {.folder = elsewhere.path()}).output,
              "modified   " + repository.path("src/deep.c") + "\nuntracked  " +
                  repository.path("src/new/") + "\n");
}

TEST_F(StatusCommand, FailsOutsideARepository) {
    const TemporaryFolder folder;
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"status"}, {"status", "file"}, {"status", "no/such"}}) {
        folder.write("file", "");
        const NebscOutcome outcome = runNebsc(arguments, {.folder = folder.path()});
        EXPECT_EQ(outcome.output, "");
        EXPECT_THAT(outcome.errors,
                    testing::StartsWith("nebsc: the folder is not in a git repository"));
        EXPECT_EQ(outcome.exitStatus, 1);
    }
}

TEST_F(StatusCommand, FailsInABareRepository) {
    repository.git({"clone", "--quiet", "--bare", ".", "../bare.git"});
    const NebscOutcome outcome = runNebsc({"status"}, {.folder = repository.path("../bare.git")});
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors,
              "nebsc: the folder is not in a working copy: it is in a bare repository or in a "
              "'.git' folder\n"
              "Change to the working copy, or clone the repository to get one.\n"
              "    fatal: this operation must be run in a work tree\n");
    EXPECT_EQ(outcome.exitStatus, 1);
    const JSON json =
        runNebsc({"status", "--json"}, {.folder = repository.path("../bare.git")}).json();
    EXPECT_FALSE(json["error"].is_null());
}

TEST_F(StatusCommand, ShowsRecordsBesideAnError) {
    const StandInGit git(repository.path(),
                         "printf ' M a.c\\0'; echo 'fatal: half done' >&2; exit 128");
    const NebscOutcome outcome =
        runNebsc({"status", "--short"}, {.folder = repository.path(), .variables = {git.path()}});
    EXPECT_EQ(outcome.output, "modified   a.c\n");
    EXPECT_EQ(outcome.errors, "nebsc: half done\n");
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST_F(StatusCommand, ASilentGitFailureIsNotReportedAsNoChanges) {
    const StandInGit git(repository.path(), "exit 3");
    const NebscOutcome outcome =
        runNebsc({"status", "--short"}, {.folder = repository.path(), .variables = {git.path()}});
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "nebsc: git exited with status 3 and printed nothing\n");
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST_F(StatusCommand, ReportsThatAnotherProcessHeldTheOutput) {
    const TemporaryFolder folder;
    const StandInGit git(repository.path(),
                         "sleep 600 & echo $! > '" + folder.path("pid") + "'; printf ' M a.c\\0'");
    const NebscOutcome outcome =
        runNebsc({"status", "--short"}, {.folder = repository.path(), .variables = {git.path()}});
    EXPECT_EQ(outcome.output, "modified   a.c\n");
    EXPECT_THAT(outcome.errors, HasSubstr("still held its output open"));
    EXPECT_EQ(outcome.exitStatus, 0);
    ::kill(std::stoi(folder.read("pid")), SIGKILL);
}

TEST_F(StatusCommand, ReportsAGitThatCannotBeStarted) {
    const TemporaryFolder empty;
    const std::string broken = empty.writeProgram("git", "#!/no/such/interpreter\n");
    const NebscOutcome outcome =
        runNebsc({"status"}, {.folder = repository.path(), .variables = {{"PATH", empty.path()}}});
    EXPECT_THAT(outcome.errors, HasSubstr("'" + broken + "' could not be started"));
    EXPECT_EQ(outcome.exitStatus, 1);
}

TEST_F(StatusCommand, FindsAWorkTreeThatIsNotAroundItsRepository) {
    fs::create_directory(repository.path("src"));
    repository.git({"config", "core.worktree", "../src"});
    repository.write("src/new.c", "");
    const NebscOutcome outcome =
        runNebsc({"status", "--short"}, {.folder = repository.path("src")});
    EXPECT_THAT(outcome.output, HasSubstr("untracked  new.c\n"));
    EXPECT_EQ(outcome.errors, "");
}

TEST_F(StatusCommand, RefusesAnEmptyPath) {
    const NebscOutcome outcome = status({""});
    EXPECT_EQ(outcome.errors,
              "nebsc: argument 'PATH' must not be empty\n"
              "Try 'nebsc status --help' for more information.\n");
    EXPECT_EQ(outcome.exitStatus, 2);
}

TEST_F(StatusCommand, ReportsADeletedCurrentFolder) {
    const TemporaryFolder folder;
    fs::create_directory(folder.path("gone"));
    const StandInGit git(repository.path(), "");
    NebscSurroundings surroundings{.folder = folder.path("gone")};
    // The shell deletes its current folder and then becomes nebsc.
    const std::string script = folder.writeProgram(
        "run", "#!/bin/sh\nrmdir ../gone && exec " NEB_BUILD_FOLDER "/bin/nebsc status\n");
    const NebscOutcome outcome = runProgram(script, {}, surroundings);
    EXPECT_EQ(outcome.errors,
              "nebsc: the current folder cannot be found: No such file or directory\n");
    EXPECT_EQ(outcome.exitStatus, 1);
}

}  // namespace
}  // namespace neb::test
