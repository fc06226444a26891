// The effect of `nebsc tune` on a large repository: two copies, one of them tuned, side by side.

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>

#include "Comparison/NumberText.h"
#include "Comparison/RawCommand.h"
#include "Comparison/Rounds.h"
#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Support/GeneratedRepository.h"
#include "Support/LargeRepository.h"

namespace neb::benchmarks {
namespace {

namespace fs = std::filesystem;

struct Options {
    LargeRepositorySize size;
    int rounds = 7;
    fs::path nebsc, folder = fs::temp_directory_path();
};

/// A command that is measured before and after.
struct TunedCommand {
    std::string name;
    /// The program and its arguments; "git" and "nebsc" are replaced by their paths.
    std::vector<std::string> command;
    /// The largest ratio that is a success; absent if none is asked.
    std::optional<double> target = std::nullopt;
};

std::vector<TunedCommand> commandsFor(const LargeRepositorySize& size) {
    const std::string file = pathInLargeRepository(size.files / 2);
    return {
        {"`git log --format=%H`", {"git", "log", "--format=%H"}, 0.25},
        {"`git log --format=%H -- FILE`", {"git", "log", "--format=%H", "--", file}, 0.15},
        {"`git status --porcelain`", {"git", "status", "--porcelain"}, 0.7},
        {"`nebsc log`", {"nebsc", "log"}},
        {"`nebsc log -- FILE`", {"nebsc", "log", "--", file}},
        {"`nebsc status`", {"nebsc", "status"}},
    };
}

/// A new folder, removed by the destructor.
class Workspace {
public:
    explicit Workspace(const fs::path& parent) {
        std::string pattern = (parent / "neb-tuning-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder: " + pattern);
        }
        _path = pattern;
    }
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    ~Workspace() {
        std::error_code ignored;
        fs::remove_all(_path, ignored);
    }
    [[nodiscard]] std::string path(const char* name) const { return (_path / name).string(); }

private:
    fs::path _path;
};

RawCommand commandIn(const std::string& folder, const TunedCommand& row, const fs::path& nebsc) {
    std::vector<std::string> arguments(row.command.begin() + 1, row.command.end());
    return RawCommand({.launchPath = row.command[0] == "nebsc" ? nebsc.string() : "/usr/bin/git",
                       .arguments = std::move(arguments),
                       .currentDirectoryPath = folder,
                       .environment = NEBSourceControlChildEnvironment(
                           NEBSourceControlInheritedEnvironment(),
                           {.isBackgroundWork = true, .writesWholeBuffers = true})});
}

/// Prints a row of the table. Returns whether the target is met.
bool measure(const TunedCommand& row, const std::string& before, const std::string& after,
             const Options& options) {
    const RawCommand untuned = commandIn(before, row, options.nebsc);
    const RawCommand tuned = commandIn(after, row, options.nebsc);
    const Rounds rounds({[&] { (void)untuned.run(RawCommand::Memory::onePiece); },
                         [&] { (void)tuned.run(RawCommand::Memory::onePiece); }},
                        options.rounds);
    const Spread ratio = rounds.ratio(1, 0);
    const bool isMet = !row.target || ratio.median <= *row.target;
    std::cout << "| " << row.name << " | " << figureText(rounds.milliseconds(0).median) << " | "
              << figureText(rounds.milliseconds(1).median) << " | " << spreadText(ratio) << " | "
              << (row.target ? "at most " + numberText(*row.target, 2) : "") << " | "
              << (row.target ? isMet ? "met" : "missed" : "") << " |\n"
              << std::flush;
    return isMet;
}

int compare(const Options& options) {
    const Workspace workspace(options.folder);
    const std::string before = workspace.path("before");
    const std::string after = workspace.path("after");
    std::cerr << "creating the repository\n";
    createLargeRepository(before, options.size);
    runProgram(before, "/bin/cp", {"-a", before, after});
    for (const std::string& folder : {before, after}) {
        runGit(folder, {"status", "--porcelain"});  // records the times of the files in the index
    }
    std::cerr << "tuning a copy of it\n";
    std::cerr << std::string(
        std::string_view(runProgram(after, options.nebsc.string(), {"tune", "--yes"})));
    std::cout << "| command | before, ms | after, ms | after / before | asked | |\n"
                 "| --- | --: | --: | --: | --- | --- |\n";
    bool areMet = true;
    for (const TunedCommand& row : commandsFor(options.size)) {
        areMet = measure(row, before, after, options) && areMet;
    }
    return areMet ? EXIT_SUCCESS : EXIT_FAILURE;
}

int run(int argc, char** argv) {
    Options options;
    options.nebsc = fs::canonical(argv[0]).parent_path() / "nebsc";
    CLI::App app{"Measures git and nebsc before and after `nebsc tune --yes`, in turn."};
    app.add_option("--files", options.size.files, "Tracked files")
        ->check(CLI::Range(2, 1000000))
        ->capture_default_str();
    app.add_option("--commits", options.size.commits, "Commits")
        ->check(CLI::Range(2, 1000000))
        ->capture_default_str();
    app.add_option("--rounds", options.rounds, "Rounds at least")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    app.add_option("--folder", options.folder, "Where to create the repositories")
        ->check(CLI::ExistingDirectory)
        ->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    return compare(options);
}

}  // namespace
}  // namespace neb::benchmarks

int main(int argc, char** argv) {
    try {
        return neb::benchmarks::run(argc, argv);
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << '\n';
        return EXIT_FAILURE;
    }
}
