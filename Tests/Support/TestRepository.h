// TestRepository.h - a real repository that a test makes, apart from whatever the machine's user
// has configured.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "Support/TemporaryFolder.h"

namespace neb::test {

/// Points HOME, XDG_CONFIG_HOME and git's configuration files of this process (and so of every git
/// that it starts) at an empty home with an identity, a fixed date and the first branch "main".
/// Called by main() of the test programs, before anything else.
void isolateFromMachine();

/// `git init` in a folder of its own.
class TestRepository {
public:
    TestRepository();
    /// A clone of the repository at the location.
    explicit TestRepository(const std::string& location);

    [[nodiscard]] std::string path() const { return _folder.path("repository"); }
    [[nodiscard]] std::string path(std::string_view name) const {
        return _folder.path(std::string("repository/").append(name));
    }
    /// Writes a file of the working copy.
    void write(std::string_view name, std::string_view bytes) const;
    /// Runs git there and answers what it printed; throws when it fails.
    std::string git(std::vector<std::string> arguments) const;
    /// The same, with these bytes as its standard input.
    std::string gitWithInput(std::vector<std::string> arguments, std::string_view input) const;
    /// Runs git there and answers only its exit status.
    int gitStatus(std::vector<std::string> arguments) const;
    /// Writes the file, adds and commits it.
    void commitFile(std::string_view name, std::string_view bytes,
                    std::string_view message = "a commit") const;

private:
    TemporaryFolder _folder;
};

}  // namespace neb::test
