// GitOperation.h - the base of operations that run one git command.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlTaskOperation.h"

namespace neb {

/// Runs `git` in the folder of the request's source tree. The constructor of a subclass sets the
/// arguments; its parseData() usually reads the output.
class GitOperation : public NEBSourceControlTaskOperation {
public:
    /// Sets the working directory to the location of the source tree if that is an absolute path or
    /// a file URL.
    explicit GitOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitOperation"; }

    /// The path of git, from the developer paths of the host; searched once per process.
    /// Thread-safe.
    [[nodiscard]] std::string launchPath() override;

    /// Returns the global options of git for the repository and working copy in the options of the
    /// request: "--git-dir=…" with a leading "~" expanded, then "--work-tree=…" unchanged. Empty
    /// when neither is set.
    [[nodiscard]] std::vector<std::string> defaultArguments() const;

    /// Translates the text with the table of GitErrorTable.h. The error of the table gets the class
    /// of diagnoseFailure(), if that finds one. For the types from 1000 on, code and description
    /// are those of the class. A text that is not in the table is translated by
    /// diagnoseFailure() or by the base class.
    [[nodiscard]] std::optional<NEBSourceControlError> errorFromErrorMessage(
        const std::optional<std::string>& message) override;

    /// Makes an error with the exit status of a git that failed and printed nothing, unless that is
    /// a valid answer.
    [[nodiscard]] std::optional<NEBSourceControlError> errorFromUnknownFailure(
        std::optional<NEBSourceControlError> error) override;

    /// Reads one line of a status or of a list of names and states: a record with the status value
    /// and the path, with `fullPath` prepended unless that is empty. Absent for a line without a
    /// state.
    [[nodiscard]] static std::optional<NEBDictionary> parseForStatusAndPathWithLine(
        std::string_view line, std::string_view fullPath);

protected:
    /// Returns an error that only this operation can recognise in the text, such as a refusal by a
    /// hook; absent if it recognises nothing. Called only for a child whose exit status is not 0.
    /// The base implementation returns nothing.
    [[nodiscard]] virtual std::optional<NEBSourceControlError> diagnoseFailure(
        std::string_view text) const {
        static_cast<void>(text);
        return std::nullopt;
    }

    /// Declares an operation that changes something: exit status 0 is success, whatever hooks or
    /// the server printed. Hooks may run and see the settings of the user.
    void setChangesRepository() {
        setJudgedByExitStatus();
        setMayRunHooks(true);
    }
    /// Declares an operation that writes files and runs no hooks: status 0 is success, whatever was
    /// printed.
    void setJudgedByExitStatus() { _isJudgedByExitStatus = true; }
    /// Declares a change that sets the upstream branch of a branch, or removes the settings of a
    /// deleted branch. git exits with status 0 even if it could not write the configuration, which
    /// is an error nevertheless.
    void setChangesBranchSettings() { _changesBranchSettings = true; }
    /// Declares a query: exit status 1 without output means that there is no result.
    void setEmptyOutputIsValid() { _isEmptyOutputValid = true; }

    /// Sets the arguments, preceded by defaultArguments().
    void setArgumentsBehindDefaults(const std::vector<std::string>& arguments);
    /// Uses the only file of the request, a path or file URL of a folder, as the working directory.
    /// Does nothing for any other number of files.
    void setCurrentDirectoryToOneFile();
    /// Appends the request's files unchanged; skips absent ones.
    void appendFiles(std::vector<std::string>& arguments) const;
    /// Appends the value as text; skips an absent one.
    static void appendIfPresent(std::vector<std::string>& arguments, const NEBValue& value);

private:
    bool _isJudgedByExitStatus = false;
    bool _changesBranchSettings = false;
    bool _isEmptyOutputValid = false;
};

}  // namespace neb
