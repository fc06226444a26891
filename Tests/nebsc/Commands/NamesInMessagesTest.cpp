// A name with a line end does not split the messages of any command.

#include <algorithm>

#include "Platform/Text.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using Arguments = std::vector<std::string>;

const std::string name = "a\nb";

class NamesInMessages : public CommandTest, public testing::WithParamInterface<Arguments> {};

/// git prints the name as it is: the line after the line end begins with "b".
TEST_P(NamesInMessages, AreOnOneLine) {
    repository.commitFile("f", "f");
    const NebscOutcome outcome = nebsc(GetParam());
    EXPECT_THAT(outcome.output + outcome.errors, testing::HasSubstr("a\\nb"));
    forEachLine(outcome.output + outcome.errors, [](std::string_view line) {
        EXPECT_FALSE(trimmed(line).starts_with("b")) << line;
    });
}

INSTANTIATE_TEST_SUITE_P(
    OfAllCommands, NamesInMessages,
    testing::Values(
        Arguments{"status", name}, Arguments{"log", name}, Arguments{"log", "--branch", name},
        Arguments{"log", "-n", name}, Arguments{"blame", name}, Arguments{"blame", name, "f"},
        Arguments{"diff", name}, Arguments{"diff", "--", name}, Arguments{"ls", name},
        Arguments{"export", "HEAD", name}, Arguments{"export", name, "f"},
        Arguments{"export-tree", name}, Arguments{"info", name}, Arguments{"init", name},
        Arguments{"add", name}, Arguments{"rm", name}, Arguments{"mv", name, "x"},
        Arguments{"cp", name, "x"}, Arguments{"cp", "f", name + "/x"},
        Arguments{"mkdir", "../" + name}, Arguments{"ignore", name}, Arguments{"revert", name},
        Arguments{"commit", "-m", "x", name}, Arguments{"branch", "create", name},
        Arguments{"branch", "create", "x", name}, Arguments{"branch", "delete", name},
        Arguments{"branch", "track", "x", name}, Arguments{"branch", "tracking", name},
        Arguments{"checkout", name}, Arguments{"merge", name},
        Arguments{"merge-base", "HEAD", name}, Arguments{"clone", name},
        Arguments{"clone", ".", name + "/.git/x"}, Arguments{"remote", "add", name, "/y"},
        Arguments{"remote", "rm", name}, Arguments{"remote", "branches", name},
        Arguments{"fetch", name}, Arguments{"push", name, "main"}, Arguments{"push", ".", name},
        Arguments{"update", name, "main"}, Arguments{"update", "--ff", ".", name},
        Arguments{"request", name}, Arguments{"types", name}, Arguments{"completion", name},
        Arguments{"manual", name}, Arguments{name}, Arguments{"--" + name},
        Arguments{"-C", name, "status"}, Arguments{"--plugin", name, "types"}));

INSTANTIATE_TEST_SUITE_P(
    OfCommandsThatChange, NamesInMessages,
    testing::Values(Arguments{"stage", name}, Arguments{"unstage", name},
                    Arguments{"discard", name}, Arguments{"stash", "push", name},
                    Arguments{"stash", "show", name}, Arguments{"stash", "apply", name},
                    Arguments{"stash", "pop", name}, Arguments{"stash", "drop", name},
                    Arguments{"commit", "--amend", name},
                    Arguments{"commit", "-m", "x", "--allow-empty", "--author", name},
                    Arguments{"tag", "create", name}, Arguments{"tag", "create", "x", name},
                    Arguments{"tag", "delete", name}, Arguments{"switch", name},
                    Arguments{"switch", "-c", name}, Arguments{"switch", "-c", "x", name},
                    Arguments{"cherry-pick", name}, Arguments{"cherry-pick", "-m", name, "HEAD"},
                    Arguments{"revert", "--commit", name}, Arguments{"reset", name},
                    Arguments{"push", "-u", name}, Arguments{"push", "-u", ".", name},
                    Arguments{"pull", name, "main"}, Arguments{"pull", ".", name}));

}  // namespace
}  // namespace neb::test
