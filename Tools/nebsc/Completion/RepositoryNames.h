// RepositoryNames.h - the names in the repository around the current folder, for a person who is
// typing one of them.
//
// Whatever fails, or takes more than a second in all, leaves names out and says nothing. Nothing is
// asked of another machine.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "Session/HostSession.h"
#include "Session/Interruption.h"

namespace neb::nebsc {

/// A name, and what a shell may show beside it.
struct NameInRepository {
    std::string name;
    std::string description;
};

/// On the main thread, one object at a time. A signal ends the questions.
class RepositoryNames {
public:
    /// The session must outlive the object.
    explicit RepositoryNames(const HostSession& session);

    [[nodiscard]] std::vector<NameInRepository> branches();
    /// Branches, tags, branches of remotes and HEAD.
    [[nodiscard]] std::vector<NameInRepository> revisions();
    [[nodiscard]] std::vector<NameInRepository> remotes();
    /// The remotes' URLs.
    [[nodiscard]] std::vector<NameInRepository> locations();
    /// REMOTE/BRANCH of all remotes, as they were when last fetched.
    [[nodiscard]] std::vector<NameInRepository> remoteBranches();
    /// The branches of the remote, as they were when last fetched.
    [[nodiscard]] std::vector<NameInRepository> branchesOf(const std::string& remote);

private:
    [[nodiscard]] NEBSourceControlResult recordsOf(std::int32_t type);
    [[nodiscard]] std::string outputOf(std::vector<std::string> arguments);
    [[nodiscard]] std::vector<NameInRepository> referencesBelow(
        const std::vector<std::string>& prefixes);

    const HostSession& _session;
    Interruption _interruption;
    std::chrono::steady_clock::time_point _end;
    std::string _folder;
};

}  // namespace neb::nebsc
