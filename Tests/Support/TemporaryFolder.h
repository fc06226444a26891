// TemporaryFolder.h - a temporary folder for a test, removed with the object.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace neb::test {

class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    /// Absolute, without symbolic links in it.
    [[nodiscard]] std::string path() const { return _path.string(); }
    [[nodiscard]] std::string path(std::string_view name) const { return (_path / name).string(); }
    /// Writes a file, creates its parent folders, and returns its absolute path.
    std::string write(std::string_view name, std::string_view bytes) const;
    /// The same for an executable script, which usually replaces another program.
    std::string writeProgram(std::string_view name, std::string_view script) const;
    /// Returns the content of a file; empty if it does not exist.
    [[nodiscard]] std::string read(std::string_view name) const;

private:
    std::filesystem::path _path;
};

}  // namespace neb::test
