// StoppableTask.h - the frame of a command whose request can stop at conflicts.
#pragma once

#include <string>

#include "CommandFrame/CommandTask.h"

namespace neb::nebsc {

/// Reports the conflicts of an outcome with their kinds, and what to do about them. The first
/// record of the outcome has the commits of HEAD before and after.
class StoppableTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    /// Returns what stopped, as the start of a sentence: "the merge".
    [[nodiscard]] virtual std::string subject() const = 0;
    /// Returns the advice to resolve conflicts, without a line end.
    [[nodiscard]] virtual std::string conflictAdvice() const;
    /// Returns the advice for conflicts that git itself resolved and staged, without a line end;
    /// see git-rerere(1).
    [[nodiscard]] virtual std::string resolutionAdvice() const;
    /// Returns what the command did, as a sentence with its line end.
    [[nodiscard]] virtual std::string textOfSuccess(const Outcome& outcome) = 0;

    [[nodiscard]] bool isHandled(const NEBSourceControlError& error) const override;
    void report(const Outcome& outcome, CommandOutput& output) override;

    /// Returns whether the commit of HEAD changed.
    [[nodiscard]] static bool hasMoved(const Outcome& outcome);
    /// Returns "; now at 0123456789ab.\n", or ".\n" if HEAD has no commit.
    [[nodiscard]] std::string endWithCommit() const;
};

}  // namespace neb::nebsc
