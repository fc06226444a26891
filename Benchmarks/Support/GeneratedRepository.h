// GeneratedRepository.h - reproducible generated repositories.
//
//     importRepository("/tmp/r", [](std::ostream& stream) { writeHistory(stream, 1000); });
//
// Failures throw std::runtime_error with the message of git. Not thread-safe.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Data.h"

namespace neb::benchmarks {

/// Runs the program (an absolute path) in the folder and returns its standard output.
Data runProgram(const std::string& folder, const std::string& program,
                std::vector<std::string> arguments);
/// Runs the first git on the PATH.
Data runGit(const std::string& folder, std::vector<std::string> arguments);

/// Creates the folder and a repository from the fast-import stream that `write` writes, with a
/// commit graph as git maintains it. The branch is "main"; nothing is checked out.
void importRepository(const std::string& folder, const std::function<void(std::ostream&)>& write);

/// Begins commit `number` (from 1) of the branch "main": one of fifty authors, a minute after the
/// previous commit, and a realistic message with a subject of about 50 characters and usually a
/// paragraph of about 200. Its changes follow.
void writeCommit(std::ostream& stream, int number);
/// Sets the content of a file in the current commit.
void writeFile(std::ostream& stream, std::string_view path, std::string_view content);

/// Returns the path of a file, a hundred per folder: "source/folder12/file7.cpp".
std::string pathOf(int number);

/// Writes that many commits, each with three of 5,000 files.
void writeHistory(std::ostream& stream, int commits);

}  // namespace neb::benchmarks
