// NEBSourceControlRequest.h - one piece of work that a host asks a plug-in for.
//
//     auto tree = std::make_shared<NEBSourceControlWorkingTree>();
//     tree->location = "/home/me/project";
//     auto request = NEBSourceControlRequest::initWithType(NEBSourceControlRequestStatus, tree);
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "NEBFoundation/NEBDictionary.h"
#include "NEBFoundation/NEBObject.h"
#include "NEBFoundation/NEBSourceControlRemote.h"
#include "NEBFoundation/NEBSourceControlSourceTree.h"
#include "NEBFoundation/NEBValue.h"
#include "Platform/Export.h"

namespace neb {

/// Filled by the host and shared with the operation that it asks for. One thread at a time: the
/// host leaves it alone while an operation made from it is being built or runs.
class NEB_EXPORT NEBSourceControlRequest : public NEBObject {
public:
    /// A request with these fields and the others absent; composite operations make their
    /// sub-requests with it.
    static std::shared_ptr<NEBSourceControlRequest> initWithType(
        std::int32_t type, std::shared_ptr<NEBSourceControlSourceTree> sourceTree,
        std::optional<std::vector<NEBValue>> files = std::nullopt,
        std::optional<NEBDictionary> options = std::nullopt);

    /// The kind of request; see NEBSourceControlRequestType.
    std::int32_t type = 0;
    std::shared_ptr<NEBSourceControlSourceTree> sourceTree;
    /// The target: by type a branch name, a remote's name, a revision, a path or a URL.
    NEBValue destination;
    /// The files it is about, as a rule strings: absolute paths, or file URLs.
    std::optional<std::vector<NEBValue>> files;
    /// As a rule strings: a commit's name, or one of the symbolic revision names.
    NEBValue startingRevision;
    NEBValue endingRevision;
    std::shared_ptr<NEBSourceControlRemote> remote;
    /// Keyed by the NEBSourceControlRequestOption constants.
    std::optional<NEBDictionary> options;
    /// The repository whose reachability is checked too before a request that authenticates.
    std::shared_ptr<NEBSourceControlSourceTree> repositoryToAuthenticate;

    /// Replaces the options.
    void setOptions(std::optional<NEBDictionary> newOptions) { options = std::move(newOptions); }

    /// The number of files, 0 when there is no list.
    [[nodiscard]] std::size_t fileCount() const { return files ? files->size() : 0; }
    /// The value of an option, the absent value when there are no options or not this one.
    [[nodiscard]] const NEBValue& option(std::string_view key) const;
    /// What a message calls the source tree: its name, "(null)" when there is no tree.
    [[nodiscard]] std::string sourceTreeName() const;

    [[nodiscard]] std::string descriptionForAssertionMessage() const override;
};

}  // namespace neb
