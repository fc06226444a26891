// What it costs to read a long status.

#include <benchmark/benchmark.h>

#include "GitOperations/GitStatus.h"

namespace neb {
namespace {

void ParseStatus(benchmark::State& state) {
    auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->location = "/home/someone/project";
    std::string output;
    for (int i = 0; i < state.range(0); ++i) {
        output += i % 2 == 0 ? " M " : "?? ";
        output += "source/folder/of/some/depth/file number " + std::to_string(i) + ".cpp\n";
    }
    for (auto _ : state) {
        GitStatusOperation operation(
            NEBSourceControlRequest::initWithType(15, tree, std::nullopt, std::nullopt));
        operation.setData(output);
        operation.parseData();
        if (operation.result()->size() != static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("records were lost");
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(output.size()));
}
BENCHMARK(ParseStatus)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace neb
