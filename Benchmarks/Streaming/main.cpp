// How soon the first records of a long history arrive, how much memory the whole of it needs, and
// what a streamed log costs, each beside git alone.

#include <CLI/CLI.hpp>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <thread>

#include "Comparison/HostRun.h"
#include "Comparison/NumberText.h"
#include "Comparison/RawCommand.h"
#include "Comparison/Rounds.h"
#include "GitOperations/GitLog.h"
#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/GeneratedRepository.h"
#include "Support/PeakMemory.h"

namespace neb::benchmarks {
namespace {

namespace fs = std::filesystem;

struct Options {
    std::vector<int> commits{82000, 1000000};
    int rounds = 15;
    fs::path nebsc, folder = fs::temp_directory_path();
};

constexpr const char* rareFile = "rare.txt";

/// The history of a log benchmark, in which two commits also change one file: the first one, and
/// one that a tenth of the history separates from the last.
void writeHistoryWithRareFile(std::ostream& stream, int commits) {
    for (int number = 1; number <= commits; ++number) {
        writeCommit(stream, number);
        writeFile(stream, pathOf(number * 31 % 5000), std::to_string(number) + "\n");
        if (number == 1 || number == commits - commits / 10) {
            writeFile(stream, rareFile, std::to_string(number) + "\n");
        }
    }
}

ChildLaunch launchIn(const std::string& folder, const std::string& program,
                     std::vector<std::string> arguments) {
    return {.launchPath = program,
            .arguments = std::move(arguments),
            .currentDirectoryPath = folder,
            .environment = NEBSourceControlChildEnvironment(NEBSourceControlInheritedEnvironment(),
                                                            {.isBackgroundWork = true})};
}

std::shared_ptr<NEBSourceControlRequest> logOf(const std::string& folder) {
    auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->location = folder;
    return NEBSourceControlRequest::initWithType(NEBSourceControlRequestLog, tree, std::nullopt,
                                                 {});
}

/// Returns the milliseconds from the start of the log to its first record, and cancels it.
double millisecondsToFirstRecord(const std::shared_ptr<NEBSourceControlRequest>& request) {
    using Clock = std::chrono::steady_clock;
    GitLogOperation operation(request);
    std::optional<Clock::time_point> arrival;
    operation.setRecordSink([&](const NEBSourceControlResult& records) {
        if (!arrival && !records.empty()) {
            arrival = Clock::now();
            operation.cancel();
        }
    });
    const Clock::time_point begin = Clock::now();
    operation.start();
    if (!arrival) {
        throw std::runtime_error("the log delivered no record");
    }
    return std::chrono::duration<double, std::milli>(*arrival - begin).count();
}

void logWithoutKeeping(const std::shared_ptr<NEBSourceControlRequest>& request) {
    GitLogOperation operation(request);
    operation.setRecordSink([](const NEBSourceControlResult&) {});
    operation.start();
    if (operation.error()) {
        throw std::runtime_error("the log failed");
    }
}

/// Returns the peak memory, in MiB, of the program alone, while it writes to /dev/null. It is
/// looked at every five milliseconds.
double peakOfProgram(const std::string& folder, const std::string& program,
                     const std::string& argument) {
    const pid_t child = ::fork();
    if (child == 0) {
        const int nowhere = ::open("/dev/null", O_WRONLY);
        if (::chdir(folder.c_str()) == 0 && ::dup2(nowhere, STDOUT_FILENO) >= 0) {
            ::execl(program.c_str(), program.c_str(), argument.c_str(), nullptr);
        }
        ::_exit(127);
    }
    double peak = 0;
    int status = 0;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        std::ifstream file("/proc/" + std::to_string(child) + "/status");
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("VmHWM:")) {
                peak = std::max(peak, std::atof(line.c_str() + 6) / 1024);
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    if (status != 0) {
        throw std::runtime_error(program + " failed");
    }
    return peak;
}

/// Prints rows of the table, of one history.
class Measurements {
public:
    Measurements(const Options& options, int commits)
        : _options(options),
          _commits(commits),
          _folder((options.folder / ("neb-streaming-" + std::to_string(::getpid()))).string()) {
        std::cerr << "creating a history of " << countText(static_cast<std::size_t>(commits))
                  << " commits\n";
        importRepository(_folder,
                         [&](std::ostream& stream) { writeHistoryWithRareFile(stream, _commits); });
    }
    Measurements(const Measurements&) = delete;
    Measurements& operator=(const Measurements&) = delete;
    ~Measurements() {
        std::error_code ignored;
        fs::remove_all(_folder, ignored);
    }

    /// Returns whether all targets are met.
    bool print() {
        firstLine("log", {"log"}, {"log"});
        firstLine("log --files", {"log", "--name-status"}, {"log", "--files"});
        firstLine("log -- RARE_FILE", {"log", "--", rareFile}, {"log", "--", rareFile});
        firstRecord();
        memory();
        wholeLog();
        return _areMet;
    }

private:
    void row(const std::string& figure, const std::string& text, const std::string& target = "",
             const std::string& verdict = "") const {
        std::cout << "| " << figure << " | " << countText(static_cast<std::size_t>(_commits))
                  << " | " << text << " | " << target << " | " << verdict << " |\n"
                  << std::flush;
    }
    void row(const std::string& figure, const std::string& text, double value,
             const std::string& unit, double target) {
        const bool isMet = value <= target;
        _areMet = _areMet && isMet;
        row(figure, text, "at most " + numberText(target, target < 2 ? 2 : 0) + unit,
            isMet ? "met" : "missed");
    }

    /// The difference of both times in each round, the first of which only warms up.
    template <typename Git, typename Ours>
    [[nodiscard]] Spread delay(Git git, Ours ours) const {
        std::vector<double> differences;
        for (int round = 0; round <= _options.rounds; ++round) {
            const double first = round % 2 == 0 ? git() : ours();
            const double second = round % 2 == 0 ? ours() : git();
            if (round > 0) {
                differences.push_back(round % 2 == 0 ? second - first : first - second);
            }
        }
        return spreadOf(differences);
    }

    void firstLine(const std::string& name, std::vector<std::string> git,
                   std::vector<std::string> ours) {
        const RawCommand gitCommand(launchIn(_folder, "/usr/bin/git", std::move(git)));
        const RawCommand nebsc(launchIn(_folder, _options.nebsc.string(), std::move(ours)));
        const Spread late = delay([&] { return gitCommand.millisecondsToFirstByte(); },
                                  [&] { return nebsc.millisecondsToFirstByte(); });
        row("first line of `nebsc " + name + "`, after git's first byte", spreadText(late) + " ms",
            late.median, " ms", 10);
    }

    void firstRecord() {
        const auto request = logOf(_folder);
        const RawCommand git(launchFor(request));
        const Spread late = delay([&] { return git.millisecondsToFirstByte(); },
                                  [&] { return millisecondsToFirstRecord(request); });
        row("first record at a C++ sink, after git's first byte", spreadText(late) + " ms",
            late.median, " ms", 1);
    }

    void memory() {
        const double ofCommand = peakOfProgram(_folder, _options.nebsc.string(), "log");
        row("peak memory of `nebsc log >/dev/null`", figureText(ofCommand) + " MiB", ofCommand,
            " MiB", 24);
        const auto request = logOf(_folder);
        const double ofSink =
            static_cast<double>(peakGrowth([&] { logWithoutKeeping(request); })) / (1 << 20);
        row("growth of a process whose sink keeps nothing", figureText(ofSink) + " MiB", ofSink,
            " MiB", 24);
    }

    /// The pipe alone costs git something, too.
    void wholeLog() {
        const auto request = logOf(_folder);
        const ChildLaunch launch = launchFor(request);
        ChildLaunch toNowhere = launch;
        toNowhere.arguments.insert(toNowhere.arguments.begin(),
                                   {"-c", "exec \"$0\" \"$@\" >/dev/null", launch.launchPath});
        toNowhere.launchPath = "/bin/sh";
        const RawCommand git(toNowhere);
        const RawCommand piped(launch);
        const Rounds rounds({[&] { (void)git.run(RawCommand::Memory::onePiece); },
                             [&] { (void)piped.run(RawCommand::Memory::onePiece); },
                             [&] { logWithoutKeeping(request); }},
                            std::min(_options.rounds, 7));
        row("git to a pipe / git to /dev/null", spreadText(rounds.ratio(1, 0)));
        const Spread ratio = rounds.ratio(2, 0);
        row("streamed log with all records / git to /dev/null", spreadText(ratio), ratio.median, "",
            1.05);
        row("streamed log with all records / git to a pipe", spreadText(rounds.ratio(2, 1)));
    }

    const Options& _options;
    const int _commits;
    const std::string _folder;
    bool _areMet = true;
};

int run(int argc, char** argv) {
    Options options;
    options.nebsc = fs::canonical(argv[0]).parent_path() / "nebsc";
    CLI::App app{"Measures the first results and the memory of long histories."};
    app.add_option("--commits", options.commits, "Commits of the histories")
        ->check(CLI::Range(20, 10000000))
        ->delimiter(',')
        ->capture_default_str();
    app.add_option("--rounds", options.rounds, "Rounds")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    app.add_option("--folder", options.folder, "Where to create the repositories")
        ->check(CLI::ExistingDirectory)
        ->capture_default_str();
    CLI11_PARSE(app, argc, argv);
    std::cout << "| figure | commits | result | asked | |\n| --- | --: | --: | --: | --- |\n";
    bool areMet = true;
    for (const int commits : options.commits) {
        areMet = Measurements(options, commits).print() && areMet;
    }
    return areMet ? EXIT_SUCCESS : EXIT_FAILURE;
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
