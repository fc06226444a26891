// GitQuery.h - composite operations that read the output of several git commands.
//
//     const auto folder = runQuery(request(), {"rev-parse", "--absolute-git-dir"});
//     if (!folder->error()) {
//         use(folder->line());
//     }
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "GitExtensions/GitExtension.h"
#include "GitOperations/GitComposite.h"

namespace neb {

/// Runs git with these arguments, behind those for the repository of the request, and keeps the
/// output. A git that exits with status 1 and prints nothing has no output and no error.
class GitQueryOperation : public GitReadingOperation {
public:
    GitQueryOperation(std::shared_ptr<NEBSourceControlRequest> request,
                      const std::vector<std::string>& arguments);

    [[nodiscard]] std::string className() const override { return "GitQueryOperation"; }

    /// The standard output, whatever bytes it has. The text belongs to the operation.
    [[nodiscard]] std::string_view output() const {
        return data() ? data()->bytes() : std::string_view();
    }
    /// Whether git did not start, or a signal ended it. There is an error then.
    [[nodiscard]] bool lacksAnswer() const {
        const auto& status = terminationStatus();
        return error() && !(status && status->exitStatus());
    }
    /// The output without its last line end: a single line, whatever else it has.
    [[nodiscard]] std::string_view line() const {
        std::string_view text = output();
        text.remove_suffix(text.ends_with('\n') ? 1 : 0);
        return text;
    }
};

/// A composite operation of queries and other operations, one after the other.
class GitQueryComposite : public GitComposite<NEBSourceControlOperation> {
public:
    using GitComposite::GitComposite;

protected:
    /// Runs git with these arguments until it has finished, and returns the query, never null. A
    /// git that did not start, or that a signal ended, has answered nothing: the composite then has
    /// its error. The caller decides about a git that exited with another status than 0.
    std::shared_ptr<GitQueryOperation> runQuery(std::shared_ptr<NEBSourceControlRequest> request,
                                                const std::vector<std::string>& arguments);
    /// The same with this query.
    std::shared_ptr<GitQueryOperation> runQuery(std::shared_ptr<GitQueryOperation> query);
};

}  // namespace neb
