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
// join at once, the right one turning to the left one.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace neb::nebsc {

/// Draws one history. Needs memory only for the open columns. Not thread-safe.
class HistoryGraph {
public:
    /// Returns the row of the next commit, without a line end: "*" in its column, "|" in others.
    [[nodiscard]] std::string rowOf(const std::string& id, const std::vector<std::string>& parents);
    /// Returns the front of a further line about that commit, as wide as its row.
    [[nodiscard]] std::string rowBeside() const;
    /// Returns the rows that lead from that commit to its parents, each with its line end; often
    /// empty. Each commit needs one call.
    [[nodiscard]] std::string rowsBelow();

private:
    void open(std::size_t column, const std::string& id, std::string& rows);
    void join(std::size_t column, std::size_t right, std::string& rows);
    void joinTwins(std::string& rows);
    void close(std::size_t column, std::string& rows);

    /// The id that each column leads to.
    std::vector<std::string> _columns;
    /// The commit that rowOf() has drawn.
    std::size_t _column = 0;
    std::vector<std::string> _parents;
};

}  // namespace neb::nebsc
