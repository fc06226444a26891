// TestRepository.h - a git repository for a test, independent of the user's configuration.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "Support/TemporaryFolder.h"

namespace neb::test {

/// Sets the environment of this process, and so of each git that it starts, to an empty home folder
/// with an identity, a fixed date and the initial branch "main". main() of the test programs calls
/// it first.
void isolateFromMachine();

/// An empty repository with a working copy, removed with the object.
class TestRepository {
public:
    TestRepository();
    /// Clones the repository at the location.
    explicit TestRepository(const std::string& location);

    [[nodiscard]] std::string path() const { return _folder.path("repository"); }
    [[nodiscard]] std::string path(std::string_view name) const {
        return _folder.path(std::string("repository/").append(name));
    }
    /// Writes a file of the working copy.
    void write(std::string_view name, std::string_view bytes) const;
    /// Runs git in the working copy and returns its output. Throws if it fails.
    std::string git(std::vector<std::string> arguments) const;
    /// The same with standard input.
    std::string gitWithInput(std::vector<std::string> arguments, std::string_view input) const;
    /// Runs git in the working copy and returns its exit status, -1 if a signal killed it.
    int gitStatus(std::vector<std::string> arguments) const;
    /// Writes the file, adds and commits it.
    void commitFile(std::string_view name, std::string_view bytes,
                    std::string_view message = "a commit") const;

private:
    TemporaryFolder _folder;
};

}  // namespace neb::test
