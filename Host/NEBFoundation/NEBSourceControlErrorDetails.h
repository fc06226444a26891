// NEBSourceControlErrorDetails.h - what the words of git tell apart from what happened: its hints,
// the far end's words, the files concerned.
//
//     error: Your local changes to the following files would be overwritten by checkout:
//             src/main.c                      a file
//     hint: Commit your changes first.        a hint
//     remote: The server says hello.          a line of the far end
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Export.h"

namespace neb {

/// The lines that git marks with "hint:", without that mark, in order. A hint that goes on over
/// several lines has one entry for each, and an empty one stands between two paragraphs: joined
/// with line ends they read as git wrote them. From any thread, as are the others.
[[nodiscard]] NEB_EXPORT std::vector<std::string> NEBSourceControlHintsInText(
    std::string_view text);

/// The hints as one text, without blank lines around it; empty without hints.
[[nodiscard]] NEB_EXPORT std::string NEBSourceControlAdviceOfHints(
    const std::vector<std::string>& hints);

/// The text without the lines that are hints.
[[nodiscard]] NEB_EXPORT std::string NEBSourceControlTextWithoutHints(std::string_view text);

/// The lines that git marks with "remote:", without that mark and the blanks at the end with which
/// git wipes a terminal's line. Of a line that was written over itself (progress), what was last.
[[nodiscard]] NEB_EXPORT std::vector<std::string> NEBSourceControlRemoteLinesInText(
    std::string_view text);

/// The files that git names in a failure of the class, each once, in order: local changes and
/// untracked files in the way, conflicts, paths that it does not know or may not touch, the lock
/// that is held. As git writes them: without quotes around them or escapes in them (it uses none
/// there), relative to the working copy's top or as the request named them. A name with a line end
/// in it cannot be told from two.
[[nodiscard]] NEB_EXPORT std::vector<std::string> NEBSourceControlFilesInText(
    std::string_view text, std::string_view errorClass);

}  // namespace neb
