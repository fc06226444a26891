// `nebsc ls`, run as a program.

#include <filesystem>

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using JSON = nlohmann::ordered_json;

class ListCommand : public CommandTest {
protected:
    void SetUp() override {
        repository.write("top.c", "");
        repository.write("src/a b.c", "");
        repository.write("src/grüße/x", "");
        repository.write("src/.hidden", "");
        repository.git({"add", "."});
        repository.git({"commit", "--quiet", "-m", "all"});
        repository.write("src/untracked", "");
    }
};

TEST_F(ListCommand, FoldersAreToldFromFiles) {
    expectDone(nebsc({"ls", "src"}), "a b.c\ngrüße/\n");
    expectDone(nebsc({"ls", "grüße/"}, "src"), "x\n");
    expectDone(nebsc({"ls"}, "src"), "a b.c\ngrüße/\n");
    expectDone(nebsc({"ls", repository.path("src")}), "a b.c\ngrüße/\n");
}

TEST_F(ListCommand, TheTopIsAFolderLikeAnyOther) {
    for (const char* top : {".", "src/.."}) {
        expectDone(nebsc({"ls", top}), "src/\ntop.c\n");
    }
    expectDone(nebsc({"ls"}), "src/\ntop.c\n");
    expectDone(nebsc({"ls", ".."}, "src"), "src/\ntop.c\n");
    expectDone(nebsc({"ls", repository.path()}, "src"), "src/\ntop.c\n");
}

TEST_F(ListCommand, NoCharacterOfAFoldersNameIsSpecial) {
    const TemporaryFolder elsewhere;
    const std::string names[] = {"a b",           "a*",      "a?b",          "[ab]", "a\\b", "-l",
                                 "$(touch oops)", "~",       "a;touch oops", "'",    "a\nb", "ab",
                                 "a\tb",          "[[:x:]]", "{a,b}"};
    for (const std::string& name : names) {
        repository.write(name + "/in " + name, "");
    }
    repository.git({"add", "."});
    repository.git({"commit", "--quiet", "-m", "names"});
    for (const std::string& name : names) {
        const NebscOutcome outcome = nebsc({"ls", "--json", "./" + name});
        const JSON json = outcome.json();
        if (name == "a b" || name == "a\tb") {
            EXPECT_EQ(json["result"].size(), 2U) << name;  // a blank and a TAB count as one
            continue;
        }
        ASSERT_EQ(json["result"].size(), 1U) << name << outcome.output;
        EXPECT_EQ(json["result"][0]["NEBSourceControlOperationNameKey"], "in " + name);
    }
    EXPECT_FALSE(isThere("oops"));
    expectDone(nebsc({"ls", "--", "-l"}), "in -l\n");
}

TEST_F(ListCommand, ATopWithABlankIsListedToo) {
    const TemporaryFolder folder;
    const std::string top = folder.path("a top [x]");
    repository.git({"clone", "--quiet", repository.path(), top});
    expectDone(runNebsc({"ls"}, {.folder = top}), "src/\ntop.c\n");
    expectDone(runNebsc({"ls", top + "/src"}, {.folder = top}), "a b.c\ngrüße/\n");
}

TEST_F(ListCommand, AnEmptyAnswerIsExplained) {
    expectFailed(
        nebsc({"ls", "nosuch"}),
        "nebsc: There is no folder \"nosuch\", neither on disk nor in the latest commit.\n");
    fs::create_directory(repository.path("new"));
    expectFailed(nebsc({"ls", "new"}),
                 "nebsc: \"new\" is on disk, but not in the latest commit.\n");
    expectFailed(nebsc({"ls", "top.c"}),
                 "nebsc: \"top.c\" is no folder in the latest commit, but a file.\n");
    fs::remove_all(repository.path("src/grüße"));
    expectFailed(nebsc({"ls", "grüße"}, "src"),
                 HasSubstr("\"grüße\" is in the latest commit, but not on disk"));
    fs::remove(repository.path("src/a b.c"));
    const NebscOutcome hidden = nebsc({"ls", "src"});
    EXPECT_EQ(hidden.output, "");
    EXPECT_THAT(hidden.errors, testing::StartsWith("\"src\" has no entries to show"));
    EXPECT_EQ(hidden.exitStatus, 0);
    const NebscOutcome json = nebsc({"ls", "--json", "nosuch"});
    EXPECT_EQ(json.json()["result"], JSON::array());
    EXPECT_EQ(json.exitStatus, 1);
}

TEST_F(ListCommand, WhatCannotBeListedIsNamed) {
    expectFailed(nebsc({"ls", "/"}), HasSubstr("\"/\" lies outside the working copy"));
    expectFailed(nebsc({"ls", ""}), HasSubstr("The path is empty"), 2);
    const TestRepository empty;
    expectFailed(runNebsc({"ls"}, {.folder = empty.path()}),
                 "nebsc: There are no commits yet on the current branch \"main\".\n");
    EXPECT_EQ(runNebsc({"ls", "--json"}, {.folder = empty.path()}).exitStatus, 1);
    const TemporaryFolder folder;
    expectFailed(runNebsc({"ls"}, {.folder = folder.path()}),
                 testing::StartsWith("nebsc: The folder is not in a git repository."));
}

TEST_F(ListCommand, ASubmoduleIsNoFile) {
    repository.git({"submodule", "--quiet", "add", repository.path(), "sub"});
    repository.git({"commit", "--quiet", "-m", "submodule"});
    expectDone(nebsc({"ls"}), "src/\nsub/\ntop.c\n");
    expectFailed(nebsc({"ls", "sub"}),
                 "nebsc: \"sub\" is no folder in the latest commit, but a submodule.\n");
}

TEST_F(ListCommand, OfAPathThatIsNoUTF8IsRefused) {
    repository.commitFile("l\xE9/a.c", "1\n");
    expectFailed(nebsc({"ls", "l\xE9"}), HasSubstr("is no UTF-8"));
}

TEST_F(ListCommand, JSONIsTheOutcomeAndNothingElse) {
    const NebscOutcome outcome = nebsc({"ls", "--json"}, "src");
    const JSON json = outcome.json();
    EXPECT_EQ(json["type"], 17);
    EXPECT_EQ(json["result"].size(), 2U);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST_F(ListCommand, ATerminalShowsFoldersInColour) {
    const NebscOutcome outcome =
        runNebsc({"ls"}, {.folder = repository.path(),
                          .variables = {{"TERM", "xterm"}, {"NO_COLOR", std::nullopt}},
                          .output = NebscOutput::terminal});
    EXPECT_EQ(outcome.output, "\x1b[36msrc/\x1b[0m\r\ntop.c\r\n");
}

}  // namespace
}  // namespace neb::test
