// World.h - reproducible repositories for tests, and snapshots of their state.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Support/TemporaryFolder.h"

namespace neb::test {

/// A folder with "repository", a working copy with a history, branches, a tag, a note, a stash and
/// the remote "origin"; and "remote.git", the remote, which has two commits and the branch "news"
/// more. Commit ids are the same in all worlds of an object format.
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
    /// Runs a shell script in the repository, which stops at the first failing command, and returns
    /// its output. Throws if it fails.
    std::string run(std::string_view script) const;
    /// Returns all files and folders by path: mode and bytes of a file, staged entries of an index.
    /// Must be called with the configuration of the tests.
    [[nodiscard]] std::map<std::string, std::string> content() const;
    /// Returns the text with "<world>" for the path of the world, and "<random>" for the prefix of
    /// temporary files.
    [[nodiscard]] std::string withoutPlace(std::string text) const;

private:
    TemporaryFolder _folder;
};

/// The outcome of a request.
struct Outcome {
    /// The domain, code, class and texts of the error; "none" without one.
    std::string error;
    /// The output of git in the error.
    std::string text;
    std::vector<std::string> records;
    bool hasResult = false;

    friend bool operator==(const Outcome&, const Outcome&) = default;
};

void PrintTo(const Outcome& outcome, std::ostream* stream);

/// Runs the operation of the request, with temporary files in the folder "tmp" of the world.
Outcome outcomeOf(const World& world, const std::shared_ptr<NEBSourceControlRequest>& request);
/// The same with a record sink; the records are those that it got.
Outcome outcomeWithSink(const World& world,
                        const std::shared_ptr<NEBSourceControlRequest>& request);

}  // namespace neb::test
