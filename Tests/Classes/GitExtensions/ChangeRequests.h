// ChangeRequests.h - requests of the types from 1000 on that change something.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Classes/GitExtensions/ExtensionTest.h"

namespace neb::test {

/// A repository, and requests for it.
class ChangeTest : public HygienicTest {
protected:
    using Operation = std::shared_ptr<NEBSourceControlOperation>;

    /// Returns the finished operation. `files` may be empty.
    [[nodiscard]] Operation performed(std::int32_t type, NEBDictionary options = {},
                                      const std::vector<std::string>& files = {}) const {
        auto request = requestFor(type, repository.path());
        request->options = std::move(options);
        if (!files.empty()) {
            request->files = valuesOf(files);
        }
        return performed(request);
    }
    [[nodiscard]] static Operation performed(
        const std::shared_ptr<NEBSourceControlRequest>& request) {
        return perform(request);
    }
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> requestOf(
        std::int32_t type, NEBDictionary options = {}) const {
        auto request = requestFor(type, repository.path());
        request->options = std::move(options);
        return request;
    }
    /// Returns the output of git without white space at its ends.
    [[nodiscard]] std::string git(std::vector<std::string> arguments) const {
        return std::string(trimmed(repository.git(std::move(arguments))));
    }
    [[nodiscard]] std::string status() const {
        return repository.git({"status", "--porcelain", "-z"});
    }
    [[nodiscard]] std::string head() const { return git({"rev-parse", "HEAD"}); }

    /// Makes the branch "side", which changes the file "a.c" in another way than main.
    void makeConflictingBranch() const {
        repository.commitFile("a.c", "1\n");
        repository.git({"checkout", "-q", "-b", "side"});
        repository.commitFile("a.c", "side\n");
        repository.git({"checkout", "-q", "main"});
        repository.commitFile("a.c", "main\n");
    }

    TestRepository repository;
};

/// Returns the text of a key in each record.
inline std::vector<std::string> textsOf(const NEBSourceControlOperation& operation,
                                        NEBConstant key) {
    std::vector<std::string> texts;
    for (const NEBDictionary& record : operation.result().value_or(NEBSourceControlResult())) {
        texts.emplace_back(record.text(key));
    }
    return texts;
}

/// Returns the bytes of the path of each record.
inline std::vector<std::string> pathsOf(const NEBSourceControlOperation& operation) {
    std::vector<std::string> paths;
    for (const NEBDictionary& record : operation.result().value_or(NEBSourceControlResult())) {
        paths.push_back(nameIn(record));
    }
    return paths;
}

}  // namespace neb::test
