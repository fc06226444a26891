// LargeRepository.h - a repository with many files and commits, without what git can add to be
// faster.
#pragma once

#include <string>

namespace neb::benchmarks {

struct LargeRepositorySize {
    int files = 100000;
    int commits = 200000;
};

/// Creates the folder with a repository and its checked-out working copy: the first commit adds all
/// files, each further one changes three of them. Objects are in one pack; the index has version 2,
/// and there is no commit-graph. Throws std::runtime_error with the message of git.
void createLargeRepository(const std::string& folder, const LargeRepositorySize& size);

/// Returns the path of a file of the repository; every folder has at most fifty entries.
std::string pathInLargeRepository(int number);

}  // namespace neb::benchmarks
