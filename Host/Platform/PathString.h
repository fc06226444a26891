// PathString.h - operations on the text of a path. They do not access the file system.
//
// All functions are thread-safe and throw only std::bad_alloc.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Export.h"

namespace neb {

/// Whether the path begins with "/" or "~".
[[nodiscard]] NEB_EXPORT bool isAbsolutePath(std::string_view path);

/// Returns `base` and `component` with exactly one "/" between them. If `base` is empty, returns
/// the component. A "/" at the end of the component is kept.
[[nodiscard]] NEB_EXPORT std::string pathByAppendingComponent(std::string_view base,
                                                              std::string_view component);

/// Returns the text after the last "/", ignoring a "/" at the end: "b" for "/a/b/" and for "b", "/"
/// for "/", "" for "".
[[nodiscard]] NEB_EXPORT std::string lastPathComponent(std::string_view path);
/// Returns the same as a view into `path`.
[[nodiscard]] NEB_EXPORT std::string_view lastPathComponentIn(std::string_view path);

/// Returns the path without the last component: "/a" for "/a/b/", "/" for "/a", "" for "b" and for
/// "".
[[nodiscard]] NEB_EXPORT std::string pathByDeletingLastComponent(std::string_view path);

/// Whether the path is the folder or inside it. Both must be absolute, without "." and "..", and
/// without a "/" at the end. Symbolic links are not resolved.
[[nodiscard]] NEB_EXPORT bool liesWithin(std::string_view path, std::string_view folder);

/// Returns the path with a leading "~" or "~/" replaced by the home directory: HOME, or if that is
/// not set, the one in the user database. Every other path, also "~name", is returned unchanged.
[[nodiscard]] NEB_EXPORT std::string pathByExpandingTilde(std::string_view path);

/// Returns the path of a file URL: "/a b" for "file:///a%20b". Ignores the host, decodes escapes,
/// and removes the query, the fragment and a "/" at the end. Returns nothing for any other URL or
/// text, and for a URL with a relative path or an escaped NUL.
[[nodiscard]] NEB_EXPORT std::optional<std::string> pathOfFileURL(std::string_view url);

/// Returns the path that a location names: an absolute path itself, or the path of a file URL.
/// Returns nothing for anything else, such as a relative path or the address of a remote
/// repository.
[[nodiscard]] NEB_EXPORT std::optional<std::string> pathOfLocation(std::string_view location);

}  // namespace neb
