// The only exported function of NEBGit.so.

#include <new>

#include "GitController.h"
#include "NEBFoundation/NEBSourceControlPlugIn.h"

extern "C" {

NEB_EXPORT extern const char NEBGitVersionString[];
NEB_EXPORT extern const double NEBGitVersionNumber;
NEB_EXPORT const neb::NEBSourceControlPlugInDescription* NEBSourceControlDescribePlugIn();

const char NEBGitVersionString[] = "@(#)PROGRAM:NEBGit  PROJECT:NEBGit-" NEBGIT_VERSION "\n";
const double NEBGitVersionNumber = NEBGIT_VERSION_NUMBER;

const neb::NEBSourceControlPlugInDescription* NEBSourceControlDescribePlugIn() {
    static constexpr neb::NEBSourceControlPlugInDescription description{
        .contractVersion = neb::NEBSourceControlContractVersion,
        .stamp = &neb::NEBSourceControlABIStamp,
        .name = "NEBGit",
        .version = NEBGIT_VERSION,
        .program = "git",
        .makePrincipalClass = []() -> neb::NEBSourceControlProtocol* {
            return new (std::nothrow) neb::GitController;  // owned by the host
        },
    };
    return &description;
}

}  // extern "C"
