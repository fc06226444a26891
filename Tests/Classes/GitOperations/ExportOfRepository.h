// ExportOfRepository.h - the fixture of tests that export from a real repository.
#pragma once

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>

#include "GitController.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/Matchers.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestRepository.h"

namespace neb::test {

/// Returns the paths of all files and folders below the folder.
inline std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        names.push_back(std::filesystem::relative(entry.path(), folder).string());
    }
    return names;
}

/// A repository with two revisions of a file, and a folder for temporary and exported files.
class ExportOfRepository : public HygienicTest {
protected:
    ExportOfRepository() {
        std::filesystem::create_directory(folder.path("tmp"));
        std::filesystem::create_directory(folder.path("out"));
        ::setenv("TMPDIR", folder.path("tmp").c_str(), 1);
        binary = std::string("\0\1\xFF\r\n\x80", 6);
        for (int i = 0; i < 300000; ++i) {
            binary += static_cast<char>(i * 7 % 251);
        }
        repository.write("top.bin", binary);
        repository.write("src/io/main.c", "old\n");
        repository.git({"add", "."});
        repository.git({"commit", "-qm", "first"});
        repository.git({"tag", "first"});
        repository.commitFile("src/io/main.c", "new\n");
        repository.write("src/io/main.c", "not committed\n");
    }
    ~ExportOfRepository() override { ::unsetenv("TMPDIR"); }

    [[nodiscard]] std::shared_ptr<NEBSourceControlOperation> exportFile(
        const std::string& file, NEBValue revision, NEBValue destination = {},
        std::int32_t type = NEBSourceControlRequestExportFiles) const {
        auto request = requestFor(type, repository.path());
        request->files = {NEBValue(repository.path(file))};
        request->startingRevision = std::move(revision);
        request->destination = std::move(destination);
        auto operation = GitController().operationForRequest(request);
        operation->start();
        return operation;
    }
    /// Returns the path that an export, which must have succeeded, has written.
    static std::string writtenPath(const NEBSourceControlOperation& operation) {
        EXPECT_EQ(operation.error(), std::nullopt);
        EXPECT_EQ(operation.result().value().size(), 1U);
        return operation.result()
            ->at(0)
            .value(NEBSourceControlOperationPathKey)
            .filePath()
            ->pathString();
    }
    [[nodiscard]] std::string out(std::string_view name) const {
        return folder.path(std::string("out/").append(name));
    }
    [[nodiscard]] std::vector<std::string> temporaryNames() const {
        return namesIn(folder.path("tmp"));
    }

    const TemporaryFolder folder;
    const TestRepository repository;
    std::string binary;
};

}  // namespace neb::test
