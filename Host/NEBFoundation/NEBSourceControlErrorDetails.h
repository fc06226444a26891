// NEBSourceControlErrorDetails.h - extracts hints, lines from the remote and file names from the
// error output of git.
//
//     error: Your local changes to the following files would be overwritten by checkout:
//             src/main.c                      a file
//     hint: Commit your changes first.        a hint
//     remote: The server says hello.          a line from the remote
//
// All functions are thread-safe.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Export.h"

namespace neb {

/// Returns the lines that begin with "hint:", without that prefix, in order. A hint of several
/// lines has an entry for each, and an empty entry separates two paragraphs, so the entries joined
/// by line feeds are the text as git printed it.
[[nodiscard]] NEB_EXPORT std::vector<std::string> NEBSourceControlHintsInText(
    std::string_view text);

/// Returns the hints as one text without blank lines at either end; empty without hints.
[[nodiscard]] NEB_EXPORT std::string NEBSourceControlAdviceOfHints(
    const std::vector<std::string>& hints);

/// Returns the text without the lines that are hints.
[[nodiscard]] NEB_EXPORT std::string NEBSourceControlTextWithoutHints(std::string_view text);

/// Returns the lines that begin with "remote:", without that prefix and without the trailing blanks
/// with which git clears a line of the terminal. Of a progress line, which overwrites itself, the
/// last state is returned.
[[nodiscard]] NEB_EXPORT std::vector<std::string> NEBSourceControlRemoteLinesInText(
    std::string_view text);

/// Returns the files that git names in a failure of the class, each once, in order: files with
/// local changes or conflicts, untracked files that block the operation, unknown or forbidden
/// paths, a lock file. Names are as git prints them: without quotes or escapes, and relative to the
/// top of the working copy or as the request names them. A name that contains a line feed is
/// returned as two names.
[[nodiscard]] NEB_EXPORT std::vector<std::string> NEBSourceControlFilesInText(
    std::string_view text, std::string_view errorClass);

}  // namespace neb
