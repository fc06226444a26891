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
    {"ssh-negotiation-failed", "SSH and the SSH server have no method of encryption in common.",
     "Update the older of the two, or allow the method that the server offers in ~/.ssh/config."},
    {"ssh-configuration-broken", "SSH rejects its configuration.",
     "Fix the line of ~/.ssh/config that it names, or the permissions of that file."},
    {"certificate-untrusted", "The certificate of the server is not trusted.",
     "Name the certificate of the authority that signed it in http.sslCAInfo, and check the clock "
     "of this machine."},
    {"client-certificate-refused",
     "The server requires a client certificate, and none that it accepts was sent.",
     "Set http.sslCert and http.sslKey to the certificate and its key."},
    {"tls-failed", "No encrypted connection to the server could be established.",
     "Check the scheme and port of the URL and the proxy settings."},
    {"http-refused", "The HTTP server refused the request.",
     "Check that your account has access to the repository. If the server limits requests, try "
     "again later."},
    {"server-failed", "The HTTP server failed to process the request.", "Try again later."},
    {"proxy-refused", "The proxy refused to connect to the server.",
     "Check the URL, user name and password of the proxy (http.proxy, https_proxy)."},
    {"protocol-error", "The answer of the server does not follow the protocol of git.",
     "Check the URL, and that no login script of the server prints anything; \"git ls-remote URL\" "
     "in a terminal may show the answer."},
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
    {"remote-damaged", "The remote repository, or the data that it sent, is damaged or incomplete.",
     "Inform the owner of the repository; \"git fsck\" there lists the damage."},
    {"remote-unsupported", "The remote does not support what was requested.",
     "Disable the option that git names, or update git on the remote."},
    {"repository-shallow",
     "A repository does not have the whole history, and the operation requires it.",
     "Run \"git fetch --unshallow\" in the shallow repository, then try again."},
    {"url-invalid", "The URL is not valid, or its server redirects git elsewhere.",
     "Correct the URL; \"git remote -v\" shows it."},
    {"remote-refused", "The remote refused the request.",
     "Read the messages from the remote; they may state the reason."},
    {"transport-unknown", "The URL uses a protocol that git does not know.",
     "Correct the URL, or install the program for its protocol."},
    {"transport-forbidden", "The configuration of git forbids this transport.",
     "Use another URL. If you trust the transport, allow it with protocol.NAME.allow."},
    {"program-missing", "A program that git runs is not installed or cannot be started.",
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
    {"reference-changed", "Another program changed the branch or tag at the same time.",
     "Try again."},
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
    {"remote-url-missing", "The remote has no URL, or not this one.",
     "\"git remote -v\" lists the URLs; \"git remote set-url --add NAME URL\" adds one."},
    {"remote-exists", "A remote with this name already exists.",
     "Choose another name, or remove the existing remote first."},
    {"remote-name-invalid", "This name is not valid for a remote.",
     "Choose another name; \"git help check-ref-format\" lists the rules."},
    {"no-push-destination", "No remote is configured to push to.",
     "Name the remote, or add one with \"git remote add NAME URL\"."},
    {"push-destination-unclear", "It is not clear which branch of the remote to push to.",
     "Name the remote and the branch. To create a branch from a commit or a tag, write its full "
     "name, \"refs/heads/NAME\"."},
    {"no-upstream", "The branch has no upstream branch.",
     "Name the remote and the branch, or set the upstream branch with \"git branch "
     "--set-upstream-to=REMOTE/BRANCH\"."},
    {"no-current-branch", "The operation requires a branch, and none is checked out.",
     "Check out a branch, or create one with \"git switch -c NAME\"."},
    {"no-subversion-upstream",
     "The repository or the branch is not connected to a Subversion repository.",
     "Run \"git svn init URL\", or check out a branch that was fetched from Subversion."},
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
    {"merge-failed", "The merge or rebase failed, for another reason than conflicts.",
     "Fix what git reports, then try again."},
    {"merge-unfinished", "A merge, cherry-pick or rebase is not finished.",
     "Commit the merge, or run \"git rebase --continue\"; \"git merge --abort\" or \"git rebase "
     "--abort\" takes it back."},
    {"nothing-in-progress", "There is no merge, cherry-pick or rebase to continue or abort.",
     "\"git status\" shows the state of the working copy."},
    {"nothing-to-commit", "There is nothing to commit.",
     "\"git status\" shows the changes; stage them with \"git add\"."},
    {"message-empty", "The commit has no message; nothing was committed.",
     "Enter a commit message."},
    {"identity-unknown",
     "The commit has no author: your name or your e-mail address is not configured.",
     "Set user.name and user.email in git's configuration and try again."},
    {"identity-invalid", "An author, committer or date is not in the form that git requires.",
     "Write \"NAME <EMAIL>\" for a person and \"YYYY-MM-DDTHH:MM:SS\" for a date."},
    {"signing-failed", "The commit could not be signed.",
     "Check the key (user.signingKey) and its agent."},
    {"signature-untrusted", "A commit has no valid signature of a trusted key.",
     "Import and trust the key, or disable merge.verifySignatures."},
    {"editor-failed", "The editor that git started failed.",
     "Check core.editor, or enter the message in the request."},
    {"local-hook-refused", "A hook of the repository refused the operation.",
     "Fix what the hook reports. Hooks are in .git/hooks, or in the folder that core.hooksPath "
     "names."},
    // revisions, branches and paths
    {"revision-unknown", "There is no such branch, tag or commit.",
     "\"git branch --all\" and \"git tag\" list the names; \"git fetch\" gets new ones."},
    {"revision-ambiguous",
     "It is not clear what the name means: a revision or a file, a branch or a tag, or one of "
     "several commits.",
     "Write \"refs/heads/NAME\" for a branch, \"refs/tags/NAME\" for a tag, \"./NAME\" for a file, "
     "or more digits of the commit."},
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
    {"name-too-long", "A name is longer than the file system allows.", "Choose a shorter name."},
    {"file-type-wrong", "A folder is where a file is required, or a file where a folder is.",
     "Move it away, or choose another name."},
    {"path-ignored", "The files are ignored.",
     "\"git check-ignore -v FILE\" shows the rule; \"git add -f FILE\" adds the file anyway."},
    {"path-sparse", "The files are outside the sparse checkout.",
     "Extend it with \"git sparse-checkout add FOLDER\", or run \"git add --sparse FILE\"."},
    {"line-ends-refused",
     "The conversion of line ends would change the file for good, and core.safecrlf forbids that.",
     "Convert the line ends of the file, or set core.safecrlf to \"warn\"."},
    {"encoding-failed", "A file is not in the encoding that its attributes name.",
     "Convert the file, or correct working-tree-encoding in .gitattributes."},
    {"path-in-submodule", "The path is inside a submodule, which is a repository of its own.",
     "Do this in the submodule."},
    {"embedded-repository", "The folder is a git repository of its own, and has no commits.",
     "Commit in that repository first, delete its folder .git, or ignore the folder."},
    {"submodule-failed", "A submodule could not be fetched, checked out or pushed.",
     "Fix what git reports, then run \"git submodule update --init --recursive\"."},
    {"destination-exists", "The destination already exists.",
     "Choose another destination, or move the existing one away."},
    {"destination-missing", "The folder of the destination does not exist.",
     "Create the folder first."},
    {"source-directory-empty", "The folder to move has no tracked files.", "Move it without git."},
    // the repository and the machine
    {"not-a-repository", "The folder is not in a git repository.",
     "Choose a folder inside a repository, or create one with \"git init\" or \"git clone\"."},
    {"no-work-tree",
     "The folder is not in a working copy: it is in a bare repository or in a \".git\" folder.",
     "Change to the working copy, or clone the repository to get one."},
    {"owner-not-trusted", "The repository is owned by another user; git refuses to use it.",
     "If you trust it, run \"git config --global --add safe.directory PATH\"."},
    {"bare-repository-forbidden", "safe.bareRepository forbids the use of this bare repository.",
     "If you trust it, set safe.bareRepository to \"all\", or name its folder with --git-dir."},
    {"unsafe-content", "The repository has content that git refuses because it can be an attack.",
     "Do not use the repository before its owner has explained the content."},
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
     "\"git fsck\" lists them. \"git fetch --refetch REMOTE\" (git 2.36 or newer) fetches them "
     "again; "
     "else clone the repository again."},
    {"objects-missing", "The partial clone needs content that its remote did not send.",
     "Check the connection to the remote and its repository, then try again."},
    {"repository-damaged", "A file of the git directory, such as \"shallow\", cannot be read.",
     "Restore or delete the file that git names, or clone the repository again."},
    {"configuration-broken",
     "The configuration of git cannot be read, or has a value that git rejects.",
     "Fix the line or value that git names."},
    {"configured-file-missing", "A file that the configuration names cannot be read.",
     "Create the file, or correct the setting; \"git config --list --show-origin\" lists all."},
    {"permission-denied", "The operating system denied access to a file or folder.",
     "Check the permissions of the file or folder."},
    {"disk-full", "The disk is full.", "Free some space, then try again."},
    {"out-of-memory", "There is not enough memory.",
     "Close other programs, or lower pack.windowMemory and core.packedGitLimit."},
    {"system-limit",
     "A limit of the system was reached: processes, open files or the length of arguments.",
     "Name fewer files, close other programs, or raise the limit; \"ulimit -a\" lists the limits."},
    {"io-error", "A file could not be read or written.",
     "Check the file that git names, and the disk."},
    {"other-tools", "A filter, Git LFS or a submodule failed.",
     "Install or fix the tool that git names."},
    {"request-invalid", "The request is not valid.", "Correct the request."},
    {"git-bug", "git reports a defect of its own.", "Update git, then try again."},
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
