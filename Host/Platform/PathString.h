// PathString.h - what a path's text says, without a look at the file system.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Export.h"

namespace neb {

/// Whether the path begins with "/" or "~".
[[nodiscard]] NEB_EXPORT bool isAbsolutePath(std::string_view path);

/// `base` and `component` with exactly one "/" between them. An empty base gives the component; an
/// end "/" of the component is kept.
[[nodiscard]] NEB_EXPORT std::string pathByAppendingComponent(std::string_view base,
                                                              std::string_view component);

/// What follows the last "/", an end "/" left out of account: "b" for "/a/b/" and for "b". "/" for
/// a path of nothing but "/", and "" for "".
[[nodiscard]] NEB_EXPORT std::string lastPathComponent(std::string_view path);
/// The same, where it stands in `path`.
[[nodiscard]] NEB_EXPORT std::string_view lastPathComponentIn(std::string_view path);

/// What stands before the last component and the "/" in front of it, an end "/" left out of
/// account:
/// "/a" for "/a/b/", "/" for "/a", "" for "b" and for "".
[[nodiscard]] NEB_EXPORT std::string pathByDeletingLastComponent(std::string_view path);

/// With a leading "~" or "~/" replaced by the user's home directory (HOME, or else the user
/// database's); any other path, "~name" included, as it is.
[[nodiscard]] NEB_EXPORT std::string pathByExpandingTilde(std::string_view path);

/// The path of a file URL: what "file:///a%20b" names, "/a b". A host part is passed over, escapes
/// are decoded, a query or fragment and an end "/" are dropped. Nothing for any other URL or text,
/// and for a URL whose path is relative or holds an escaped NUL.
[[nodiscard]] NEB_EXPORT std::optional<std::string> pathOfFileURL(std::string_view url);

/// The path that a location names: itself when it is absolute, a file URL's path, otherwise
/// nothing (the address of a remote repository, a relative path).
[[nodiscard]] NEB_EXPORT std::optional<std::string> pathOfLocation(std::string_view location);

}  // namespace neb
