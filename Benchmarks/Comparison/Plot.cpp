#include "Plot.h"

#include <fstream>
#include <string_view>

#include "Support/GeneratedRepository.h"

namespace neb::benchmarks {

namespace {

/// Writes a row per size: commits, seconds of git, of the operation and of libgit2, MB printed, MB
/// at the peak.
void writeData(std::ostream& stream, const Results& results, std::string_view caseName) {
    for (const Measurement& one : results.measurements) {
        if (one.what->name == caseName) {
            stream << one.size << ' ' << one.git.median / 1000 << ' ' << one.operation.median / 1000
                   << ' ' << one.libgit2.median / 1000 << ' '
                   << static_cast<double>(one.bytes) / 1e6 << ' '
                   << static_cast<double>(one.peak) / 1e6 << '\n';
        }
    }
}

constexpr std::string_view script = R"(
set terminal svg size 1000,450 font "sans-serif,12" background "white"
set logscale xy
set xlabel "commits"
set grid
set key right bottom samplen 2
set format x "10^{%T}"
set multiplot layout 1,2
set ylabel "seconds"
plot $files using 1:4 title "with files: libgit2" with linespoints lc rgb "#999999" pt 4, \
     $files using 1:3 title "with files: operation" with linespoints lc rgb "#0060ad" pt 7, \
     $files using 1:2 title "with files: git" with linespoints lc rgb "#dd181f" pt 1, \
     $log using 1:4 title "log: libgit2" with linespoints lc rgb "#999999" pt 4 dt 2, \
     $log using 1:3 title "log: operation" with linespoints lc rgb "#0060ad" pt 7 dt 2, \
     $log using 1:2 title "log: git" with linespoints lc rgb "#dd181f" pt 1 dt 2
set ylabel "MB"
plot $files using 1:6 title "with files: peak" with linespoints lc rgb "#0060ad" pt 7, \
     $files using 1:5 title "with files: printed" with linespoints lc rgb "#dd181f" pt 1, \
     $log using 1:6 title "log: peak" with linespoints lc rgb "#0060ad" pt 7 dt 2, \
     $log using 1:5 title "log: printed" with linespoints lc rgb "#dd181f" pt 1 dt 2
unset multiplot
)";

}  // namespace

void writePlot(const std::filesystem::path& file, const Results& results) {
    const std::filesystem::path program = file.string() + ".gnuplot";
    std::ofstream stream(program);
    for (const auto& [block, caseName] :
         {std::pair("$log", "log"), std::pair("$files", "log with files")}) {
        stream << block << " << E\n";
        writeData(stream, results, caseName);
        stream << "E\n";
    }
    stream << "set output " << file.filename() << script;
    stream.close();
    const std::filesystem::path folder = std::filesystem::absolute(file).parent_path();
    runProgram(folder.string(), "/usr/bin/env", {"gnuplot", program.filename().string()});
    std::filesystem::remove(program);
}

}  // namespace neb::benchmarks
