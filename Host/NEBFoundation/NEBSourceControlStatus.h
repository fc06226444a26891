// NEBSourceControlStatus.h - the states of a file, as a status and the changed files of a log hold
// them.
//
//     if (record.value(NEBSourceControlOperationWCStatusKey).integer() ==
//         NEBSourceControlStatusConflict) {
//         offerToMerge(record);
//     }
#pragma once

#include <cstdint>

namespace neb {

/// The values of NEBSourceControlOperationWCStatusKey, and of the dictionary behind
/// NEBSourceControlOperationFilesKey.
enum NEBSourceControlStatus : std::uint32_t {
    /// git reported a state that has no value of its own.
    NEBSourceControlStatusOther = 0,
    /// New in the index, or new in the commit.
    NEBSourceControlStatusAdded = 1,
    /// Deleted from the index or from disk, or by the commit.
    NEBSourceControlStatusDeleted = 2,
    /// Content or type changed.
    NEBSourceControlStatusModified = 4,
    /// Unmerged.
    NEBSourceControlStatusConflict = 16,
    /// Neither tracked nor ignored.
    NEBSourceControlStatusUntracked = 256,
    /// Renamed or copied.
    NEBSourceControlStatusRenamed = 4096,
};

}  // namespace neb
