// StatusPlace.h - what a person who asks for the status means by a path and by the current folder.
#pragma once

#include <optional>
#include <string>

#include "Interruption.h"

namespace neb::nebsc {

struct StatusPlace {
    /// The top of the working copy; where there is none, the folder in which it was looked for, so
    /// that git itself says what is wrong.
    std::string location;
    /// The absolute path that was asked for, unless that is the location itself.
    std::optional<std::string> destination;
    /// The absolute path of the current folder, without symbolic links.
    std::string currentFolder;
    /// Whether anything is at the path that was asked for.
    bool pathExists = true;
};

struct StatusPlaceSearch {
    std::optional<StatusPlace> place;
    /// One sentence; empty when there is a place.
    std::string failure;
};

/// Looks for the working copy in which `path` lies (absolute, or as seen from the current folder),
/// or the current folder when there is no path. Of a path where nothing is any more, the nearest
/// folder that is counts. A symbolic link is looked at itself where it lies in a working copy,
/// otherwise what it points to.
[[nodiscard]] StatusPlaceSearch findStatusPlace(Interruption& interruption,
                                                const std::optional<std::string>& path);

/// The path as the person sees it: from the current folder when that lies in the same working copy,
/// else as it is. A folder's "/" at the end stays.
[[nodiscard]] std::string pathAsSeenFrom(const StatusPlace& place, const std::string& path);

}  // namespace neb::nebsc
