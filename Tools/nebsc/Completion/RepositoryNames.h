// RepositoryNames.h - the names of branches, tags and remotes in the repository around the current
// directory, for completion.
#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "Completion/Candidate.h"
#include "Session/HostSession.h"
#include "Session/Interruption.h"

namespace neb::nebsc {

/// Asks git for the names. All queries together take at most one second; a query that fails or is
/// too late returns no names. Contacts no remote. For the main thread, one object at a time. A
/// signal ends the queries.
class RepositoryNames {
public:
    /// The session must outlive the object.
    explicit RepositoryNames(const HostSession& session);

    [[nodiscard]] std::vector<Candidate> branches();
    /// Returns branches, tags, remote-tracking branches and HEAD.
    [[nodiscard]] std::vector<Candidate> revisions();
    [[nodiscard]] std::vector<Candidate> tags();
    /// Returns the numbers of the stashes with their subjects.
    [[nodiscard]] std::vector<Candidate> stashes();
    [[nodiscard]] std::vector<Candidate> remotes();
    /// Returns the URLs of the remotes, without those that hold a password.
    [[nodiscard]] std::vector<Candidate> locations();
    /// Returns the remote-tracking branches of all remotes as REMOTE/BRANCH.
    [[nodiscard]] std::vector<Candidate> remoteBranches();
    /// Returns the branches of the remote as of the last fetch.
    [[nodiscard]] std::vector<Candidate> branchesOf(const std::string& remote);
    /// Returns the entries of a folder of a commit, "REVISION:PATH"; folders end with "/".
    [[nodiscard]] std::vector<Candidate> entriesOf(const std::string& folder);
    /// Returns the entries of a folder of the index in a stage, "0" to "3". The folder ends with
    /// "/" unless it is empty, for the top, where it starts unless it begins with "./" or "../".
    [[nodiscard]] std::vector<Candidate> entriesOfIndex(const std::string& folder,
                                                        std::string_view stage);

private:
    [[nodiscard]] NEBSourceControlResult recordsOf(std::int32_t type);
    [[nodiscard]] std::string outputOf(std::vector<std::string> arguments);
    [[nodiscard]] std::string folderFromTop(const std::string& folder);
    [[nodiscard]] std::vector<Candidate> referencesBelow(const std::vector<std::string>& prefixes);

    const HostSession& _session;
    Interruption _interruption;
    std::chrono::steady_clock::time_point _end;
    std::string _folder;
};

}  // namespace neb::nebsc
