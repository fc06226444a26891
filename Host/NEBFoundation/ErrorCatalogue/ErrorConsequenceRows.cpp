// ErrorConsequenceRows.cpp - messages that usually follow a cause; they count if none is stated.
#include "NEBFoundation/ErrorCatalogue/ErrorCatalogueRows.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

constexpr ErrorCatalogueRow rows[] = {
    {NEBSourceControlConnectionCutErrorClass,
     {
         "the remote end hung up unexpectedly",
         "the remote end hung up upon initial contact",
         "early eof",
         "rpc failed",
         "connection reset by peer",
         "connection closed by ",  // OpenSSH
         "empty reply from server",
         "transfer closed with ",
         {"end of response with ", " bytes missing"},  // curl 8.23
         "operation too slow",
         "broken pipe",
         "unexpected disconnect while reading sideband packet",
         "connection closed unexpectedly",  // Subversion
         "closed connection unexpectedly",
         {"connection to ", " closed by remote host"},
         "connection aborted",
         "was not closed cleanly",
         "failure when receiving data from the peer",
         "failed sending data to the peer",
         "ssl_read: ",
         "gnutls recv error",
         {"timeout, server ", " not responding"},
         "try increasing http.postbuffer",
         "(remote failed to report status)",
     },
     NEBSourceControlNotReachableError},
    {NEBSourceControlProtocolErrorClass,
     {
         "protocol error: ",
         "invalid server response",
         "bad line length character",
         "expected ack/nak",
         "expected a flush",
         "expected flush ",
         "expected shallow",
         "\nfatal: invalid packet",
         "invalid ls-refs response",
         "remote server sent unexpected response end packet",
         "server is speaking an unknown protocol",
         "received http/0.9 when not allowed",
         "unexpected response end packet",
         "unexpected acknowledgment line",
         "unexpected '' from remote",
         "expected packfile to be sent after",
         "expected no other sections to be sent",
         "error processing acks",
         "error processing shallow info",
         "error processing wanted refs",
         "unexpected wanted-ref",
         "expected wanted-ref",
         "malformed response in ref list",
         "unable to parse remote unpack status",
         "invalid status line from remote",
         "invalid ref status from remote",
         "\nfatal: unknown response to connect: ",
         "malformed network data",  // Subversion
         "invalid length read ",
         "\nfatal: expected '",
         "fatal: invalid hash",
         "without a matching 'ok/",
         " bytes of body are still expected",
         " bytes of length header were received",
         "could not determine hash algorithm",
         "\nfatal: invalid unshallow line",
     },
     NEBSourceControlNotReachableError},
    {NEBSourceControlRemoteDamagedErrorClass,
     {
         "invalid index-pack output",
         "unpack-objects failed",
         "index-pack failed",
         "pack has bad object at offset",
         "pack signature mismatch",
         "pack is corrupted",
         "pack has junk at the end",
         "unresolved delta",
         "fsck error in pack",
         "did not receive expected object",
         "did not send all necessary objects",
         "not all child objects of ",
         {"pack version ", " unsupported"},
         "unknown pack file version",
         "final sha1 did not match",
         "premature end of pack file",
         "inflate returned",
         "object type mismatch",
         "does not match expected hash",
         "bad object type",
         "\nfatal: bad pack file",
         "delta base object",
         "does not match its index",
         "checksum mismatch",  // also Subversion
     }},
    {NEBSourceControlMergeFailedErrorClass,
     {
         "git encountered an error while preparing the patches to replay",
         "no merge strategy handled the merge",
         {"merge with strategy ", " failed"},
     }},
    {NEBSourceControlGitBugErrorClass,
     {
         "\nbug: ",
         "recursion detected in die",
     }},
    {NEBSourceControlSubmoduleFailedErrorClass,
     {
         "failed to push all needed submodules",
         "errors during submodule fetch",
         "into submodule path '",
         " in submodule path '",
         "into submodule '",
         "for submodule '",
         "for submodule path '",
         "at submodule path '",
         "in submodule '",
         {"failed to clone '", "a second time, aborting"},
         "cannot update submodule",
         "unable to push submodule '",
         {"could not run '", " in submodule "},
         "could not access submodule '",
         "\nfatal: submodule '",
         "\nerror: submodule '",
         "for submodule path ",
         "submodule.propagatebranches is enabled",
         "to add submodule '",
         "to register submodule '",
         "not recognized as a git repository",
         "make sure that the .gitmodules file is in the working tree",
     }},
    // follows any reason why a commit was not written; alone, it means that signing failed
    {NEBSourceControlSigningFailedErrorClass,
     {
         "failed to write commit object",
     }},
    {NEBSourceControlRemoteRefusedErrorClass,
     {
         "fatal: remote error: ",
     }},
    // follows most failures of a connection
    {NEBSourceControlRemoteUnreadableErrorClass,
     {
         "could not read from remote repository", "fetch-pack: fetch failed",
         "\nerror: fetch failed", "remote transport reported error", "unable to connect to ",
         "could not fetch ", "failed to download ", "failed to start http request",
         "git-http-push failed", "error in sideband demultiplexer",
         "svn connection failed somewhere",  // Subversion
     },
     NEBSourceControlNotReachableError},
};

}  // namespace

ErrorCatalogueTable errorConsequenceRows() {
    return rows;
}

}  // namespace neb
