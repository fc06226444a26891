#include "Support/TemporaryFolder.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace neb::test {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (fs::canonical(fs::temp_directory_path()) / "neb-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no temporary folder: " + pattern);
    }
    _path = pattern;
    // Tests that act as another user must be able to enter.
    fs::permissions(_path, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                               fs::perms::others_read | fs::perms::others_exec);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(_path, ignored);
}

std::string TemporaryFolder::write(std::string_view name, std::string_view bytes) const {
    const fs::path file = _path / name;
    fs::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream) {
        throw std::runtime_error("cannot write " + file.string());
    }
    return file.string();
}

std::string TemporaryFolder::writeProgram(std::string_view name, std::string_view script) const {
    std::string file = write(name, script);
    fs::permissions(file, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                              fs::perms::others_read | fs::perms::others_exec);
    return file;
}

std::string TemporaryFolder::read(std::string_view name) const {
    std::ifstream stream(_path / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace neb::test
