// NEBSourceControlArgumentInjection.h - values that git would take for an option.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Platform/Export.h"

namespace neb {

struct NEBSourceControlArgumentInjection {
    /// The field as a request written in JSON names it: "startingRevision", "files[0]",
    /// "options.NEBSourceControlRequestOptionBranch".
    std::string field;
    std::string value;
    /// What git would do with it, behind "git would".
    std::string_view danger = "take it for an option";
};

/// The first value of the request whose text, whatever its kind, begins with "-" and would stand in
/// its command line where git reads options (of a path that the shell splits at blanks, each word),
/// or that is the limit of a log, which gets a "-" in front, and no count, or
/// that makes a push more than the sending of one branch to another (an empty side deletes, a "+"
/// in front overwrites, a "*" takes all); nothing when there is none. A host that takes values from
/// outside asks this before it asks for an operation, and refuses the request. From any thread.
[[nodiscard]] NEB_EXPORT std::optional<NEBSourceControlArgumentInjection>
NEBSourceControlFirstArgumentInjection(const NEBSourceControlRequest& request);

}  // namespace neb
