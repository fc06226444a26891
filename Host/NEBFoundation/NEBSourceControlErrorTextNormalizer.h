// NEBSourceControlErrorTextNormalizer.h - reduces the output of git to its own messages, in lower
// case, as the error catalogue compares them.
//
//     error: cannot lock ref 'refs/heads/disk full'    error: cannot lock ref ''
//     remote: fatal: not a git repository
//     hint: Try again.                                 hint: try again.
//
// Names in quotes, subjects of commits, messages from the remote, entries of lists and the URL of
// the remote are removed, because their authors must not choose the class of a failure. A name in
// quotes keeps the end that identifies a lock file, a remote helper or a URL.
//
// All functions are thread-safe.
#pragma once

#include <string>
#include <string_view>

namespace neb {

/// Returns the messages of git in the text, one per line.
[[nodiscard]] std::string NEBSourceControlStatementsInText(std::string_view text);

/// Returns the statements without warnings and hints. Warnings about unreadable references stay,
/// because they are the cause of errors about unknown names.
[[nodiscard]] std::string NEBSourceControlStatementsWithoutAsides(std::string_view statements);

/// Returns the statements that begin with "fatal:" or "error:", as errors of git do and messages of
/// hooks, filters and ssh rarely do.
[[nodiscard]] std::string NEBSourceControlFailuresAmongStatements(std::string_view statements);

}  // namespace neb
