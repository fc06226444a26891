// LibGit2.h - the work of the operations, done with libgit2 in this process.
//
// Each function opens the repository at the path, creates a record with the same texts for each
// record of the operation, and returns the number of records. Failures throw std::runtime_error
// with the message of libgit2.
#pragma once

#include <cstddef>
#include <string>

namespace neb::benchmarks {

/// Initializes libgit2 without the configuration of the user. Must be called once, first.
void startLibGit2();
/// Returns the version, "1.5.1".
std::string libgit2Version();

std::size_t libgit2Log(const std::string& path);
/// With the changed files of each commit; renames are detected with the defaults of git.
std::size_t libgit2LogWithFiles(const std::string& path);
std::size_t libgit2Status(const std::string& path);
/// Of "lines.txt" at HEAD.
std::size_t libgit2Blame(const std::string& path);
/// The patch from HEAD~1 to HEAD.
std::size_t libgit2Diff(const std::string& path);
/// The files of the working copy that differ from HEAD.
std::size_t libgit2DiffNames(const std::string& path);
/// Of the folder "entries" of HEAD.
std::size_t libgit2List(const std::string& path);
/// The state of the working copy, with a record of HEAD.
std::size_t libgit2State(const std::string& path);
/// The log with full ids, parents, committers and the references of each commit.
std::size_t libgit2History(const std::string& path);
/// The blame of "lines.txt" at HEAD, a record for each group of lines.
std::size_t libgit2Annotation(const std::string& path);
std::size_t libgit2CurrentBranch(const std::string& path);
/// The URL of the remote "origin".
std::size_t libgit2ConfigValue(const std::string& path);
/// Of "main" and "topic".
std::size_t libgit2MergeBase(const std::string& path);

}  // namespace neb::benchmarks
