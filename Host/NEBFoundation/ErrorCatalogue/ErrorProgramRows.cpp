// ErrorProgramRows.cpp - transports, programs that git runs, and Subversion.
#include "NEBFoundation/ErrorCatalogue/ErrorCatalogueRows.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

constexpr ErrorCatalogueRow rows[] = {
    {NEBSourceControlTransportForbiddenErrorClass,
     {
         {"transport '", "' not allowed"},
     }},
    {NEBSourceControlTransportUnknownErrorClass,
     {
         "unable to find remote helper for '",
         "git: 'remote-' is not a git command",
         {"\nfatal: protocol '", "' is not supported"},
         "not supported or disabled in libcurl",
         "not supported in libcurl",
         "unrecognized url scheme for '",  // Subversion
     }},
    {NEBSourceControlOtherToolsErrorClass,
     {
         "no url found for submodule path",
         {"fetched in submodule path '", "but it did not contain"},
         "git-lfs",
         "external filter '",
         "cannot fork to run subprocess '",
         "initialization for subprocess '",
         "' was not filtered properly",
         "external diff died",
         "error reading from textconv command",
         "running trailer command",
         "' filter reported error",
         {"unable to start '", "' filter"},
         {"\nfatal: subprocess '", "requested unsupported capability"},
         "\nerror: could not write client identification",
         "\nerror: could not write requested version",
         {"\nerror: unexpected line '", "expected "},
     }},
    {NEBSourceControlPatchFailedErrorClass,
     {
         "patch does not apply",
         ": does not exist in index",
         ": does not match index",
         ": already exists in index",
         ": already exists in working directory",
         "error: no valid patches in input",
         "error: unrecognized input",  // until 2.34
         "error: patch fragment without header at line ",
         "error: patch with only garbage at line ",
         "error: corrupt patch at ",
         "error: corrupt binary patch at line ",
     }},
    {NEBSourceControlProgramMissingErrorClass,
     {
         {"cannot run ", "no such file or directory"},
         {"cannot exec '", "no such file or directory"},
         "cannot spawn ",
         {"unable to read files to diff", ": not found"},
         "exec format error",
         "can't run specified command",
         "' is not a git command.",
         "could not find merge strategy '",
     }},
    {NEBSourceControlKilledErrorClass,
     {
         " died of signal ",
     }},
    {NEBSourceControlRemoteBranchUnknownErrorClass,
     {
         "could not find remote branch ",
     }},
    {NEBSourceControlRequestInvalidErrorClass,
     {
         "\nusage: git ",
         "\nunknown option: ",
         "nothing specified, nothing added",
     }},
    // Subversion
    {NEBSourceControlRemoteAheadErrorClass,
     {
         {"there are new revisions that were fetched", "before committing"},
     },
     NEBSourceControlRemoteAheadError},
    {NEBSourceControlNoSubversionUpstreamErrorClass,
     {
         "but does not have git-svn metadata",
         "but that change does not have git-svn metadata",
         "which is not under the git-svn root",
         "has no parent commit, and therefore nothing to diff against",
         "needed url or usable git-svn --id",
     }},
    {NEBSourceControlConfigurationBrokenErrorClass,
     {
         "refspec conflict:",
         {"remote ref refs/remote/", " is tracked by"},
         {"svn-remote.", "must start with '"},
         "can't have both '",
         "is not a valid url (key: ",
         "\ninvalid pattern in '",
         "is allowed in a pattern: '",
         " returned invalid author format",
         ".url already set: ",
         ".fetch already set to track ",
     }},
    {NEBSourceControlRepositoryDamagedErrorClass,
     {
         "last fetched revision of ",
         "penultimate record is all-zeroes",
         "rev_map_",
         "uuid mismatch",
         "url mismatch after rebase",
         "git-svn metadata changed mid-run",
         "missing uuid at the end of ",
         "already exists! why are we refetching it",
     }},
    {NEBSourceControlGitBugErrorClass,
     {
         "something is seriously wrong...",
     }},
};

}  // namespace

ErrorCatalogueTable errorProgramRows() {
    return rows;
}

}  // namespace neb
