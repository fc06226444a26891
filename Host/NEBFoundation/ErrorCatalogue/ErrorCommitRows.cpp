// ErrorCommitRows.cpp - histories, commits, authors and signatures.
#include "NEBFoundation/ErrorCatalogue/ErrorCatalogueRows.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

constexpr ErrorCatalogueRow rows[] = {
    {NEBSourceControlDivergedErrorClass,
     {
         "not possible to fast-forward",
     },
     NEBSourceControlFastForwardError},
    {NEBSourceControlDivergedErrorClass,
     {
         "need to specify how to reconcile divergent branches",
         "cannot fast-forward to multiple branches",
         "cannot rebase onto multiple branches",
     }},
    {NEBSourceControlUnrelatedHistoriesErrorClass,
     {
         "refusing to merge unrelated histories",
         {"...", ": no merge base"},
         "no merge base found",
         "could not find exact merge base",
         "need exactly one merge base",
     }},
    {NEBSourceControlNothingToCommitErrorClass,
     {
         "no changes added to commit",
     },
     NEBSourceControlGenericError,
     {"There is nothing to commit: no changes are staged.",
      "Stage the changes with \"git add\", or name the files to commit."}},
    {NEBSourceControlNothingToCommitErrorClass,
     {
         "nothing added to commit",
     },
     NEBSourceControlGenericError,
     {"There is nothing to commit: there are only untracked files.",
      "Add the files to commit with \"git add\"."}},
    {NEBSourceControlNothingToCommitErrorClass,
     {
         {"you asked to amend the most recent commit", "it empty"},
     },
     NEBSourceControlGenericError,
     {"The amended commit would have no changes.",
      "Remove the commit with \"git reset HEAD^\", or allow it to be empty."}},
    {NEBSourceControlNothingToCommitErrorClass,
     {
         "nothing to commit",
     }},
    {NEBSourceControlIdentityUnknownErrorClass,
     {
         "please tell me who you are",
         "empty ident name",
         "no email was given and auto-detection is disabled",
         "no name was given and auto-detection is disabled",
         "unable to auto-detect email address",
         "name consists only of disallowed characters",
     }},
    {NEBSourceControlMessageEmptyErrorClass,
     {
         "aborting commit due to empty commit message",
         "aborting commit; you did not edit the message",
     }},
    {NEBSourceControlIdentityInvalidErrorClass,
     {
         "malformed --author parameter",
         {"--author '", "and matches no existing author"},
         "invalid date format: ",
         "invalid author identity '",
         "invalid ident line: ",
         "lacks author header",
         "has malformed author line",
     }},
    {NEBSourceControlSignatureUntrustedErrorClass,
     {
         " has an untrusted gpg signature",
         " has a bad gpg signature",
         " does not have a gpg signature",
     }},
    {NEBSourceControlSigningFailedErrorClass,
     {
         "failed to sign the data",
         "failed to sign the push certificate",
         "user.signingkey needs to be set",
         "either user.signingkey or gpg.ssh.defaultkeycommand",
         "failed to get the ssh fingerprint for key",
         "ssh-keygen -y ",
         "failed reading ssh signing data buffer",
         "failed writing ssh signing key",
         "couldn't load public key",
         "couldn't find key in agent",
     }},
    {NEBSourceControlEditorFailedErrorClass,
     {
         "there was a problem with the editor",
         "unable to start editor",
         "terminal is dumb, but editor unset",
         "editing patch failed",
     }},
};

}  // namespace

ErrorCatalogueTable errorCommitRows() {
    return rows;
}

}  // namespace neb
