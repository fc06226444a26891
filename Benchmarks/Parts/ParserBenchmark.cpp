// The cost of parsing the output of git. The log has its own file.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "GitOperations/GitBlame.h"
#include "GitOperations/GitDiff.h"
#include "GitOperations/GitList.h"
#include "GitOperations/GitStatus.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "ParseTiming.h"
#include "Support/GeneratedRepository.h"

namespace neb::benchmarks {
namespace {

std::string objectNameOf(int number) {
    std::string name = std::to_string(number);
    name.insert(0, 40 - name.size(), 'a');
    return name;
}

// Functions that return line `number` of the output of git.

std::string statusLine(int number) {
    return (number % 2 == 0 ? " M " : "?? ") + pathOf(number) + "\n";
}

std::string nameStatusLine(int number) {
    return number % 20 == 0 ? "R094\t" + pathOf(number) + "\t" + pathOf(number + 1) + "\n"
                            : "M\t" + pathOf(number) + "\n";
}

/// From `git blame -c -l`: names are padded to ten characters.
std::string blameLine(int number) {
    return objectNameOf(number / 20) + "\t(Author Number" + std::to_string(number % 50) +
           "\t2026-11-21 18:04:" + std::to_string(10 + number % 50) + " +0200\t" +
           std::to_string(number + 1) + ")    return theValueOf(line) + " + std::to_string(number) +
           ";\n";
}

std::string listLine(int number) {
    return "100644 blob " + objectNameOf(number) + "\t" + pathOf(number) + '\0';
}

/// Parses that many lines, each of which makes at least one record.
template <typename Op>
void parse(benchmark::State& state, std::string (*line)(int)) {
    auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->location = "/home/someone/project";
    const auto request = NEBSourceControlRequest::initWithType(
        NEBSourceControlRequestAdd, tree, {{pathOf(0)}},
        NEBDictionary{{NEBSourceControlRequestOptionDiffFileNameAndStatusOnly, true}});
    std::string output;
    for (int number = 0; number < state.range(0); ++number) {
        output += line(number);
    }
    timeParsing<Op>(state, request, output, static_cast<std::size_t>(state.range(0)));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);
}

void ParseStatus(benchmark::State& state) {
    parse<GitStatusOperation>(state, &statusLine);
}
BENCHMARK(ParseStatus)->Apply(&sizes);

void ParseNameStatus(benchmark::State& state) {
    parse<GitDiffOperation>(state, &nameStatusLine);
}
BENCHMARK(ParseNameStatus)->Apply(&sizes);

void ParseBlame(benchmark::State& state) {
    parse<GitBlameOperation>(state, &blameLine);
}
BENCHMARK(ParseBlame)->Apply(&sizes);

void ParseList(benchmark::State& state) {
    parse<GitListFilesOperation>(state, &listLine);
}
BENCHMARK(ParseList)->Apply(&sizes);

}  // namespace
}  // namespace neb::benchmarks
