#include "Support/LargeRepository.h"

#include <filesystem>

#include "Support/GeneratedRepository.h"

namespace neb::benchmarks {

namespace {

void writeCommits(std::ostream& stream, const LargeRepositorySize& size) {
    const auto write = [&stream](int commit, int file) {
        writeFile(stream, pathInLargeRepository(file),
                  "change " + std::to_string(commit) + " of file " + std::to_string(file) + "\n");
    };
    writeCommit(stream, 1);
    for (int file = 0; file < size.files; ++file) {
        write(1, file);
    }
    for (int commit = 2; commit <= size.commits; ++commit) {
        writeCommit(stream, commit);
        for (int change = 0; change < 3; ++change) {
            write(commit, static_cast<int>((commit * 7919LL + change * 3571LL) % size.files));
        }
    }
}

}  // namespace

std::string pathInLargeRepository(int number) {
    constexpr int entries = 50;
    return "source/part" + std::to_string(number / (entries * entries)) + "/folder" +
           std::to_string(number / entries % entries) + "/file" + std::to_string(number % entries) +
           ".cpp";
}

void createLargeRepository(const std::string& folder, const LargeRepositorySize& size) {
    importRepository(folder, [&size](std::ostream& stream) { writeCommits(stream, size); });
    std::filesystem::remove(folder + "/.git/objects/info/commit-graph");
    runGit(folder, {"checkout", "--quiet", "--force", "main"});
}

}  // namespace neb::benchmarks
