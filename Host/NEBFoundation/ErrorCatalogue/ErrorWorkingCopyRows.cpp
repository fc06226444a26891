// ErrorWorkingCopyRows.cpp - local changes, conflicts, unfinished operations, branches and their
// locks.
#include "NEBFoundation/ErrorCatalogue/ErrorCatalogueRows.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

constexpr ErrorSentence uncommittedChanges{
    "The operation could not be performed because the working copy \"%@\" has uncommitted "
    "changes."};

constexpr ErrorCatalogueRow rows[] = {
    {NEBSourceControlLocalChangesErrorClass,
     {
         "your local changes to the following files would be overwritten by",
         "cannot continue with staged changes in the following files",
         {"you have local changes to '", "cannot switch branches"},
         {"your local changes to '", "would be overwritten by"},
         "your local changes would be overwritten by",
         "cannot fast-forward your working tree",
         "local modifications; use '",
         "has local modifications:",
         "have local modifications:",
         "has changes staged in the index:",
         "have changes staged in the index:",
     },
     NEBSourceControlUncommittedChangesError,
     uncommittedChanges},
    {NEBSourceControlUntrackedInTheWayErrorClass,
     {
         {"untracked working tree file", "would be overwritten by"},
         {"untracked working tree file", "would be removed by"},
         "updating the following directories would lose untracked files",
     }},
    {NEBSourceControlLocalChangesErrorClass,
     {
         "has staged content different from both the file and the head",
         "have staged content different from both the file and the head",
         "please stage your changes to .gitmodules or stash them",
         {"error: entry '", "' not uptodate. cannot "},
         {"error: entry '", "' would be overwritten by "},
     },
     NEBSourceControlUncommittedChangesError,
     uncommittedChanges},
    {NEBSourceControlUntrackedInTheWayErrorClass,
     {
         "could not restore untracked files from stash",
     },
     NEBSourceControlGenericError,
     {"The untracked files of the stash were not all restored, because some of them exist. Its "
      "other changes may have been restored. The stash is kept.",
      "Undo the changes that were restored, move the untracked files away, then apply the stash "
      "again."}},
    {NEBSourceControlConflictUnresolvedErrorClass,
     {
         "because you have unmerged files",
         "you need to resolve your current index first",
         "you must edit all merge conflicts and then",
         ": needs merge",
         "exiting because of an unresolved conflict",
         "cannot change unmerged .gitmodules",
         "your index file is unmerged",
         "conflicted, source=",
         {"error: path '", "' is unmerged"},
         "' does not have our version",
         "' does not have their version",
         "' does not have all necessary versions",
         "' does not have necessary versions",
     }},
    {NEBSourceControlConflictUnresolvedErrorClass,
     {
         {"warning: path '", "' is unmerged"},
     },
     NEBSourceControlGenericError,
     {"Files with conflicts were left unchanged.",
      "Resolve the conflicts, then mark the files with \"git add\"."}},
    {NEBSourceControlMergeUnfinishedErrorClass,
     {
         "you have not concluded your merge",
         "you have not concluded your cherry-pick",
         "cannot do a partial commit during a ",
         "exiting because of unfinished merge",
         "cannot switch branch while ",
         "cannot switch branch in the middle of an am session",
         "you are in the middle of a ",
         " reset in the middle of a merge",
         "another '' process appears to be running",
         "is in progress. cannot rebase",
         " is already in progress",
     }},
    {NEBSourceControlNothingInProgressErrorClass,
     {
         "no rebase in progress",
         "there is no merge in progress",
         "there is no merge to abort",
         "no cherry-pick or revert in progress",
         "no cherry-pick in progress",
         "no revert in progress",
     }},
    {NEBSourceControlMergeUnfinishedErrorClass,
     {
         "there is already a rebase-",
     },
     NEBSourceControlGenericError,
     {"An earlier rebase is not finished.",
      "\"git rebase --continue\" continues it, \"git rebase --abort\" undoes it."}},
    {NEBSourceControlNeedsCleanTreeErrorClass,
     {
         "you have unstaged changes",
         "index contains uncommitted changes",
         "update-index --refresh:",            // Subversion
         "cannot dcommit with a dirty index",  // Subversion
         "cannot rebase: ",
         "cannot rebase with locally recorded submodule modifications",
         "updating an unborn branch with changes added to the index",
         "' has dirty index",
         "you have uncommitted changes in your working tree",
     },
     NEBSourceControlUncommittedChangesError},
    {NEBSourceControlConflictErrorClass,
     {
         "cannot merge binary files",
     },
     NEBSourceControlBinaryMergeError},
    {NEBSourceControlConflictErrorClass,
     {
         "could not apply ",  // a rebase, whose advice differs from that of a merge
     }},
    {NEBSourceControlConflictErrorClass,
     {
         "conflict (",
         "automatic merge failed",
     },
     NEBSourceControlGenericError,
     {"", "Resolve them in the files, mark these with \"git add\", then commit."}},
    {NEBSourceControlNoCommitsYetErrorClass,
     {
         "does not have any commits yet",
         "yet to be born",
         "bad default revision '",
         "no such ref: head",
         "you have nothing to amend",
         "into empty head",
         "into an empty head",
         "you do not have a valid head",
         {"no commit on branch '", "' yet"},
         "no head -- no initial commit yet",
         "you do not have the initial commit yet",
     }},
    {NEBSourceControlNoCurrentBranchErrorClass,
     {
         "you are not currently on a branch",
         "when it does not point to any branch",
         " the current branch while not on any",
         "cannot give description to detached head",
         "head does not point to a branch",
         "fatal: no current branch",
         "but the superproject is not on any branch",
     }},
    {NEBSourceControlNotARepositoryErrorClass,
     {
         "not a git repository",
         "invalid gitfile format",
     }},
    {NEBSourceControlNoWorkTreeErrorClass,
     {
         "must be run in a work tree",
         "can't be used outside working tree",
         " reset is not allowed in a bare repository",
         "cannot be used without a working tree",
         "core.bare and core.worktree do not make sense",
     }},
    {NEBSourceControlBareRepositoryForbiddenErrorClass,
     {
         "cannot use bare repository '",
     }},
    {NEBSourceControlReferenceInTheWayErrorClass,
     {
         "' exists; cannot create '",
         {"cannot process '", "' at the same time"},
         "; non-directory in the way",
         "there is a non-empty directory '",
         "there are still logs under '",
         "reference directory conflict: ",
         {"cannot lock ref '", ": not a directory"},
         {"cannot lock ref '", ": is a directory"},
         {"unable to create directory for", ": not a directory"},
         {"unable to append to '", ": is a directory"},
         {"unable to append to '", ": not a directory"},
         "unable to move logfile ",
         {"some local refs could not be updated; try running", "to remove any old, conflicting"},
     }},
    {NEBSourceControlReferenceChangedErrorClass,
     {
         {": is at ", " but expected "},
         "reference already exists",
         "reference is missing but expected ",
     }},
    {NEBSourceControlRefLockedErrorClass,
     {
         {"cannot lock ref '", ".lock': file exists"},
         "cannot lock the ref '",
         {"could not lock config file", ": file exists"},
         ".lock': file exists",
         ".lock' already exists",
     }},
    {NEBSourceControlIOErrorClass,
     {
         "input/output error",
         "stale file handle",
         "device or resource busy",
         "transport endpoint is not connected",
         "too many levels of symbolic links",
         {"cannot lock ref '", "unable to create '"},
         {"could not lock config file", ": no such file or directory"},
         "failed to write new configuration file ",
     }},
    {NEBSourceControlRefLockedErrorClass,
     {
         "cannot lock ref '",
         "could not lock config file",
     }},
};

}  // namespace

ErrorCatalogueTable errorWorkingCopyRows() {
    return rows;
}

}  // namespace neb
