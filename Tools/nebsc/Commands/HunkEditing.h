// HunkEditing.h - lets the user change a hunk in an editor; see git-add(1), "EDITING PATCHES".
#pragma once

#include <cstddef>
#include <string>

#include "CommandFrame/FileChoices.h"
#include "CommandFrame/GitQueries.h"

namespace neb::nebsc {

/// Starts the editor of the user on the hunk, or on the draft of the last attempt. The file is
/// addp-hunk-edit.diff in the git folder, as for git. Takes the hunk as it is then. Returns what to
/// tell the user otherwise: one line without its end. For the main thread.
[[nodiscard]] std::string editHunk(const GitQueries& git, FileChoices& file, std::size_t choice);

}  // namespace neb::nebsc
