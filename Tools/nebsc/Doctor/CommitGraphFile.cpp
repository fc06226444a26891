#include "Doctor/CommitGraphFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <string_view>

#include "Platform/PathString.h"

namespace neb::nebsc {

namespace {

using namespace std::string_view_literals;

/// Returns `count` bytes of the file from `offset`; fewer at its end or after an error.
std::string bytesAt(const FileDescriptor& file, std::uint64_t offset, std::size_t count) {
    std::string bytes(count, '\0');
    const ssize_t got = ::pread(file.get(), bytes.data(), count, static_cast<off_t>(offset));
    bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return bytes;
}

/// Returns a number in network byte order; 0 if the bytes are too few.
std::uint64_t numberIn(std::string_view bytes, std::size_t position, std::size_t size) {
    std::uint64_t number = 0;
    for (const char byte : bytes.substr(std::min(position, bytes.size()), size)) {
        number = number << 8 | static_cast<unsigned char>(byte);
    }
    return bytes.size() < position + size ? 0 : number;
}

/// Returns fewer bytes if a character is no hexadecimal digit.
std::string bytesOfHex(std::string_view hex) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        unsigned byte = 0;
        const char* end = hex.data() + i + 2;
        if (std::from_chars(hex.data() + i, end, byte, 16).ptr != end) {
            break;
        }
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

}  // namespace

std::optional<CommitGraphFile> CommitGraphFile::open(const std::string& path) {
    CommitGraphFile graph(FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC)));
    return graph._file.isOpen() && graph.readChunks() ? std::optional(std::move(graph))
                                                      : std::nullopt;
}

bool CommitGraphFile::readChunks() {
    constexpr std::size_t headerSize = 8;
    constexpr std::size_t rowSize = 12;
    const std::string header = bytesAt(_file, 0, headerSize);
    // The signature and the version of the format; then the version of the hash, which is 1 for
    // SHA-1 and 2 for SHA-256, and the number of chunks.
    if (!header.starts_with("CGPH\1"sv) || header.size() < headerSize) {
        return false;
    }
    _hashSize = header[5] == 1 ? 20 : 32;
    const auto chunks = static_cast<unsigned char>(header[6]);
    const std::string table = bytesAt(_file, headerSize, rowSize * chunks);
    for (std::size_t row = 0; row + rowSize <= table.size(); row += rowSize) {
        const std::string_view name = std::string_view(table).substr(row, 4);
        const std::uint64_t offset = numberIn(table, row + 4, 8);
        if (name == "OIDF") {
            _fanOut = offset;
        } else if (name == "OIDL") {
            _ids = offset;
        } else if (name == "BIDX") {
            _hasChangedPaths = true;
        }
    }
    return _fanOut != 0 && _ids != 0;
}

bool CommitGraphFile::contains(const std::string& commit) const {
    const std::string id = bytesOfHex(commit);
    if (id.size() != _hashSize) {
        return false;
    }
    // The fan-out has, for each first byte of an id, the number of ids up to that byte.
    const std::string fanOut = bytesAt(_file, _fanOut, 1024);
    const std::size_t first = static_cast<unsigned char>(id[0]);
    std::uint64_t low = first == 0 ? 0 : numberIn(fanOut, (first - 1) * 4, 4);
    std::uint64_t high = numberIn(fanOut, first * 4, 4);
    while (low < high) {
        const std::uint64_t middle = low + (high - low) / 2;
        const std::string candidate = bytesAt(_file, _ids + middle * _hashSize, _hashSize);
        if (candidate == id) {
            return true;
        }
        // std::string compares bytes as unsigned numbers.
        (candidate < id ? low : high) = candidate < id ? middle + 1 : middle;
    }
    return false;
}

bool CommitGraph::hasChangedPaths() const {
    return std::all_of(layers.begin(), layers.end(),
                       [](const CommitGraphFile& layer) { return layer.hasChangedPaths(); });
}

bool CommitGraph::contains(const std::string& commit) const {
    return std::any_of(layers.begin(), layers.end(),
                       [&commit](const CommitGraphFile& layer) { return layer.contains(commit); });
}

CommitGraph commitGraphIn(const std::string& objectFolder) {
    const std::string info = pathByAppendingComponent(objectFolder, "info");
    CommitGraph graph;
    if (auto file = CommitGraphFile::open(pathByAppendingComponent(info, "commit-graph"))) {
        graph.layers.push_back(std::move(*file));
        return graph;
    }
    // The chain lists the hashes in the names of its files, one a line.
    std::ifstream chain(pathByAppendingComponent(info, "commit-graphs/commit-graph-chain"));
    for (std::string hash; std::getline(chain, hash);) {
        if (auto file = CommitGraphFile::open(
                pathByAppendingComponent(info, "commit-graphs/graph-" + hash + ".graph"))) {
            graph.layers.push_back(std::move(*file));
        }
    }
    graph.isChain = !graph.layers.empty();
    return graph;
}

}  // namespace neb::nebsc
