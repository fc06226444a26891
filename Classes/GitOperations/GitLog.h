// GitLog.h - the history of a working copy: request type 18.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Lists commits, newest first: those of the checked-out branch, of a range or branch, or those
/// that changed the request's first file (others are left out of account).
///
/// The result has one record a commit: NEBSourceControlOperationRevisionKey (at most 12
/// characters), NEBSourceControlOperationAuthorKey and NEBSourceControlOperationAuthorEmailKey (by
/// the repository's mail map), NEBSourceControlOperationDateKey (when it was written; a time that
/// 32 bits cannot hold is the nearest that they can) and NEBSourceControlOperationMessageKey
/// (whole, without line ends around it). With the option for changed files, and where git lists
/// any, also NEBSourceControlOperationFilesKey, a dictionary from path to status value; of a file
/// that was renamed or copied the old path, of one whose name is not UTF-8 the path in git's
/// quotes, see gitTextOfPath(). Empty when there is no commit to list. A commit whose author,
/// e-mail or message is not UTF-8 is left out; omittedRevisions() names it.
class GitLogOperation : public GitOperation {
public:
    explicit GitLogOperation(std::shared_ptr<NEBSourceControlRequest> request);
    ~GitLogOperation() override;

    [[nodiscard]] std::string className() const override { return "GitLogOperation"; }
    void parseArrivedData(const Data& arrived) override;
    void parseData() override;

    /// git's option for a commit's format: a NUL byte, then the fields that the placeholders name,
    /// one a line.
    [[nodiscard]] static std::string _prettyFormatWithArray(
        const std::vector<std::string>& placeholders);

private:
    void appendRevisions(std::vector<std::string>& arguments) const;
    [[nodiscard]] bool wantsFilesChanged() const;

    class Reader;
    std::unique_ptr<Reader> _reader;  // of what was read ahead; absent until there is any
    std::size_t _seen = 0;            // the bytes in which an end of a block was looked for
};

}  // namespace neb
