#include "NEBFoundation/NEBSourceControlErrorClasses.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace neb {

namespace {

constexpr NEBSourceControlErrorClass classes[] = {
    // servers and the way to them
    {"credentials-needed", "The server requires a user name and password, and none are stored.",
     "Set up a credential helper (see \"git help credentials\"), then run \"git fetch\" once in a "
     "terminal and enter them there."},
    {"credentials-refused", "The server rejected the user name or password.",
     "Correct the stored credentials. Many servers require an access token instead of a password."},
    {"ssh-key-refused", "The SSH server accepted none of the offered keys.",
     "Load the right key with \"ssh-add\" and register its public key on the server. \"ssh -T "
     "git@HOST\" tests the connection."},
    {"ssh-host-key", "The host key of the SSH server is unknown or has changed.",
     "Compare its fingerprint with the one that the owner of the server publishes, then connect "
     "once with \"ssh HOST\". A changed key can mean that another machine pretends to be the "
     "server."},
    {"certificate-untrusted", "The certificate of the server is not trusted.",
     "Name the certificate of the authority that signed it in http.sslCAInfo, and check the clock "
     "of this machine."},
    {"tls-failed", "No encrypted connection to the server could be established.",
     "Check the scheme and port of the URL and the proxy settings."},
    {"http-refused", "The HTTP server refused the request.",
     "Check that your account has access to the repository. If the server limits requests, try "
     "again later."},
    {"server-failed", "The HTTP server failed to process the request.", "Try again later."},
    {"host-unknown", "The host name of the server or proxy could not be resolved.",
     "Check the URL (\"git remote -v\" shows it) and the network connection."},
    {"host-unreachable", "The server could not be reached.",
     "Check the URL, the network connection, the firewall and the VPN, then try again."},
    {"connection-cut", "The connection to the server was closed too early.",
     "Try again. If it happens again, check the network connection and the limits of the server."},
    {"remote-unreadable", "The remote repository could not be read.",
     "Check the URL and your access rights; \"git ls-remote URL\" in a terminal may show the "
     "reason."},
    {"repository-not-found",
     "The remote repository does not exist, or you do not have access to it.",
     "Check the URL (\"git remote -v\" shows it), or ask the owner for access."},
    {"remote-refused", "The remote refused the request.",
     "Read the messages from the remote; they may state the reason."},
    {"transport-unknown", "The URL uses a protocol that git does not know.",
     "Correct the URL, or install the program for its protocol."},
    {"transport-forbidden", "The configuration of git forbids this transport.",
     "Use another URL. If you trust the transport, allow it with protocol.NAME.allow."},
    {"program-missing", "A program that git runs is not installed.",
     "Install it, or correct the setting that names it."},
    // pushes, fetches and remotes
    {"remote-ahead",
     "The operation could not be performed because \"%@\" does not have the latest remote changes.",
     "Pull the remote changes and try again."},
    {"push-stale", "The remote branch is not in the expected state.",
     "Fetch, review the new commits, then push again."},
    {"remote-hook-refused", "A hook on the server refused the push.",
     "Fix what the messages from the remote report, then push again."},
    {"reference-rejected",
     "A tag or branch was not updated: it differs from the remote's and would be overwritten.",
     "Rename or delete the local tag or branch, then fetch again."},
    {"reference-in-the-way",
     "A branch could not be created because its name conflicts with another branch, as \"a/b\" "
     "does with \"a\".",
     "Rename or delete the other branch. \"git remote prune REMOTE\" removes the remote-tracking "
     "branches that the remote no longer has."},
    {"remote-branch-unknown", "The remote does not have this branch, or it was not fetched.",
     "\"git ls-remote --heads REMOTE\" lists the branches of the remote; \"git remote set-branches "
     "--add REMOTE BRANCH\" makes the next fetch bring one more."},
    {"remote-unknown", "There is no remote with this name.",
     "\"git remote -v\" lists the remotes; \"git remote add NAME URL\" adds one."},
    {"remote-exists", "A remote with this name already exists.",
     "Choose another name, or remove the existing remote first."},
    {"remote-name-invalid", "This name is not valid for a remote.",
     "Choose another name; \"git help check-ref-format\" lists the rules."},
    {"no-push-destination", "No remote is configured to push to.",
     "Name the remote, or add one with \"git remote add NAME URL\"."},
    {"no-upstream", "The branch has no upstream branch.",
     "Name the remote and the branch, or set the upstream branch with \"git branch "
     "--set-upstream-to=REMOTE/BRANCH\"."},
    {"nothing-to-push-from", "The branch to push does not exist, or has no commits yet.",
     "\"git branch\" lists the local branches."},
    {"branch-checked-out-there", "The branch is checked out in the repository that was pushed to.",
     "Push to a bare repository or to another branch."},
    {"tag-exists", "A different tag with this name already exists.",
     "Choose another name, or delete the existing tag first."},
    {"diverged", "Both branches have commits of their own, so a fast-forward is not possible.",
     "Merge the other branch, or rebase onto it."},
    {"unrelated-histories", "The two histories have no commit in common.",
     "Check that this is the right repository and branch. \"git merge "
     "--allow-unrelated-histories\" merges them anyway."},
    {"up-to-date", "There is nothing new; everything is up to date."},
    // the state of the working copy
    {"local-changes", "Local changes would be overwritten.",
     "Commit the changes, put them aside with \"git stash\", or discard them."},
    {"untracked-in-the-way", "Untracked files would be overwritten or removed.",
     "Move the files away, or add and commit them."},
    {"needs-clean-tree",
     "The operation could not be performed because the working copy \"%@\" has uncommitted "
     "changes.",
     "Commit the changes, or put them aside with \"git stash\"."},
    {"conflict", "There are conflicts that could not be resolved automatically.",
     "Resolve them in the files, mark these with \"git add\", then commit, or continue the "
     "rebase."},
    {"conflict-unresolved", "There are conflicts from an earlier operation.",
     "Resolve them in the files, mark these with \"git add\", commit, then try again."},
    {"merge-unfinished", "A merge, cherry-pick or rebase is not finished.",
     "Commit the merge, or run \"git rebase --continue\"; \"git merge --abort\" or \"git rebase "
     "--abort\" takes it back."},
    {"nothing-to-commit", "There is nothing to commit.",
     "\"git status\" shows the changes; stage them with \"git add\"."},
    {"message-empty", "The commit has no message; nothing was committed.",
     "Enter a commit message."},
    {"identity-unknown",
     "The commit has no author: your name or your e-mail address is not configured.",
     "Set user.name and user.email in git's configuration and try again."},
    {"signing-failed", "The commit could not be signed.",
     "Check the key (user.signingKey) and its agent."},
    {"local-hook-refused", "A hook of the repository refused the operation.",
     "Fix what the hook reports. Hooks are in .git/hooks, or in the folder that core.hooksPath "
     "names."},
    // revisions, branches and paths
    {"revision-unknown", "There is no such branch, tag or commit.",
     "\"git branch --all\" and \"git tag\" list the names; \"git fetch\" gets new ones."},
    {"reference-broken", "A branch or tag cannot be read, or its commit is missing.",
     "The file of the same name in the folder logs of the git directory lists its former commits. "
     "Write the last one into the file of the branch, or delete that file and fetch the branch "
     "again."},
    {"no-commits-yet", "There are no commits yet.", "Create the first commit."},
    {"branch-exists", "A branch with this name already exists.", "Choose another name."},
    {"branch-in-use", "The branch is checked out, here or in another working copy.",
     "Switch that working copy to another branch first."},
    {"branch-not-merged", "The branch has commits that are not merged.",
     "Merge it first, or delete it anyway with \"git branch -D BRANCH\"."},
    {"branch-name-invalid", "This name is not valid for a branch.",
     "Choose another name; \"git help check-ref-format\" lists the rules."},
    {"branch-unknown", "There is no branch with this name.",
     "\"git branch --all\" lists the branches."},
    {"path-unknown", "There is no such file, or git does not track it.",
     "Check the path; \"git ls-files\" lists the tracked files."},
    {"path-outside", "The path is outside the working copy.",
     "Choose a path inside the working copy."},
    {"path-invalid", "The path is not valid.", "Choose another path."},
    {"path-ignored", "The files are ignored.",
     "\"git check-ignore -v FILE\" shows the rule; \"git add -f FILE\" adds the file anyway."},
    {"path-in-submodule", "The path is inside a submodule, which is a repository of its own.",
     "Do this in the submodule."},
    {"destination-exists", "The destination already exists.",
     "Choose another destination, or move the existing one away."},
    {"destination-missing", "The folder of the destination does not exist.",
     "Create the folder first."},
    {"source-directory-empty", "The folder to move has no tracked files.", "Move it without git."},
    // the repository and the machine
    {"not-a-repository", "The folder is not in a git repository.",
     "Choose a folder inside a repository, or create one with \"git init\" or \"git clone\"."},
    {"no-work-tree", "The repository is bare: it has no working copy.",
     "Clone it to get a working copy."},
    {"owner-not-trusted", "The repository is owned by another user; git refuses to use it.",
     "If you trust it, run \"git config --global --add safe.directory PATH\"."},
    {"repository-format-unknown", "The format of the repository is not supported by this git.",
     "Install a newer git."},
    {"index-locked",
     "The index is locked by another git process, or by one that ended without unlocking it.",
     "Wait until the other process has ended. If no git is running, delete the lock file."},
    {"ref-locked",
     "A branch, HEAD or the configuration is locked by another git process, or by one that ended "
     "without unlocking it.",
     "Wait until the other process has ended. If no git is running, delete the lock file."},
    {"index-damaged", "The index is damaged.",
     "Delete the file index in the git directory, then run \"git reset\". What is staged is lost; "
     "the files stay as they are."},
    {"objects-damaged", "Objects of the repository are missing or damaged.",
     "\"git fsck\" lists them. Fetch them from a remote, or clone the repository again."},
    {"configuration-broken", "The configuration of git cannot be read.",
     "Fix the line or value that git names."},
    {"permission-denied", "The operating system denied access to a file or folder.",
     "Check the permissions of the file or folder."},
    {"disk-full", "The disk is full.", "Free some space, then try again."},
    {"other-tools", "A filter, Git LFS or a submodule failed.",
     "Install or fix the tool that git names."},
    {"request-invalid", "The request is not valid.", "Correct the request."},
    {"not-started", "git could not be started.",
     "Check that git is installed and on the PATH, and that the folder exists."},
    {"killed", "A signal ended git.",
     "Try again. If it happens again, check whether the machine runs out of memory."},
    {"cancelled", "The operation was cancelled."},
    {"unknown", "The operation failed for a reason that has no class of its own."},
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
