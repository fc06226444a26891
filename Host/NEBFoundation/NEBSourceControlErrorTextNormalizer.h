// NEBSourceControlErrorTextNormalizer.h - what in the words of git tells what happened, for a table
// of texts to be compared with: git's own statements, in small letters.
//
//     error: cannot lock ref 'refs/heads/disk full'    error: cannot lock ref ''
//     remote: fatal: not a git repository
//     hint: Try again.                                 hint: try again.
//
// Left out are the names that stand between quotes (but for their end, where it tells which lock or
// which program is meant), the subjects of commits, the messages of the remote, the entries of
// lists and the address of the remote: their author must not choose the class of a failure.
#pragma once

#include <string>
#include <string_view>

namespace neb {

/// The lines that are git's own word on what happened. From any thread, as are the others.
[[nodiscard]] std::string NEBSourceControlStatementsInText(std::string_view text);

/// The statements without warnings and hints, which do not tell why something failed where an error
/// does; a warning that a reference cannot be read does.
[[nodiscard]] std::string NEBSourceControlStatementsWithoutAsides(std::string_view statements);

/// The statements that begin with "fatal:" or "error:", as git's own failures do, and the words of
/// a hook, a filter or ssh seldom.
[[nodiscard]] std::string NEBSourceControlFailuresAmongStatements(std::string_view statements);

}  // namespace neb
