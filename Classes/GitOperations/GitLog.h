// GitLog.h - request type 18 (log).
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "GitOperations/GitOperation.h"

namespace neb {

/// Lists commits, newest first: those of HEAD, of a range or branch, or those that changed the
/// request's first file (further files are ignored).
///
/// The result has a record per commit: NEBSourceControlOperationRevisionKey (at most 12
/// characters), NEBSourceControlOperationAuthorKey and NEBSourceControlOperationAuthorEmailKey
/// (after .mailmap), NEBSourceControlOperationDateKey (of the author; clamped to 32 bits) and
/// NEBSourceControlOperationMessageKey (whole, without line ends at either end). With the option
/// for changed files, and if git lists any, also NEBSourceControlOperationFilesKey, a dictionary
/// from path to status value; it has the old path of a renamed or copied file, and the quoted path
/// of one whose name is not UTF-8, see gitTextOfPath(). Empty when there is no commit to list.
/// Commits whose author, e-mail or message is not UTF-8 are left out; omittedRevisions() lists
/// them.
class GitLogOperation : public GitOperation {
public:
    explicit GitLogOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitLogOperation"; }
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;

    /// The format option of git: a NUL byte, then the fields, one per line.
    [[nodiscard]] static std::string _prettyFormatWithArray(
        const std::vector<std::string>& placeholders);

private:
    void appendRevisions(std::vector<std::string>& arguments) const;
    [[nodiscard]] bool wantsFilesChanged() const;
};

}  // namespace neb
