// MessageEditing.h - the message of a commit, written in the editor of the user.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "CommandFrame/GitQueries.h"
#include "Terminal/CommandOutput.h"

namespace neb::nebsc {

/// The commit that the message is for.
struct CommitToDescribe {
    /// Whether it replaces the latest one, whose message the user edits then.
    bool isAmending = false;
    /// Whether it may change nothing.
    bool mayBeEmpty = false;
    /// The arguments of `git commit` that say what is committed: options, "--", files.
    std::vector<std::string> arguments{};
};

/// A message, or the refusal of the commit.
struct EditedMessage {
    std::string text{};
    /// The file that has the text until the next message is edited.
    std::string file{};
    std::optional<CommandOutput> refused{};
};

/// Lets the user write the message of a commit in the file COMMIT_EDITMSG of the git folder. It
/// begins with the old message, that of a merge, or the file of the setting commit.template; its
/// comments list what will be committed, and are removed, unless commit.cleanup keeps them. With
/// its value "scissors", the list stands below a line that ends the message. For the main thread.
[[nodiscard]] EditedMessage editCommitMessage(const GitQueries& git,
                                              const CommitToDescribe& commit);

}  // namespace neb::nebsc
