// The cost of starting a child process and reading its output.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <vector>

#include "Platform/ChildProcess.h"

namespace neb::benchmarks {
namespace {

ChildLaunch program(std::string path, std::vector<std::string> arguments) {
    return {.launchPath = std::move(path),
            .arguments = std::move(arguments),
            .currentDirectoryPath = "/",
            .environment = {"PATH=/usr/bin:/bin"}};
}

/// A launch by a host with that many MiB of touched memory; the time should not depend on it.
void Launch(benchmark::State& state) {
    const std::vector<char> ballast(static_cast<std::size_t>(state.range(0)) << 20, 1);
    benchmark::DoNotOptimize(ballast.data());
    for (auto _ : state) {
        ChildProcess process;
        if (!process.run({program("/bin/true", {})})[0].status.isSuccess()) {
            state.SkipWithError("the child failed");
        }
    }
}
BENCHMARK(Launch)->Arg(0)->Arg(256)->Arg(2048)->UseRealTime();

constexpr std::int64_t amount = 100'000'000;

/// 100 MB through one pipe into memory.
void CollectOutput(benchmark::State& state) {
    for (auto _ : state) {
        ChildProcess process;
        const auto outcomes =
            process.run({program("/usr/bin/head", {"-c", std::to_string(amount), "/dev/zero"})});
        if (outcomes[0].output.size() != amount) {
            state.SkipWithError("output was lost");
        }
    }
    state.SetBytesProcessed(state.iterations() * amount);
}
BENCHMARK(CollectOutput)->UseRealTime()->Unit(benchmark::kMillisecond);

/// The same child writing to /dev/null, as the baseline for pipe and collection.
void WriteToNowhere(benchmark::State& state) {
    for (auto _ : state) {
        ChildProcess process;
        const auto outcomes =
            process.run({program("/bin/sh", {"-c", "exec head -c " + std::to_string(amount) +
                                                       " /dev/zero >/dev/null"})});
        benchmark::DoNotOptimize(outcomes.data());
    }
    state.SetBytesProcessed(state.iterations() * amount);
}
BENCHMARK(WriteToNowhere)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace neb::benchmarks
