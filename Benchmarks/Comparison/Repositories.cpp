#include "Repositories.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

#include "Support/GeneratedRepository.h"

namespace neb::benchmarks {

namespace {

namespace fs = std::filesystem;

/// A line of code of typical length.
std::string lineOf(int number, int version) {
    return "    line " + std::to_string(number) + " as change " + std::to_string(version) +
           " of the file left it;\n";
}

void checkOut(const std::string& folder) {
    runGit(folder, {"checkout", "--quiet", "--force", "main"});
}

void makeHistory(const std::string& folder, int commits, int) {
    importRepository(folder, [commits](std::ostream& stream) { writeHistory(stream, commits); });
}

/// Changed and untracked files are spread over all folders, and old enough for git to trust its
/// index.
void makeWorkingCopy(const std::string& folder, int entries, int trackedFiles) {
    const int changed = entries / 2;
    if (changed > trackedFiles) {
        throw std::runtime_error("of " + std::to_string(trackedFiles) + " files " +
                                 std::to_string(changed) + " cannot be changed");
    }
    importRepository(folder, [trackedFiles](std::ostream& stream) {
        writeCommit(stream, 1);
        for (int number = 0; number < trackedFiles; ++number) {
            writeFile(stream, pathOf(number), lineOf(number, 0));
        }
    });
    checkOut(folder);
    for (int i = 0; i < changed; ++i) {
        const auto number = static_cast<int>(static_cast<long long>(i) * trackedFiles / changed);
        const fs::path file = fs::path(folder) / pathOf(number);
        std::ofstream(file, std::ios::app) << lineOf(number, 1);
        std::ofstream(file.string() + ".new") << lineOf(number, 2);
    }
    const auto longAgo = fs::file_time_type::clock::now() - std::chrono::hours(24);
    for (const fs::directory_entry& entry :
         fs::recursive_directory_iterator(fs::path(folder) / "source")) {
        fs::last_write_time(entry.path(), longAgo);
    }
    runGit(folder, {"status", "--porcelain"});
}

void makeLines(const std::string& folder, int lines, int) {
    constexpr int commits = 500;
    constexpr int linesOfChange = 20;
    importRepository(folder, [lines](std::ostream& stream) {
        std::vector<int> versions(static_cast<std::size_t>(lines), 1);
        for (int commit = 1; commit <= commits; ++commit) {
            for (int i = 0; commit > 1 && i < linesOfChange; ++i) {
                versions[static_cast<std::size_t>(commit * 7919LL + i) % versions.size()] = commit;
            }
            std::string content;
            for (int line = 0; line < lines; ++line) {
                content += lineOf(line, versions[static_cast<std::size_t>(line)]);
            }
            writeCommit(stream, commit);
            writeFile(stream, "lines.txt", content);
        }
    });
    checkOut(folder);
}

/// Every second line differs, so that the patch of a file is one hunk.
void makePatch(const std::string& folder, int megabytes, int) {
    constexpr int lines = 1000;
    constexpr int filesOfAMegabyte = 15;
    importRepository(folder, [megabytes](std::ostream& stream) {
        for (int commit = 1; commit <= 2; ++commit) {
            writeCommit(stream, commit);
            for (int file = 0; file < megabytes * filesOfAMegabyte; ++file) {
                std::string content;
                for (int line = 0; line < lines; ++line) {
                    content += lineOf(file + line, line % 2 == 0 ? commit : 0);
                }
                writeFile(stream, pathOf(file), content);
            }
        }
    });
}

void makeFolder(const std::string& folder, int entries, int) {
    importRepository(folder, [entries](std::ostream& stream) {
        writeCommit(stream, 1);
        for (int number = 0; number < entries; ++number) {
            writeFile(stream, "entries/file number" + std::to_string(number) + ".cpp",
                      lineOf(number, 0));
        }
    });
    checkOut(folder);
}

void makeSmall(const std::string& folder, int, int) {
    importRepository(folder, [](std::ostream& stream) { writeHistory(stream, 100); });
    runGit(folder, {"branch", "topic", "main~10"});
    runGit(folder, {"remote", "add", "origin", "https://example.org/team/project.git"});
}

struct KindRow {
    RepositoryKind kind;
    const char* name;
    void (*make)(const std::string& folder, int size, int trackedFiles);
};

constexpr KindRow kindRows[] = {
    {RepositoryKind::history, "history", &makeHistory},
    {RepositoryKind::workingCopy, "working-copy", &makeWorkingCopy},
    {RepositoryKind::lines, "lines", &makeLines},
    {RepositoryKind::patch, "patch", &makePatch},
    {RepositoryKind::folder, "folder", &makeFolder},
    {RepositoryKind::small, "small", &makeSmall},
};

fs::path newTemporaryFolder() {
    std::string pattern = (fs::temp_directory_path() / "neb-comparison-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no temporary folder: " + pattern);
    }
    return pattern;
}

}  // namespace

Repositories::Repositories(const fs::path& folder, int trackedFiles)
    : _folder(folder.empty() ? newTemporaryFolder() : fs::absolute(folder)),
      _isTemporary(folder.empty()),
      _trackedFiles(trackedFiles) {}

Repositories::~Repositories() {
    if (_isTemporary) {
        std::error_code ignored;
        fs::remove_all(_folder, ignored);
    }
}

std::string Repositories::path(RepositoryKind kind, int size) const {
    const KindRow& row = *std::find_if(std::begin(kindRows), std::end(kindRows),
                                       [kind](const KindRow& one) { return one.kind == kind; });
    std::string name = row.name + std::string("-") + std::to_string(size);
    if (kind == RepositoryKind::workingCopy) {
        name += "-of-" + std::to_string(_trackedFiles);
    }
    fs::path whole = _folder / name;
    if (!fs::exists(whole)) {
        std::cerr << "making " << name << '\n';
        // Renamed when complete, so that an interrupted run leaves no partial repository.
        const fs::path begun = _folder / (name + ".begun");
        fs::remove_all(begun);
        row.make(begun.string(), size, _trackedFiles);
        fs::rename(begun, whole);
    }
    return whole.string();
}

}  // namespace neb::benchmarks
