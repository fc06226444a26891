// The cost of decoding bytes as text.

#include <benchmark/benchmark.h>

#include <string>
#include <string_view>

#include "NEBFoundation/NEBSourceControlText.h"

namespace neb::benchmarks {
namespace {

/// Returns a megabyte of these bytes, repeated.
std::string megabyteOf(std::string_view bytes) {
    std::string text;
    while (text.size() < 1'000'000) {
        text += bytes;
    }
    return text;
}

void TextFromBytes(benchmark::State& state, std::string_view bytes) {
    const std::optional<Data> data = megabyteOf(bytes);
    for (auto _ : state) {
        benchmark::DoNotOptimize(_nebsc_stringFromData(data));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(data->size()));
}
BENCHMARK_CAPTURE(TextFromBytes, ascii, "plain words of code();\n");
BENCHMARK_CAPTURE(TextFromBytes, accents, "die Größe der Tür, à côté\n");
BENCHMARK_CAPTURE(TextFromBytes, chinese, "版本控制系统，可以用\n");
BENCHMARK_CAPTURE(TextFromBytes, latin1,
                  "die Gr\xF6\xDF"
                  "e der T\xFCr\n");

}  // namespace
}  // namespace neb::benchmarks
