// GitChange.h - the bases of the operations of the types from 1000 on that change something.
//
//     void GitSomeOperation::perform() {
//         if (runChange({"add", "--all"})) {
//             setResult({{recordOfHead()}});
//         }
//     }
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "GitExtensions/GitQuery.h"

namespace neb {

/// Runs one git command that changes the repository, behind the arguments for the repository of the
/// request. Exit status 0 is success.
class GitChangeOperation : public GitOperation {
public:
    /// `input` is the standard input; absent: none.
    GitChangeOperation(std::shared_ptr<NEBSourceControlRequest> request,
                       const std::vector<std::string>& arguments,
                       std::optional<Data> input = std::nullopt);

    [[nodiscard]] std::string className() const override { return "GitChangeOperation"; }
};

/// A composite operation of queries and changes, one after the other, of which the first failure
/// ends it.
class GitChangeComposite : public GitQueryComposite {
public:
    using GitQueryComposite::GitQueryComposite;

    /// Calls perform() unless there is an error.
    void main() final;

protected:
    virtual void perform() = 0;

    /// Returns whether the composite goes on: the operation has no error, and the composite was not
    /// cancelled. Otherwise the error of the composite is set.
    [[nodiscard]] bool goesOnAfter(const NEBSourceControlOperation& operation);
    /// Runs a GitChangeOperation. Returns whether the composite goes on.
    [[nodiscard]] bool runChange(const std::vector<std::string>& arguments,
                                 std::optional<Data> input = std::nullopt);
    /// Returns the line that a query prints; empty if it prints nothing. Absent if the composite
    /// does not go on.
    [[nodiscard]] std::optional<std::string> queriedLine(const std::vector<std::string>& arguments);
    /// Returns the full id of the commit of HEAD, empty before the first one. Absent if the
    /// composite does not go on.
    [[nodiscard]] std::optional<std::string> queriedHead();

    /// Returns the full id of the commit that the value names. Absent if the composite does not go
    /// on: the commit is unknown.
    [[nodiscard]] std::optional<std::string> queriedCommit(const NEBValue& revision);

    /// What paths start at.
    enum class PathOrigin { workingDirectory, top };
    /// Returns the untracked files and folders that git replaces, without a message, when it
    /// restores these deleted files: "dir" for "dir/a.c", or a folder "a.c" that is not empty.
    /// Their paths have the same origin. Absent if the composite does not go on.
    [[nodiscard]] std::optional<std::vector<std::string>> queriedObstacles(
        const std::vector<std::string>& deleted, PathOrigin origin);
    /// Returns those of the paths that are untracked files, or folders with untracked files;
    /// ignored files count. The paths start at the top. Absent if the composite does not go on.
    [[nodiscard]] std::optional<std::vector<std::string>> queriedUntracked(
        std::vector<std::string> paths);
    /// Returns a record for each file with uncommitted changes, except those of submodules, with
    /// NEBSourceControlOperationPathKey (from the top) and NEBSourceControlOperationStateKey; and
    /// for each untracked obstacle of the deleted ones, with the state "untracked". With `paths`
    /// only of these. Absent if the composite does not go on.
    [[nodiscard]] std::optional<NEBSourceControlResult> queriedLocalChanges(
        const std::vector<std::string>& paths = {});

    /// Runs a change that can stop at conflicts, and sets result and error. The first record has
    /// NEBSourceControlOperationKindKey "head", NEBSourceControlOperationOldObjectIDKey and
    /// NEBSourceControlOperationObjectIDKey: the commits of HEAD before and after. A record for
    /// each path in conflict follows, as GitConflictsOperation makes it.
    void runStoppable(const std::vector<std::string>& arguments);

    /// Ends the composite with an error of this class. `files` are those of the error. Without
    /// `advice` the recovery suggestion is that of the class.
    void fail(std::string_view errorClass, const std::string& description,
              std::vector<std::string> files = {}, const std::string& advice = {});
    /// Ends the composite because an option has a value that it does not know, or lacks one.
    void failForOption(NEBConstant key);
    /// Returns whether the value is absent, or the name of one reference; otherwise the error is
    /// set.
    [[nodiscard]] bool acceptsReference(const NEBValue& name);
    /// Returns whether NEBSourceControlRequestOptionMessage has no NUL byte, at which git refuses
    /// or cuts off a message; otherwise the error is set.
    [[nodiscard]] bool acceptsMessage();
    /// Returns the option NEBSourceControlRequestOptionAction, or else `usual`.
    [[nodiscard]] std::string action(std::string_view usual) const;

    /// Whether a boolean option of the request is set.
    [[nodiscard]] bool hasOption(NEBConstant key) const {
        return request()->option(key).boolValue();
    }

private:
    void failAtConflicts(std::vector<std::string> paths);
};

/// Returns the request's files, each with a NUL byte behind it, for the option
/// --pathspec-file-nul; see git-add(1).
[[nodiscard]] Data gitNULSeparatedFiles(const NEBSourceControlRequest& request);

/// Returns the bytes of the request's files.
[[nodiscard]] std::vector<std::string> gitFileNames(const NEBSourceControlRequest& request);

/// Returns the pieces of an output, each of which a NUL byte ends.
[[nodiscard]] std::vector<std::string> gitNULSeparatedPieces(std::string_view output);

/// Whether the text can be one side of a refspec only, and names one reference or revision: it is
/// not empty, and has no "+" in front, which forces, and no ":" or "*".
[[nodiscard]] bool gitNamesOneReference(std::string_view text);

/// Returns the bytes of a string or of a value of bytes; absent for an absent value.
[[nodiscard]] std::optional<Data> gitBytesOfValue(const NEBValue& value);

}  // namespace neb
