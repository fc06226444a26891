#include "Terminal/HistoryGraph.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <sstream>

namespace neb::nebsc {
namespace {

struct DrawnCommit {
    std::string id;
    std::vector<std::string> parents;
};

std::string drawn(const std::vector<DrawnCommit>& commits) {
    HistoryGraph graph;
    std::string text;
    for (const DrawnCommit& commit : commits) {
        text += graph.rowOf(commit.id, commit.parents) + " " + commit.id + "\n";
        text += graph.rowsBelow();
    }
    return text;
}

TEST(HistoryGraph, DrawsALine) {
    EXPECT_EQ(drawn({{"b", {"a"}}, {"a", {}}}), "* b\n* a\n");
}

TEST(HistoryGraph, DrawsAMerge) {
    EXPECT_EQ(drawn({{"m", {"b", "t"}}, {"t", {"a"}}, {"b", {"a"}}, {"a", {}}}),
              "* m\n"
              "|\\\n"
              "| * t\n"
              "* | b\n"
              "|/\n"
              "* a\n");
}

TEST(HistoryGraph, HasAColourForEachColumn) {
    HistoryGraph graph(true);
    EXPECT_EQ(graph.rowOf("m", {"b", "t"}), "*");
    EXPECT_EQ(graph.width(), 1U);
    EXPECT_EQ(graph.rowsBelow(), "\x1b[31m|\x1b[0m\x1b[32m\\\x1b[0m\n");
    EXPECT_EQ(graph.rowOf("t", {"b"}), "\x1b[31m|\x1b[0m *");
    EXPECT_EQ(graph.width(), 3U);
    EXPECT_EQ(graph.rowBeside(), "\x1b[31m|\x1b[0m \x1b[32m|\x1b[0m");
    EXPECT_EQ(graph.rowsBelow(), "\x1b[31m|\x1b[0m\x1b[32m/\x1b[0m\n");
    EXPECT_EQ(graph.rowOf("b", {}), "*");
    EXPECT_EQ(graph.rowsBelow(), "");
    EXPECT_EQ(graph.rowOf("z", {}), "*");
    EXPECT_EQ(graph.rowBeside(), " ");
}

TEST(HistoryGraph, DrawsBranchesThatAreNotMerged) {
    EXPECT_EQ(drawn({{"x", {"a"}}, {"y", {"a"}}, {"z", {"a"}}, {"a", {}}}),
              "* x\n"
              "| * y\n"
              "|/\n"
              "| * z\n"
              "|/\n"
              "* a\n");
}

TEST(HistoryGraph, DrawsAnOctopus) {
    EXPECT_EQ(drawn({{"m", {"a", "b", "c"}}, {"c", {"a"}}, {"b", {"a"}}, {"a", {}}}),
              "* m\n"
              "|\\\n"
              "|\\ \\\n"
              "| | * c\n"
              "| |/\n"
              "|/|\n"
              "| * b\n"
              "|/\n"
              "* a\n");
}

TEST(HistoryGraph, TurnsAColumnBelowOthers) {
    EXPECT_EQ(drawn({{"m", {"a", "b"}},
                     {"n", {"b", "c"}},
                     {"o", {"c", "a"}},
                     {"b", {}},
                     {"c", {}},
                     {"a", {}}}),
              "* m\n"
              "|\\\n"
              "| | * n\n"
              "| | |\\\n"
              "| |/ /\n"
              "| | | * o\n"
              "| | | |\\\n"
              "| | |/ /\n"
              "| |_|/\n"
              "|/| |\n"
              "| * | b\n"
              "|  /\n"
              "| * c\n"
              "* a\n");
}

TEST(HistoryGraph, ARootEndsItsColumn) {
    EXPECT_EQ(drawn({{"x", {}}, {"b", {"a"}}, {"a", {}}}), "* x\n* b\n* a\n");
}

TEST(HistoryGraph, DrawsBesideFurtherLines) {
    HistoryGraph graph;
    EXPECT_EQ(graph.rowOf("m", {"a", "b"}), "*");
    EXPECT_EQ(graph.rowBeside(), "|");
    EXPECT_EQ(graph.rowsBelow(), "|\\\n");
    EXPECT_EQ(graph.rowOf("b", {}), "| *");
    EXPECT_EQ(graph.rowBeside(), "|  ");
}

// ---- a second reader: follows the lines of a drawing ------------------------------------------

using Names = std::set<std::string>;

/// Reads a drawing row by row, and notes which commits its lines connect.
class DrawingReader {
public:
    /// `row` has the commit's "*".
    void readCommit(const std::string& row, const DrawnCommit& commit) {
        const std::size_t star = row.find('*');
        for (const std::string& child : _origins[star]) {
            parents[child].insert(commit.id);
        }
        _origins[star] = commit.parents.empty() ? Names() : Names{commit.id};
        for (const auto& [position, names] : _origins) {
            EXPECT_TRUE(names.empty() || at(row, position) == '|' || position == star) << row;
        }
    }
    /// Reads a row between commits; `next` is the one below it.
    void readLines(const std::string& row, const std::string& next) {
        std::map<std::size_t, Names> origins, pending;
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (row[i] == '|') {
                origins[i].merge(Names(_origins[i]));
            } else if (row[i] == '\\') {
                origins[i + 1].merge(Names(_origins[i - 1]));
            } else if (row[i] == '/') {
                // Beside a "|", the line comes from the row above, where it crossed that column.
                const Names names = at(row, i + 1) == '|' ? _pending[i + 2] : _origins[i + 1];
                std::size_t end = i;
                while (end > 1 && row[end - 2] == '_') {
                    end -= 2;
                }
                const bool goesOn = end > 2 && at(next, end - 2) == '/' && at(next, end - 1) == '|';
                (goesOn ? pending[end] : origins[end - 1]).merge(Names(names));
            }
        }
        _origins = std::move(origins);
        _pending = std::move(pending);
    }

    std::map<std::string, Names> parents;

private:
    static char at(const std::string& row, std::size_t position) {
        return position < row.size() ? row[position] : ' ';
    }

    /// The commits whose lines are at a position of the row above, or end in a gap of it.
    std::map<std::size_t, Names> _origins, _pending;
};

/// Returns a history in which each commit has up to three of the next commits as parents.
std::vector<DrawnCommit> randomHistory(unsigned seed) {
    std::mt19937 random(seed);
    constexpr std::size_t count = 40;
    std::vector<DrawnCommit> commits;
    for (std::size_t i = 0; i < count; ++i) {
        Names parents;
        for (std::size_t n = random() % 8 == 0 ? 0 : 1 + random() % 3; n > 0 && i + 1 < count;
             --n) {
            const std::size_t most = std::min<std::size_t>(8, count - i - 1);
            parents.insert("c" + std::to_string(i + 1 + random() % most));
        }
        commits.push_back({"c" + std::to_string(i), {parents.begin(), parents.end()}});
    }
    return commits;
}

TEST(HistoryGraph, LinesLeadFromEachCommitToItsParents) {
    for (unsigned seed = 1; seed <= 200; ++seed) {
        const std::vector<DrawnCommit> commits = randomHistory(seed);
        HistoryGraph graph;
        DrawingReader reader;
        for (const DrawnCommit& commit : commits) {
            reader.readCommit(graph.rowOf(commit.id, commit.parents), commit);
            std::istringstream lines(graph.rowsBelow());
            std::string row;
            for (std::string next; std::getline(lines, next); row = next) {
                if (!row.empty()) {
                    reader.readLines(row, next);
                }
            }
            if (!row.empty()) {
                reader.readLines(row, "");
            }
        }
        for (const DrawnCommit& commit : commits) {
            EXPECT_EQ(reader.parents[commit.id],
                      Names(commit.parents.begin(), commit.parents.end()))
                << "seed " << seed << ", " << commit.id << "\n"
                << drawn(commits);
        }
    }
}

}  // namespace
}  // namespace neb::nebsc
