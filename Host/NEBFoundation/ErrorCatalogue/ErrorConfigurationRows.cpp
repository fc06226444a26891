// ErrorConfigurationRows.cpp - the configuration of git and SSH.
#include "NEBFoundation/ErrorCatalogue/ErrorCatalogueRows.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"

namespace neb {

namespace {

constexpr ErrorCatalogueRow rows[] = {
    {NEBSourceControlConfigurationBrokenErrorClass,
     {
         "bad config line",
         "bad numeric config value",
         "bad boolean config value",
         "bad config variable",
         "exceeded maximum include depth",
         "bad config value for",
         {"unable to parse ", "from command-line config"},
         "unable to parse command-line config",
         "bogus config parameter",
         "missing value for '",
         "malformed value for ",
         "problem with core.sharedrepository",
         "unable to set up work tree using invalid config",
         "\nfatal: invalid value for '",
         "\nerror: invalid value for '",
         "unknown value for config '",
         "\nfatal: bad zlib compression level",
         "\nfatal: bad pack compression level",
         {"unknown style '", "' given for '"},
         "\nfatal: invalid cleanup mode",
         "invalid untracked files mode",
         "unknown date format",
         "unknown fetch negotiation algorithm",
         "invalid color value",
         "' has multiple values",
         "cannot overwrite multiple values with a single value",
         "invalid config file",
         "unknown error occurred while reading the configuration files",
         "remote urls cannot be configured in file directly or indirectly included",
         "invalid mode for object creation",
         "invalid branch name: init.defaultbranch",
         "negative values not allowed for submodule.fetchjobs",
         "fetch.parallel cannot be negative",
         {"bad branch.", ".mergeoptions string"},
         "invalid proxy url",
         "ssh variant '' does not support",
         {"tracks both ", " and "},
         {"custom merge driver ", " lacks command line"},
         "could not set ssl backend to",
         "gpg.ssh.allowedsignersfile needs to be configured",
         {"invalid branch.", "cannot rebase onto > 1 branch"},
         {"author: ", " not defined in "},               // Subversion
         {"svn-remote.", ".url not defined"},            // Subversion
         "is a complete url and a separate url is not",  // Subversion
         "unable to read config file",
         "error processing config file",
         "could not expand include path",
         "relative config include",
         "invalid config format: ",
         {"missing environment variable", "for configuration "},
         "empty config key",
         "bogus format in ",
         "bogus count in ",
         "too many entries in ",
         "missing config key ",
         "missing config value ",
         "is not a valid timestamp",
         "abbrev length out of range",
         "core.commentchar should only be",
         "bad pack.indexversion",
         "invalid number of threads specified",
         "clean.requireforce ",
         "format.headers without value",
         "failed to load island regex",
         "unable to select a comment character",
         "unable to load config blob",
         "unable to resolve config blob",
         "cannot inherit upstream tracking configuration",
         "splitindex.maxpercentchange",
         "bad git namespace path",
         "unrecognized value transfer.",
         "alias loop detected",
         "recursive alias: ",
         {"\nfatal: bad alias.", " string"},
         "empty alias for ",
         "while expanding alias",
         {"submodule.alternate", "is not recognized"},
         "expecting a color: ",
         "must end with a color",
         "invalid regular expression: ",
         "$home not set",
         "unknown value for protocol.",
         {"\nerror: ", ": lacks value"},
         {"\nfatal: bad value '", "in environment '"},
         {"\nfatal: invalid branch name: ", " = "},
         "tab-in-indent",
     }},
    {NEBSourceControlConfiguredFileMissingErrorClass,
     {
         "could not open object name list",
         "failed to read orderfile",
         "unable to read signature file",
         "failed to expand user dir in",
         {"can't open ", "no such file or directory"},  // Subversion's list of authors
     }},
    {NEBSourceControlSSHConfigurationBrokenErrorClass,
     {
         "bad owner or permissions on ",
         "bad configuration option: ",
         {"terminating, ", " bad configuration option"},
     }},
};

}  // namespace

ErrorCatalogueTable errorConfigurationRows() {
    return rows;
}

}  // namespace neb
