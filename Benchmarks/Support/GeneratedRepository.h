// GeneratedRepository.h - repositories whose every byte follows from a few numbers.
//
//     importRepository("/tmp/r", [](std::ostream& stream) { writeHistory(stream, 1000); });
//
// What cannot be done is a std::runtime_error with what git said. One thread at a time.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Data.h"

namespace neb::benchmarks {

/// Runs the program (an absolute path) in the folder and answers what it wrote to standard output.
Data runProgram(const std::string& folder, const std::string& program,
                std::vector<std::string> arguments);
/// The same with the git that is found first on the PATH.
Data runGit(const std::string& folder, std::vector<std::string> arguments);

/// Makes a repository in the folder, which is made too, of what `write` puts into a stream of git
/// fast-import's form, with a commit graph as git's own upkeep leaves one. The branch is "main";
/// nothing is checked out.
void importRepository(const std::string& folder, const std::function<void(std::ostream&)>& write);

/// Begins commit `number` (from 1) of the branch "main": one of fifty authors, a minute behind the
/// commit before, and a message as people write them: a subject of some 50 characters, mostly with
/// a paragraph of some 200 behind it. What it changes comes behind it.
void writeCommit(std::ostream& stream, int number);
/// Sets the content of a file in the commit that was begun last.
void writeFile(std::ostream& stream, std::string_view path, std::string_view content);

/// The path of one of many files, a hundred in a folder: "source/folder12/file7.cpp".
std::string pathOf(int number);

/// As many commits, each of three files out of 5,000.
void writeHistory(std::ostream& stream, int commits);

}  // namespace neb::benchmarks
