#include "Terminal/HistoryGraph.h"

#include <algorithm>
#include <utility>

namespace neb::nebsc {

namespace {

/// A row of characters. Column N is at character 2 * N, with a gap after it.
class Row {
public:
    /// Puts a character into a column.
    void put(std::size_t column, char character) { putAt(2 * column, character); }
    /// Puts a character into the gap after a column.
    void putAfter(std::size_t column, char character) { putAt(2 * column + 1, character); }
    void putAll(std::size_t first, std::size_t end, char character) {
        for (std::size_t column = first; column < end; ++column) {
            put(column, character);
        }
    }
    [[nodiscard]] std::string text() const { return _text; }
    [[nodiscard]] std::string line() const { return _text + "\n"; }

private:
    void putAt(std::size_t position, char character) {
        _text.resize(std::max(_text.size(), position + 1), ' ');
        _text[position] = character;
    }

    std::string _text;
};

}  // namespace

std::string HistoryGraph::rowOf(const std::string& id, const std::vector<std::string>& parents) {
    const auto found = std::ranges::find(_columns, id);
    _column = static_cast<std::size_t>(found - _columns.begin());
    if (found == _columns.end()) {
        _columns.push_back(id);
    }
    _parents = parents;
    Row row;
    row.putAll(0, _columns.size(), '|');
    row.put(_column, '*');
    return row.text();
}

std::string HistoryGraph::rowBeside() const {
    Row row;
    row.putAll(0, _columns.size(), '|');
    row.put(_column, _parents.empty() ? ' ' : '|');
    return row.text();
}

/// The last parent opens its column first, so that the second one ends beside the commit.
std::string HistoryGraph::rowsBelow() {
    std::string rows;
    if (_parents.empty()) {
        close(_column, rows);
        return rows;
    }
    _columns[_column] = _parents.front();
    for (std::size_t i = _parents.size() - 1; i > 0; --i) {
        open(_column + 1, _parents[i], rows);
    }
    joinTwins(rows);
    return rows;
}

/// Moves the columns from `column` on to the right, and the new one away from that at its left.
void HistoryGraph::open(std::size_t column, const std::string& id, std::string& rows) {
    Row row;
    row.putAll(0, column, '|');
    for (std::size_t moved = column - 1; moved < _columns.size(); ++moved) {
        row.putAfter(moved, '\\');
    }
    rows += row.line();
    _columns.insert(_columns.begin() + static_cast<std::ptrdiff_t>(column), id);
}

void HistoryGraph::joinTwins(std::string& rows) {
    for (std::size_t right = 1; right < _columns.size();) {
        const auto left = static_cast<std::size_t>(std::ranges::find(_columns, _columns[right]) -
                                                   _columns.begin());
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
    Row row;
    row.putAll(0, right, '|');
    for (std::size_t moved = right; moved < _columns.size(); ++moved) {
        row.putAfter(moved - 1, '/');
    }
    for (std::size_t passed = column + 1; passed + 1 < right; ++passed) {
        row.putAfter(passed, '_');
    }
    rows += row.line();
    _columns.erase(_columns.begin() + static_cast<std::ptrdiff_t>(right));
    if (right - column > 1) {
        Row second;
        second.putAll(0, _columns.size(), '|');
        second.putAfter(column, '/');
        rows += second.line();
    }
}

/// Ends a column, and moves those at its right.
void HistoryGraph::close(std::size_t column, std::string& rows) {
    _columns.erase(_columns.begin() + static_cast<std::ptrdiff_t>(column));
    if (column == _columns.size()) {
        return;
    }
    Row row;
    row.putAll(0, column, '|');
    for (std::size_t moved = column; moved < _columns.size(); ++moved) {
        row.putAfter(moved, '/');
    }
    rows += row.line();
}

}  // namespace neb::nebsc
