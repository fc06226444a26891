// NEBSourceControlRequest.h - a unit of work that a host requests from a plug-in.
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

/// The values of a request. The host fills it and shares it with the operation. Not thread-safe:
/// the host must not change it while an operation is made from it or runs.
class NEB_EXPORT NEBSourceControlRequest : public NEBObject {
public:
    /// Returns a request with these values; all others are absent.
    static std::shared_ptr<NEBSourceControlRequest> initWithType(
        std::int32_t type, std::shared_ptr<NEBSourceControlSourceTree> sourceTree,
        std::optional<std::vector<NEBValue>> files = std::nullopt,
        std::optional<NEBDictionary> options = std::nullopt);

    /// The type of request; see NEBSourceControlRequestType.
    std::int32_t type = 0;
    /// The repository or working tree to work in. Null: none.
    std::shared_ptr<NEBSourceControlSourceTree> sourceTree;
    /// The target, depending on the type: the name of a branch or remote, a revision, a path or a
    /// URL.
    NEBValue destination;
    /// The files, usually strings: absolute paths or file URLs. Absent and empty differ.
    std::optional<std::vector<NEBValue>> files;
    /// The revisions of the request, usually strings: a revision as git accepts it, or a symbolic
    /// revision name of NEBSourceControlKeys.h. Absent: depends on the type.
    NEBValue startingRevision;
    NEBValue endingRevision;
    /// The remote of a fetch, push or update. Null: none.
    std::shared_ptr<NEBSourceControlRemote> remote;
    /// The keys are the NEBSourceControlRequestOption constants.
    std::optional<NEBDictionary> options;
    /// A request that authenticates is valid only if this repository is reachable too.
    std::shared_ptr<NEBSourceControlSourceTree> repositoryToAuthenticate;

    /// Replaces the options.
    void setOptions(std::optional<NEBDictionary> newOptions) { options = std::move(newOptions); }

    /// Returns the number of files, 0 when they are absent.
    [[nodiscard]] std::size_t fileCount() const { return files ? files->size() : 0; }
    /// Returns the value of an option; the absent value when it is not set. The reference is valid
    /// until the options change.
    [[nodiscard]] const NEBValue& option(std::string_view key) const;
    /// Returns whether git would read the destination or a file as a pattern, or as pathspec magic:
    /// the path, or its part below a folder, begins with ":". See gitglossary(7), pathspec.
    [[nodiscard]] bool hasPatternCharacters() const;
    /// Returns whether the trust of the source tree is NEBSourceControlTrust::inspect.
    [[nodiscard]] bool isInspected() const;
    /// Returns the name of the source tree for messages, "(null)" when there is no tree.
    [[nodiscard]] std::string sourceTreeName() const;

    /// Returns the name of the class and the number of the type.
    [[nodiscard]] std::string descriptionForAssertionMessage() const override;
};

}  // namespace neb
