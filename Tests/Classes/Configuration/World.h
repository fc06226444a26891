// World.h - repositories that know each other, made alike each time, and all that a request leaves
// of them.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Support/TemporaryFolder.h"

namespace neb::test {

/// In a folder of its own: "repository", a working copy with a history, branches, a tag, a note, a
/// stash and the remote "origin"; and "remote.git", which is that and has got two commits and the
/// branch "news" since. Names of commits are the same in every world of one object format.
class World {
public:
    /// "sha1" or "sha256".
    explicit World(std::string_view objectFormat = "sha1");

    [[nodiscard]] std::string path() const { return _folder.path(); }
    [[nodiscard]] std::string path(std::string_view name) const { return _folder.path(name); }
    [[nodiscard]] std::string repository() const { return path("repository"); }
    [[nodiscard]] std::string repository(std::string_view name) const {
        return path(std::string("repository/").append(name));
    }
    /// Runs a script of the shell in the repository, which ends at the first command that fails,
    /// and answers what it printed; throws when it fails.
    std::string run(std::string_view script) const;
    /// All that is there, by its path: of a file its mode and bytes, of an index what is staged. To
    /// be asked under the tests' own configuration.
    [[nodiscard]] std::map<std::string, std::string> content() const;
    /// The text with "<world>" for where the world is, and "<random>" for what names of temporary
    /// files begin with.
    [[nodiscard]] std::string withoutPlace(std::string text) const;

private:
    TemporaryFolder _folder;
};

/// What a request came to.
struct Outcome {
    /// The domain, code, class and texts of the error; "none" without one.
    std::string error;
    /// git's own words in it.
    std::string words;
    std::vector<std::string> records;
    bool hasResult = false;

    friend bool operator==(const Outcome&, const Outcome&) = default;
};

void PrintTo(const Outcome& outcome, std::ostream* stream);

/// Runs the request's operation to its end, its temporary files in the world's folder "tmp".
Outcome outcomeOf(const World& world, const std::shared_ptr<NEBSourceControlRequest>& request);

}  // namespace neb::test
