// LibGit2.h - what the operations answer, asked of libgit2 in this process.
//
// Each function opens the repository at the path, as a request names a folder; makes a record of
// its own for every record that an operation makes, with the same texts in it; and answers how many
// there were. What libgit2 cannot do is a std::runtime_error with its words.
#pragma once

#include <cstddef>
#include <string>

namespace neb::benchmarks {

/// Once, before anything else of this file: without the user's configuration.
void startLibGit2();
/// "1.5.1".
std::string libgit2Version();

std::size_t libgit2Log(const std::string& path);
/// With the names and states that each commit changed, renames found as by git's default.
std::size_t libgit2LogWithFiles(const std::string& path);
std::size_t libgit2Status(const std::string& path);
/// Of "lines.txt", as it was committed last.
std::size_t libgit2Blame(const std::string& path);
/// The patch from HEAD~1 to HEAD.
std::size_t libgit2Diff(const std::string& path);
/// The files of the working copy that differ from HEAD.
std::size_t libgit2DiffNames(const std::string& path);
/// Of the folder "entries" of HEAD.
std::size_t libgit2List(const std::string& path);
std::size_t libgit2CurrentBranch(const std::string& path);
/// The URL of the remote "origin".
std::size_t libgit2ConfigValue(const std::string& path);
/// Of "main" and "topic".
std::size_t libgit2MergeBase(const std::string& path);

}  // namespace neb::benchmarks
