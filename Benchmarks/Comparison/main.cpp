// The comparison of whole operations with git alone and with libgit2.

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <sstream>

#include "LargeHost.h"
#include "LibGit2.h"
#include "Plot.h"
#include "Report.h"
#include "ServerLoad.h"

namespace neb::benchmarks {
namespace {

struct Options {
    std::map<RepositoryKind, std::vector<int>> sizes{
        {RepositoryKind::history, {1000, 10000, 50000, 200000}},
        {RepositoryKind::workingCopy, {1000, 20000}},
        {RepositoryKind::lines, {10000}},
        {RepositoryKind::patch, {50}},
        {RepositoryKind::folder, {10000}},
        {RepositoryKind::small, {1}},
    };
    int files = 50000;
    int rounds = 7;
    std::vector<std::string> only;
    std::filesystem::path cache, docs;

    [[nodiscard]] bool isAsked(const std::string& name) const {
        return only.empty() || std::find(only.begin(), only.end(), name) != only.end();
    }
};

void declare(CLI::App& app, Options& options) {
    const auto addSizes = [&](const char* name, RepositoryKind kind, const char* help, int most) {
        app.add_option(name, options.sizes[kind], help)
            ->delimiter(',')
            ->check(CLI::Range(2, most))
            ->capture_default_str();
    };
    addSizes("--commits", RepositoryKind::history, "Commits of the histories", 1000000);
    addSizes("--changed", RepositoryKind::workingCopy,
             "Changed and untracked files of the working copies", 20000);
    addSizes("--lines", RepositoryKind::lines, "Lines of the blamed file", 1000000);
    addSizes("--patch", RepositoryKind::patch, "Megabytes of the difference", 1000);
    addSizes("--entries", RepositoryKind::folder, "Files of the listed folder", 20000);
    app.add_option("--files", options.files, "Tracked files of a working copy")
        ->check(CLI::Range(1, 100000))
        ->capture_default_str();
    app.add_option("--rounds", options.rounds, "Rounds at least")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    std::vector<std::string> names{"collection", "server", "large host"};
    for (const Case& one : allCases()) {
        names.emplace_back(one.name);
    }
    app.add_option("--only", options.only, "These alone; nothing is written then")
        ->delimiter(',')
        ->check(CLI::IsMember(names));
    app.add_option("--cache", options.cache, "A folder that keeps the repositories for later runs");
    app.add_option("--docs", options.docs,
                   "The folder of performance.md and performance.svg, which are rewritten");
}

Results run(const Options& options, const std::filesystem::path& programs) {
    const Repositories repositories(options.cache, options.files);
    Results results;
    for (const Case& one : allCases()) {
        if (!options.isAsked(one.name)) {
            continue;
        }
        for (const int size : options.sizes.at(one.kind)) {
            const std::string path = repositories.path(one.kind, size);
            std::cerr << one.name << ' ' << size << '\n';
            results.measurements.push_back(measure(one, size, path, options.rounds));
        }
    }
    const auto small = [&repositories] { return repositories.path(RepositoryKind::small, 1); };
    for (const Case& one : allCases()) {
        if (one.kind == RepositoryKind::small && options.isAsked("large host")) {
            std::cerr << one.name << " in a large host\n";
            if (const auto ratio = measureLargeHost(one, small(), options.rounds)) {
                results.largeHost.emplace_back(one.name, *ratio);
            }
        }
    }
    if (options.isAsked("collection")) {
        std::cerr << "collection\n";
        results.collection = measureCollection(options.rounds);
    }
    if (options.isAsked("server")) {
        std::cerr << "server\n";
        results.serverLoad = measureServerLoad(programs / "nebsc", small(), options.rounds);
    }
    return results;
}

/// Returns the arguments for the script, which adds the folder of the documents. The folder of the
/// repositories does not matter.
std::string commandOf(int count, const char* const* arguments) {
    std::string command = "scripts/benchmark";
    for (int i = 1; i < count; ++i) {
        const std::string argument = arguments[i];
        if (argument == "--docs" || argument == "--cache") {
            ++i;
        } else if (!argument.starts_with("--docs=") && !argument.starts_with("--cache=")) {
            command +=
                (argument.find(' ') == std::string::npos) ? " " + argument : " '" + argument + "'";
        }
    }
    return command;
}

int compare(int count, char** arguments) {
    // The configuration of the user must not affect the comparison.
    ::setenv("GIT_CONFIG_GLOBAL", "/dev/null", 1);
    ::setenv("GIT_CONFIG_NOSYSTEM", "1", 1);
    Options options;
    CLI::App app("Compares whole operations with git alone and with libgit2.");
    declare(app, options);
    CLI11_PARSE(app, count, arguments);
    startLibGit2();
    const Results results =
        run(options, std::filesystem::read_symlink("/proc/self/exe").parent_path());
    std::ostringstream report;
    writeReport(report, results, commandOf(count, arguments));
    std::cout << report.str();
    if (!options.docs.empty() && options.only.empty()) {
        writePlot(options.docs / "performance.svg", results);
        replaceGeneratedText(options.docs / "performance.md",
                             "\n" + report.str() + "\n![Time and memory](performance.svg)\n\n");
    }
    return 0;
}

}  // namespace
}  // namespace neb::benchmarks

int main(int count, char** arguments) {
    try {
        return neb::benchmarks::compare(count, arguments);
    } catch (const std::exception& problem) {
        std::cerr << "The comparison failed: " << problem.what() << '\n';
        return 1;
    }
}
