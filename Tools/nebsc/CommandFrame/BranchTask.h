// BranchTask.h - the frame of the commands about branches, remotes and the exchange with them: what
// they all ask of the repository.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CommandFrame/CommandTask.h"

namespace neb::nebsc {

/// The branch that a record of a listing of branches names, printable; empty for what is none: the
/// end of the listing, and git's words for being on no branch.
[[nodiscard]] std::string branchNameOf(const NEBDictionary& record);

/// Everything here is good from validate() on. Names come as git has them, not printable.
class BranchTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    /// A branch of another repository, as a branch of this one is configured to track it.
    struct Tracking {
        /// The remote's name, or a location; "." is the repository itself.
        std::string remote;
        /// Without "refs/heads/".
        std::string branch;
    };

    /// With whom commits are exchanged.
    enum class Peer { remote, subversion };

    /// What stands in the call, empty when nothing does.
    [[nodiscard]] std::string word(std::string_view parameter) const {
        return arguments().value(parameter).value_or("");
    }
    /// The lines, without their ends, that git answers to a question.
    [[nodiscard]] std::vector<std::string> answerLines(std::vector<std::string> arguments);
    /// The reply where there is no repository, in git's words; nothing where there is one. For
    /// questions that git answers with silence outside of one too.
    [[nodiscard]] std::optional<CommandOutput> refusalWithoutRepository();
    /// The current branch, be it without a commit yet; nothing on no branch.
    [[nodiscard]] std::optional<std::string> currentBranch();
    /// A sentence for where there is no current branch that has a commit; not yet printable.
    [[nodiscard]] std::string whereInsteadOfBranch();
    [[nodiscard]] bool isBranch(const std::string& name);

    [[nodiscard]] bool isRemote(const std::string& name);
    /// The remote's name where it is one or could be meant as one, otherwise the location as
    /// repositoryLocation() has it.
    [[nodiscard]] std::string remoteOrLocation(const std::string& text);
    /// What the branch is configured to track; nothing without a remote or a branch of it.
    [[nodiscard]] std::optional<Tracking> trackingOf(const std::string& branch);
    /// "origin/main", or what is understood where there is no such remote; printable.
    [[nodiscard]] std::string shown(const Tracking& tracking);
    using CommandTask::shown;
    /// The refusal where a fetch has not brought the remote's branch: the remote does not have it,
    /// or has it and the remote's refspecs leave it out. Asks the remote.
    [[nodiscard]] CommandOutput refusalOfBranchNotFetched(const Tracking& tracking);

    /// Whether a Subversion repository stands behind this one.
    [[nodiscard]] bool hasSubversion();
    /// The reply where no Subversion repository stands behind this one.
    [[nodiscard]] std::optional<CommandOutput> refusalWithoutSubversion();

    /// A request of a type that exchanges commits, about the place.
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> exchangeRequest(std::int32_t type,
                                                                           Peer peer) const;
    /// The request for a fetch from the remote.
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> fetchRequest(
        const std::string& remote) const;
};

}  // namespace neb::nebsc
