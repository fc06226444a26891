#include "Terminal/HistoryGraph.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace neb::nebsc {

namespace {

/// In git's order.
constexpr Colour laneColours[] = {
    Colour::red,        Colour::green,    Colour::yellow,      Colour::blue,
    Colour::magenta,    Colour::cyan,     Colour::boldRed,     Colour::boldGreen,
    Colour::boldYellow, Colour::boldBlue, Colour::boldMagenta, Colour::boldCyan,
};

}  // namespace

/// A row of characters. Column N is at character 2 * N, with a gap after it.
class HistoryGraph::Row {
public:
    explicit Row(bool isColoured) : _isColoured(isColoured) {}

    /// Puts a character into a column.
    void put(std::size_t column, char character, Colour colour) {
        putAt(2 * column, character, colour);
    }
    /// Puts a character into the gap after a column.
    void putAfter(std::size_t column, char character, Colour colour) {
        putAt(2 * column + 1, character, colour);
    }
    [[nodiscard]] std::string text() const {
        std::string text;
        for (const auto& [character, colour] : _cells) {
            text += _isColoured && character != ' ' ? coloured({&character, 1}, colour)
                                                    : std::string(1, character);
        }
        return text;
    }
    [[nodiscard]] std::string line() const { return text() + "\n"; }

private:
    struct Cell {
        char character = ' ';
        Colour colour = Colour::none;
    };

    void putAt(std::size_t position, char character, Colour colour) {
        _cells.resize(std::max(_cells.size(), position + 1));
        _cells[position] = {character, colour};
    }

    bool _isColoured;
    std::vector<Cell> _cells;
};

HistoryGraph::Row HistoryGraph::newRow() const {
    return Row(_isColoured);
}

void HistoryGraph::putLines(Row& row, std::size_t end) const {
    for (std::size_t column = 0; column < end; ++column) {
        row.put(column, '|', _columns[column].colour);
    }
}

Colour HistoryGraph::nextColour() {
    return laneColours[_openedColumns++ % std::size(laneColours)];
}

std::string HistoryGraph::rowOf(const std::string& id, const std::vector<std::string>& parents) {
    const auto found = std::ranges::find(_columns, id, &Column::id);
    _column = static_cast<std::size_t>(found - _columns.begin());
    if (found == _columns.end()) {
        _columns.push_back({id, nextColour()});
    }
    _parents = parents;
    Row row = newRow();
    putLines(row, _columns.size());
    row.put(_column, '*', Colour::none);
    return row.text();
}

std::string HistoryGraph::rowBeside() const {
    Row row = newRow();
    putLines(row, _columns.size());
    if (_parents.empty()) {
        row.put(_column, ' ', Colour::none);
    }
    return row.text();
}

/// The last parent opens its column first, so that the second one ends beside the commit.
std::string HistoryGraph::rowsBelow() {
    std::string rows;
    if (_parents.empty()) {
        close(_column, rows);
        return rows;
    }
    _columns[_column].id = _parents.front();
    for (std::size_t i = _parents.size() - 1; i > 0; --i) {
        open(_column + 1, _parents[i], rows);
    }
    joinTwins(rows);
    return rows;
}

/// Moves the columns from `column` on to the right, and the new one away from that at its left.
void HistoryGraph::open(std::size_t column, const std::string& id, std::string& rows) {
    const Colour colour = nextColour();
    Row row = newRow();
    putLines(row, column);
    row.putAfter(column - 1, '\\', colour);
    for (std::size_t moved = column; moved < _columns.size(); ++moved) {
        row.putAfter(moved, '\\', _columns[moved].colour);
    }
    rows += row.line();
    _columns.insert(_columns.begin() + static_cast<std::ptrdiff_t>(column), {id, colour});
}

void HistoryGraph::joinTwins(std::string& rows) {
    for (std::size_t right = 1; right < _columns.size();) {
        const auto left = static_cast<std::size_t>(
            std::ranges::find(_columns, _columns[right].id, &Column::id) - _columns.begin());
        if (left < right) {
            join(left, right, rows);
        } else {
            ++right;
        }
    }
}

/// Turns a column to one that is further left, in a second row if they are not neighbours, and
/// moves those at its right.
void HistoryGraph::join(std::size_t column, std::size_t right, std::string& rows) {
    const Colour colour = _columns[right].colour;
    Row row = newRow();
    putLines(row, right);
    for (std::size_t moved = right; moved < _columns.size(); ++moved) {
        row.putAfter(moved - 1, '/', _columns[moved].colour);
    }
    for (std::size_t passed = column + 1; passed + 1 < right; ++passed) {
        row.putAfter(passed, '_', colour);
    }
    rows += row.line();
    _columns.erase(_columns.begin() + static_cast<std::ptrdiff_t>(right));
    if (right - column > 1) {
        Row second = newRow();
        putLines(second, _columns.size());
        second.putAfter(column, '/', colour);
        rows += second.line();
    }
}

/// Ends a column, and moves those at its right.
void HistoryGraph::close(std::size_t column, std::string& rows) {
    _columns.erase(_columns.begin() + static_cast<std::ptrdiff_t>(column));
    if (column == _columns.size()) {
        return;
    }
    Row row = newRow();
    putLines(row, column);
    for (std::size_t moved = column; moved < _columns.size(); ++moved) {
        row.putAfter(moved, '/', _columns[moved].colour);
    }
    rows += row.line();
}

}  // namespace neb::nebsc
