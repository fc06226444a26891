// LogRepository.h - the repository of the benchmarks of a log.
//
// The history is generated once, in a temporary folder; NEB_BENCHMARK_REPOSITORY names another
// repository to use instead.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/GeneratedRepository.h"

namespace neb::benchmarks {

/// Returns a request for the whole log, with or without the changed files.
inline std::shared_ptr<NEBSourceControlRequest> logRequest(const std::string& location,
                                                           bool withFiles) {
    auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->location = location;
    return NEBSourceControlRequest::initWithType(
        NEBSourceControlRequestLog, tree, std::nullopt,
        NEBDictionary{{NEBSourceControlRequestOptionLogOutputFilesChanged, withFiles}});
}

/// A repository with 100,000 commits, removed with the object.
class GeneratedHistory {
public:
    GeneratedHistory() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "neb-benchmark-XXXXXX").string();
        _path = ::mkdtemp(pattern.data());
        importRepository(_path, [](std::ostream& stream) { writeHistory(stream, 100000); });
    }
    GeneratedHistory(const GeneratedHistory&) = delete;
    GeneratedHistory& operator=(const GeneratedHistory&) = delete;
    ~GeneratedHistory() { std::filesystem::remove_all(_path); }

    [[nodiscard]] const std::string& path() const { return _path; }

private:
    std::string _path;
};

/// Returns the path of the repository.
inline const std::string& repository() {
    static const char* const given = std::getenv("NEB_BENCHMARK_REPOSITORY");
    if (given != nullptr) {
        static const std::string path = given;
        return path;
    }
    static const GeneratedHistory generated;
    return generated.path();
}

}  // namespace neb::benchmarks
