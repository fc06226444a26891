// ErrorPushRows.cpp - refused pushes; git prints the reason in parentheses after the branch.
#include "NEBFoundation/ErrorCatalogue/ErrorCatalogueRows.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

constexpr ErrorCatalogueRow rows[] = {
    {NEBSourceControlPushStaleErrorClass,
     {
         {"[rejected]", "(stale info)"},
         {"[rejected]", "(remote ref updated since checkout)"},
     },
     NEBSourceControlRemoteAheadError,
     {"The operation could not be performed because \"%@\" does not have the latest remote "
      "changes.",
      "Pull the remote changes and try again."}},
    {NEBSourceControlRemoteAheadErrorClass,
     {
         {"[rejected]", "(fetch first)"},
         {"(non-fast-forward)", "failed to push some refs"},  // a fetch prints the first part, too
         "merge the remote changes (e.g. '",                  // until 1.8.3
         "transaction is out of date",                        // Subversion
         "' is out of date",
     },
     NEBSourceControlRemoteAheadError},
    {NEBSourceControlDivergedErrorClass,
     {
         {"[rejected]", "(non-fast-forward)"},
     }},
    {NEBSourceControlRemoteHookRefusedErrorClass,
     {
         {"[remote rejected]", "hook declined)"},
         "a repository hook failed",           // Subversion
         "commit blocked by pre-commit hook",  // Subversion
     }},
    {NEBSourceControlBranchCheckedOutThereErrorClass,
     {
         {"[remote rejected]", "(branch is currently checked out)"},
     }},
    {NEBSourceControlTagExistsErrorClass,
     {
         {"[rejected]", "(already exists)"},
         {"[rejected]", "(would clobber existing tag)"},
         {"fatal: tag '", "' already exists"},
     }},
    {NEBSourceControlNothingToPushFromErrorClass,
     {
         {"src refspec ", "does not match any"},
     }},
    {NEBSourceControlRemoteBranchUnknownErrorClass,
     {
         {"unable to delete '", "remote ref does not exist"},
     }},
    {NEBSourceControlRemoteRefusedErrorClass,
     {
         "[remote rejected]",
         "server does not allow request for unadvertised object",
     }},
};

}  // namespace

ErrorCatalogueTable errorPushRows() {
    return rows;
}

}  // namespace neb
