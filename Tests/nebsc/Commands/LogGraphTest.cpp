// `nebsc log --graph`, run as a program.

#include <algorithm>
#include <sstream>

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::HasSubstr;

class LogGraph : public CommandTest {
protected:
    void SetUp() override { repository.commitFile("a.c", "1\n", "First"); }
    [[nodiscard]] NebscOutcome log(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "log");
        return nebsc(arguments);
    }
};

TEST_F(LogGraph, DrawsTheGraphOfAFile) {
    repository.git({"checkout", "--quiet", "-b", "topic"});
    repository.commitFile("dir/t.c", "1\n", "Topic");
    repository.commitFile("n.c", "1\n", "Not shown");
    repository.git({"checkout", "--quiet", "main"});
    repository.commitFile("m.c", "1\n", "Not shown either");
    repository.commitFile("dir/o.c", "1\n", "Other");
    repository.git({"merge", "--quiet", "-m", "Merge", "topic"});
    std::string graph = log({"--graph", "dir"}).output;
    std::string drawn;
    for (std::istringstream lines(graph); std::getline(lines, graph);) {
        const std::size_t subject = graph.rfind("  ");
        drawn += graph.substr(0, graph.find("  ")) +
                 (subject < graph.size() ? graph.substr(subject) : "") + "\n";
    }
    EXPECT_EQ(drawn,
              "*  (HEAD -> main) Merge\n"
              "|\\\n"
              "| *  Topic\n"
              "*  Other\n");
}

TEST_F(LogGraph, DrawsAMergeOfManyBranches) {
    for (const char* branch : {"b1", "b2", "b3"}) {
        repository.git({"checkout", "--quiet", "-b", branch, "main"});
        repository.commitFile(branch, "1\n", branch);
    }
    repository.git({"checkout", "--quiet", "main"});
    repository.git({"merge", "--quiet", "-m", "Octopus", "b1", "b2", "b3"});
    const std::string merged = repository.git({"rev-list", "-1", "--parents", "HEAD"});
    const std::string graph = log({"--graph", "-n5"}).output;
    EXPECT_EQ(std::count(graph.begin(), graph.end(), '\\'), 3) << graph;
    EXPECT_THAT(log({"--graph", "--color=always", "-n5"}).output,
                HasSubstr("\x1b[31m|\x1b[0m\x1b[32m\\\x1b[0m\n"));
    const std::string shown = nebsc({"show"}).output;
    for (std::size_t parent = 1; parent < 4; ++parent) {
        EXPECT_THAT(shown, HasSubstr(merged.substr(41 * parent, 7))) << shown;
    }
}

}  // namespace
}  // namespace neb::test
