#include "Report.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

#include "Machine.h"
#include "NumberText.h"
#include "Targets.h"

namespace neb::benchmarks {

namespace {

constexpr std::string_view beginMark =
    "<!-- measured: what follows is written by the program -->\n";
constexpr std::string_view endMark = "<!-- end of what was measured -->\n";

constexpr double mega = 1e6;

void writeRow(std::ostream& stream, const std::vector<std::string>& cells) {
    for (const std::string& cell : cells) {
        stream << "| " << cell << ' ';
    }
    stream << "|\n";
}

std::string sizeText(const Measurement& one) {
    return *one.what->unit == '\0'
               ? ""
               : countText(static_cast<std::size_t>(one.size)) + " " + one.what->unit;
}

void writeMeasurements(std::ostream& stream, const Results& results) {
    writeRow(stream, {"request", "size", "records", "printed MB", "git ms", "operation ms",
                      "libgit2 ms", "operation / git", "operation / libgit2", "parser MB/s",
                      "peak MB", "peak / printed"});
    writeRow(stream,
             {"---", "--:", "--:", "--:", "--:", "--:", "--:", "--:", "--:", "--:", "--:", "--:"});
    for (const Measurement& one : results.measurements) {
        const bool isLong = one.bytes > 10000;  // the last two figures are meaningless for less
        writeRow(stream,
                 {one.what->name, sizeText(one), countText(one.records),
                  figureText(static_cast<double>(one.bytes) / mega), figureText(one.git.median),
                  figureText(one.operation.median), figureText(one.libgit2.median),
                  spreadText(one.toGit), ratioText(one.toLibGit2.median),
                  isLong ? figureText(one.parsing / 1000) : "",
                  figureText(static_cast<double>(one.peak) / mega),
                  isLong ? figureText(one.peakToPrinted()) : ""});
    }
}

void writeTargets(std::ostream& stream, const Results& results) {
    writeRow(stream, {"target", "asked", "figure", ""});
    writeRow(stream, {"---", "---", "---", "---"});
    std::string others;
    for (const Target& target : targetsOf(results)) {
        if (target.figure.empty()) {
            others += "\n- " + target.what + ", " + target.asked;
        } else {
            writeRow(stream, {target.what, target.asked, target.figure, target.verdict});
        }
    }
    if (!others.empty()) {
        stream << "\nNot measured:\n" << others << '\n';
    }
}

}  // namespace

void writeReport(std::ostream& stream, const Results& results, const std::string& command) {
    stream << "`" << command << "` gave:\n\n";
    writeMeasurements(stream, results);
    stream << '\n';
    writeTargets(stream, results);
    if (results.collection) {
        stream << "\nCollected from a child: " << figureText(results.collection->rate / 1000)
               << " MB/s; that is " << spreadText(results.collection->toDiscarding)
               << " of what a read loop gets that keeps nothing.\n";
    }
    if (results.serverLoad) {
        stream << "\nThe server answered " << figureText(results.serverLoad->rate)
               << " requests a second.\n";
    }
    stream << "\nMeasured on:\n\n";
    for (const auto& [name, value] : describeMachine()) {
        stream << "- " << name << ": " << value << '\n';
    }
}

void replaceGeneratedText(const std::filesystem::path& page, const std::string& text) {
    std::ifstream input(page, std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(input), {}};
    const std::size_t begin = content.find(beginMark);
    const std::size_t end = content.find(endMark);
    if (begin == std::string::npos || end == std::string::npos || end < begin) {
        throw std::runtime_error(page.string() + " has no place for what is measured");
    }
    const std::size_t start = begin + beginMark.size();
    content.replace(start, end - start, text);
    std::ofstream output(page, std::ios::binary);
    output << content;
    output.close();
    if (!output) {
        throw std::runtime_error(page.string() + " cannot be written");
    }
}

}  // namespace neb::benchmarks
