#include "Commands/OwnOperations.h"

#include "CommandFrame/BlameQuery.h"
#include "CommandFrame/DiffQueries.h"
#include "CommandFrame/StatusQuery.h"
#include "CommandFrame/TreeQuery.h"
#include "Commands/CloneWithoutSubmodules.h"
#include "Recording/Anonymization.h"

namespace neb::nebsc {

namespace {

using RequestPointer = std::shared_ptr<NEBSourceControlRequest>;

/// The recording has the arguments, so those of the constructors do not matter.
struct OwnRow {
    std::string_view name;
    std::shared_ptr<NEBSourceControlTaskOperation> (*make)(const RequestPointer& request);
};

template <typename Operation, auto... arguments>
std::shared_ptr<NEBSourceControlTaskOperation> make(const RequestPointer& request) {
    return std::make_shared<Operation>(request, arguments...);
}

const OwnRow ownRows[] = {
    {"StatusQuery", make<StatusQuery, false>},
    {"NameStatusQuery",
     [](const RequestPointer& request) -> std::shared_ptr<NEBSourceControlTaskOperation> {
         return std::make_shared<NameStatusQuery>(request, DiffSides());
     }},
    {"LineCountQuery",
     [](const RequestPointer& request) -> std::shared_ptr<NEBSourceControlTaskOperation> {
         return std::make_shared<LineCountQuery>(request, DiffSides());
     }},
    {"PatchQuery",
     [](const RequestPointer& request) -> std::shared_ptr<NEBSourceControlTaskOperation> {
         return std::make_shared<PatchQuery>(request, DiffSides());
     }},
    {"CommitPatchQuery", make<CommitPatchQuery>},
    {"BlameQuery",
     [](const RequestPointer& request) -> std::shared_ptr<NEBSourceControlTaskOperation> {
         return request->fileCount() > 0 ? std::make_shared<BlameQuery>(request, std::nullopt)
                                         : nullptr;
     }},
    {"TreeQuery",
     [](const RequestPointer& request) -> std::shared_ptr<NEBSourceControlTaskOperation> {
         return std::make_shared<TreeQuery>(request, "");
     }},
    {"CloneWithoutSubmodulesOperation", make<CloneWithoutSubmodulesOperation>},
};

}  // namespace

std::shared_ptr<NEBSourceControlTaskOperation> ownOperation(const std::string& className,
                                                            const RequestPointer& request) {
    for (const OwnRow& row : ownRows) {
        if (row.name == className && request->sourceTree && request->sourceTree->location) {
            return row.make(request);
        }
    }
    return nullptr;
}

RecordingFile::Change anonymization(const HostSession& session, bool isAnonymous) {
    if (!isAnonymous) {
        return nullptr;
    }
    return [&session](auto& lines) { return makeAnonymous(lines, session, ownOperation); };
}

}  // namespace neb::nebsc
