// The cost of a page of a long log and of ending a log that is paused.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <memory>

#include "GitOperations/GitLog.h"
#include "LogRepository.h"
#include "NEBFoundation/NEBSourceControlRecordCursor.h"

namespace neb::benchmarks {
namespace {

using Seconds = std::chrono::duration<double>;

constexpr std::size_t pageSize = 50;
/// Where the pages are measured: in the middle of the generated history.
constexpr std::size_t firstRecord = 40000;
constexpr std::size_t lastRecord = 60000;

std::unique_ptr<NEBSourceControlRecordCursor> openLog() {
    return std::make_unique<NEBSourceControlRecordCursor>(
        initWithRequest<GitLogOperation>(logRequest(repository(), false)));
}

template <typename Work>
double secondsOf(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return Seconds(std::chrono::steady_clock::now() - start).count();
}

/// The time until the records of a page are there, one page after the other without a pause: most
/// were read ahead, and some wait until git has printed more.
void CursorPage(benchmark::State& state) {
    std::unique_ptr<NEBSourceControlRecordCursor> cursor;
    std::size_t position = lastRecord;
    double longest = 0;
    for (auto _ : state) {
        if (position >= lastRecord) {
            cursor = openLog();
            benchmark::DoNotOptimize(cursor->next(firstRecord));
            position = firstRecord;
        }
        const double seconds =
            secondsOf([&cursor] { benchmark::DoNotOptimize(cursor->next(pageSize)); });
        position += pageSize;
        longest = std::max(longest, seconds);
        state.SetIterationTime(seconds);
    }
    state.counters["longestMilliseconds"] = longest * 1000;
}
BENCHMARK(CursorPage)->UseManualTime()->Unit(benchmark::kMicrosecond);

/// git alone for such a page, with the arguments of the operation.
void GitForOnePage(benchmark::State& state) {
    GitLogOperation operation(logRequest(repository(), false));
    std::vector<std::string> arguments = operation.arguments();
    arguments.insert(arguments.begin() + 1,
                     {"-" + std::to_string(pageSize), "--skip=" + std::to_string(firstRecord)});
    for (auto _ : state) {
        benchmark::DoNotOptimize(runProgram(repository(), operation.launchPath(), arguments));
    }
}
BENCHMARK(GitForOnePage)->UseRealTime()->Unit(benchmark::kMicrosecond);

/// The time from the request to end a log until its git has ended: of one that waits for a reader,
/// or of one that has just begun to print.
void EndOfLog(benchmark::State& state) {
    const std::size_t records = state.range(0) != 0 ? firstRecord : 1;
    double longest = 0;
    for (auto _ : state) {
        const auto cursor = openLog();
        benchmark::DoNotOptimize(cursor->next(records));
        const double seconds = secondsOf([&cursor] { cursor->close(); });
        longest = std::max(longest, seconds);
        state.SetIterationTime(seconds);
    }
    state.counters["longestMilliseconds"] = longest * 1000;
}
BENCHMARK(EndOfLog)->Arg(0)->Arg(1)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace neb::benchmarks
