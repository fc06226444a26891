// CommitGraphFile.h - reads what git's commit-graph files contain, see gitformat-commit-graph(5).
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Platform/FileDescriptor.h"

namespace neb::nebsc {

/// One commit-graph file: a whole graph, or a layer of a chain. Not thread-safe.
class CommitGraphFile {
public:
    /// Opens the file; absent if it does not exist or is no commit-graph file.
    [[nodiscard]] static std::optional<CommitGraphFile> open(const std::string& path);

    /// Returns whether the file has Bloom filters of the paths that each commit changes.
    [[nodiscard]] bool hasChangedPaths() const { return _hasChangedPaths; }
    /// Returns whether the file has the commit, given by its full id in hexadecimal.
    [[nodiscard]] bool contains(const std::string& commit) const;

private:
    explicit CommitGraphFile(FileDescriptor file) : _file(std::move(file)) {}
    [[nodiscard]] bool readChunks();

    FileDescriptor _file;
    std::size_t _hashSize = 0;
    bool _hasChangedPaths = false;
    /// The offsets of the chunks in the file; 0 for none.
    std::uint64_t _fanOut = 0;
    std::uint64_t _ids = 0;
};

/// The commit-graph of a repository.
struct CommitGraph {
    /// Empty if there is no graph.
    std::vector<CommitGraphFile> layers;
    /// Whether the graph is a chain of files, as git writes with --split.
    bool isChain = false;

    [[nodiscard]] bool hasChangedPaths() const;
    [[nodiscard]] bool contains(const std::string& commit) const;
};

/// Returns the commit-graph in a folder of objects, such as ".git/objects". git prefers the single
/// file to the chain.
[[nodiscard]] CommitGraph commitGraphIn(const std::string& objectFolder);

}  // namespace neb::nebsc
