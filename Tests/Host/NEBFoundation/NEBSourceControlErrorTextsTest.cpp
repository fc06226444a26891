// What git, ssh, curl and the Subversion bridge say to the letter, and the class that it shows.

#include <gtest/gtest.h>

#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogueRows.h"

namespace neb {
namespace {

struct Said {
    const char* errorClass;
    const char* text;
};

const Said said[] = {
    // names that stand for two things
    {"revision-ambiguous",
     "fatal: ambiguous argument 'a': both revision and filename\n"
     "Use '--' to separate paths from revisions, like this:\n"
     "'git <command> [<revision>...] -- [<file>...]'"},
    {"revision-ambiguous", "fatal: option '--name-status' must come before non-option arguments"},
    {"revision-ambiguous",
     "error: short object ID 12 is ambiguous\nhint: The candidates are:\n"
     "hint:   1234567 commit 2026-01-01 - one\nfatal: ambiguous argument '12': unknown revision or "
     "path not in the working tree."},
    {"revision-ambiguous",
     "error: src refspec t matches more than one\nerror: failed to push some refs to '/r'"},
    {"revision-ambiguous", "error: dst refspec t matches more than one"},
    {"revision-ambiguous", "fatal: 'x' matched multiple (2) remote tracking branches"},
    {"revision-ambiguous",
     "fatal: 'x' could be both a local file and a tracking branch.\nPlease use -- (and optionally "
     "--no-guess) to disambiguate"},
    {"revision-ambiguous", "fatal: ambiguous object name: 'x'"},
    {"push-destination-unclear",
     "error: The destination you provided is not a full refname (i.e.,\nstarting with "
     "\"refs/\"). We tried to guess what you meant by:\n\nNeither worked, so we gave up. You must "
     "fully qualify the ref."},
    {"push-destination-unclear",
     "fatal: The upstream branch of your current branch does not match\nthe name of your current "
     "branch.  To push to the upstream branch\non the remote, use"},
    {"push-destination-unclear",
     "fatal: You didn't specify any refspecs to push, and push.default is \"nothing\"."},
    {"revision-unknown", "fatal: invalid upstream 'nosuch'"},
    // the cause, and what follows from it
    {"remote-unsupported",
     "fatal: the receiving end does not support --signed push\n"
     "fatal: the remote end hung up unexpectedly"},
    {"remote-unsupported", "fatal: the receiving end does not support --atomic push"},
    {"disk-full",
     "error: cannot lock ref 'refs/heads/x': Unable to create '/r/.git/refs/heads/x.lock': No "
     "space left on device"},
    {"name-too-long",
     "fatal: cannot lock ref 'refs/heads/n': Unable to create '/r/.git/refs/heads/n.lock': File "
     "name too long"},
    {"reference-in-the-way",
     "fatal: cannot lock ref 'refs/heads/a/b': Unable to create '/r/.git/refs/heads/a/b.lock': Not "
     "a directory"},
    {"reference-in-the-way",
     "error: cannot lock ref 'refs/heads/a': unable to create lock file /r/.git/refs/heads/a.lock; "
     "non-directory in the way"},
    {"reference-in-the-way",
     "error: cannot lock ref 'refs/heads/a': there is a non-empty directory '.git/refs/heads/a' "
     "blocking reference 'refs/heads/a'"},
    {"reference-in-the-way",
     "error: some local refs could not be updated; try running\n 'git remote prune origin' to "
     "remove any old, conflicting branches"},
    {"reference-changed",
     "error: cannot lock ref 'refs/heads/x': is at 1234567890123456789012345678901234567890 but "
     "expected 2345678901234567890123456789012345678901"},
    {"reference-changed", "fatal: cannot lock ref 'refs/heads/x': reference already exists"},
    {"permission-denied",
     "fatal: cannot lock ref 'HEAD': Unable to create '/r/.git/HEAD.lock': Permission denied"},
    {"ref-locked",
     "fatal: cannot lock ref 'HEAD': Unable to create '/r/.git/HEAD.lock': File exists."},
    {"objects-damaged",
     "fatal: unable to read 00750edc07d6415dcc07ae0351e9397b0222b7ba\n"
     "error: remote unpack failed: eof before pack header was fully read\nTo ../tgt\n"
     " ! [remote rejected] main -> main (unpacker error)\nerror: failed to push some refs to 'x'"},
    {"objects-damaged",
     "error: object file .git/objects/12/34 is empty\nerror: remote unpack failed: eof before pack "
     "header was fully read\n ! [remote rejected] main -> main (unpacker error)"},
    {"host-unknown",
     "fatal: unable to access 'https://h/': Could not resolve host: h\n"
     "fatal: could not fetch 1234 from promisor remote"},
    {"objects-missing",
     "fatal: remote error: upload-pack: not our ref 1234\n"
     "fatal: could not fetch 1234 from promisor remote"},
    {"http-refused",
     "error: RPC failed; HTTP 413 curl 22 The requested URL returned error: 413\n"
     "fatal: the remote end hung up unexpectedly\nEverything up-to-date"},
    {"tls-failed",
     "fatal: unable to access 'https://h/': gnutls_handshake() failed: x\nfatal: early EOF"},
    {"remote-damaged",
     "error: git upload-pack: git-pack-objects died with error.\nfatal: git upload-pack: aborting "
     "due to possible repository corruption on the remote side.\nfatal: early EOF\n"
     "fatal: fetch-pack: invalid index-pack output"},
    {"remote-damaged",
     "fatal: unexpected line in ./packed-refs: junk\nfatal: expected flush after ref listing"},
    {"connection-cut",
     "fetch-pack: unexpected disconnect while reading sideband packet\nfatal: early EOF\n"
     "fatal: fetch-pack: invalid index-pack output"},
    {"connection-cut",
     "fatal: unable to access 'https://h/': Operation too slow. Less than 1000 bytes/sec "
     "transferred the last 5 seconds"},
    {"reference-broken",
     "warning: ignoring broken ref refs/heads/t\nfatal: ambiguous argument 't': unknown revision "
     "or "
     "path not in the working tree."},
    // content
    {"line-ends-refused", "fatal: CRLF would be replaced by LF in a"},
    {"line-ends-refused", "fatal: LF would be replaced by CRLF in a"},
    {"unknown", "warning: in the working copy of 'a', LF will be replaced by CRLF the next time"},
    {"embedded-repository",
     "error: 'sub/' does not have a commit checked out\nfatal: adding files failed"},
    {"path-invalid", "fatal: can not move directory into itself, source=d, destination=d/e"},
    {"configured-file-missing", "fatal: could not open object name list: /nosuch"},
    {"program-missing",
     "fatal: cannot run /nosuch/prog: No such file or directory\n"
     "fatal: unable to read files to diff"},
    {"program-missing", "words: 1: words: not found\nfatal: unable to read files to diff"},
    // requests
    {"request-invalid", "error: unknown option `foo'\nusage: git branch [<options>] [-r | -a]"},
    {"request-invalid", "usage: git merge-base [-a | --all] <commit> <commit>..."},
    {"request-invalid", "fatal: options '--squash' and '--no-ff.' cannot be used together"},
    {"request-invalid", "fatal: options '-b', '-B', and '--orphan' cannot be used together"},
    {"request-invalid", "fatal: unrecognized argument: --foo"},
    // the machine
    {"out-of-memory", "fatal: Out of memory, malloc failed (tried to allocate 4294967296 bytes)"},
    {"out-of-memory", "fatal: mmap failed: Cannot allocate memory"},
    {"system-limit", "error: cannot fork() for upload-pack: Resource temporarily unavailable"},
    {"system-limit", "fatal: unable to create thread: Resource temporarily unavailable"},
    {"system-limit",
     "error: unable to open object pack directory: .git/objects/pack: Too many open files"},
    {"io-error", "fatal: read error: Input/output error"},
    {"repository-damaged", "fatal: bad shallow line: junk"},
    // settings
    {"configuration-broken", "fatal: bad zlib compression level 99"},
    {"configuration-broken",
     "error: malformed value for push.default: foo\nerror: must be one of nothing, matching, "
     "simple, upstream or current\nfatal: bad config variable 'push.default' in file"},
    {"configuration-broken", "fatal: invalid value for 'pull.rebase': 'foo'"},
    {"configuration-broken", "fatal: unknown style 'foo' given for 'merge.conflictstyle'"},
    {"configuration-broken", "fatal: Invalid cleanup mode foo"},
    // ssh and TLS
    {"ssh-key-refused",
     "Received disconnect from 192.0.2.1 port 22:2: Too many authentication failures\r\n"
     "fatal: Could not read from remote repository."},
    {"ssh-host-key",
     "@    WARNING: REMOTE HOST IDENTIFICATION HAS CHANGED!     @\n"
     "fatal: Could not read from remote repository."},
    {"ssh-negotiation-failed",
     "Unable to negotiate with 192.0.2.1 port 22: no matching key exchange method found. Their "
     "offer: diffie-hellman-group1-sha1\r\nfatal: Could not read from remote repository."},
    {"ssh-configuration-broken",
     "Bad owner or permissions on /h/.ssh/config\r\nfatal: Could not read from remote repository."},
    {"host-unreachable",
     "ssh: connect to host h port 22: Permission denied\r\n"
     "fatal: Could not read from remote repository."},
    {"host-unknown",
     "ssh: Could not resolve hostname h: Temporary failure in name resolution\r\n"
     "fatal: Could not read from remote repository."},
    {"connection-cut",
     "kex_exchange_identification: Connection closed by remote host\r\nConnection closed by "
     "192.0.2.1 port 22\r\nfatal: Could not read from remote repository."},
    {"certificate-untrusted",
     "fatal: unable to access 'https://h/': SSL certificate problem: certificate has expired"},
    {"certificate-untrusted",
     "fatal: unable to access 'https://h/': error reading ca cert file /nosuch (Error while "
     "reading file.)"},
    {"client-certificate-refused",
     "fatal: unable to access 'https://h/': could not load PEM client certificate, OpenSSL error "
     "error:02001002:system library:fopen:No such file or directory"},
    {"client-certificate-refused",
     "fatal: unable to access 'https://h/': OpenSSL SSL_read: error:1409445C:SSL "
     "routines:ssl3_read_bytes:tlsv13 alert certificate required, errno 0"},
    {"proxy-refused",
     "fatal: unable to access 'https://h/': Received HTTP code 407 from proxy after CONNECT"},
    {"connection-cut",
     "fatal: unable to access 'https://h/': OpenSSL SSL_read: Connection reset by peer, errno 104"},
    {"connection-cut",
     "error: RPC failed; curl 56 GnuTLS recv error (-110): The TLS connection was non-properly "
     "terminated."},
    // Subversion
    {"credentials-refused",
     "Authentication realm: <svn://h:3690> r\nPassword for 'ann': Can't create session: Unable to "
     "connect to a repository at URL 'svn://h/trunk': Authorization failed at SVN.pm line 148."},
    {"credentials-refused",
     "Can't create session: Unable to connect to a repository at URL 'svn://h/trunk': "
     "Authentication error from server: Password incorrect at SVN.pm line 148."},
    {"repository-not-found",
     "Can't create session: Unable to connect to a repository at URL 'file:///r/trunk': Unable to "
     "open repository 'file:///r/trunk' at SVN.pm line 148."},
    {"repository-not-found",
     "Can't create session: Unable to connect to a repository at URL 'svn://h/x': No repository "
     "found in 'svn://h/x' at SVN.pm line 148."},
    {"host-unreachable",
     "Can't create session: Unable to connect to a repository at URL 'http://h/x': Error running "
     "context: Connection refused at SVN.pm line 148."},
    {"host-unknown",
     "Can't create session: Unable to connect to a repository at URL 'svn://h/x': Unknown hostname "
     "'h' at SVN.pm line 148."},
    {"transport-unknown",
     "Bad URL passed to RA layer: Unrecognized URL scheme for 'foo://h/x' at SVN.pm line 148."},
    {"no-subversion-upstream", "[svn-remote \"svn\"] unknown\n"},
    {"no-subversion-upstream",
     "Unable to determine upstream SVN information from HEAD history.\n"
     "Perhaps the repository is empty. at git-svn line 875."},
    {"remote-ahead",
     "ERROR from SVN:\nItem is out of date: File '/trunk/a' is out of date\nW: 1234 and "
     "refs/remotes/git-svn differ"},
    {"remote-ahead",
     "There are new revisions that were fetched and need to be merged (or acknowledged) before "
     "committing.\nr7\nYou can attempt to merge with:"},
    {"no-subversion-upstream",
     "merge parent 1234 for 5678 has no parent commit, and therefore nothing to diff against."},
    {"repository-damaged",
     "Last fetched revision of refs/remotes/git-svn was r9, but we are about to fetch: r7!"},
    {"remote-damaged", "fatal: index-pack failed"},
    {"program-missing", "Can't locate SVN/Core.pm in @INC (you may need to install the module)"},
};

/// The texts of git 2.39's own sources, one for each family that the commands of the plug-in can
/// come to; every name is "x", every number 7.
const Said families[] = {
    {"bare-repository-forbidden",
     "fatal: cannot use bare repository 'x' (safe.bareRepository is 'x')"},
    {"branch-exists", "fatal: a branch named 'x' already exists"},
    {"branch-in-use", "fatal: cannot force update the branch 'x' checked out at 'x'"},
    {"branch-in-use", "error: Cannot delete branch 'x' checked out at 'x'"},
    {"branch-in-use", "fatal: refusing to fetch into branch 'x' checked out at 'x'"},
    {"branch-name-invalid", "fatal: 'x' is not a valid branch name"},
    {"branch-name-invalid", "fatal: Invalid branch name: 'x'"},
    {"branch-name-invalid", "fatal: invalid initial branch name: 'x'"},
    {"branch-name-invalid", "fatal: Could not get fetch map for refspec x"},
    {"branch-not-merged",
     "error: The branch 'x' is not fully merged.\nIf you are sure you want to delete it, run 'git "
     "branch -D x'."},
    {"branch-unknown", "error: remote-tracking branch 'x' not found."},
    {"branch-unknown", "fatal: branch x was not found in the repository"},
    {"configuration-broken",
     "fatal: cannot inherit upstream tracking configuration of multiple refs when rebasing is "
     "requested"},
    {"configuration-broken", "fatal: expecting a color: x"},
    {"configuration-broken",
     "fatal: unable to select a comment character that is not used\nin the current commit message"},
    {"configuration-broken", "fatal: $HOME not set"},
    {"configured-file-missing", "fatal: unable to read signature file 'x': Somereason"},
    {"configured-file-missing", "fatal: failed to expand user dir in: 'x'"},
    {"configured-file-missing", "fatal: failed to read orderfile 'x': Somereason"},
    {"configured-file-missing", "fatal: could not open object name list: x"},
    {"conflict", "fatal: Could not apply 'x'"},
    {"conflict", "error: could not apply x... x"},
    {"conflict-unresolved",
     "error: Cherry-picking is not possible because you have unmerged files."},
    {"conflict-unresolved", "error: path 'x' does not have our version"},
    {"conflict-unresolved", "error: your index file is unmerged."},
    {"conflict-unresolved",
     "fatal: Cannot change unmerged .gitmodules, resolve merge conflicts first"},
    {"connection-cut", "fatal: early EOF"},
    {"connection-cut", "fatal: early EOF 'x'"},
    {"connection-cut", "fatal: the remote end hung up upon initial contact"},
    {"connection-cut", "error: the remote end hung up unexpectedly"},
    {"credentials-needed", "fatal: credential helper 'x' told us to quit"},
    {"credentials-needed", "error: unable to read askpass response from 'x'"},
    {"credentials-refused", "fatal: Authentication failed for 'x'"},
    {"destination-exists", "fatal: x exists and is not a directory"},
    {"destination-exists", "fatal: destination 'x' is not a directory"},
    {"destination-exists", "fatal: directory not empty: 'x'"},
    {"disk-full", "fatal: sha1 file 'x' write error. Out of diskspace"},
    {"diverged", "fatal: Not possible to fast-forward, aborting."},
    {"diverged", "fatal: Cannot rebase onto multiple branches."},
    {"editor-failed", "fatal: editing patch failed"},
    {"editor-failed", "error: Terminal is dumb, but EDITOR unset"},
    {"embedded-repository", "fatal: Directory x is in index and no submodule?"},
    {"embedded-repository", "fatal: 'x' does not have a commit checked out"},
    {"encoding-failed", "error: failed to encode 'x' from x to x"},
    {"file-type-wrong", "fatal: Not a regular file: x"},
    {"file-type-wrong", "fatal: 'x': not a regular file or symlink"},
    {"file-type-wrong", "fatal: cannot use x as an exclude file"},
    {"file-type-wrong", "error: packfile x not a regular file"},
    {"git-bug", "fatal: internal error in blame_origin_decref"},
    {"git-bug", "fatal: internal error in revision walk"},
    {"git-bug", "fatal: unhandled object 'x' given."},
    {"git-bug", "fatal: confusion beyond insanity in parse_pack_objects()"},
    {"host-unknown", "fatal: unable to look up x (port x) (x)"},
    {"identity-invalid", "fatal: commit 'x' lacks author header"},
    {"identity-invalid", "fatal: invalid ident line: x"},
    {"identity-invalid", "fatal: Timestamp+tz too large: 7 +7"},
    {"identity-invalid", "fatal: unable to auto-detect name (got 'x')"},
    {"identity-unknown", "fatal: no email was given and auto-detection is disabled"},
    {"index-damaged", "fatal: index file corrupt"},
    {"index-damaged", "fatal: index cache-tree records empty sub-tree"},
    {"index-damaged", "fatal: index file corrupt in repo x"},
    {"index-damaged", "fatal: cache entry out of order"},
    {"io-error", "fatal: unable to get current working directory: Somereason"},
    {"io-error", "fatal: unable to redirect descriptor: Somereason"},
    {"io-error", "error: cannot read 'x'"},
    {"io-error", "fatal: cannot open 'x' for reading"},
    {"killed", "error: checkout worker 7 died of signal 7"},
    {"killed", "error: x died of signal 7"},
    {"killed", "error: pack-objects died of signal 7"},
    {"line-ends-refused", "fatal: CRLF would be replaced by LF in x"},
    {"local-changes", "fatal: cannot continue with staged changes in the following files:\nx"},
    {"local-changes",
     "error: Your local changes to the following files would be overwritten by merge:\n  x"},
    {"local-changes", "fatal: Please stage your changes to .gitmodules or stash them to proceed"},
    {"local-changes",
     "fatal: Cannot fast-forward your working tree.\nAfter making sure that you saved anything "
     "precious from\n$ git diff x"},
    {"local-hook-refused", "fatal: The pre-rebase hook refused to rebase."},
    {"local-hook-refused", "fatal: ref updates aborted by hook"},
    {"local-hook-refused", "error: 'prepare-commit-msg' hook failed"},
    {"merge-failed", "error: path 'x': cannot merge"},
    {"merge-failed", "fatal: could not run stash."},
    {"merge-failed", "error: could not generate todo list"},
    {"merge-failed", "error: could not revert x... x"},
    {"merge-unfinished", "error: You have not concluded your merge (MERGE_HEAD exists)."},
    {"merge-unfinished",
     "fatal: cannot switch branch while merging\nConsider \"git merge --quit\" or \"git worktree "
     "add\"."},
    {"merge-unfinished", "fatal: cannot do a partial commit during a merge."},
    {"merge-unfinished",
     "fatal: You have not concluded your merge (MERGE_HEAD exists).\nPlease, commit your changes "
     "before you merge."},
    {"needs-clean-tree", "fatal: Updating an unborn branch with changes added to the index."},
    {"needs-clean-tree", "error: cannot rebase: You have unstaged changes."},
    {"needs-clean-tree", "error: submodule 'x' has dirty index"},
    {"needs-clean-tree", "error: cannot x: You have unstaged changes."},
    {"no-commits-yet", "fatal: no such ref: HEAD"},
    {"no-commits-yet", "fatal: No commit on branch 'x' yet."},
    {"no-commits-yet", "fatal: You are on a branch yet to be born"},
    {"no-commits-yet", "fatal: You have nothing to amend."},
    {"no-current-branch", "fatal: Cannot give description to detached HEAD"},
    {"no-current-branch", "fatal: No current branch."},
    {"no-current-branch",
     "fatal: Submodule (x) branch configured to inherit branch from superproject, but the "
     "superproject is not on any branch"},
    {"no-current-branch", "fatal: No current branch"},
    {"no-push-destination",
     "fatal: no remote repository specified; please specify either a URL or a\nremote name from "
     "which new revisions should be fetched"},
    {"no-push-destination",
     "fatal: No configured push destination.\nEither specify the URL from the command-line or "
     "configure a remote repository using\n"},
    {"no-upstream", "fatal: not tracking: ambiguous information for ref 'x'"},
    {"no-upstream", "fatal: Branch 'x' has no upstream information"},
    {"no-upstream", "fatal: No remote for the current branch."},
    {"no-upstream",
     "fatal: The current branch x has no upstream branch.\nTo push the current branch and set the "
     "remote as upstream, use\n"},
    {"no-work-tree", "fatal: this operation must be run in a work tree"},
    {"no-work-tree", "fatal: relative path syntax can't be used outside working tree"},
    {"not-a-repository", "fatal: Not a git repository"},
    {"not-a-repository", "fatal: invalid gitfile format: x"},
    {"nothing-in-progress", "fatal: There is no merge to abort (MERGE_HEAD missing)."},
    {"nothing-in-progress", "fatal: Nothing to do"},
    {"nothing-in-progress", "error: no cherry-pick or revert in progress"},
    {"nothing-to-push-from", "error: src refspec x does not match any"},
    {"objects-damaged", "error: cannot stream blob x"},
    {"objects-damaged", "fatal: Cannot read blob x for path x"},
    {"objects-damaged", "error: Couldn't look up commit object for 'x'"},
    {"objects-damaged", "fatal: unable to parse commit x"},
    {"objects-missing", "fatal: promisor-remote: unable to fork off fetch subprocess"},
    {"other-tools", "fatal: unable to start 'x' filter: Somereason"},
    {"other-tools", "fatal: No url found for submodule path 'x' in .gitmodules"},
    {"other-tools", "error: cannot fork to run external filter 'x'"},
    {"other-tools", "fatal: external diff died, stopping at x"},
    {"out-of-memory", "fatal: attempting to mmap 7 over limit 7"},
    {"out-of-memory", "fatal: you want to use way too much memory"},
    {"out-of-memory", "error: attempting to allocate 7 over limit 7"},
    {"out-of-memory", "fatal: inflate: out of memory"},
    {"owner-not-trusted",
     "fatal: detected dubious ownership in repository at 'x'\nxTo add an exception for this "
     "directory, call:\n"},
    {"path-in-submodule", "fatal: in unpopulated submodule 'x'"},
    {"path-invalid", "fatal: The empty string is not a valid path"},
    {"path-invalid", "fatal: unsupported file type x"},
    {"path-invalid", "error: cannot chmod cx 'x'"},
    {"path-invalid", "error: path name too long for external filter"},
    {"path-outside", "fatal: x: 'x' is outside repository at 'x'"},
    {"path-outside", "fatal: 'x' is outside repository at 'x'"},
    {"path-unknown", "fatal: pathspec 'x' did not match any files"},
    {"path-unknown", "fatal: no such path 'x' in HEAD"},
    {"path-unknown", "fatal: No such path 'x' in the diff"},
    {"path-unknown", "error: pathspec 'x' did not match any file(s) known to git"},
    {"permission-denied",
     "error: insufficient permission for adding an object to repository database x"},
    {"program-missing", "fatal: cannot start proxy x"},
    {"program-missing", "error: cannot spawn x: Somereason"},
    {"protocol-error", "fatal: git archive: expected ACK/NAK, got a flush packet"},
    {"protocol-error", "fatal: expected flush after capabilities"},
    {"protocol-error", "fatal: git fetch-pack: expected shallow list"},
    {"protocol-error", "error: flush packet write failed"},
    {"push-destination-unclear", "fatal: --delete only accepts plain target ref names"},
    {"push-destination-unclear", "fatal: src refspec 'x' must name a ref"},
    {"push-destination-unclear",
     "error: The destination you provided is not a full refname (i.e.,\nstarting with \"refs/\"). "
     "We tried to guess what you meant by:\n"},
    {"ref-locked", "error: could not lock config file x: Somereason"},
    {"ref-locked", "fatal: cannot lock ref 'x': x"},
    {"ref-locked", "fatal: shallow file has changed since we read it"},
    {"reference-broken", "fatal: HEAD (x) points outside of refs/heads/"},
    {"reference-broken", "fatal: HEAD not found below refs/heads!"},
    {"reference-broken", "fatal: Failed to resolve HEAD as a valid ref."},
    {"reference-broken", "fatal: could not retrieve `x`"},
    {"reference-changed", "fatal: cannot lock ref 'x': reference already exists"},
    {"reference-changed", "fatal: cannot update ref 'x': reference already exists"},
    {"reference-in-the-way",
     "error: some local refs could not be updated; try running\n 'git remote prune x' to remove "
     "any old, conflicting branches"},
    {"reference-in-the-way", "fatal: 'x' exists; cannot create 'x'"},
    {"reference-in-the-way", "fatal: unable to create lock file x.lock; non-directory in the way"},
    {"reference-in-the-way", "fatal: Reference directory conflict: x"},
    {"remote-branch-unknown", "fatal: Remote branch x not found in upstream x"},
    {"remote-branch-unknown", "fatal: couldn't find remote ref HEAD"},
    {"remote-branch-unknown", "error: Cannot determine remote HEAD"},
    {"remote-branch-unknown", "fatal: no matching remote head"},
    {"remote-damaged", "fatal: remote did not send all necessary objects"},
    {"remote-damaged", "error: x did not send all necessary objects"},
    {"remote-damaged", "fatal: object type mismatch at x"},
    {"remote-damaged", "fatal: cannot fill 7 bytes"},
    {"remote-exists", "error: remote x already exists."},
    {"remote-name-invalid", "fatal: 'x' is not a valid remote name"},
    {"remote-refused", "fatal: git archive: NACK x"},
    {"remote-refused", "fatal: pack exceeds maximum allowed size (x)"},
    {"remote-refused", "fatal: pack exceeds maximum allowed size"},
    {"remote-refused", "error: Server does not allow request for unadvertised object x"},
    {"remote-unknown", "fatal: no such remote or remote group: x"},
    {"remote-unknown", "fatal: No remote configured to list refs from."},
    {"remote-unknown", "error: No such remote: 'x'"},
    {"remote-unknown", "fatal: remote 'x' not configured"},
    {"remote-unreadable", "fatal: remote transport reported error"},
    {"remote-unreadable", "error: could not fetch x"},
    {"remote-unreadable", "error: Could not fetch x"},
    {"remote-unreadable", "fatal: could not fetch a revision for HEAD"},
    {"remote-unsupported", "fatal: underlying transport does not support --x option"},
    {"remote-unsupported", "fatal: support for protocol v2 not implemented yet"},
    {"remote-unsupported", "fatal: server doesn't support 'x'"},
    {"remote-unsupported", "fatal: Server does not support shallow clients"},
    {"remote-url-missing", "fatal: remote x has no configured URL"},
    {"remote-url-missing", "fatal: no URLs configured for remote 'x'"},
    {"repository-damaged", "fatal: Corrupt MERGE_HEAD file (x)"},
    {"repository-damaged", "error: bad graft data: x"},
    {"repository-damaged", "fatal: invalid shallow line: x"},
    {"repository-damaged",
     "error: object directory x does not exist; check .git/objects/info/alternates"},
    {"repository-format-unknown",
     "error: index file x is version 7 and is not supported by this binary (try upgrading GIT to a "
     "newer version)"},
    {"repository-format-unknown", "error: index uses x extension, which we do not understand"},
    {"repository-format-unknown", "error: cannot upgrade repository format from 7 to 7: x"},
    {"repository-format-unknown", "fatal: cannot use split index with a sparse index"},
    {"repository-not-found", "fatal: repository 'x' does not exist"},
    {"repository-not-found", "fatal: repository 'x' not found"},
    {"repository-shallow", "fatal: source repository is shallow, reject to clone."},
    {"request-invalid", "fatal: unclosed quote: 'x'"},
    {"request-invalid", "fatal: cannot use --contents with final commit object name"},
    {"request-invalid", "fatal: options 'x' and 'x' cannot be used together"},
    {"request-invalid", "fatal: --progress can't be used with --incremental or porcelain formats"},
    {"revision-ambiguous", "fatal: ambiguous object name: 'x'"},
    {"revision-ambiguous",
     "fatal: 'x' could be both a local file and a tracking branch.\nPlease use -- (and optionally "
     "--no-guess) to disambiguate"},
    {"revision-ambiguous",
     "error: Multiple remote HEAD branches. Please choose one explicitly with:"},
    {"revision-ambiguous", "error: refname 'x' is ambiguous"},
    {"revision-unknown", "fatal: no such ref: x"},
    {"revision-unknown", "fatal: no such commit x"},
    {"revision-unknown", "fatal: not a valid object name: 'x'"},
    {"revision-unknown", "fatal: cannot find revision x to ignore"},
    {"signature-untrusted", "fatal: Commit x has an untrusted GPG signature, allegedly by x."},
    {"signing-failed", "fatal: failed to write commit object"},
    {"signing-failed",
     "error: ssh-keygen -Y find-principals/verify is needed for ssh signature verification "
     "(available in openssh version 8.2p1+)"},
    {"signing-failed", "fatal: failed to sign the push certificate"},
    {"submodule-failed", "fatal: submodule 'x': unable to find submodule"},
    {"submodule-failed",
     "fatal: branch with --recurse-submodules can only be used if submodule.propagateBranches is "
     "enabled"},
    {"submodule-failed", "fatal: Expecting a full ref name, got x"},
    {"submodule-failed", "fatal: submodule entry 'x' (x) is a x, not a commit"},
    {"system-limit", "fatal: unable to create thread: x"},
    {"system-limit", "fatal: unable to fork"},
    {"system-limit", "fatal: fetch-pack: unable to fork off sideband demultiplexer"},
    {"system-limit", "fatal: unable to create lazy_dir thread: x"},
    {"transport-forbidden", "fatal: transport 'x' not allowed"},
    {"transport-unknown", "fatal: protocol 'x' is not supported"},
    {"transport-unknown", "fatal: unable to find remote helper for 'x'"},
    {"unrelated-histories", "fatal: x...x: no merge base"},
    {"unrelated-histories", "fatal: could not find exact merge base"},
    {"unrelated-histories", "fatal: refusing to merge unrelated histories"},
    {"unrelated-histories", "fatal: 'x': need exactly one merge base with branch"},
    {"unsafe-content", "fatal: symlink 'x' exists, refusing to clone with --local"},
    {"unsafe-content", "fatal: refusing to create/use 'x' in another submodule's git dir"},
    {"unsafe-content", "error: refusing to work with overly long line in 'x' on line 7"},
    {"unsafe-content", "error: submodule git dir 'x' is inside git dir 'x'"},
    {"url-invalid", "fatal: repo URL: 'x' must be absolute or begin with ./|../"},
    {"url-invalid", "fatal: unknown port x"},
    {"url-invalid", "fatal: refusing to work with credential missing host field"},
    {"url-invalid",
     "fatal: unable to update url base from redirection:\n  asked for: x\n   redirect: x"},
};

class SaidByGit : public testing::TestWithParam<Said> {};

TEST_P(SaidByGit, ShowsTheClass) {
    EXPECT_EQ(NEBSourceControlErrorClassOfText(GetParam().text), GetParam().errorClass)
        << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Texts, SaidByGit, testing::ValuesIn(said));
INSTANTIATE_TEST_SUITE_P(Families, SaidByGit, testing::ValuesIn(families));

/// A text that the sign is in, with a name where it has the beginning or the end of one.
std::string textWith(const ErrorTextSign& sign, const std::string& beginning) {
    std::string text(sign.first);
    if (text.starts_with('\n')) {
        text.erase(0, 1);
    } else {
        text.insert(0, beginning + (text.starts_with('\'') ? "'x" : ""));
    }
    text += text.ends_with('\'') ? "x" : "";
    text += text.ends_with("'x") && !sign.second.starts_with('\'') ? "' " : "";
    text += sign.second;
    return text + (sign.second.ends_with('\'') && sign.second.size() > 1 ? "x'" : "");
}

/// A sign that an earlier row takes for its own decides nothing.
void expectNoSignInVain(std::span<const ErrorCatalogueRow> rows, const std::string& beginning) {
    for (const ErrorCatalogueRow& row : rows) {
        for (const ErrorTextSign& sign : row.signs) {
            const std::string text = textWith(sign, beginning);
            if (!sign.first.empty()) {
                EXPECT_EQ(NEBSourceControlErrorClassOfText(text), row.errorClass) << text;
            }
        }
    }
}

TEST(ErrorCatalogueRows, HaveNoSignInVain) {
    expectNoSignInVain(errorCatalogueRows(), "x: ");
}

TEST(ErrorCatalogueRows, OfGeneralTextsHaveNoSignInVain) {
    expectNoSignInVain(generalErrorCatalogueRows(), "fatal: ");
}

TEST(ErrorCatalogueRows, OfGeneralTextsTakeOnlyWhatGitSaysItself) {
    EXPECT_EQ(NEBSourceControlErrorClassOfText("error: could not write 'x'"), "io-error");
    for (const char* text : {"lint: could not write 'x'", "warning: could not write 'x'",
                             "hint: could not write 'x'", "remote: error: could not write 'x'"}) {
        EXPECT_EQ(NEBSourceControlErrorClassOfText(text), "unknown") << text;
    }
}

TEST(SaidByGitAtLength, TheCauseStandsAtTheBeginningOrAtTheEnd) {
    std::string lines;
    while (lines.size() < 1000000) {
        lines += "error: nothing that says why\n";
    }
    const std::string cause = "fatal: unable to write: No space left on device\n";
    EXPECT_EQ(NEBSourceControlErrorClassOfText(cause + lines), "disk-full");
    EXPECT_EQ(NEBSourceControlErrorClassOfText(lines + cause), "disk-full");
    EXPECT_EQ(NEBSourceControlErrorClassOfText(lines), "unknown");
}

TEST(SaidByGitAtLength, WarningsAreLeftOutBeforeTheMiddleIs) {
    std::string warnings;
    while (warnings.size() < 1000000) {
        warnings += "warning: something else\n";
    }
    EXPECT_EQ(NEBSourceControlErrorClassOfText(warnings + "fatal: bad revision 'x'\n" + warnings),
              "revision-unknown");
}

}  // namespace
}  // namespace neb
