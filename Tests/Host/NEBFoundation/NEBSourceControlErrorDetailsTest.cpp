#include "NEBFoundation/NEBSourceControlErrorDetails.h"

#include <gmock/gmock.h>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Names = std::vector<std::string>;

TEST(Hints, AreTheLinesWithThePrefix) {
    EXPECT_THAT(NEBSourceControlHintsInText("To /r.git\n"
                                            "hint: Updates were rejected because the remote\n"
                                            "hint: contains work that you do not have.\n"
                                            "hint:\n"
                                            "hint:   git pull\r\n"
                                            "hint: \n"
                                            "fatal: no hint: here\n"),
                ElementsAre("Updates were rejected because the remote",
                            "contains work that you do not have.", "", "  git pull", ""));
    EXPECT_THAT(NEBSourceControlHintsInText("hint:\tgit branch -D a"),
                ElementsAre("\tgit branch -D a"));
    EXPECT_THAT(NEBSourceControlHintsInText("remote: hint: from the remote\n"), IsEmpty());
    EXPECT_THAT(NEBSourceControlHintsInText(""), IsEmpty());
}

TEST(Hints, JoinAsGitPrintedThem) {
    EXPECT_EQ(NEBSourceControlAdviceOfHints({"You can", "", "  git pull", "", ""}),
              "You can\n\n  git pull");
    EXPECT_EQ(NEBSourceControlAdviceOfHints({"", "You can"}), "You can");
    EXPECT_EQ(NEBSourceControlAdviceOfHints({}), "");
    EXPECT_EQ(NEBSourceControlAdviceOfHints({"", ""}), "");
}

TEST(Hints, CanBeRemoved) {
    EXPECT_EQ(NEBSourceControlTextWithoutHints("hint: a\nfatal: b\nhint:\n\n c"), "fatal: b\n\n c");
    EXPECT_EQ(NEBSourceControlTextWithoutHints("hint: a"), "");
    EXPECT_EQ(NEBSourceControlTextWithoutHints(""), "");
}

TEST(RemoteLines, AreTheLinesWithThePrefix) {
    EXPECT_THAT(NEBSourceControlRemoteLinesInText("remote: No.        \n"
                                                  "remote:        \n"
                                                  "remote:   indented\r\n"
                                                  "remote: Counting:  50%\rremote: Counting: 100%\n"
                                                  "To /r.git\n"
                                                  "remote:"),
                ElementsAre("No.", "", "  indented", "Counting: 100%", ""));
    EXPECT_THAT(NEBSourceControlRemoteLinesInText("fatal: the remote: no\n"), IsEmpty());
}

struct FilesCase {
    std::string_view errorClass;
    const char* text;
    Names files;
};

const FilesCase cases[] = {
    {NEBSourceControlLocalChangesErrorClass,
     "error: Your local changes to the following files would be overwritten by checkout:\n"
     "\ta\"b\\c.txt\n\tsrc/a b.c\nPlease commit your changes or stash them.\nAborting\n",
     {"a\"b\\c.txt", "src/a b.c"}},
    {NEBSourceControlLocalChangesErrorClass,
     "error: Your local changes to the following files would be overwritten by merge:\n\ta\n"
     "error: The following untracked working tree files would be overwritten by merge:\n\tb\n",
     {"a"}},
    {NEBSourceControlLocalChangesErrorClass,
     "fatal: cannot continue with staged changes in the following files:\na\nb c\n",
     {"a", "b c"}},
    {NEBSourceControlLocalChangesErrorClass,
     "error: Entry 'a' not uptodate. Cannot merge.\n",
     {"a"}},
    {NEBSourceControlUntrackedInTheWayErrorClass,
     "error: The following untracked working tree files would be overwritten by checkout:\n"
     "\tx\n\ty\r\n\nPlease move or remove them before you switch branches.\nAborting\n",
     {"x", "y"}},
    {NEBSourceControlUntrackedInTheWayErrorClass,
     "error: The following untracked working tree files would be removed by merge:\n\tx\n",
     {"x"}},
    {NEBSourceControlUntrackedInTheWayErrorClass,
     "error: Untracked working tree file 'a' would be overwritten by merge.\n",
     {"a"}},
    {NEBSourceControlPathIgnoredErrorClass,
     "The following paths are ignored by one of your .gitignore files:\nbuild\no \"x\"\n"
     "hint: Use -f if you really want to add them.\n",
     {"build", "o \"x\""}},
    {NEBSourceControlPathOutsideErrorClass,
     "fatal: ../a: '../a' is outside repository at '/r'\n",
     {"../a"}},
    {NEBSourceControlPathUnknownErrorClass,
     "error: pathspec 'it's' did not match any file(s) known to git\n"
     "error: pathspec 'b' did not match any file(s) known to git\n",
     {"it's", "b"}},
    {NEBSourceControlPathUnknownErrorClass, "fatal: pathspec 'a' did not match any files\n", {"a"}},
    {NEBSourceControlPathUnknownErrorClass, "fatal: no such path 'd/a' in HEAD\n", {"d/a"}},
    {NEBSourceControlPathUnknownErrorClass, "fatal: no such path d/a in HEAD~1\n", {"d/a"}},
    {NEBSourceControlPathUnknownErrorClass,
     "fatal: Cannot lstat 'a': No such file or directory\n",
     {"a"}},
    {NEBSourceControlPathOutsideErrorClass,
     "fatal: pathspec 'l/b' is beyond a symbolic link\n",
     {"l/b"}},
    {NEBSourceControlPathInSubmoduleErrorClass,
     "fatal: Pathspec 'sub/s' is in submodule 'sub'\n",
     {"sub/s"}},
    {NEBSourceControlOtherToolsErrorClass,
     "error: external filter\nfatal: b c: clean filter 'odd' failed\n",
     {"b c"}},
    {NEBSourceControlOtherToolsErrorClass, "fatal: b: smudge filter odd failed\n", {"b"}},
    {NEBSourceControlObjectsDamagedErrorClass,
     "error: unable to read sha1 file of b c (0123)\n",
     {"b c"}},
    {NEBSourceControlPathUnknownErrorClass,
     "fatal: cannot stat path 'a': No such file or directory\n",
     {"a"}},
    {NEBSourceControlPathUnknownErrorClass,
     "fatal: path 'a' exists on disk, but not in 'HEAD'\n",
     {"a"}},
    {NEBSourceControlPathUnknownErrorClass, "fatal: path 'a' does not exist in 'HEAD'\n", {"a"}},
    {NEBSourceControlPathUnknownErrorClass, "fatal: bad source, source=a, destination=b\n", {"a"}},
    {NEBSourceControlPathUnknownErrorClass,
     "fatal: not under version control, source=a, destination=b\n",
     {"a"}},
    {NEBSourceControlDestinationExistsErrorClass,
     "fatal: destination exists, source=a, destination=b\n",
     {"b"}},
    {NEBSourceControlDestinationExistsErrorClass,
     "fatal: cannot move directory over file, source=a, destination=b\n",
     {"b"}},
    {NEBSourceControlDestinationExistsErrorClass,
     "fatal: destination path 'b' already exists and is not an empty directory.\n",
     {"b"}},
    {NEBSourceControlDestinationMissingErrorClass,
     "fatal: destination directory does not exist, source=a, destination=b/\n",
     {"b/"}},
    {NEBSourceControlSourceDirectoryEmptyErrorClass,
     "fatal: source directory is empty, source=a, destination=b\n",
     {"a"}},
    {NEBSourceControlConflictUnresolvedErrorClass, "error: no.\nU\ta b\nU\tc\n", {"a b", "c"}},
    {NEBSourceControlConflictUnresolvedErrorClass,
     "a: needs merge\nerror: you need to resolve\n",
     {"a"}},
    {NEBSourceControlConflictUnresolvedErrorClass,
     "warning: path 'a' is unmerged\nerror: path 'b' is unmerged\n",
     {"a", "b"}},
    {NEBSourceControlNeedsCleanTreeErrorClass,
     "a: needs update\nupdate-index --refresh: command returned error: 1\n",
     {"a"}},
    {NEBSourceControlConflictErrorClass,
     "Auto-merging a\nCONFLICT (content): Merge conflict in a\n"
     "CONFLICT (add/add): Merge conflict in b c\nAutomatic merge failed; fix\n",
     {"a", "b c"}},
    {NEBSourceControlConflictErrorClass,
     "CONFLICT (modify/delete): a deleted in topic and modified in HEAD.  Version HEAD of a left\n",
     {"a"}},
    {NEBSourceControlConflictErrorClass,
     "CONFLICT (rename/delete): a renamed to b in HEAD, but deleted in t.\n",
     {"b"}},
    {NEBSourceControlConflictErrorClass,
     "CONFLICT (rename/rename): a renamed to b in HEAD and to c in topic.\n",
     {"a", "b", "c"}},
    {NEBSourceControlConflictErrorClass,
     "CONFLICT (rename/rename): Rename \"a\"->\"c\" in branch \"HEAD\" rename \"a\"->\"b\" in "
     "\"topic\"\n",
     {"a", "c", "b"}},
    {NEBSourceControlConflictErrorClass,
     "CONFLICT (rename/delete): a deleted in HEAD and renamed to b in t. Version",
     {"b"}},
    {NEBSourceControlConflictErrorClass,
     "CONFLICT (rename/add): Rename a->b in HEAD. Added b in topic\n",
     {"b"}},
    {NEBSourceControlConflictErrorClass,
     "CONFLICT (file/directory): There is a directory with name d in topic. Adding d as d~HEAD\n",
     {"d"}},
    {NEBSourceControlConflictErrorClass,
     "CONFLICT (directory/file): There is a directory with name d in topic. Adding d as d~HEAD\n",
     {"d"}},
    {NEBSourceControlConflictErrorClass,
     "CONFLICT (file/directory): directory in the way of a from HEAD; moving it to a~HEAD\n",
     {"a"}},
    {NEBSourceControlConflictErrorClass,
     "CONFLICT (file location): a/x added in HEAD inside a directory that was renamed in t\n",
     {"a/x"}},
    {NEBSourceControlConflictErrorClass,
     "CONFLICT (distinct types): a had different types on each side; renamed\n",
     {"a"}},
    {NEBSourceControlConflictErrorClass,
     "warning: Cannot merge binary files: a.png (HEAD vs. topic)\n"
     "CONFLICT (content): Merge conflict in a.png\n",
     {"a.png"}},
    {NEBSourceControlPermissionDeniedErrorClass,
     "error: open(\"a\"): Permission denied\nfatal: adding files",
     {"a"}},
    {NEBSourceControlPermissionDeniedErrorClass,
     "error: unable to create file a: Permission denied\n",
     {"a"}},
    {NEBSourceControlPermissionDeniedErrorClass,
     "error: unable to unlink old 'a': Permission denied\n",
     {"a"}},
    {NEBSourceControlPermissionDeniedErrorClass,
     "warning: unable to unlink 'a': Permission denied\n",
     {"a"}},
    {NEBSourceControlPermissionDeniedErrorClass,
     "warning: could not open directory 'a/': Permission denied\n",
     {"a/"}},
    {NEBSourceControlIndexLockedErrorClass,
     "fatal: Unable to create '/r/.git/index.lock': File exists.\n",
     {"/r/.git/index.lock"}},
    // no file
    {NEBSourceControlRevisionUnknownErrorClass,
     "error: pathspec 'a' did not match any file(s) known to git\n",
     {}},
    {NEBSourceControlObjectsDamagedErrorClass, "CONFLICT (content): Merge conflict in a\n", {}},
    {NEBSourceControlPathUnknownErrorClass, "remote: pathspec 'a' did not match any file\n", {}},
    {NEBSourceControlPathUnknownErrorClass, "hint: pathspec 'a' did not match any file\n", {}},
    {NEBSourceControlLocalChangesErrorClass,
     "error: local changes to the following files would be overwritten by x:\n",
     {}},
    {NEBSourceControlUnknownErrorClass, "\ta\n", {}},
    {NEBSourceControlConflictErrorClass, "CONFLICT (", {}},
    {NEBSourceControlConflictErrorClass, "", {}},
};

class FilesNamed : public testing::TestWithParam<FilesCase> {};

TEST_P(FilesNamed, AreThoseOfTheFailure) {
    EXPECT_EQ(NEBSourceControlFilesInText(GetParam().text, GetParam().errorClass),
              GetParam().files);
}

INSTANTIATE_TEST_SUITE_P(ErrorDetails, FilesNamed, testing::ValuesIn(cases));

TEST(FilesNamed, AreNamedOnce) {
    EXPECT_EQ(
        NEBSourceControlFilesInText("fatal: no such path 'a' in B\nfatal: no such path 'a' in C",
                                    NEBSourceControlPathUnknownErrorClass),
        Names{"a"});
}

}  // namespace
}  // namespace neb
