// ParseTiming.h - the measuring loop of all parsers.
#pragma once

#include <benchmark/benchmark.h>

#include <memory>

#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Platform/Data.h"

namespace neb::benchmarks {

/// Times how an operation of the class parses the bytes into records, without copying the bytes and
/// destroying the records. Fewer records than expected are an error.
template <typename Op>
void timeParsing(benchmark::State& state, const std::shared_ptr<NEBSourceControlRequest>& request,
                 const Data& printed, std::size_t expected) {
    for (auto _ : state) {
        state.PauseTiming();
        auto operation = std::make_unique<Op>(request);
        operation->setData(printed);
        state.ResumeTiming();
        operation->parseData();
        state.PauseTiming();
        if (operation->result()->size() < expected) {
            state.SkipWithError("records were lost");
        }
        operation.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(printed.size()));
}

}  // namespace neb::benchmarks
