#include "CommandFrame/BranchQueries.h"

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

std::string withoutPrefix(const std::string& text, std::string_view prefix) {
    return text.starts_with(prefix) ? text.substr(prefix.size()) : text;
}

/// git prints "(no branch)" and the like if HEAD is detached, "+ " before a branch that another
/// working tree has checked out, and " -> TARGET" after a symbolic reference.
std::string branchNameOf(const NEBDictionary& record) {
    std::string_view name = record.value(NEBSourceControlOperationNameKey).string().value_or("");
    if (name.starts_with("+ ")) {
        name.remove_prefix(2);
    }
    const std::size_t blank = name.find(' ');
    const bool isDetached = name.starts_with('(') && blank != std::string_view::npos;
    return isDetached ? "" : printable(name.substr(0, blank));
}

/// Asks for the full name, because the short one is ambiguous if a tag has the same name.
std::optional<std::string> currentBranch(const GitQueries& git) {
    const auto& known = git.workingCopy().revisions.head;
    if (known == "HEAD") {
        return std::nullopt;
    }
    const auto reference = known ? known : git.outputOf({"symbolic-ref", "--quiet", "HEAD"});
    return reference ? std::optional(withoutPrefix(*reference, localBranchPrefix)) : std::nullopt;
}

std::string describeHEAD(const GitQueries& git) {
    if (const auto branch = currentBranch(git)) {
        return "The current branch " + inQuotes(*branch) + " does not have any commits yet.";
    }
    const auto commit = git.headCommit();
    return commit ? "HEAD is detached at " + *commit + "." : "HEAD is detached.";
}

bool isBranch(const GitQueries& git, const std::string& name) {
    return git.succeeds({"show-ref", "--verify", "--quiet", std::string(localBranchPrefix) + name});
}

bool hasSubversion(const GitQueries& git) {
    return git.outputOf({"config", "--get-regexp", "^svn-remote\\."}).has_value();
}

}  // namespace neb::nebsc
