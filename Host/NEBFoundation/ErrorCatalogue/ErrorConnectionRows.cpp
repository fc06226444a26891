// ErrorConnectionRows.cpp - connections to a remote: programs, SSH, credentials, TLS, proxies,
// URLs.
//
// The rows for "permission denied" are here because SSH prints the same text.
#include "NEBFoundation/ErrorCatalogue/ErrorCatalogueRows.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

constexpr ErrorCatalogueRow rows[] = {
    // before the row of the message that git prints when a filter does not respond
    {NEBSourceControlOtherToolsErrorClass,
     {
         {"git-lfs", "not found"},
     }},
    {NEBSourceControlProgramMissingErrorClass,
     {
         {": not found", "the remote end hung up unexpectedly"},
         {": not found\n", "unable to read files to diff"},
         "cannot start proxy ",
         {"can't locate ", " in @inc"},  // git svn
     }},
    {NEBSourceControlSSHKeyRefusedErrorClass,
     {
         {"permission denied (", "publickey"},
         {"permission denied (", "password"},
         {"permission denied (", "keyboard-interactive"},
         {"permission denied (", "gssapi"},
         "too many authentication failures",
         {"permission denied (", "hostbased"},
     },
     NEBSourceControlAuthenticationError},
    {NEBSourceControlSSHHostKeyErrorClass,
     {
         "host key verification failed",
         "remote host identification has changed",
     },
     NEBSourceControlNotReachableError},
    {NEBSourceControlSSHNegotiationFailedErrorClass,
     {
         "unable to negotiate with ",
         "no matching host key type found",
         "no matching key exchange method found",
         "no matching cipher found",
         "no matching mac found",
         "protocol major versions differ",
         "bad remote protocol version identification",
     },
     NEBSourceControlNotReachableError},
    {NEBSourceControlHostUnreachableErrorClass,
     {
         "ssh: connect to host ",
     },
     NEBSourceControlNotReachableError},
    {NEBSourceControlPermissionDeniedErrorClass,
     {
         "permission denied",
         "insufficient permission for adding an object",
         "read-only file system",
         "operation not permitted",
     },
     NEBSourceControlNoPermissionError},
    {NEBSourceControlIndexLockedErrorClass,
     {
         "index.lock': file exists",
     }},
    {NEBSourceControlCredentialsRefusedErrorClass,
     {
         "authentication failed for '",
         "authorization failed",              // Subversion
         "authentication error from server",  // Subversion
         "no more credentials or we tried too many times",
     },
     NEBSourceControlAuthenticationError},
    {NEBSourceControlCredentialsNeededErrorClass,
     {
         "could not read username for",
         "could not read password for",
         "unable to get password from user",
         "unable to read askpass response from",
         {"credential helper '", "' told us to quit"},
         "authentication realm: <",  // Subversion
     },
     NEBSourceControlAuthenticationError},
    {NEBSourceControlCertificateUntrustedErrorClass,
     {
         "ssl certificate problem",  // OpenSSL
         "server certificate verification failed",
         "server verification failed: ",         // curl 8.14 with GnuTLS
         "ssl certificate verification failed",  // curl 8.23 with GnuTLS
         "error setting certificate verify locations",
         {"certificate subject name ", "match"},  // OpenSSL and GnuTLS
         "public key does not match pinned public key",
         "error reading ca cert file",
         "server ssl certificate verification failed",  // Subversion
         "error validating server certificate for ",    // Subversion
     },
     NEBSourceControlAuthenticationError},
    {NEBSourceControlClientCertificateRefusedErrorClass,
     {
         "could not load pem client certificate",
         "could not load client certificate",
         "unable to set private key file",
         "unable to use client certificate",
         "problem with the local ssl certificate",
         "alert certificate required",
         "alert bad certificate",
         "alert unknown ca",
         "error reading x.509 key or certificate file",
         "error reading x.509 potentially-encrypted key or certificate file",
     },
     NEBSourceControlAuthenticationError},
    {NEBSourceControlTLSFailedErrorClass,
     {
         "gnutls_handshake() failed",
         "ssl_connect",
         "ssl routines",
         "ssl connect error",
         "gnutls, handshake failed",
         "ssl handshake failed",
         "ssl communication error",
         "failed setting cipher list",
         "unsupported ssl ",
     },
     NEBSourceControlNotReachableError},
    {NEBSourceControlProxyRefusedErrorClass,
     {
         "from proxy after connect",
         "connect tunnel failed, response",
         "proxy connect aborted",
         "cannot complete socks",
         "can't complete socks",
         {"no authentication method was acceptable", "socks"},
         "failed to receive socks",
         "unable to send initial socks",
     },
     NEBSourceControlNotReachableError},
    {NEBSourceControlHostUnknownErrorClass,
     {
         "could not resolve host",
         "could not resolve proxy",
         {"failed to resolve '", "' with timeout"},
         "unable to look up ",
         "resolving timed out",
         "name or service not known",
         "temporary failure in name resolution",
         "no address associated with hostname",
         "nodename nor servname provided",
         "unknown hostname '",  // Subversion
     },
     NEBSourceControlNotReachableError},
    {NEBSourceControlRepositoryNotFoundErrorClass,
     {
         {"repository '", "' not found"},
         "does not appear to be a git repository",
         {"repository '", "' does not exist"},
         "/info/refs not valid: ",
         "error: repository not found",
         // Subversion
         {"unable to connect to a repository at url '", "unable to open "},
         "no repository found in '",
         "could not find the requested svn filesystem",
         "repository moved ",
         "does not support the http/dav protocol",
         "unexpected http status 404",
     },
     NEBSourceControlNotReachableError},
    {NEBSourceControlHTTPRefusedErrorClass,
     {
         "the requested url returned error: 4",
         "rate limited by",               // since 2.54
         "unexpected http status 4",      // Subversion
         {"access to '", "' forbidden"},  // Subversion
     }},
    {NEBSourceControlServerFailedErrorClass,
     {
         "the requested url returned error: 5",
         "unexpected http status 5",
     },
     NEBSourceControlNotReachableError},
    {NEBSourceControlURLInvalidErrorClass,
     {
         "no path specified; see ''",
         "strange hostname '",
         "strange pathname '",
         "strange port '",
         "\nfatal: unknown port ",
         "newline is forbidden in git:// hosts",
         "credential url cannot be parsed",
         "refusing to work with credential missing ",
         {"credential value for ", " contains newline"},
         "bad/illegal format or missing url",
         "unable to update url base from redirection",
         "url rejected: ",
         "port number was not a decimal number",
         "redirects followed",
         "' uses plaintext credentials",
         "must be absolute or begin with ./|../",
         "cannot strip one component off url",
         "bad remote-ext placeholder",
         "is not a complete url ",             // Subversion
         "svn repository location required ",  // Subversion
     }},
    {NEBSourceControlHostUnreachableErrorClass,
     {
         "failed to connect to",
         "connect to server",
         "connection refused",
         "connection timed out",
         "operation timed out",
         "network is unreachable",
         "no route to host",
         "ssl connection timeout",
         "host is down",
         "network is down",
     },
     NEBSourceControlNotReachableError},
    {NEBSourceControlObjectsMissingErrorClass,
     {
         {"could not fetch ", " from promisor remote"},
         "lazy fetching disabled",
         "promisor-remote: ",
     }},
    {NEBSourceControlRemoteUnsupportedErrorClass,
     {
         "the receiving end does not support ",
         "server does not support ",
         "server doesn't support ",
         "protocol does not support ",
         "transport does not support ",
         "operation not supported by protocol",
         {"\nfatal: helper ", " does not support "},
         "remote-helper doesn't support push",
         "server options require protocol version 2",
         "repository on the other end cannot be shallow",
         "this remote helper probably needs newer version",
         "cannot handle pushes this big",
         "the receiving end asked to sign an invalid nonce",
         {"unknown object format '", "' specified by server"},
         "mismatched algorithms: client ",
         "cannot fetch by sha1 over smart http",
         "git-over-rsync is no longer supported",
         "support for protocol v2 not implemented",
     }},
    {NEBSourceControlRepositoryShallowErrorClass,
     {
         "source repository is shallow, reject to clone",
         {"[remote rejected]", "(shallow update not allowed)"},
         "shallow roots are not allowed to be updated",
         {"reference repository '", "' is shallow"},
         {"reference repository '", "' is grafted"},
     }},
};

}  // namespace

ErrorCatalogueTable errorConnectionRows() {
    return rows;
}

}  // namespace neb
