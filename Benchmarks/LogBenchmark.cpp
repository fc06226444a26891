// What the log of a long history costs beside git's own work: time, and memory at its peak.
//
// The history is generated once, in a temporary folder; NEB_BENCHMARK_REPOSITORY names another
// repository to take in its place.

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "GitOperations/GitLog.h"
#include "NEBFoundation/NEBSourceControlChildEnvironment.h"

namespace neb {
namespace {

std::shared_ptr<NEBSourceControlRequest> logRequest(const std::string& location, bool withFiles) {
    auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->location = location;
    return NEBSourceControlRequest::initWithType(
        18, tree, std::nullopt,
        NEBDictionary{{NEBSourceControlRequestOptionLogOutputFilesChanged, withFiles}});
}

/// Runs the command there and answers what it wrote to standard output.
Data run(const std::string& folder, std::string program, std::vector<std::string> arguments) {
    ChildProcess process;
    auto outcomes =
        process.run({{.launchPath = std::move(program),
                      .arguments = std::move(arguments),
                      .currentDirectoryPath = folder,
                      .environment = NEBSourceControlChildEnvironment(
                          NEBSourceControlInheritedEnvironment(), {.writesWholeBuffers = true})}});
    if (!outcomes[0].status.isSuccess()) {
        throw std::runtime_error(program + ": " + std::string(outcomes[0].errorOutput));
    }
    return std::move(outcomes[0].output);
}

/// A message as people write them: a subject of some 50 characters, mostly with a paragraph of
/// some 200 behind it.
std::string messageOf(int number) {
    std::string message = "Let part " + std::to_string(number) + " of the system do what it says\n";
    if (number % 4 != 0) {
        message +=
            "\nUntil now it did so only when nobody looked, which a test could not see.\n"
            "The order of the two calls decides; it is the other way round now, and\n"
            "the test looks at both.\n";
    }
    return message;
}

/// A repository of 100,000 commits, each of three files out of 5,000.
class GeneratedRepository {
public:
    GeneratedRepository() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "neb-benchmark-XXXXXX").string();
        _path = ::mkdtemp(pattern.data());
        run(_path, "/usr/bin/env", {"git", "init", "--quiet", "--initial-branch=main"});
        {
            std::ofstream stream(_path + "/stream");
            for (int number = 1; number <= 100000; ++number) {
                writeCommit(stream, number);
            }
        }
        run(_path, "/bin/sh", {"-c", "git fast-import --quiet <stream && git commit-graph write"});
    }
    GeneratedRepository(const GeneratedRepository&) = delete;
    GeneratedRepository& operator=(const GeneratedRepository&) = delete;
    ~GeneratedRepository() { std::filesystem::remove_all(_path); }

    [[nodiscard]] const std::string& path() const { return _path; }

private:
    static void writeCommit(std::ostream& stream, int number) {
        const std::string message = messageOf(number);
        const int author = number % 50;
        stream << "commit refs/heads/main\nauthor Author Number" << author << " <author" << author
               << "@example.org> " << 1500000000 + number << " +0200\ncommitter C <c@x> "
               << 1500000000 + number << " +0200\ndata " << message.size() << "\n"
               << message;
        for (int file = 0; file < 3; ++file) {
            stream << "M 100644 inline source/folder" << (number * 7 + file) % 50 << "/file"
                   << (number * 31 + file) % 100 << ".cpp\ndata <<E\n"
                   << number << "\nE\n";
        }
    }

    std::string _path;
};

const std::string& repository() {
    static const char* const given = std::getenv("NEB_BENCHMARK_REPOSITORY");
    if (given != nullptr) {
        static const std::string path = given;
        return path;
    }
    static const GeneratedRepository generated;
    return generated.path();
}

/// What the operation's git prints.
const Data& printedLog(bool withFiles) {
    static Data outputs[2];
    Data& output = outputs[withFiles ? 1 : 0];
    if (output.empty()) {
        GitLogOperation operation(logRequest(repository(), withFiles));
        output = run(repository(), operation.launchPath(), operation.arguments());
    }
    return output;
}

/// The figure in KiB that the kernel gives of this process under the name.
std::int64_t memoryFigure(const std::string& name) {
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(name + ":")) {
            return std::atoll(line.c_str() + name.size() + 1);
        }
    }
    return 0;
}

/// By how many bytes a process that does the work has grown at its peak, as its own child tells it.
template <typename Work>
double peakGrowth(Work work) {
    int ends[2];
    if (::pipe(ends) != 0) {
        return 0;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::malloc_trim(0);                             // what earlier runs left free counts anew
        std::ofstream("/proc/self/clear_refs") << 5;  // and so does the peak
        const std::int64_t before = memoryFigure("VmRSS");
        work();
        const std::int64_t growth = (memoryFigure("VmHWM") - before) * 1024;
        ::_exit(::write(ends[1], &growth, sizeof growth) == sizeof growth ? 0 : 1);
    }
    std::int64_t growth = 0;
    ::close(ends[1]);
    if (::read(ends[0], &growth, sizeof growth) != sizeof growth) {
        growth = 0;
    }
    ::close(ends[0]);
    ::waitpid(child, nullptr, 0);
    return static_cast<double>(growth);
}

void setCounters(benchmark::State& state, const Data& output) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(output.size()));
    state.counters["printedMiB"] = static_cast<double>(output.size()) / (1 << 20);
}

/// git alone, with the operation's arguments and environment, writing to nowhere.
void LogToNowhere(benchmark::State& state) {
    GitLogOperation operation(logRequest(repository(), state.range(0) != 0));
    std::vector<std::string> words{"-c", "exec \"$0\" \"$@\" >/dev/null", operation.launchPath()};
    words.insert(words.end(), operation.arguments().begin(), operation.arguments().end());
    for (auto _ : state) {
        benchmark::DoNotOptimize(run(repository(), "/bin/sh", words));
    }
    setCounters(state, printedLog(state.range(0) != 0));
}
BENCHMARK(LogToNowhere)->Arg(0)->Arg(1)->UseRealTime()->Unit(benchmark::kMillisecond);

/// The whole operation.
void Log(benchmark::State& state) {
    const auto request = logRequest(repository(), state.range(0) != 0);
    const auto work = [&request] {
        GitLogOperation operation(request);
        operation.start();
        benchmark::DoNotOptimize(operation.result()->data());
    };
    for (auto _ : state) {
        work();
    }
    const Data& output = printedLog(state.range(0) != 0);
    setCounters(state, output);
    state.counters["peakToPrinted"] = peakGrowth(work) / static_cast<double>(output.size());
}
BENCHMARK(Log)->Arg(0)->Arg(1)->UseRealTime()->Unit(benchmark::kMillisecond);

/// The reading alone, of bytes that are there.
void ReadLog(benchmark::State& state) {
    const auto request = logRequest("/w", state.range(0) != 0);
    const Data& output = printedLog(state.range(0) != 0);
    for (auto _ : state) {
        GitLogOperation operation(request);
        operation.setData(output);
        operation.parseData();
        benchmark::DoNotOptimize(operation.result()->data());
    }
    setCounters(state, output);
}
BENCHMARK(ReadLog)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace neb
