#include "Support/ErrorTexts.h"

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb::test {

namespace {

const TextOfGit texts[] = {
    {NEBSourceControlNothingToCommitErrorClass,
     "You asked to amend the most recent commit, but doing so would make\nit empty. You can repeat "
     "your command with --allow-empty, or you can\nremove the commit entirely with \"git reset "
     "HEAD^\".\n"},
    {NEBSourceControlRevisionUnknownErrorClass, "error: cannot parse expected object name 'x'"},
    {NEBSourceControlUntrackedInTheWayErrorClass,
     "a.c already exists, no checkout\nerror: could not restore untracked files from stash"},
    {NEBSourceControlLineUnknownErrorClass, "fatal: file a b has only 1 line"},
    {NEBSourceControlLineUnknownErrorClass, "fatal: file src/a.c has only 40 lines"},
    // ambiguous names
    {NEBSourceControlRevisionAmbiguousErrorClass,
     "fatal: ambiguous argument 'a': both revision and filename\n"
     "Use '--' to separate paths from revisions, like this:\n"
     "'git <command> [<revision>...] -- [<file>...]'"},
    {NEBSourceControlRevisionAmbiguousErrorClass,
     "fatal: option '--name-status' must come before non-option arguments"},
    {NEBSourceControlRevisionAmbiguousErrorClass,
     "error: short object ID 12 is ambiguous\nhint: The candidates are:\n"
     "hint:   1234567 commit 2026-01-01 - one\nfatal: ambiguous argument '12': unknown revision or "
     "path not in the working tree."},
    {NEBSourceControlRevisionAmbiguousErrorClass,
     "error: src refspec t matches more than one\nerror: failed to push some refs to '/r'"},
    {NEBSourceControlRevisionAmbiguousErrorClass, "error: dst refspec t matches more than one"},
    {NEBSourceControlRevisionAmbiguousErrorClass,
     "fatal: 'x' matched multiple (2) remote tracking branches"},
    {NEBSourceControlRevisionAmbiguousErrorClass,
     "fatal: 'x' could be both a local file and a tracking branch.\nPlease use -- (and optionally "
     "--no-guess) to disambiguate"},
    {NEBSourceControlRevisionAmbiguousErrorClass, "fatal: ambiguous object name: 'x'"},
    {NEBSourceControlPushDestinationUnclearErrorClass,
     "error: The destination you provided is not a full refname (i.e.,\nstarting with "
     "\"refs/\"). We tried to guess what you meant by:\n\nNeither worked, so we gave up. You must "
     "fully qualify the ref."},
    {NEBSourceControlPushDestinationUnclearErrorClass,
     "fatal: The upstream branch of your current branch does not match\nthe name of your current "
     "branch.  To push to the upstream branch\non the remote, use"},
    {NEBSourceControlPushDestinationUnclearErrorClass,
     "fatal: You didn't specify any refspecs to push, and push.default is \"nothing\"."},
    {NEBSourceControlRevisionUnknownErrorClass, "fatal: invalid upstream 'nosuch'"},
    // causes and their consequences
    {NEBSourceControlRemoteUnsupportedErrorClass,
     "fatal: the receiving end does not support --signed push\n"
     "fatal: the remote end hung up unexpectedly"},
    {NEBSourceControlRemoteUnsupportedErrorClass,
     "fatal: the receiving end does not support --atomic push"},
    {NEBSourceControlDiskFullErrorClass,
     "error: cannot lock ref 'refs/heads/x': Unable to create '/r/.git/refs/heads/x.lock': No "
     "space left on device"},
    {NEBSourceControlNameTooLongErrorClass,
     "fatal: cannot lock ref 'refs/heads/n': Unable to create '/r/.git/refs/heads/n.lock': File "
     "name too long"},
    {NEBSourceControlReferenceInTheWayErrorClass,
     "fatal: cannot lock ref 'refs/heads/a/b': Unable to create '/r/.git/refs/heads/a/b.lock': Not "
     "a directory"},
    {NEBSourceControlReferenceInTheWayErrorClass,
     "error: cannot lock ref 'refs/heads/a': unable to create lock file /r/.git/refs/heads/a.lock; "
     "non-directory in the way"},
    {NEBSourceControlReferenceInTheWayErrorClass,
     "error: cannot lock ref 'refs/heads/a': there is a non-empty directory '.git/refs/heads/a' "
     "blocking reference 'refs/heads/a'"},
    {NEBSourceControlReferenceInTheWayErrorClass,
     "error: some local refs could not be updated; try running\n 'git remote prune origin' to "
     "remove any old, conflicting branches"},
    {NEBSourceControlReferenceChangedErrorClass,
     "error: cannot lock ref 'refs/heads/x': is at 1234567890123456789012345678901234567890 but "
     "expected 2345678901234567890123456789012345678901"},
    {NEBSourceControlReferenceChangedErrorClass,
     "fatal: cannot lock ref 'refs/heads/x': reference already exists"},
    {NEBSourceControlPermissionDeniedErrorClass,
     "fatal: cannot lock ref 'HEAD': Unable to create '/r/.git/HEAD.lock': Permission denied"},
    {NEBSourceControlRefLockedErrorClass,
     "fatal: cannot lock ref 'HEAD': Unable to create '/r/.git/HEAD.lock': File exists."},
    {NEBSourceControlObjectsDamagedErrorClass,
     "fatal: unable to read 00750edc07d6415dcc07ae0351e9397b0222b7ba\n"
     "error: remote unpack failed: eof before pack header was fully read\nTo ../tgt\n"
     " ! [remote rejected] main -> main (unpacker error)\nerror: failed to push some refs to 'x'"},
    {NEBSourceControlObjectsDamagedErrorClass,
     "error: object file .git/objects/12/34 is empty\nerror: remote unpack failed: eof before pack "
     "header was fully read\n ! [remote rejected] main -> main (unpacker error)"},
    {NEBSourceControlHostUnknownErrorClass,
     "fatal: unable to access 'https://h/': Could not resolve host: h\n"
     "fatal: could not fetch 1234 from promisor remote"},
    {NEBSourceControlObjectsMissingErrorClass,
     "fatal: remote error: upload-pack: not our ref 1234\n"
     "fatal: could not fetch 1234 from promisor remote"},
    {NEBSourceControlHTTPRefusedErrorClass,
     "error: RPC failed; HTTP 413 curl 22 The requested URL returned error: 413\n"
     "fatal: the remote end hung up unexpectedly\nEverything up-to-date"},
    {NEBSourceControlTLSFailedErrorClass,
     "fatal: unable to access 'https://h/': gnutls_handshake() failed: x\nfatal: early EOF"},
    {NEBSourceControlRemoteDamagedErrorClass,
     "error: git upload-pack: git-pack-objects died with error.\nfatal: git upload-pack: aborting "
     "due to possible repository corruption on the remote side.\nfatal: early EOF\n"
     "fatal: fetch-pack: invalid index-pack output"},
    {NEBSourceControlRemoteDamagedErrorClass,
     "fatal: unexpected line in ./packed-refs: junk\nfatal: expected flush after ref listing"},
    {NEBSourceControlConnectionCutErrorClass,
     "fetch-pack: unexpected disconnect while reading sideband packet\nfatal: early EOF\n"
     "fatal: fetch-pack: invalid index-pack output"},
    {NEBSourceControlConnectionCutErrorClass,
     "fatal: unable to access 'https://h/': Operation too slow. Less than 1000 bytes/sec "
     "transferred the last 5 seconds"},
    {NEBSourceControlReferenceBrokenErrorClass,
     "warning: ignoring broken ref refs/heads/t\nfatal: ambiguous argument 't': unknown revision "
     "or "
     "path not in the working tree."},
    // content
    {NEBSourceControlLineEndsRefusedErrorClass, "fatal: CRLF would be replaced by LF in a"},
    {NEBSourceControlLineEndsRefusedErrorClass, "fatal: LF would be replaced by CRLF in a"},
    {NEBSourceControlUnknownErrorClass,
     "warning: in the working copy of 'a', LF will be replaced by CRLF the next time"},
    {NEBSourceControlEmbeddedRepositoryErrorClass,
     "error: 'sub/' does not have a commit checked out\nfatal: adding files failed"},
    {NEBSourceControlPathInvalidErrorClass,
     "fatal: can not move directory into itself, source=d, destination=d/e"},
    {NEBSourceControlConfiguredFileMissingErrorClass,
     "fatal: could not open object name list: /nosuch"},
    {NEBSourceControlProgramMissingErrorClass,
     "fatal: cannot run /nosuch/prog: No such file or directory\n"
     "fatal: unable to read files to diff"},
    {NEBSourceControlProgramMissingErrorClass,
     "words: 1: words: not found\nfatal: unable to read files to diff"},
    // invalid requests
    {NEBSourceControlRequestInvalidErrorClass,
     "error: unknown option `foo'\nusage: git branch [<options>] [-r | -a]"},
    {NEBSourceControlRequestInvalidErrorClass,
     "usage: git merge-base [-a | --all] <commit> <commit>..."},
    {NEBSourceControlRequestInvalidErrorClass,
     "fatal: options '--squash' and '--no-ff.' cannot be used together"},
    {NEBSourceControlRequestInvalidErrorClass,
     "fatal: options '-b', '-B', and '--orphan' cannot be used together"},
    {NEBSourceControlRequestInvalidErrorClass, "fatal: unrecognized argument: --foo"},
    // the machine
    {NEBSourceControlOutOfMemoryErrorClass,
     "fatal: Out of memory, malloc failed (tried to allocate 4294967296 bytes)"},
    {NEBSourceControlOutOfMemoryErrorClass, "fatal: mmap failed: Cannot allocate memory"},
    {NEBSourceControlSystemLimitErrorClass,
     "error: cannot fork() for upload-pack: Resource temporarily unavailable"},
    {NEBSourceControlSystemLimitErrorClass,
     "fatal: unable to create thread: Resource temporarily unavailable"},
    {NEBSourceControlSystemLimitErrorClass,
     "error: unable to open object pack directory: .git/objects/pack: Too many open files"},
    {NEBSourceControlIOErrorClass, "fatal: read error: Input/output error"},
    {NEBSourceControlRepositoryDamagedErrorClass, "fatal: bad shallow line: junk"},
    // settings
    {NEBSourceControlConfigurationBrokenErrorClass, "fatal: bad zlib compression level 99"},
    {NEBSourceControlConfigurationBrokenErrorClass,
     "error: malformed value for push.default: foo\nerror: must be one of nothing, matching, "
     "simple, upstream or current\nfatal: bad config variable 'push.default' in file"},
    {NEBSourceControlConfigurationBrokenErrorClass,
     "fatal: invalid value for 'pull.rebase': 'foo'"},
    {NEBSourceControlConfigurationBrokenErrorClass,
     "fatal: unknown style 'foo' given for 'merge.conflictstyle'"},
    {NEBSourceControlConfigurationBrokenErrorClass, "fatal: Invalid cleanup mode foo"},
    // ssh and TLS
    {NEBSourceControlSSHKeyRefusedErrorClass,
     "Received disconnect from 192.0.2.1 port 22:2: Too many authentication failures\r\n"
     "fatal: Could not read from remote repository."},
    {NEBSourceControlSSHHostKeyErrorClass,
     "@    WARNING: REMOTE HOST IDENTIFICATION HAS CHANGED!     @\n"
     "fatal: Could not read from remote repository."},
    {NEBSourceControlSSHNegotiationFailedErrorClass,
     "Unable to negotiate with 192.0.2.1 port 22: no matching key exchange method found. Their "
     "offer: diffie-hellman-group1-sha1\r\nfatal: Could not read from remote repository."},
    {NEBSourceControlSSHConfigurationBrokenErrorClass,
     "Bad owner or permissions on /h/.ssh/config\r\nfatal: Could not read from remote repository."},
    {NEBSourceControlHostUnreachableErrorClass,
     "ssh: connect to host h port 22: Permission denied\r\n"
     "fatal: Could not read from remote repository."},
    {NEBSourceControlHostUnknownErrorClass,
     "ssh: Could not resolve hostname h: Temporary failure in name resolution\r\n"
     "fatal: Could not read from remote repository."},
    {NEBSourceControlConnectionCutErrorClass,
     "kex_exchange_identification: Connection closed by remote host\r\nConnection closed by "
     "192.0.2.1 port 22\r\nfatal: Could not read from remote repository."},
    {NEBSourceControlCertificateUntrustedErrorClass,
     "fatal: unable to access 'https://h/': SSL certificate problem: certificate has expired"},
    {NEBSourceControlCertificateUntrustedErrorClass,
     "fatal: unable to access 'https://h/': SSL certificate verification failed: certificate "
     "signer "
     "not trusted. (CAfile: /etc/ssl/certs/ca-certificates.crt CRLfile: none)"},
    {NEBSourceControlCertificateUntrustedErrorClass,
     "fatal: unable to access 'https://h/': server verification failed: certificate signer not "
     "trusted. (CAfile: /etc/ssl/certs/ca-certificates.crt CRLfile: none)"},
    {NEBSourceControlConnectionCutErrorClass,
     "fatal: unable to access 'http://h/': end of response with 96 bytes missing"},
    {NEBSourceControlHostUnknownErrorClass,
     "fatal: unable to access 'http://h/': Failed to resolve 'h' with timeout after 7 ms"},
    {NEBSourceControlClientCertificateRefusedErrorClass,
     "fatal: unable to access 'https://h/': error reading X.509 potentially-encrypted key or "
     "certificate file: Error while reading file."},
    {NEBSourceControlCertificateUntrustedErrorClass,
     "fatal: unable to access 'https://h/': error reading ca cert file /nosuch (Error while "
     "reading file.)"},
    {NEBSourceControlClientCertificateRefusedErrorClass,
     "fatal: unable to access 'https://h/': could not load PEM client certificate, OpenSSL error "
     "error:02001002:system library:fopen:No such file or directory"},
    {NEBSourceControlClientCertificateRefusedErrorClass,
     "fatal: unable to access 'https://h/': OpenSSL SSL_read: error:1409445C:SSL "
     "routines:ssl3_read_bytes:tlsv13 alert certificate required, errno 0"},
    {NEBSourceControlProxyRefusedErrorClass,
     "fatal: unable to access 'https://h/': Received HTTP code 407 from proxy after CONNECT"},
    {NEBSourceControlConnectionCutErrorClass,
     "fatal: unable to access 'https://h/': OpenSSL SSL_read: Connection reset by peer, errno 104"},
    {NEBSourceControlConnectionCutErrorClass,
     "error: RPC failed; curl 56 GnuTLS recv error (-110): The TLS connection was non-properly "
     "terminated."},
    // Subversion
    {NEBSourceControlCredentialsRefusedErrorClass,
     "Authentication realm: <svn://h:3690> r\nPassword for 'ann': Can't create session: Unable to "
     "connect to a repository at URL 'svn://h/trunk': Authorization failed at SVN.pm line 148."},
    {NEBSourceControlCredentialsRefusedErrorClass,
     "Can't create session: Unable to connect to a repository at URL 'svn://h/trunk': "
     "Authentication error from server: Password incorrect at SVN.pm line 148."},
    {NEBSourceControlRepositoryNotFoundErrorClass,
     "Can't create session: Unable to connect to a repository at URL 'file:///r/trunk': Unable to "
     "open repository 'file:///r/trunk' at SVN.pm line 148."},
    {NEBSourceControlRepositoryNotFoundErrorClass,
     "Can't create session: Unable to connect to a repository at URL 'svn://h/x': No repository "
     "found in 'svn://h/x' at SVN.pm line 148."},
    {NEBSourceControlHostUnreachableErrorClass,
     "Can't create session: Unable to connect to a repository at URL 'http://h/x': Error running "
     "context: Connection refused at SVN.pm line 148."},
    {NEBSourceControlHostUnknownErrorClass,
     "Can't create session: Unable to connect to a repository at URL 'svn://h/x': Unknown hostname "
     "'h' at SVN.pm line 148."},
    {NEBSourceControlTransportUnknownErrorClass,
     "Bad URL passed to RA layer: Unrecognized URL scheme for 'foo://h/x' at SVN.pm line 148."},
    {NEBSourceControlNoSubversionUpstreamErrorClass, "[svn-remote \"svn\"] unknown\n"},
    {NEBSourceControlNoSubversionUpstreamErrorClass,
     "Unable to determine upstream SVN information from HEAD history.\n"
     "Perhaps the repository is empty. at git-svn line 875."},
    {NEBSourceControlRemoteAheadErrorClass,
     "ERROR from SVN:\nItem is out of date: File '/trunk/a' is out of date\nW: 1234 and "
     "refs/remotes/git-svn differ"},
    {NEBSourceControlRemoteAheadErrorClass,
     "There are new revisions that were fetched and need to be merged (or acknowledged) before "
     "committing.\nr7\nYou can attempt to merge with:"},
    {NEBSourceControlNoSubversionUpstreamErrorClass,
     "merge parent 1234 for 5678 has no parent commit, and therefore nothing to diff against."},
    {NEBSourceControlRepositoryDamagedErrorClass,
     "Last fetched revision of refs/remotes/git-svn was r9, but we are about to fetch: r7!"},
    {NEBSourceControlRemoteDamagedErrorClass, "fatal: index-pack failed"},
    {NEBSourceControlProgramMissingErrorClass,
     "Can't locate SVN/Core.pm in @INC (you may need to install the module)"},
};

}  // namespace

std::span<const TextOfGit> textsOfGit() {
    return texts;
}

}  // namespace neb::test
