#include "NEBFoundation/NEBSourceControlErrorClasses.h"

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace neb {

namespace {

constexpr NEBSourceControlErrorClass classes[] = {
    // servers and connections to them
    {NEBSourceControlCredentialsNeededErrorClass,
     "The server requires a user name and password, and none are stored.",
     "Set up a credential helper (see \"git help credentials\"), then run \"git fetch\" once in a "
     "terminal and enter them there."},
    {NEBSourceControlCredentialsRefusedErrorClass, "The server rejected the user name or password.",
     "Correct the stored credentials. Many servers require an access token instead of a password."},
    {NEBSourceControlSSHKeyRefusedErrorClass, "The SSH server accepted none of the offered keys.",
     "Load the right key with \"ssh-add\" and register its public key on the server. \"ssh -T "
     "git@HOST\" tests the connection."},
    {NEBSourceControlSSHHostKeyErrorClass,
     "The host key of the SSH server is unknown or has changed.",
     "Compare its fingerprint with the one that the owner of the server publishes, then connect "
     "once with \"ssh HOST\". A changed key can mean that another machine pretends to be the "
     "server."},
    {NEBSourceControlSSHNegotiationFailedErrorClass,
     "SSH and the SSH server support no common encryption method.",
     "Update the older of the two, or enable a method of the server in ~/.ssh/config."},
    {NEBSourceControlSSHConfigurationBrokenErrorClass, "SSH rejects its configuration.",
     "Fix the line of ~/.ssh/config that it names, or the permissions of that file."},
    {NEBSourceControlCertificateUntrustedErrorClass,
     "The certificate of the server is not trusted.",
     "Name the certificate of the authority that signed it in http.sslCAInfo, and check the clock "
     "of this machine."},
    {NEBSourceControlClientCertificateRefusedErrorClass,
     "The server requires a client certificate, and none that it accepts was sent.",
     "Set http.sslCert and http.sslKey to the certificate and its key."},
    {NEBSourceControlTLSFailedErrorClass,
     "No encrypted connection to the server could be established.",
     "Check the scheme and port of the URL and the proxy settings."},
    {NEBSourceControlHTTPRefusedErrorClass, "The HTTP server refused the request.",
     "Check that your account has access to the repository. If the server limits requests, try "
     "again later."},
    {NEBSourceControlServerFailedErrorClass, "The HTTP server failed to process the request.",
     "Try again later."},
    {NEBSourceControlProxyRefusedErrorClass, "The proxy refused to connect to the server.",
     "Check the URL, user name and password of the proxy (http.proxy, https_proxy)."},
    {NEBSourceControlProtocolErrorClass,
     "The response of the server does not follow the git protocol.",
     "Check the URL, and that no login script of the server prints anything; \"git ls-remote URL\" "
     "in a terminal may show the response."},
    {NEBSourceControlHostUnknownErrorClass,
     "The host name of the server or proxy could not be resolved.",
     "Check the URL (\"git remote -v\" shows it) and the network connection."},
    {NEBSourceControlHostUnreachableErrorClass, "The server could not be reached.",
     "Check the URL, the network connection, the firewall and the VPN, then try again."},
    {NEBSourceControlConnectionCutErrorClass, "The connection to the server was lost.",
     "Try again. If it happens again, check the network connection and the limits of the server."},
    {NEBSourceControlRemoteUnreadableErrorClass, "The remote repository could not be read.",
     "Check the URL and your access rights; \"git ls-remote URL\" in a terminal may show the "
     "reason."},
    {NEBSourceControlRepositoryNotFoundErrorClass,
     "The remote repository does not exist, or you do not have access to it.",
     "Check the URL (\"git remote -v\" shows it), or ask the owner for access."},
    {NEBSourceControlRemoteDamagedErrorClass,
     "The remote repository, or the data that it sent, is damaged or incomplete.",
     "Inform the owner of the repository. \"git fsck\" on the server lists the damage."},
    {NEBSourceControlRemoteUnsupportedErrorClass, "The remote does not support what was requested.",
     "Disable the option that git names, or update git on the remote."},
    {NEBSourceControlRepositoryShallowErrorClass,
     "A repository is shallow, and the operation requires the whole history.",
     "Run \"git fetch --unshallow\" in the shallow repository, then try again."},
    {NEBSourceControlURLInvalidErrorClass,
     "The URL is not valid, or the server redirects to another one.",
     "Correct the URL; \"git remote -v\" shows it."},
    {NEBSourceControlRemoteRefusedErrorClass, "The remote refused the request.",
     "Read the messages from the remote; they may state the reason."},
    {NEBSourceControlTransportUnknownErrorClass,
     "The URL uses a protocol that git does not support.",
     "Correct the URL, or install the program that supports its protocol."},
    {NEBSourceControlTransportForbiddenErrorClass,
     "The configuration of git forbids this transport.",
     "Use another URL. If you trust the transport, allow it with protocol.NAME.allow."},
    {NEBSourceControlProgramMissingErrorClass,
     "A program that git runs is not installed or cannot be started.",
     "Install it, or correct the setting that names it."},
    // pushes, fetches and remotes
    {NEBSourceControlRemoteAheadErrorClass,
     "The operation could not be performed because \"%@\" does not have the latest remote changes.",
     "Pull the remote changes and try again."},
    {NEBSourceControlPushStaleErrorClass, "The remote branch changed since the last fetch.",
     "Fetch, review the new commits, then push again."},
    {NEBSourceControlRemoteHookRefusedErrorClass, "A hook on the server refused the push.",
     "Fix what the messages from the remote report, then push again."},
    {NEBSourceControlReferenceRejectedErrorClass,
     "A tag or branch was not updated: it differs from the remote's and would be overwritten.",
     "Rename or delete the local tag or branch, then fetch again."},
    {NEBSourceControlReferenceChangedErrorClass,
     "Another process changed the branch or tag at the same time.", "Try again."},
    {NEBSourceControlReferenceInTheWayErrorClass,
     "A branch could not be created because its name conflicts with another branch, as \"a/b\" "
     "does with \"a\".",
     "Rename or delete the other branch. \"git remote prune REMOTE\" removes the remote-tracking "
     "branches that the remote no longer has."},
    {NEBSourceControlRemoteBranchUnknownErrorClass,
     "The remote does not have this branch, or it was not fetched.",
     "\"git ls-remote --heads REMOTE\" lists the branches of the remote; \"git remote set-branches "
     "--add REMOTE BRANCH\" adds a branch to those that \"git fetch\" gets."},
    {NEBSourceControlRemoteUnknownErrorClass, "There is no remote with this name.",
     "\"git remote -v\" lists the remotes; \"git remote add NAME URL\" adds one."},
    {NEBSourceControlRemoteURLMissingErrorClass, "The remote does not have this URL, or has none.",
     "\"git remote -v\" lists the URLs; \"git remote set-url --add NAME URL\" adds one."},
    {NEBSourceControlRemoteExistsErrorClass, "A remote with this name already exists.",
     "Choose another name, or remove the existing remote first."},
    {NEBSourceControlRemoteNameInvalidErrorClass, "This name is not valid for a remote.",
     "Choose another name; \"git help check-ref-format\" lists the rules."},
    {NEBSourceControlNoPushDestinationErrorClass, "No remote is configured to push to.",
     "Name the remote, or add one with \"git remote add NAME URL\"."},
    {NEBSourceControlPushDestinationUnclearErrorClass,
     "It is not clear which branch of the remote to push to.",
     "Name the remote and the branch. To create a branch from a commit or a tag, write its full "
     "name, \"refs/heads/NAME\"."},
    {NEBSourceControlNoUpstreamErrorClass, "The branch has no upstream branch.",
     "Name the remote and the branch, or set the upstream branch with \"git branch "
     "--set-upstream-to=REMOTE/BRANCH\"."},
    {NEBSourceControlNoCurrentBranchErrorClass,
     "The operation requires a branch, and none is checked out.",
     "Check out a branch, or create one with \"git switch -c NAME\"."},
    {NEBSourceControlNoSubversionUpstreamErrorClass,
     "The repository or the branch is not connected to a Subversion repository.",
     "Run \"git svn init URL\", or check out a branch that was fetched from Subversion."},
    {NEBSourceControlNothingToPushFromErrorClass,
     "The branch to push does not exist, or has no commits yet.",
     "\"git branch\" lists the local branches."},
    {NEBSourceControlBranchCheckedOutThereErrorClass,
     "The branch is checked out in the remote repository.",
     "Push to a bare repository or to another branch."},
    {NEBSourceControlTagExistsErrorClass, "A different tag with this name already exists.",
     "Choose another name, or delete the existing tag first."},
    {NEBSourceControlDivergedErrorClass,
     "The branches have diverged, so a fast-forward is not possible.",
     "Merge the other branch, or rebase onto it."},
    {NEBSourceControlUnrelatedHistoriesErrorClass, "The two histories have no commit in common.",
     "Check that this is the right repository and branch. \"git merge "
     "--allow-unrelated-histories\" merges them anyway."},
    {NEBSourceControlUpToDateErrorClass, "Everything is up to date."},
    // the state of the working copy
    {NEBSourceControlLocalChangesErrorClass, "Local changes would be overwritten.",
     "Commit the changes, stash them with \"git stash\", or discard them."},
    {NEBSourceControlUntrackedInTheWayErrorClass,
     "Untracked files would be overwritten or removed.",
     "Move the files away, or add and commit them."},
    {NEBSourceControlNeedsCleanTreeErrorClass,
     "The operation could not be performed because the working copy \"%@\" has uncommitted "
     "changes.",
     "Commit the changes, or stash them with \"git stash\"."},
    {NEBSourceControlConflictErrorClass,
     "There are conflicts that could not be resolved automatically.",
     "Resolve them in the files, mark these with \"git add\", then commit, or continue the "
     "rebase."},
    {NEBSourceControlConflictUnresolvedErrorClass,
     "There are unresolved conflicts from an earlier operation.",
     "Resolve them in the files, mark these with \"git add\", commit, then try again."},
    {NEBSourceControlPatchFailedErrorClass, "The patch cannot be read, or does not fit the files.",
     "Compare again, and make the patch from the new difference."},
    {NEBSourceControlMergeFailedErrorClass,
     "The merge or rebase failed for a reason other than conflicts.",
     "Fix what git reports, then try again."},
    {NEBSourceControlMergeUnfinishedErrorClass, "A merge, cherry-pick or rebase is not finished.",
     "Commit the merge, or run \"git rebase --continue\". \"git merge --abort\" or \"git rebase "
     "--abort\" undoes it."},
    {NEBSourceControlNothingInProgressErrorClass,
     "There is no merge, cherry-pick or rebase to continue or abort.",
     "\"git status\" shows the state of the working copy."},
    {NEBSourceControlNothingToCommitErrorClass, "There is nothing to commit.",
     "\"git status\" shows the changes; stage them with \"git add\"."},
    {NEBSourceControlMessageEmptyErrorClass, "The commit has no message; nothing was committed.",
     "Enter a commit message."},
    {NEBSourceControlIdentityUnknownErrorClass,
     "The commit has no author: your name or your e-mail address is not configured.",
     "Set user.name and user.email in git's configuration and try again."},
    {NEBSourceControlIdentityInvalidErrorClass,
     "An author, committer or date does not have the format that git requires.",
     "Write \"NAME <EMAIL>\" for a person and \"YYYY-MM-DDTHH:MM:SS\" for a date."},
    {NEBSourceControlSigningFailedErrorClass, "The commit could not be signed.",
     "Check the key (user.signingKey) and its agent."},
    {NEBSourceControlSignatureUntrustedErrorClass, "A commit is not signed with a trusted key.",
     "Import and trust the key, or disable merge.verifySignatures."},
    {NEBSourceControlEditorFailedErrorClass, "The editor that git started failed.",
     "Check core.editor, or enter the message in the request."},
    {NEBSourceControlLocalHookRefusedErrorClass, "A hook of the repository refused the operation.",
     "Fix what the hook reports. Hooks are in .git/hooks, or in the folder that core.hooksPath "
     "names."},
    // revisions, branches and paths
    {NEBSourceControlRevisionUnknownErrorClass, "There is no such branch, tag or commit.",
     "\"git branch --all\" and \"git tag\" list the names; \"git fetch\" gets new ones."},
    {NEBSourceControlRevisionAmbiguousErrorClass,
     "The name is ambiguous: a revision or a file, a branch or a tag, or one of several commits.",
     "Write \"refs/heads/NAME\" for a branch, \"refs/tags/NAME\" for a tag, \"./NAME\" for a file, "
     "or more digits of the commit."},
    {NEBSourceControlReferenceBrokenErrorClass,
     "A branch or tag cannot be read, or its commit is missing.",
     "The file of the same name in the folder \"logs\" of the git directory lists its former "
     "commits. "
     "Write the last one into the file of the branch, or delete that file and fetch the branch "
     "again."},
    {NEBSourceControlNoCommitsYetErrorClass, "There are no commits yet.",
     "Create the first commit."},
    {NEBSourceControlBranchExistsErrorClass, "A branch with this name already exists.",
     "Choose another name."},
    {NEBSourceControlBranchInUseErrorClass,
     "The branch is checked out, here or in another working copy.",
     "Switch that working copy to another branch first."},
    {NEBSourceControlBranchNotMergedErrorClass, "The branch has commits that are not merged.",
     "Merge it first, or delete it anyway with \"git branch -D BRANCH\"."},
    {NEBSourceControlWorktreeLockedErrorClass, "The worktree is locked.",
     "Unlock it with \"git worktree unlock PATH\"."},
    {NEBSourceControlBranchNameInvalidErrorClass, "This name is not valid for a branch.",
     "Choose another name; \"git help check-ref-format\" lists the rules."},
    {NEBSourceControlTagNameInvalidErrorClass, "This name is not valid for a tag.",
     "Choose another name; \"git help check-ref-format\" lists the rules."},
    {NEBSourceControlBranchUnknownErrorClass, "There is no branch with this name.",
     "\"git branch --all\" lists the branches."},
    {NEBSourceControlPathUnknownErrorClass, "There is no such file, or git does not track it.",
     "Check the path; \"git ls-files\" lists the tracked files."},
    {NEBSourceControlPathOutsideErrorClass, "The path is outside the working copy.",
     "Choose a path inside the working copy."},
    {NEBSourceControlPathInvalidErrorClass, "The path is not valid.", "Choose another path."},
    {NEBSourceControlLineUnknownErrorClass, "The file does not have these lines.",
     "Choose lines that the file has."},
    {NEBSourceControlNameTooLongErrorClass, "A name is longer than the file system allows.",
     "Choose a shorter name."},
    {NEBSourceControlFileTypeWrongErrorClass,
     "A folder exists where a file is required, or a file where a folder is required.",
     "Move it away, or choose another name."},
    {NEBSourceControlPathIgnoredErrorClass, "An ignore rule excludes the files.",
     "\"git check-ignore -v FILE\" shows the rule; \"git add -f FILE\" adds the file anyway."},
    {NEBSourceControlPathSparseErrorClass, "The files are outside the sparse checkout.",
     "Extend it with \"git sparse-checkout add FOLDER\", or run \"git add --sparse FILE\"."},
    {NEBSourceControlLineEndsRefusedErrorClass,
     "Converting the line endings would change the file irreversibly, and core.safecrlf forbids "
     "that.",
     "Convert the line endings of the file, or set core.safecrlf to \"warn\"."},
    {NEBSourceControlEncodingFailedErrorClass,
     "A file is not in the encoding that its attributes name.",
     "Convert the file, or correct working-tree-encoding in .gitattributes."},
    {NEBSourceControlPathInSubmoduleErrorClass,
     "The path is inside a submodule, which is a separate repository.",
     "Perform the operation in the submodule."},
    {NEBSourceControlEmbeddedRepositoryErrorClass,
     "The folder is a separate git repository without commits.",
     "Commit in that repository first, delete its folder \".git\", or ignore the folder."},
    {NEBSourceControlSubmoduleFailedErrorClass,
     "A submodule could not be fetched, checked out or pushed.",
     "Fix what git reports, then run \"git submodule update --init --recursive\"."},
    {NEBSourceControlDestinationExistsErrorClass, "The destination already exists.",
     "Choose another destination, or move the existing one away."},
    {NEBSourceControlDestinationMissingErrorClass,
     "The parent folder of the destination does not exist.", "Create the folder first."},
    {NEBSourceControlSourceDirectoryEmptyErrorClass, "The folder to move has no tracked files.",
     "Move it without git."},
    // the repository and the machine
    {NEBSourceControlNotARepositoryErrorClass, "The folder is not in a git repository.",
     "Choose a folder inside a repository, or create one with \"git init\" or \"git clone\"."},
    {NEBSourceControlNoWorkTreeErrorClass,
     "The folder is not in a working copy: it is in a bare repository or in a \".git\" folder.",
     "Change to the working copy, or clone the repository to get one."},
    {NEBSourceControlOwnerNotTrustedErrorClass,
     "The repository is owned by another user; git refuses to use it.",
     "If you trust it, run \"git config --global --add safe.directory PATH\"."},
    {NEBSourceControlNotTrustedErrorClass,
     "The repository is only inspected: its programs do not run, and it is not changed.",
     "If you trust it, leave inspect mode."},
    {NEBSourceControlBareRepositoryForbiddenErrorClass,
     "safe.bareRepository forbids the use of this bare repository.",
     "If you trust it, set safe.bareRepository to \"all\", or name its folder with --git-dir."},
    {NEBSourceControlUnsafeContentErrorClass,
     "The repository has content that git refuses because it can be an attack.",
     "Do not use the repository before its owner has explained the content."},
    {NEBSourceControlRepositoryFormatUnknownErrorClass,
     "The format of the repository is not supported by this git.", "Install a newer git."},
    {NEBSourceControlIndexLockedErrorClass,
     "The index is locked by another git process, or by one that ended without unlocking it.",
     "Wait until the other process has ended. If no git is running, delete the lock file."},
    {NEBSourceControlRefLockedErrorClass,
     "A branch, HEAD or the configuration is locked by another git process, or by one that ended "
     "without unlocking it.",
     "Wait until the other process has ended. If no git is running, delete the lock file."},
    {NEBSourceControlIndexDamagedErrorClass, "The index is damaged.",
     "Delete the file \"index\" in the git directory, then run \"git reset\". Staged changes are "
     "lost; the files in the working copy do not change."},
    {NEBSourceControlObjectsDamagedErrorClass, "Objects of the repository are missing or damaged.",
     "\"git fsck\" lists them. \"git fetch --refetch REMOTE\" (git 2.36 or newer) fetches them "
     "again; otherwise, clone the repository again."},
    {NEBSourceControlObjectsMissingErrorClass,
     "The partial clone needs content that its remote did not send.",
     "Check the connection to the remote and its repository, then try again."},
    {NEBSourceControlRepositoryDamagedErrorClass,
     "A file of the git directory, such as \"shallow\", cannot be read.",
     "Restore or delete the file that git names, or clone the repository again."},
    {NEBSourceControlConfigurationBrokenErrorClass,
     "The configuration of git cannot be read, or has a value that git rejects.",
     "Fix the line or value that git names."},
    {NEBSourceControlConfiguredFileMissingErrorClass,
     "A file that the configuration names cannot be read.",
     "Create the file, or correct the setting; \"git config --list --show-origin\" lists the "
     "settings."},
    {NEBSourceControlPermissionDeniedErrorClass,
     "The operating system denied access to a file or folder.",
     "Check the permissions of the file or folder."},
    {NEBSourceControlDiskFullErrorClass, "The disk is full.", "Free some space, then try again."},
    {NEBSourceControlOutOfMemoryErrorClass, "There is not enough memory.",
     "Close other programs, or lower pack.windowMemory and core.packedGitLimit."},
    {NEBSourceControlSystemLimitErrorClass,
     "A limit of the system was reached: the number of processes or open files, or the length of "
     "the arguments.",
     "Name fewer files, close other programs, or raise the limit; \"ulimit -a\" lists the limits."},
    {NEBSourceControlIOErrorClass, "A file could not be read or written.",
     "Check the file that git names, and the disk."},
    {NEBSourceControlOtherToolsErrorClass, "A filter, Git LFS or a submodule failed.",
     "Install or fix the tool that git names."},
    {NEBSourceControlRequestInvalidErrorClass, "The request is not valid.", "Correct the request."},
    {NEBSourceControlGitBugErrorClass, "git reported an internal error.",
     "Update git, then try again."},
    {NEBSourceControlNotStartedErrorClass, "git could not be started.",
     "Check that git is installed and on the PATH, and that the folder exists."},
    {NEBSourceControlKilledErrorClass, "A signal terminated git.",
     "Try again. If it happens again, check whether the machine runs out of memory."},
    {NEBSourceControlCancelledErrorClass, "The operation was cancelled."},
    {NEBSourceControlTimedOutErrorClass, "The operation took longer than its limit.",
     "Check whether git waits for a server or a hook. If the operation changes something, check "
     "what it has done before you try again with a higher limit."},
    {NEBSourceControlOutputTooLargeErrorClass, "git wrote more than the limit of the operation.",
     "Ask for less at a time, or try again with a higher limit."},
    {NEBSourceControlUnknownErrorClass, "The operation failed for an unknown reason."},
};

}  // namespace

std::span<const NEBSourceControlErrorClass> NEBSourceControlErrorClasses() {
    return classes;
}

const NEBSourceControlErrorClass* NEBSourceControlErrorClassNamed(std::string_view name) {
    const auto* found =
        std::find_if(std::begin(classes), std::end(classes),
                     [name](const NEBSourceControlErrorClass& row) { return row.name == name; });
    return found != std::end(classes) ? found : nullptr;
}

void NEBSourceControlAddAdvice(NEBSourceControlError& error) {
    if (!error.errorClass || !error.localizedDescription() || error.localizedRecoverySuggestion()) {
        return;
    }
    const NEBSourceControlErrorClass* row = NEBSourceControlErrorClassNamed(*error.errorClass);
    if (row != nullptr && !row->advice.empty()) {
        error.userInfo.set(NEBLocalizedRecoverySuggestionKey, std::string(row->advice));
    }
}

}  // namespace neb
