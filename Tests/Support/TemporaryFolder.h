// TemporaryFolder.h - a folder of a test's own, gone with it.
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
    /// Writes a file, making the folders on its way, and answers its path.
    std::string write(std::string_view name, std::string_view bytes) const;
    /// The same, executable: a program that stands in for another.
    std::string writeProgram(std::string_view name, std::string_view script) const;
    /// A file's bytes; empty when there is none.
    [[nodiscard]] std::string read(std::string_view name) const;

private:
    std::filesystem::path _path;
};

}  // namespace neb::test
