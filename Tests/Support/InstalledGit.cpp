#include "Support/InstalledGit.h"

#include <cstdio>
#include <stdexcept>
#include <string>
#include <utility>

#include "Support/TestRepository.h"

namespace neb::test {

bool isGitSince(int minor) {
    static const std::pair<int, int> installed = [] {
        std::pair<int, int> version{0, 0};
        const std::string text = TestRepository().git({"version"});
        if (std::sscanf(text.c_str(), "git version %d.%d", &version.first, &version.second) != 2) {
            throw std::runtime_error("unknown version of git: " + text);
        }
        return version;
    }();
    return installed >= std::pair{2, minor};
}

}  // namespace neb::test
