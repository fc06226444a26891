// `nebsc complete` for files of the index.

#include <sstream>

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

using testing::ElementsAre;

class IndexCompletion : public CommandTest {
protected:
    void SetUp() override { repository.commitFile("a.c", "a\n"); }
    /// Returns the candidates for the last argument; the shell adds none.
    [[nodiscard]] std::vector<std::string> complete(std::vector<std::string> words) const {
        words.insert(words.begin(), {"complete", "--"});
        std::istringstream stream(nebsc(words).output);
        std::vector<std::string> candidates;
        std::string line;
        std::getline(stream, line);
        EXPECT_EQ(line, "none");
        while (std::getline(stream, line)) {
            candidates.push_back(line);
        }
        return candidates;
    }
};

TEST_F(IndexCompletion, CompletesPaths) {
    for (const char* name : {"src/in/x.c", "src/in/y z.c", "src/index.c"}) {
        repository.write(name, "");
    }
    repository.git({"add", "src"});
    EXPECT_THAT(complete({"cat", ":"}), testing::Contains(":src/"));
    EXPECT_THAT(complete({"cat", ":src/i"}), ElementsAre(":src/in/", ":src/index.c"));
    EXPECT_THAT(complete({"cat", ":0:src/in/"}), ElementsAre(":0:src/in/x.c", ":0:src/in/y z.c"));
    EXPECT_THAT(complete({"cat", ":1:src/in/"}), ElementsAre());
    const std::string in = "-C" + repository.path("src");
    EXPECT_THAT(complete({in, "cat", ":./in"}), ElementsAre(":./in/", ":./index.c"));
    EXPECT_THAT(complete({in, "cat", ":../src/ind"}), ElementsAre(":../src/index.c"));
    EXPECT_THAT(complete({in, "cat", ":src/ind"}), ElementsAre(":src/index.c"));
    const std::string blob = repository.git({"rev-parse", ":a.c"}).substr(0, 40);
    repository.gitWithInput({"update-index", "--index-info"},
                            "100644 " + blob + " 1\tboth.c\n100644 " + blob + " 2\tboth.c\n");
    EXPECT_THAT(complete({"cat", ":2:"}), ElementsAre(":2:both.c"));
    EXPECT_THAT(complete({"cat", ":both"}), ElementsAre());
}

}  // namespace
}  // namespace neb::test
