// Editor.h - the editor of the user at the terminal, as git starts it; see git-var(1), GIT_EDITOR.
#pragma once

#include <string>

#include "Session/Interruption.h"

namespace neb::nebsc {

/// Returns whether the user can edit: standard input and standard output are terminals.
[[nodiscard]] bool canEdit();

/// The shell command of the editor, or else the reason why git has no editor.
struct EditorChoice {
    std::string command{};
    std::string failure{};
};

/// Returns GIT_EDITOR, core.editor, VISUAL, EDITOR or git's own default, in this order. Runs git in
/// the folder, with the environment of nebsc.
[[nodiscard]] EditorChoice editorOfUser(Interruption& interruption, const std::string& folder);

/// Runs the editor in the folder on a file, and waits for its end. Ctrl-C is for the editor;
/// another signal to nebsc and the end of the time end it. Restores the settings of the terminal
/// if it fails. Returns why the file may not be edited; empty after a success. For the main
/// thread.
[[nodiscard]] std::string edit(Interruption& interruption, const std::string& command,
                               const std::string& file, const std::string& folder);

}  // namespace neb::nebsc
