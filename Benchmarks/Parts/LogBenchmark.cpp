// The cost of the log of a long history compared with git alone: time and peak memory.

#include <benchmark/benchmark.h>

#include <string>

#include "GitOperations/GitLog.h"
#include "LogRepository.h"
#include "ParseTiming.h"
#include "Support/PeakMemory.h"

namespace neb::benchmarks {
namespace {

/// Returns the output of git for the operation.
const Data& printedLog(bool withFiles) {
    static Data outputs[2];
    Data& output = outputs[withFiles ? 1 : 0];
    if (output.empty()) {
        GitLogOperation operation(logRequest(repository(), withFiles));
        output = runProgram(repository(), operation.launchPath(), operation.arguments());
    }
    return output;
}

void setCounters(benchmark::State& state, const Data& output) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(output.size()));
    state.counters["printedMiB"] = static_cast<double>(output.size()) / (1 << 20);
}

/// git alone, with the arguments and environment of the operation, writing to /dev/null.
void LogToNowhere(benchmark::State& state) {
    GitLogOperation operation(logRequest(repository(), state.range(0) != 0));
    std::vector<std::string> arguments{"-c", "exec \"$0\" \"$@\" >/dev/null",
                                       operation.launchPath()};
    arguments.insert(arguments.end(), operation.arguments().begin(), operation.arguments().end());
    for (auto _ : state) {
        benchmark::DoNotOptimize(runProgram(repository(), "/bin/sh", arguments));
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
    state.counters["peakToPrinted"] =
        static_cast<double>(peakGrowth(work)) / static_cast<double>(output.size());
}
BENCHMARK(Log)->Arg(0)->Arg(1)->UseRealTime()->Unit(benchmark::kMillisecond);

/// Only parsing, of bytes in memory.
void ParseLog(benchmark::State& state) {
    const auto request = logRequest("/w", state.range(0) != 0);
    const Data& output = printedLog(state.range(0) != 0);
    timeParsing<GitLogOperation>(state, request, output, 100);
    setCounters(state, output);
}
BENCHMARK(ParseLog)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace neb::benchmarks
