#include "Terminal/TextTable.h"

#include <algorithm>
#include <cstddef>

#include "Terminal/TextWidth.h"

namespace neb::nebsc {

namespace {

std::vector<std::size_t> widthsOf(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths;
    for (const std::vector<std::string>& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], columnsOf(row[i]));
        }
    }
    return widths;
}

}  // namespace

std::string tableLines(int descriptor, const std::vector<std::vector<std::string>>& rows) {
    const std::vector<std::size_t> widths = widthsOf(rows);
    std::string lines;
    for (const std::vector<std::string>& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += paddedTo(widths[i], row[i]) + "  ";
        }
        line.resize(line.find_last_not_of(' ') + 1);
        lines += fitting(descriptor, 0, line) + "\n";
    }
    return lines;
}

}  // namespace neb::nebsc
