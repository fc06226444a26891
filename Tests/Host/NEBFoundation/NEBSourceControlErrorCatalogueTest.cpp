#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"

#include <gmock/gmock.h>

#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "Support/Matchers.h"

namespace neb {
namespace {

using test::HasErrorClass;
using test::IsSourceControlError;
using test::requestFor;

struct Case {
    const char* errorClass;
    std::int64_t code;
    std::string text;
    /// What a person is told in place of the class's sentence and advice.
    const char* description = nullptr;
    const char* suggestion = nullptr;
};

constexpr const char* uncommittedChanges =
    "The operation could not be performed because the working copy \"demo\" has uncommitted "
    "changes.";
constexpr const char* notTheLatest =
    "The operation could not be performed because \"demo\" does not have the latest remote "
    "changes.";
constexpr const char* pullFirst = "Pull the remote changes and try again.";
constexpr const char* conflicts = "There are conflicts that could not be settled automatically.";
constexpr const char* settleThem = "Settle them in the files, add these, and commit.";
constexpr const char* noAuthor =
    "The commit has no author: your name or your e-mail address is not configured.";
constexpr const char* setIdentity =
    "Set user.name and user.email in git's configuration and try again.";
constexpr const char* noMessage = "The commit has no message; nothing was committed.";

constexpr const char* correctPackedRefs =
    "Correct or remove that line of the file \"packed-refs\".";

/// What git 2.39 and newer ones say, and some that only older ones said.
const Case cases[] = {
    {"disk-full", -1, "error: file write error: No space left on device\nfatal: unable to write"},
    {"permission-denied", 513,
     "error: unable to create temporary file: Read-only file system\n"
     "fatal: failed to write commit object"},
    {"local-hook-refused", -1,
     "policy: No space left on device\nfatal: ref updates aborted by hook",
     "A hook of the repository refused to change a branch or tag."},
    {"other-tools", -1, "f: no space left on device\nfatal: a.c: clean filter 'f' failed"},
    {"configuration-broken", -1, "error: bad config value for 'core.x'"},
    {"configuration-broken", -1, "error: unable to parse 'x=' from command-line config"},
    {"ssh-key-refused", -21, "u@h: Permission denied (hostbased,publickey).\r\n"},
    {"certificate-untrusted", -21,
     "fatal: unable to access 'https://h/': error setting certificate verify locations: x"},
    {"host-unknown", -20, "fatal: unable to access 'http://h/': Resolving timed out after 5 ms"},
    {"host-unreachable", -20, "fatal: unable to access 'https://h/': SSL connection timeout"},
    {"host-unreachable", -20,
     "ssh: connect to host h port 22: Host is down\nfatal: Could not read from remote repository."},
    {"remote-refused", -1, "fatal: remote error: No space left on device"},
    {"remote-refused", -1,
     " ! [remote rejected] main -> main (permission denied for user)\n"
     "error: failed to push some refs to 'x'"},
    {"local-changes", -31, "error: You have local changes to 'a'; cannot switch branches.",
     uncommittedChanges},
    {"local-changes", -31, "error: Your local changes to 'a' would be overwritten by merge.",
     uncommittedChanges},
    {"local-changes", -31, "error: Entry 'a' not uptodate. Cannot merge.", uncommittedChanges},
    {"local-changes", -31, "error: Entry 'a' not uptodate. Cannot update sparse checkout.",
     uncommittedChanges},
    {"local-changes", -31, "error: Entry 'a' would be overwritten by merge. Cannot merge.",
     uncommittedChanges},
    {"untracked-in-the-way", -1,
     "error: Updating the following directories would lose untracked files in them:\n\td"},
    {"merge-unfinished", -1, "fatal: You have not concluded your cherry-pick"},
    {"no-commits-yet", -1, "fatal: You are on a branch yet to be born"},
    {"no-commits-yet", -1, "fatal: bad default revision 'HEAD'"},
    {"ref-locked", -1, "fatal: Unable to create '/r/.git/shallow.lock': File exists."},
    {"ref-locked", -1, "error: Cannot lock the ref 'refs/heads/x'."},
    {"path-unknown", 4, "fatal: path 'a' does not exist (neither on disk nor in the index)"},
    {"path-unknown", 4, "fatal: no such path early EOF.txt in HEAD~2"},
    {"revision-unknown", 4, "fatal: Needed a single revision"},
    {"revision-ambiguous", -1, "fatal: ambiguous argument 'a': both revision and filename"},
    {"branch-unknown", -91, "error: remote-tracking branch 't' not found"},
    {"remote-exists", -1, "fatal: remote x already exists."},
    {"identity-unknown", -1, "fatal: unable to auto-detect email address (got 'x')", noAuthor,
     setIdentity},
    {"identity-unknown", -1, "fatal: no name was given and auto-detection is disabled", noAuthor,
     setIdentity},
    {"identity-unknown", -1, "fatal: name consists only of disallowed characters: .", noAuthor,
     setIdentity},
    {"objects-damaged", -1, "fatal: packed object 1 (stored in x) is corrupt"},
    {"objects-damaged", -1, "fatal: could not parse HEAD commit"},
    {"objects-damaged", -1, "error: refs/heads/x does not point to a valid object!"},
    {"conflict", -1,
     "CONFLICT (modify/delete): early EOF.txt deleted in x and modified in HEAD.\n"
     "Automatic merge failed; fix conflicts and then commit the result.",
     conflicts, settleThem},
    {"nothing-to-commit", -1, "#\tmodified:   notes CONFLICT (bob).txt\nnothing to commit",
     "There is nothing to commit."},
    {"owner-not-trusted", -1, "fatal: detected dubious ownership in repository at '/r'\nTo add"},
    {"owner-not-trusted", -1, "fatal: unsafe repository ('/r' is owned by someone else)"},
    {"configuration-broken", -1, "fatal: bad config line 3 in file .git/config"},
    {"configuration-broken", -1, "fatal: bad boolean config value 'x' for 'core.bare'"},
    {"configuration-broken", -1, "fatal: bad numeric config value 'x' for 'gc.auto'"},
    {"configuration-broken", -1, "fatal: bad config variable 'x' in file '.git/config' at line 2"},
    {"ssh-key-refused", -21,
     "git@h: Permission denied (publickey,password).\r\nfatal: Could not read from remote "
     "repository.\n"},
    {"ssh-key-refused", -21, "u@h: Permission denied (password).\r\n"},
    {"ssh-key-refused", -21, "u@h: Permission denied (keyboard-interactive).\r\n"},
    {"ssh-key-refused", -21, "u@h: Permission denied (gssapi-with-mic).\r\n"},
    {"ssh-host-key", -20,
     "Host key verification failed.\r\nfatal: Could not read from remote repository.\n"},
    {"permission-denied", 513, "fatal: Unable to create '/r/.git/index.lock': Permission denied"},
    {"permission-denied", 513,
     "fatal: cannot lock ref 'refs/heads/z': Unable to create 'z.lock': Permission denied"},
    {"permission-denied", 513,
     "error: insufficient permission for adding an object to repository database .git/objects"},
    {"permission-denied", 513, "warning: could not open directory 'secret/': Permission denied\n"},
    {"index-locked", -1, "fatal: Unable to create '/r/.git/index.lock': File exists.\n\nAnother"},
    {"credentials-refused", -21, "fatal: Authentication failed for 'http://127.0.0.1/x.git/'"},
    {"credentials-needed", -21,
     "fatal: could not read Username for 'http://127.0.0.1': terminal prompts disabled"},
    {"credentials-needed", -21, "fatal: could not read Password for 'http://u@127.0.0.1': x"},
    {"certificate-untrusted", -21,
     "fatal: unable to access 'https://h/': SSL certificate problem: self-signed certificate"},
    {"certificate-untrusted", -21,
     "fatal: unable to access 'https://h/': server certificate verification failed. CAfile: none"},
    {"host-unknown", -20, "fatal: unable to access 'http://h/': Could not resolve host: h"},
    {"host-unknown", -20,
     "ssh: Could not resolve hostname h: Name or service not known\r\nfatal: "
     "Could not read from remote repository."},
    {"repository-not-found", -20, "fatal: repository 'http://127.0.0.1/x.git/' not found"},
    {"repository-not-found", -20,
     "fatal: '/r/nosuch.git' does not appear to be a git repository\nfatal: Could not read from "
     "remote repository."},
    {"repository-not-found", -20, "fatal: repository '/r/nosuch.git' does not exist"},
    {"repository-not-found", -20,
     "ERROR: Repository not found.\nfatal: Could not read from remote"},
    {"http-refused", -1,
     "fatal: unable to access 'http://h/': The requested URL returned error: 403"},
    {"http-refused", -1, "fatal: unable to access 'x': The requested URL returned error: 429"},
    {"server-failed", -20, "fatal: unable to access 'x': The requested URL returned error: 503"},
    {"http-refused", -1, "fatal: rate limited by 'http://h/'"},
    {"host-unreachable", -20,
     "fatal: unable to access 'http://127.0.0.1:1/': Failed to connect to 127.0.0.1 port 1 after 0 "
     "ms: Couldn't connect to server"},
    {"host-unreachable", -20, "fatal: unable to access 'x': Could not connect to server"},
    {"host-unreachable", -20,
     "ssh: connect to host 127.0.0.1 port 1: Connection refused\r\nfatal: Could not read from "
     "remote repository."},
    {"host-unreachable", -20, "ssh: connect to host h port 22: Connection timed out"},
    {"host-unreachable", -20, "ssh: connect to host h port 22: Network is unreachable"},
    {"host-unreachable", -20, "ssh: connect to host h port 22: No route to host"},
    {"push-stale", -32, " ! [rejected]        a -> a (stale info)\nerror: failed to push some refs",
     notTheLatest, pullFirst},
    {"push-stale", -32, " ! [rejected]        a -> a (remote ref updated since checkout)\n",
     notTheLatest, pullFirst},
    {"remote-ahead", -32,
     "To /r.git\n ! [rejected]        main -> main (fetch first)\nerror: failed to push some refs",
     notTheLatest, pullFirst},
    {"remote-ahead", -32,
     " ! [rejected]        main -> main (non-fast-forward)\nerror: failed to push some refs to "
     "'x'",
     notTheLatest, pullFirst},
    {"diverged", -1, "From /r\n ! [rejected]        main -> x (non-fast-forward)\n"},
    {"remote-ahead", -32, "Merge the remote changes (e.g. 'git pull') before pushing again.",
     notTheLatest, pullFirst},
    {"remote-ahead", -32, "\nERROR from SVN:\nTransaction is out of date: File '/trunk/a' is out",
     notTheLatest, pullFirst},
    {"remote-hook-refused", -1,
     "remote: no\n ! [remote rejected] main -> main (pre-receive hook declined)\n"},
    {"remote-hook-refused", -1, "A repository hook failed: Commit blocked by pre-commit hook"},
    {"branch-checked-out-there", -1,
     "remote: error: refusing to update checked out branch: refs/heads/main\n ! [remote rejected] "
     "main -> main (branch is currently checked out)\n"},
    {"tag-exists", -1, " ! [rejected]        v1 -> v1 (already exists)\n"},
    {"tag-exists", -1, " ! [rejected]        v1         -> v1  (would clobber existing tag)\n"},
    {"remote-refused", -1, " ! [remote rejected] main -> main (failed to update ref)\n"},
    {"tls-failed", -20,
     "fatal: unable to access 'https://h/': gnutls_handshake() failed: An unexpected"},
    {"tls-failed", -20,
     "fatal: unable to access 'https://h/': error:0A00010B:SSL routines::wrong version"},
    {"certificate-untrusted", -21,
     "fatal: unable to access 'x': SSL: certificate subject name (o) does not match target host "
     "name 'h'"},
    {"certificate-untrusted", -21,
     "fatal: unable to access 'x': SSL: no alternative certificate subject name matches target "
     "host name 'h'"},
    {"host-unknown", -20, "fatal: unable to access 'x': Could not resolve proxy: p"},
    {"host-unknown", -20, "fatal: unable to look up h (port 9418) (Name or service not known)"},
    {"repository-not-found", -20,
     "fatal: http://h/x.git/info/refs not valid: is this a git repository?"},
    {"connection-cut", -20, "fatal: unable to access 'x': Empty reply from server"},
    {"connection-cut", -20,
     "fatal: unable to access 'x': transfer closed with 96 bytes remaining to read"},
    {"connection-cut", -20,
     "kex_exchange_identification: Connection closed by remote host\r\nfatal: Could not read from "
     "remote repository."},
    {"reference-in-the-way", -1,
     "fatal: cannot lock ref 'refs/heads/a/b': 'refs/heads/a' exists; cannot create "
     "'refs/heads/a/b'"},
    {"path-outside", -1, "fatal: pathspec 'l/b' is beyond a symbolic link"},
    {"path-in-submodule", -1, "fatal: Pathspec 'sub/s' is in submodule 'sub'"},
    {"branch-name-invalid", -1, "fatal: invalid refspec 'main:a..b'"},
    {"transport-unknown", -1,
     "git: 'remote-x' is not a git command. See 'git --help'.\nfatal: unable to find remote helper "
     "for 'x'"},
    {"other-tools", -1,
     "fatal: Fetched in submodule path 'sub', but it did not contain 0123. Direct fetching of that "
     "commit failed."},
    {"other-tools", -1,
     "error: external filter 'false' failed 1\nfatal: b.bin: clean filter 'odd' failed"},
    {"other-tools", -1, "fatal: b.bin: smudge filter odd failed"},
    {"transport-unknown", -1,
     "git: 'remote-x' is not a git command. See 'git --help'.\nfatal: remote helper 'x' aborted "
     "session"},
    {"path-unknown", 4, "fatal: no such path b in HEAD~1"},
    {"path-unknown", 4, "fatal: Cannot lstat 'a': No such file or directory"},
    {"objects-damaged", -1,
     "error: inflate: x\nerror: unable to unpack 0123 header\nfatal: no such path a in HEAD"},
    {"objects-damaged", -1,
     "error: Could not read 01\nfatal: Failed to traverse parents of commit 23"},
    {"objects-damaged", -1, "fatal: unable to read tree 0123"},
    {"objects-damaged", -1,
     "error: unable to read sha1 file of b (01)\nerror: invalid object 100644 01 for 'b'"},
    {"index-damaged", -1,
     "error: cache entry has null sha1: a\nfatal: Unable to write new index file"},
    {"other-tools", -1,
     "git-lfs filter-process: 1: git-lfs: not found\nfatal: the remote end hung up unexpectedly"},
    {"other-tools", -1,
     "git-lfs filter-process: 1: git-lfs: not found\nerror: packet write with format failed\n"
     "error: Could not write client identification\nerror: initialization for subprocess 'git-lfs "
     "filter-process' failed\nfatal: b.bin: clean filter 'lfs' failed"},
    {"program-missing", -1, "odd: 1: odd: not found\nfatal: the remote end hung up unexpectedly"},
    {"program-missing", -1,
     "fatal: cannot run /opt/ssh: No such file or directory\nfatal: unable to fork"},
    {"program-missing", -1, "git: 'svn' is not a git command. See 'git --help'."},
    {"program-missing", -1,
     "error: cannot run /opt/ssh: No such file or directory\nfatal: unable to fork"},
    {"nothing-to-push-from", -1, "error: src refspec nosuch does not match any\nerror: failed to"},
    {"connection-cut", -20, "fatal: the remote end hung up unexpectedly"},
    {"connection-cut", -20, "fatal: The remote end hung up unexpectedly\n"},
    {"connection-cut", -20, "fatal: early EOF"},
    {"connection-cut", -20, "error: RPC failed; curl 18 transfer closed"},
    {"connection-cut", -20, "fatal: read error: Connection reset by peer"},
    {"local-changes", -31,
     "error: Your local changes to the following files would be overwritten by merge:\n\ta.txt\n",
     uncommittedChanges},
    {"local-changes", -31, "fatal: cannot continue with staged changes in the following files:\na",
     uncommittedChanges},
    {"untracked-in-the-way", -1,
     "error: The following untracked working tree files would be overwritten by checkout:\n\tt\n"},
    {"untracked-in-the-way", -1,
     "error: Untracked working tree file 't.txt' would be overwritten by merge.\n"},
    {"untracked-in-the-way", -1,
     "error: The following untracked working tree files would be removed by merge:\n\tt\n"},
    {"conflict-unresolved", -1,
     "error: Committing is not possible because you have unmerged files.\nhint: Fix them up"},
    {"conflict-unresolved", -1, "error: you need to resolve your current index first"},
    {"merge-unfinished", -1, "fatal: You have not concluded your merge (MERGE_HEAD exists)."},
    {"needs-clean-tree", -31, "error: cannot pull with rebase: You have unstaged changes.",
     uncommittedChanges},
    {"needs-clean-tree", -31, "error: additionally, your index contains uncommitted changes.",
     uncommittedChanges},
    {"needs-clean-tree", -31, "update-index --refresh: command returned error: 1\n\n",
     uncommittedChanges},
    {"needs-clean-tree", -31, "Cannot dcommit with a dirty index.  Commit your changes first",
     uncommittedChanges},
    {"conflict", -300, "warning: Cannot merge binary files: bin (HEAD vs. bt)"},
    {"conflict", -1,
     "CONFLICT (content): Merge conflict in a\nAutomatic merge failed; fix conflicts", conflicts,
     settleThem},
    {"conflict", -1, "Automatic merge failed; fix conflicts and then commit the result.", conflicts,
     settleThem},
    {"conflict", -1, "error: could not apply 1234567... subject"},
    {"no-commits-yet", -1, "fatal: your current branch 'main' does not have any commits yet"},
    {"not-a-repository", -1,
     "fatal: not a git repository (or any of the parent directories): .git"},
    {"configuration-broken", -1, "fatal: exceeded maximum include depth (10) while including\n\tx"},
    {"index-damaged", -1, "error: bad signature 0x00000000\nfatal: index file corrupt"},
    {"index-damaged", -1, "error: bad signature 0x00000000"},
    {"index-damaged", -1, "fatal: .git/index: index file smaller than expected"},
    {"index-damaged", -1, "fatal: .git/index: unable to map index file: Invalid argument"},
    {"repository-format-unknown", -1, "fatal: Expected git repo version <= 1, found 9"},
    {"repository-format-unknown", -1, "fatal: unknown repository extension found:\n\tx"},
    {"objects-damaged", -1, "fatal: bad object HEAD"},
    {"path-invalid", -1, "fatal: empty string is not a valid pathspec. please use . instead"},
    {"not-a-repository", -1, "fatal: invalid gitfile format: /r/.git"},
    {"not-a-repository", -1, "fatal: Not a git repository: x"},
    {"no-work-tree", -1, "fatal: this operation must be run in a work tree"},
    {"ref-locked", -1,
     "fatal: cannot lock ref 'refs/heads/z': Unable to create 'z.lock': File exists"},
    {"ref-locked", -1, "error: could not lock config file .git/config: File exists"},
    {"path-unknown", 4, "fatal: path 'a' exists on disk, but not in 'HEAD'"},
    {"path-unknown", 4, "fatal: path 'a' does not exist in 'HEAD'"},
    {"path-unknown", 4, "fatal: no such path 'nosuch' in HEAD"},
    {"path-unknown", -71, "fatal: pathspec 'x' did not match any files"},
    {"path-unknown", -71, "error: pathspec 'x' did not match any file(s) known to git"},
    {"path-unknown", -71, "fatal: not under version control, source=u, destination=v"},
    {"remote-branch-unknown", -1, "fatal: couldn't find remote ref nosuch"},
    {"remote-branch-unknown", -1, "fatal: Couldn't find remote ref nosuch"},
    {"remote-branch-unknown", -1, "fatal: Remote branch nosuch not found in upstream origin"},
    {"revision-unknown", 4,
     "fatal: ambiguous argument 'x': unknown revision or path not in the working tree.\n"},
    {"revision-unknown", 4, "fatal: bad revision 'nosuch'"},
    {"revision-unknown", 4, "fatal: not a valid object name: 'nosuch'"},
    {"revision-unknown", 4, "fatal: Not a valid object name nosuch"},
    {"revision-unknown", 4, "fatal: Not a valid commit name nosuch"},
    {"revision-unknown", 4, "merge: nosuch - not something we can merge"},
    {"revision-unknown", 4, "fatal: invalid reference: nosuch"},
    {"branch-not-merged", -91, "error: The branch 'x' is not fully merged.\nIf you are sure"},
    {"branch-exists", -1, "fatal: a branch named 'x' already exists"},
    {"branch-exists", -1, "fatal: A branch named 'x' already exists."},
    {"branch-in-use", -91, "error: Cannot delete branch 'main' checked out at '/r'"},
    {"branch-in-use", -91, "error: cannot delete branch 'main' used by worktree at '/r'"},
    {"branch-in-use", -1, "fatal: 'topic' is already checked out at '/wt'"},
    {"branch-in-use", -1, "fatal: 'topic' is already used by worktree at '/wt'"},
    {"branch-name-invalid", -1, "fatal: 'a b' is not a valid branch name"},
    {"branch-unknown", -91, "error: branch 'nosuch' not found."},
    {"remote-unknown", -1, "error: No such remote: 'nosuch'"},
    {"remote-exists", -1, "error: remote origin already exists."},
    {"no-push-destination", -1, "fatal: No configured push destination.\nEither specify the URL"},
    {"no-push-destination", -1, "fatal: no remote repository specified.  Please, specify either"},
    {"no-upstream", -92, "fatal: The current branch x has no upstream branch."},
    {"no-upstream", -92, "There is no tracking information for the current branch."},
    {"no-upstream", -92, "Because this is not the default configured remote\nfor your current"},
    {"destination-exists", -60, "fatal: destination exists, source=a, destination=b"},
    {"destination-exists", -60, "fatal: destination already exists, source=a, destination=b"},
    {"destination-exists", -60, "fatal: cannot move directory over file, source=a, destination=b"},
    {"destination-exists", -1,
     "fatal: destination path 'x' already exists and is not an empty directory."},
    {"source-directory-empty", -70, "fatal: source directory is empty, source=d, destination=e"},
    {"diverged", -200, "fatal: Not possible to fast-forward, aborting."},
    {"diverged", -1, "fatal: Need to specify how to reconcile divergent branches."},
    {"unrelated-histories", -1, "fatal: refusing to merge unrelated histories"},
    {"unrelated-histories", -1, "fatal: main...other: no merge base"},
    {"nothing-to-commit", -1, "On branch main\nnothing to commit, working tree clean\n",
     "There is nothing to commit."},
    {"nothing-to-commit", -1, "Changes not staged for commit:\n\nno changes added to commit (use",
     "There is nothing to commit: no change has been added.",
     "Add the changes that belong to the commit, or name their files."},
    {"nothing-to-commit", -1,
     "nothing added to commit but untracked files present (use \"git add\"",
     "There is nothing to commit: all that is new are files that are not tracked yet.",
     "Add the files that belong to the commit."},
    {"identity-unknown", -1, "Author identity unknown\n\n*** Please tell me who you are.\n",
     noAuthor, setIdentity},
    {"identity-unknown", -1, "fatal: empty ident name (for <x@y>) not allowed", noAuthor,
     setIdentity},
    {"identity-unknown", -1, "fatal: no email was given and auto-detection is disabled", noAuthor,
     setIdentity},
    {"message-empty", -1, "Aborting commit due to empty commit message.", noMessage},
    {"signing-failed", -1,
     "error: gpg failed to sign the data\nfatal: failed to write commit object"},
    {"signing-failed", -1, "fatal: failed to write commit object"},
    {"transport-forbidden", -1, "fatal: transport 'file' not allowed"},
    {"objects-damaged", -1, "error: object file .git/objects/12/34 is empty"},
    {"objects-damaged", -1, "fatal: loose object 1234 (stored in x) is corrupt"},
    {"revision-unknown", 4, "fatal: bad object 1234567890123456789012345678901234567890"},
    {"revision-unknown", 4,
     "fatal: reference is not a tree: 1234567890123456789012345678901234567890"},
    {"revision-unknown", 4, "fatal: not a tree object"},
    {"revision-unknown", 4, "fatal: 'x' is not a valid branch point"},
    {"remote-branch-unknown", -1, "fatal: the requested upstream branch 'origin/x' does not exist"},
    {"remote-branch-unknown", -1,
     "fatal: cannot set up tracking information; starting point 'origin/x' is not a branch"},
    {"branch-in-use", -1,
     "fatal: refusing to fetch into branch 'refs/heads/x' checked out at '/r'"},
    {"remote-name-invalid", -1, "fatal: 'a b' is not a valid remote name"},
    {"path-outside", -1, "fatal: /etc/passwd: '/etc/passwd' is outside repository at '/r'"},
    {"path-unknown", -71, "fatal: bad source, source=nosuch, destination=x"},
    {"host-unreachable", -20, "fatal: unable to access 'x': Operation timed out after 9 ms"},
    {"other-tools", -1, "fatal: No url found for submodule path 's' in .gitmodules"},
    {"other-tools", -1, "git-lfs filter-process: git-lfs: not found"},
    {"other-tools", -1, "error: a.txt: patch does not apply"},
    {"no-commits-yet", -1, "fatal: no such ref: HEAD"},
    {"reference-broken", -1, "fatal: your current branch appears to be broken"},
    {"reference-broken", -1,
     "fatal: cannot lock ref 'HEAD': unable to resolve reference 'refs/heads/main': reference "
     "broken"},
    {"reference-broken", -1, "fatal: Failed to resolve HEAD as a valid ref."},
    {"reference-broken", -1,
     "fatal: bad object refs/heads/topic\nerror: . did not send all necessary objects"},
    {"reference-broken", -1, "fatal: missing object 1234 for refs/heads/main"},
    {"reference-broken", -1, "fatal: unexpected line in .git/packed-refs: junk", nullptr,
     correctPackedRefs},
    {"reference-broken", -1, "fatal: unterminated line in /r/.git/packed-refs: junk", nullptr,
     correctPackedRefs},
    {"merge-unfinished", -1,
     "fatal: It seems that there is already a rebase-merge directory, and\nI wonder if you are in "
     "the middle of another rebase.",
     "A rebase was begun here and is not finished.",
     "\"git rebase --continue\" goes on with it, \"git rebase --abort\" takes it back."},
    {"merge-unfinished", -1,
     "fatal: It seems that there is already a rebase-apply directory, and\nI wonder",
     "A rebase was begun here and is not finished.",
     "\"git rebase --continue\" goes on with it, \"git rebase --abort\" takes it back."},
    {"remote-unreadable", -20, "fatal: Could not read from remote repository.\n\nPlease make sure"},
    {"message-empty", -1,
     "Empty commit message.\nNot committing merge; use 'git commit' to complete the merge.\n",
     noMessage},
    {"local-hook-refused", -1,
     "fatal: bad revision 'x'\nNot committing merge; use 'git commit' to complete the merge.\n",
     "A hook of the repository refused the merge; it is made, but not committed."},
    {"merge-unfinished", -1, "fatal: cannot do a partial commit during a merge."},
    {"path-ignored", -1,
     "The following paths are ignored by one of your .gitignore files:\nx.o\nhint: Use -f if"},
    {"destination-missing", -1, "fatal: renaming 'b.txt' failed: No such file or directory"},
    {"destination-missing", -1,
     "fatal: destination directory does not exist, source=b, destination=d/b"},
    {"destination-missing", -1, "fatal: Invalid path '/r/x': No such file or directory"},
    {"no-upstream", -92, "fatal: No remote for the current branch."},
    {"no-upstream", -92, "fatal: No default upstream defined for the current branch."},
    {"remote-unknown", -1, "fatal: No remote configured to list refs from."},
    {"disk-full", -1, "error: Out of diskspace"},
    {"disk-full", -1, "/usr/bin/tar: a: Wrote only 5632 of 10240 bytes"},
    {"objects-damaged", -1, "error: bad tree object HEAD"},
    {"credentials-needed", -21,
     "Authentication realm: <svn://127.0.0.1:3690> r\nPassword for 'root': "},
    {"conflict-unresolved", -1, "warning: path 'a' is unmerged\n",
     "Files that are in conflict stay as they were.", "Settle them and add them."},
    {"unknown", -1, "fatal: something that nobody has said before"},
};

class Catalogue : public testing::TestWithParam<Case> {};

TEST_P(Catalogue, KnowsTheClassAndCodeOfAText) {
    const auto error =
        NEBSourceControlErrorFromText(GetParam().text, *requestFor(18, std::nullopt));
    EXPECT_EQ(NEBSourceControlErrorClassOfText(GetParam().text), GetParam().errorClass);
    EXPECT_EQ(error.errorClass, GetParam().errorClass);
    EXPECT_EQ(error.code, GetParam().code);
    EXPECT_EQ(error.text, GetParam().text);
    const Case& expected = GetParam();
    const bool isText = error.errorClass == NEBSourceControlUnknownErrorClass ||
                        error.code == -200 || error.code == -300;
    const auto* known = NEBSourceControlErrorClassNamed(expected.errorClass);
    ASSERT_NE(known, nullptr) << expected.errorClass;
    EXPECT_EQ(error.localizedDescription(),
              expected.description != nullptr ? expected.description
              : isText                        ? expected.text
                       : formattedText(known->description, {std::string("demo")}));
    EXPECT_EQ(error.localizedRecoverySuggestion().value_or(""),
              expected.suggestion != nullptr ? expected.suggestion : known->advice);
}

INSTANTIATE_TEST_SUITE_P(Texts, Catalogue, testing::ValuesIn(cases));

TEST(ErrorClasses, WhatTheFarEndSaidCountsForNothing) {
    EXPECT_EQ(NEBSourceControlErrorClassOfText(
                  "remote: Permission denied\nremote: fatal: not a git repository\n"),
              "unknown");
    EXPECT_EQ(NEBSourceControlErrorClassOfText(
                  "remote: error: Permission denied (publickey)\n ! [remote rejected] main -> main "
                  "(pre-receive hook declined)\n"),
              "remote-hook-refused");
    EXPECT_EQ(NEBSourceControlErrorClassOfText("the remote: not a git repository"),
              "not-a-repository")
        << "only lines that begin so are the far end's";
}

TEST(ErrorClasses, AWarningOrHintGivesWayToAnError) {
    EXPECT_EQ(NEBSourceControlErrorClassOfText(
                  "warning: unable to access '/h/.config/git/ignore': Permission denied\n"
                  "fatal: bad revision 'nosuch'\n"),
              "revision-unknown");
    EXPECT_EQ(
        NEBSourceControlErrorClassOfText("hint: CONFLICT (content)\nfatal: bad revision 'x'\n"),
        "revision-unknown");
}

TEST(ErrorClasses, NamesOfFilesBranchesAndRepositoriesAreNotGitsWords) {
    const std::pair<const char*, const char*> texts[] = {
        {"fatal: pathspec 'sync conflict (1).txt' did not match any files", "path-unknown"},
        {"error: pathspec 'connection timed out' did not match any file(s) known to git",
         "path-unknown"},
        {"error: pathspec 'it's permission denied' did not match any file(s)", "path-unknown"},
        {"On branch main\nUntracked files:\n\tmy conflict (1).txt\n\nnothing added to commit",
         "nothing-to-commit"},
        {"To https://h/git-lfs/x.git\n ! [rejected]  a -> a (fetch first)\nerror: failed to push "
         "some refs to 'https://h/git-lfs/x.git'",
         "remote-ahead"},
        {"fatal: repository 'http://h/permission denied.git/' not found", "repository-not-found"},
        {"lint: request timed out", "unknown"},
        {"error: something about 'permission denied'", "unknown"},
        {"fatal: couldn't find remote ref 'bad revision '", "remote-branch-unknown"},
        {"error: 'permission denied without an end", "permission-denied"},
        {"On branch multi-pack-index\nnothing to commit, working tree clean", "nothing-to-commit"},
    };
    for (const auto& [text, errorClass] : texts) {
        EXPECT_EQ(NEBSourceControlErrorClassOfText(text), errorClass) << text;
    }
}

TEST(ErrorClasses, SubjectsOfCommitsAreNotGitsWords) {
    const std::pair<const char*, const char*> texts[] = {
        {"error: could not apply 1db7596... handle No space left on device\n"
         "Could not apply 1db7596... handle No space left on device",
         "conflict"},
        {"Rebasing (1/2)\rRebasing (2/2)\rerror: could not apply 1db7596... Permission denied",
         "conflict"},
        {"dropping 1db7596 out of memory -- patch contents already upstream\n"
         "error: could not apply 2db7596... one",
         "conflict"},
        {"Applying: handle Permission denied\nPatch failed at 0001 handle Permission denied\n"
         "CONFLICT (content): Merge conflict in f",
         "conflict"},
        {"Previous HEAD position was 1db7596 Input/output error\nHEAD is now at 2db7596 early EOF\n"
         "error: pathspec 'x' did not match any file(s) known to git",
         "path-unknown"},
        {"error: could not revert 1db7596... Permission denied", "merge-failed"},
        {"Rebasing (1/1)\rfatal: bad pack compression level 'x'", "configuration-broken"},
    };
    for (const auto& [text, errorClass] : texts) {
        EXPECT_EQ(NEBSourceControlErrorClassOfText(text), errorClass) << text;
    }
}

TEST(ErrorClasses, ALineOfQuotesIsReadOnce) {
    std::string text = "fatal: bad object x";
    for (int i = 0; i < 1000000; ++i) {
        text += " 'a";  // opens, and is never closed: hours, if each were followed to the end
    }
    EXPECT_EQ(NEBSourceControlErrorClassOfText(text), "revision-unknown");
    EXPECT_EQ(NEBSourceControlErrorClassOfText("'"), "unknown");
    EXPECT_EQ(NEBSourceControlErrorClassOfText("''"), "unknown");
}

TEST(ErrorClasses, ThePiecesOfASignStandInTheirOrder) {
    EXPECT_EQ(NEBSourceControlErrorClassOfText("does not match any src refspec "), "unknown");
    EXPECT_EQ(NEBSourceControlErrorClassOfText("remote:fatal: not a git repository"), "unknown");
}

TEST(ErrorClasses, TheCauseGoesBeforeWhatAccompaniesIt) {
    EXPECT_EQ(NEBSourceControlErrorClassOfText("fatal: Could not read from remote repository.\n"
                                               "ssh: connect to host h port 1: Connection refused"),
              "host-unreachable");
}

TEST(ErrorClasses, NoTextShowsNone) {
    EXPECT_EQ(NEBSourceControlErrorClassOfText(""), "unknown");
    EXPECT_EQ(NEBSourceControlErrorClassOfText("\n\n"), "unknown");
    EXPECT_EQ(NEBSourceControlErrorClassOfText(std::string("\0\xFF\n", 3)), "unknown");
}

}  // namespace
}  // namespace neb
