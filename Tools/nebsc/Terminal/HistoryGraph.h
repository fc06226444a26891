// HistoryGraph.h - draws the history of commits beside their lines.
//
//     HistoryGraph graph;
//     for (const LogEntry& commit : commits) {              // children before their parents
//         print(graph.rowOf(commit.id, commit.parents) + " " + commit.subject);
//         print(graph.rowsBelow());
//     }
//
// A column is a line of history that leads down to a commit that has not been drawn yet. Columns
// never cross: a merge opens columns at its right, and two columns that lead to the same commit
// join at once, the right one turning to the left one. Each column has a colour of its own; the
// colours are those of git, see log.graphColors in git-config(1).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Terminal/Colour.h"

namespace neb::nebsc {

/// Draws one history. Needs memory only for the open columns. Not thread-safe.
class HistoryGraph {
public:
    explicit HistoryGraph(bool isColoured = false) : _isColoured(isColoured) {}

    /// Returns the row of the next commit, without a line end: "*" in its column, "|" in others.
    [[nodiscard]] std::string rowOf(const std::string& id, const std::vector<std::string>& parents);
    /// Returns the columns of the terminal that the row of that commit takes.
    [[nodiscard]] std::size_t width() const { return 2 * _columns.size() - 1; }
    /// Returns the front of a further line about that commit, as wide as its row.
    [[nodiscard]] std::string rowBeside() const;
    /// Returns the rows that lead from that commit to its parents, each with its line end; often
    /// empty. Each commit needs one call.
    [[nodiscard]] std::string rowsBelow();

private:
    class Row;
    struct Column {
        /// The commit that the column leads to.
        std::string id;
        Colour colour = Colour::none;
    };

    [[nodiscard]] Row newRow() const;
    /// Puts "|" into the columns from the first one on, up to `end`.
    void putLines(Row& row, std::size_t end) const;
    [[nodiscard]] Colour nextColour();
    void open(std::size_t column, const std::string& id, std::string& rows);
    void join(std::size_t column, std::size_t right, std::string& rows);
    void joinTwins(std::string& rows);
    void close(std::size_t column, std::string& rows);

    bool _isColoured;
    /// How many columns were opened.
    std::size_t _openedColumns = 0;
    std::vector<Column> _columns;
    /// The commit that rowOf() has drawn.
    std::size_t _column = 0;
    std::vector<std::string> _parents;
};

}  // namespace neb::nebsc
