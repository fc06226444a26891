// The cost of filling, reading and copying a record.

#include <benchmark/benchmark.h>

#include "NEBFoundation/NEBDictionary.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb::benchmarks {
namespace {

/// Returns the record of a commit, as a log makes it.
NEBDictionary commitRecord() {
    NEBDictionary record;
    record.reserve(5);
    record.set(NEBSourceControlOperationRevisionKey, "0123456789ab");
    record.set(NEBSourceControlOperationAuthorKey, "Author Number7");
    record.set(NEBSourceControlOperationAuthorEmailKey, "author7@example.org");
    record.set(NEBSourceControlOperationDateKey, NEBDate(std::chrono::seconds(1500000000)));
    record.set(NEBSourceControlOperationMessageKey,
               "Let part 7 of the system do what it says, and say what it does");
    return record;
}

void FillRecord(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(commitRecord());
    }
}
BENCHMARK(FillRecord);

void ReadRecord(benchmark::State& state) {
    const NEBDictionary record = commitRecord();
    for (auto _ : state) {
        benchmark::DoNotOptimize(record.value(NEBSourceControlOperationRevisionKey).string());
        benchmark::DoNotOptimize(record.value(NEBSourceControlOperationMessageKey).string());
    }
}
BENCHMARK(ReadRecord);

void CopyRecord(benchmark::State& state) {
    const NEBDictionary record = commitRecord();
    for (auto _ : state) {
        const NEBDictionary copy = record;
        benchmark::DoNotOptimize(&copy);
    }
}
BENCHMARK(CopyRecord);

/// Fills a dictionary with the files of a commit and looks up each of them.
void FilesOfCommit(benchmark::State& state) {
    std::vector<std::string> paths;
    paths.reserve(static_cast<std::size_t>(state.range(0)));
    for (int number = 0; number < state.range(0); ++number) {
        paths.push_back("source/folder/file" + std::to_string(number) + ".cpp");
    }
    for (auto _ : state) {
        NEBDictionary files;
        for (const std::string& path : paths) {
            files.set(path, 4);
        }
        for (const std::string& path : paths) {
            benchmark::DoNotOptimize(files.value(path).integer());
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(FilesOfCommit)->Arg(3)->Arg(100)->Arg(10000);

}  // namespace
}  // namespace neb::benchmarks
