#include "Terminal/HistoryGraph.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

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

TEST(HistoryGraph, NoColumnIsLostInARandomHistory) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        std::mt19937 random(seed);
        std::vector<DrawnCommit> commits;
        constexpr std::size_t count = 30;
        for (std::size_t i = 0; i < count; ++i) {
            DrawnCommit commit{.id = "c" + std::to_string(i), .parents = {}};
            for (std::size_t n = 1 + random() % 3; n > 0 && i + 1 < count; --n) {
                const std::size_t parent =
                    i + 1 + random() % std::min<std::size_t>(6, count - i - 1);
                const std::string name = "c" + std::to_string(parent);
                if (std::find(commit.parents.begin(), commit.parents.end(), name) ==
                    commit.parents.end()) {
                    commit.parents.push_back(name);
                }
            }
            commits.push_back(std::move(commit));
        }
        HistoryGraph graph;
        std::string row;
        for (const DrawnCommit& commit : commits) {
            row = graph.rowOf(commit.id, commit.parents);
            EXPECT_EQ(std::count(row.begin(), row.end(), '*'), 1) << seed;
            static_cast<void>(graph.rowsBelow());
        }
        EXPECT_EQ(row, "*") << seed << ": all columns lead to the last commit";
    }
}

}  // namespace
}  // namespace neb::nebsc
