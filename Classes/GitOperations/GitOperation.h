// GitOperation.h - the base of every operation that runs one git command.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlTaskOperation.h"

namespace neb {

/// Runs `git` in the folder that the request's source tree stands for. A subclass sets its
/// arguments when it is made and, as a rule, reads the output in parseData().
class GitOperation : public NEBSourceControlTaskOperation {
public:
    /// The working directory becomes the source tree's location, when that is an absolute path or a
    /// file URL; else it stays unset.
    explicit GitOperation(std::shared_ptr<NEBSourceControlRequest> request);

    [[nodiscard]] std::string className() const override { return "GitOperation"; }

    /// The path of git, from the host's developer paths; looked up once for the process. From any
    /// thread.
    [[nodiscard]] std::string launchPath() override;

    /// The options that point git at the repository and working copy of the request's options:
    /// "--git-dir=…" with a leading "~" expanded, then "--work-tree=…" exactly as given. Empty when
    /// the options name neither.
    [[nodiscard]] std::vector<std::string> defaultArguments() const;

    /// Translates the text of a child by the table of GitErrorTable.h, whatever the subclass
    /// diagnoses; where the subclass diagnoses a failure, the table's error gets that class. A text
    /// that is not in the table is translated by diagnoseFailure(), else by the base class.
    [[nodiscard]] std::optional<NEBSourceControlError> errorFromErrorMessage(
        const std::optional<std::string>& message) override;

    /// A git that fails without a word is an error that tells its exit status, unless silence is an
    /// answer to what it was asked.
    [[nodiscard]] std::optional<NEBSourceControlError> errorFromUnknownFailure(
        std::optional<NEBSourceControlError> error) override;

    /// Reads one line of a status or of a list of names and states: a record with the status value
    /// and the path, in front of which `fullPath` is put unless that is empty. Nothing for a line
    /// without a state.
    [[nodiscard]] static std::optional<NEBDictionary> parseForStatusAndPathWithLine(
        std::string_view line, std::string_view fullPath);

protected:
    /// Returns what the operation itself knows about a failure with this text, such as that a hook
    /// of the repository refused; absent where it knows nothing. Called only for a child that did
    /// not end with status 0. The base returns nothing.
    [[nodiscard]] virtual std::optional<NEBSourceControlError> diagnoseFailure(
        std::string_view text) const {
        static_cast<void>(text);
        return std::nullopt;
    }

    /// For an operation that changes something: whether it did, git's exit status alone tells. What
    /// is said beside a success, by a hook or by the far end, is no error whatever its words. The
    /// hooks that may run see the user's settings.
    void setChangesRepository() {
        setJudgedByExitStatus();
        setMayRunHooks(true);
    }
    /// For an operation that writes files and runs no hooks: status 0 is success, whatever was
    /// printed.
    void setJudgedByExitStatus() { _isJudgedByExitStatus = true; }
    /// For a question: a git that ends with 1 and says nothing has answered that there is nothing.
    void setSilenceIsAnswer() { _isSilenceAnswer = true; }

    /// Sets the arguments, behind those of defaultArguments().
    void setArgumentsBehindDefaults(const std::vector<std::string>& arguments);
    /// When the request has exactly one file, a folder's path or file URL, that becomes the working
    /// directory.
    void setCurrentDirectoryToOneFile();
    /// Appends the request's files, each as it is; an absent one leaves no trace.
    void appendFiles(std::vector<std::string>& arguments) const;
    /// Appends the value as text; an absent one leaves no trace.
    static void appendIfPresent(std::vector<std::string>& arguments, const NEBValue& value);

private:
    bool _isJudgedByExitStatus = false;
    bool _isSilenceAnswer = false;
};

}  // namespace neb
