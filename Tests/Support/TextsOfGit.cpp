#include "Support/ErrorTexts.h"

namespace neb::test {

namespace {

const TextOfGit texts[] = {
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

}  // namespace

std::span<const TextOfGit> textsOfGit() {
    return texts;
}

}  // namespace neb::test
