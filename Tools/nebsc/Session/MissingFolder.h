// MissingFolder.h - makes a folder for work that needs one, and takes it back when the work fails.
//
//     MissingFolder folder("/home/me/new/demo");
//     if (const auto failure = folder.make()) { … }
//     …
//     folder.keep();   // without this, what was made is removed again with the object
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Platform/FileManager.h"

namespace neb::nebsc {

/// Of one thread at a time.
class MissingFolder {
public:
    /// Takes an absolute path.
    explicit MissingFolder(std::string path) : _path(std::move(path)) {}
    MissingFolder(const MissingFolder&) = delete;
    MissingFolder& operator=(const MissingFolder&) = delete;
    ~MissingFolder() { static_cast<void>(removeAgain()); }

    /// Makes the folder, and those on the way to it, where nothing is yet. What is there already,
    /// whatever it is, is left to whoever uses it.
    [[nodiscard]] std::optional<FileFailure> make();
    /// Leaves everything where it is.
    void keep() {
        _made.clear();
        _wasEmpty = false;
    }
    /// Removes the folder that was made, with all that is in it by now, and those on the way to it
    /// as far as they are empty; empties the folder again that was there and empty. Anything else
    /// that make() found stays untouched.
    [[nodiscard]] std::optional<FileFailure> removeAgain();

private:
    /// The path without a "/" at its end.
    [[nodiscard]] std::filesystem::path target() const;

    std::filesystem::path _path;
    /// What make() made, outermost first.
    std::vector<std::filesystem::path> _made;
    /// Whether make() found the folder, and nothing in it.
    bool _wasEmpty = false;
};

}  // namespace neb::nebsc
