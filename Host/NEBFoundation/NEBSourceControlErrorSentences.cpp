#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "NEBFoundation/NEBSourceControlErrorTexts.h"

namespace neb {

namespace {

struct Row {
    const char* key;
    const char* english;
};

/// Sentences that are more specific than those of their class. Tests compare them with the tables
/// that use them.
constexpr Row rows[] = {
    // the error catalogue
    {"nothing-to-commit.not-staged.description",
     "There is nothing to commit: no changes are staged."},
    {"nothing-to-commit.not-staged.advice",
     "Stage the changes with \"git add\", or name the files to commit."},
    {"nothing-to-commit.untracked.description",
     "There is nothing to commit: there are only untracked files."},
    {"nothing-to-commit.untracked.advice", "Add the files to commit with \"git add\"."},
    {"nothing-to-commit.amended.description", "The amended commit would have no changes."},
    {"nothing-to-commit.amended.advice",
     "Remove the commit with \"git reset HEAD^\", or allow it to be empty."},
    {"reference-broken.packed.advice",
     "Fix or remove the line of the file \"packed-refs\" that git names."},
    {"local-hook-refused.merge.description",
     "The merge is done but not committed, because a hook of the repository refused the commit."},
    {"local-hook-refused.reference.description",
     "A hook of the repository refused to update a branch or tag."},
    {"untracked-in-the-way.stash.description",
     "The untracked files of the stash were not all restored, because some of them exist. Its "
     "other changes may have been restored. The stash is kept."},
    {"untracked-in-the-way.stash.advice",
     "Undo the changes that were restored, move the untracked files away, then apply the stash "
     "again."},
    {"conflict-unresolved.unchanged.description", "Files with conflicts were left unchanged."},
    {"conflict-unresolved.unchanged.advice",
     "Resolve the conflicts, then mark the files with \"git add\"."},
    {"merge-unfinished.rebase.description", "An earlier rebase is not finished."},
    {"merge-unfinished.rebase.advice",
     "\"git rebase --continue\" continues it, \"git rebase --abort\" undoes it."},
    {"conflict.merge.advice",
     "Resolve them in the files, mark these with \"git add\", then commit."},
    // the operations of the host library
    {"index-locked.free.advice", "\"%@\" is %@ old. If no git is running, delete it."},
    {"index-locked.held.advice",
     "\"%@\" is %@ old and held by \"%@\" (process %@). Wait until that has ended."},
    {"timed-out.total.description", "The operation was ended because it took longer than %@."},
    {"timed-out.silence.description", "\"%@\" was ended because it wrote nothing for %@."},
    {"output-too-large.bytes.description", "\"%@\" was ended because it wrote more than %@ bytes."},
    {"out-of-memory.host.advice", "Request less at once, or allow the process more memory."},
    {"not-trusted.change.description",
     "The request was refused because it changes the repository \"%@\", which is not trusted: "
     "%@."},
    {"not-trusted.transport.description",
     "The server was not contacted because the repository \"%@\" is not trusted, and its setting "
     "\"%@\" decides how to contact servers."},
    {"unknown.exception.description", "An exception of type \"%@\" was thrown unexpectedly."},
    {"not-trusted.program.description",
     "The request was refused because the repository \"%@\" is not trusted, and \"%@\" cannot be "
     "kept from running programs that it names."},
    {"not-started.program.description",
     "The operation could not be performed because the program \"%@\" could not be started: %@."},
    {"not-started.folder.description",
     "The operation could not be performed because the folder \"%@\" could not be entered: %@."},
    {"not-started.cancelled.description",
     "The operation could not be performed because the program \"%@\" was not started, as it was "
     "cancelled before."},
    {"not-started.pipeline.description",
     "The operation could not be performed because the program \"%@\" was not started, as another "
     "one of its pipeline could not be."},
    {"not-started.reason.description", "The operation could not be performed because %@."},
    {"killed.signal.description",
     "The operation was not completed because \"%@\" was ended by signal %@ (%@)."},
    {"unknown.incomplete.description",
     "The operation was not completed: \"%@\" ended with exit status %@."},
    {"unknown.end.description",
     "Whether the operation was completed is not known: \"%@\" ended, but %@."},
    {"unknown.standard-exception.description", "The operation could not be completed: %@."},
    // the plug-in's table of messages
    {"table.credentials.description",
     "Authentication failed because the name or password was incorrect."},
    {"table.branch-removal.description",
     "Branch removal failed because the branch has either not been merged into its ancestor or "
     "its ancestor has been removed."},
    {"table.no-permission.description",
     "The operation could not be performed because you do not have permission to modify \"%@\"."},
    {"table.no-permission-here.description",
     "The operation could not be performed because you do not have permission to modify the "
     "repository."},
    {"table.rename.description",
     "The file could not be renamed because a file with that name already exists."},
    {"table.certificate.description", "The server certificate failed to verify."},
    {"table.missing-at-revision.description",
     "This file does not exist at the requested revision."},
    {"table.missing-in-index.description", "This file does not exist in the index."},
    {"table.up-to-date.description", "\"%@\" is already up to date."},
    {"table.remote-up-to-date.description", "The remote repository \"%@\" is already up to date."},
    {"table.tracking-branch.description",
     "The operation could not be performed because the tracking branch for the current branch "
     "could not be located."},
    {"table.tracking-branch.advice",
     "Check that the local repository is configured properly and try again"},
    {"table.not-versioned.description",
     "The operation could not be performed because the file is not under version control."},
    {"table.not-versioned.advice", "Try adding the file to a working copy."},
    // the operations of the plug-in
    {"request.not-reachable.description",
     "The operation could not be performed because the repository \"%@\" could not be reached."},
    {"create.failed.description", "Cannot initialize a git repository: (%@)"},
    {"up-to-date.pull.description", "The local repository \"%@\" is up to date."},
    {"up-to-date.pull.advice", "The are no changes to pull from \"%@\"."},
    {"revision-unknown.checkout.description", "There is no branch or revision \"%@\"."},
    {"revision-unknown.export.description", "The revision %@ was not found for the file \"%@\"."},
    {"revision-unknown.stash.description", "There is no stash \"%@\"."},
    {"branch-unknown.name.description", "There is no branch \"%@\"."},
    {"path-unknown.submodule.description", "There is no submodule \"%@\"."},
    {"path-unknown.submodule.advice", "\"git submodule status\" lists the submodules."},
    {"path-unknown.worktree.description", "There is no worktree of the repository at \"%@\"."},
    {"path-unknown.worktree.advice", "\"git worktree list\" lists the worktrees."},
    {"path-outside.list.description",
     "The folder \"%@\" cannot be listed: it is not a path inside \"%@\"."},
    {"unknown.silent.description", "git exited with status %@ and printed nothing."},
    {"local-hook-refused.checkout.description",
     "The checkout was made, but a hook of the repository failed after it."},
    {"local-hook-refused.commit.description", "A hook of the repository refused the commit."},
    {"local-hook-refused.push.description", "A hook of the repository refused the push."},
    {"local-changes.refused.description",
     "Local changes would be lost. The request does not allow to throw them away."},
    {"conflict-unresolved.discard.description",
     "Changes of files in conflict cannot be discarded."},
    {"destination-exists.worktree.description", "The repository has a worktree at \"%@\" already."},
    {"destination-exists.folder.description", "\"%@\" exists already, and is not an empty folder."},
    {"destination-exists.file.description", "The files were not exported: \"%@\" is not a folder."},
    {"nothing-in-progress.kind.description",
     "There is no merge, rebase, cherry-pick or revert to %@."},
    {"branch-not-merged.worktree.description",
     "The worktree has commits that no branch contains, and that would be lost: %@, the latest "
     "one %@."},
    {"request-invalid.skip.description", "A merge has no steps to skip. Continue or abort it."},
    {"request-invalid.own-upstream.description", "A branch cannot be its own upstream branch."},
    {"request-invalid.lease.description",
     "A lease with the id of a commit needs the name of the branch."},
    {"request-invalid.nul.description", "The message has a NUL byte."},
    {"request-invalid.name.description", "\"%@\" is not the name of one branch or tag."},
    {"request-invalid.reference.description", "\"%@\" is not the name of a reference."},
    {"request-invalid.setting.description",
     "\"%@\" is not the name of one setting, such as \"user.name\"."},
    {"identity-invalid.author.description",
     "The author \"%@\" does not have the form \"NAME <ADDRESS>\"."},
    {"file-type-wrong.submodule.description", "\"%@\" is a submodule."},
    {"file-type-wrong.folder.description", "\"%@\" is a folder."},
    {"file-type-wrong.file.description", "\"%@\" is not a folder."},
    {"no-current-branch.head.description", "No branch is checked out."},
    {"no-current-branch.unfinished.description",
     "The operation requires a branch, and none is checked out: an operation of the kind \"%@\" is "
     "not finished."},
    {"no-upstream.gone.description",
     "The upstream branch \"%@\" does not exist any more, or is not one of the branches that are "
     "fetched."},
    {"no-upstream.none.description", "The current branch has no upstream branch."},
    {"submodule-failed.state.description", "The submodule \"%@\" was not updated: it is %@."},
    {"submodule-failed.setting.description",
     "The submodule \"%@\" was not updated: its setting \"update\" is \"none\"."},
    {"conflict-unresolved.submodule.description", "The submodule \"%@\" is in conflict."},
    {"conflict-unresolved.versions.description",
     "There are unresolved conflicts, whose versions would be lost."},
    {"local-changes.worktree.description",
     "The worktree has changed or untracked files, which would be lost."},
    {"local-changes.replaced.description",
     "Untracked files are in place of deleted ones, and would be lost."},
    {"worktree-locked.reason.description", "The worktree is locked (%@)."},
    {"path-invalid.export.description",
     "The file \"%@\" was not exported: a path that ends in \".\" or \"..\" names a whole tree."},
    {"path-outside.export.description",
     "The file \"%@\" was not exported: it is not inside \"%@\"."},
    {"path-outside.patch.description",
     "The patch changes files outside of the folder of the request. Its paths start at the top of "
     "the working copy."},
    {"unknown.export-half.description", "The file was not exported completely: %@ ended with %@."},
    {"unknown.export-file.description", "Nothing was exported: the request has no file."},
    {"unknown.export-destination.description",
     "The files were not exported: the request has no destination."},
    {"request-invalid.git-version.description", "This type of request needs git %@ or later."},
    {"request-invalid.option-value.description", "The value \"%@\" is not one of %@."},
    {"request-invalid.option-missing.description", "The request lacks %@."},
    {"request-invalid.tag.description", "The request lacks the name of a tag."},
    {"request-invalid.commit.description", "The request lacks the name of a commit."},
    {"request-invalid.new-branch.description", "The request lacks the name of the new branch."},
    {"request-invalid.new-name.description",
     "The request lacks the new name, or the name of the upstream branch."},
    {"request-invalid.worktree-path.description", "The request lacks the path of the worktree."},
    {"request-invalid.remote-or-branch.description",
     "The request lacks the name of the remote or of the branch."},
    {"request-invalid.one-file.description", "The request must have the name of exactly one file."},
    {"request-invalid.unborn.description",
     "A branch without commits can only be begun from the current one."},
    {"request-invalid.settings.description",
     "The request names %@ settings; only one can be changed at a time."},
    {"request-invalid.setting-values.description",
     "The setting \"%@\" has %@ values. The request does not allow to change all of them."},
    {"request-invalid.worktree-start.description",
     "Only a new branch can have a starting revision."},
    {"request-invalid.main-worktree.description", "The main worktree cannot be removed."},
    {"request-invalid.remote-and-branch.description",
     "The request has only one of the names of a remote and of its branch."},
    {"request-invalid.dry-run.description", "Only a reset can report what it would throw away."},
};

std::vector<NEBSourceControlErrorSentence> allSentences() {
    std::vector<NEBSourceControlErrorSentence> sentences;
    for (const NEBSourceControlErrorClass& row : NEBSourceControlErrorClasses()) {
        sentences.push_back({std::string(row.name) + ".description", std::string(row.description)});
        if (!row.advice.empty()) {
            sentences.push_back({std::string(row.name) + ".advice", std::string(row.advice)});
        }
    }
    for (const Row& row : rows) {
        sentences.push_back({row.key, row.english});
    }
    return sentences;
}

}  // namespace

std::span<const NEBSourceControlErrorSentence> NEBSourceControlErrorSentences() {
    static const auto sentences = allSentences();
    return sentences;
}

}  // namespace neb
