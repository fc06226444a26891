// ReadmeTest.cpp - runs the commands of the README's examples and compares their output with the
// page.
//
// With NEB_WRITE_README set, the outputs on the page are replaced by those of the program.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Support/TemporaryFolder.h"
#include "nebsc/NebscRun.h"

namespace neb::test {
namespace {

constexpr const char* file = NEB_SOURCE_FOLDER "/README.md";
constexpr std::string_view firstHeading = "## First look\n";
constexpr std::string_view blockStart = "```console\n";
constexpr std::string_view blockEnd = "```\n";
/// The home folder of the examples, as written on the page.
constexpr std::string_view pageFolder = "/home/me";
/// Stands on the page for indented lines that are left out.
constexpr std::string_view omission = "    …\n";
/// The only part of an example that the test does itself, so that it does not depend on jq.
constexpr std::string_view firstRecordFilter = " | jq '.result[0]'";

/// What precedes a block of examples.
struct Preparation {
    /// A shell script, run in the home folder.
    std::string_view script;
    /// Where the commands of the block run.
    std::string_view folder;
};

/// One for each block, in order.
constexpr Preparation preparations[] = {
    {R"SH(
git init -q project && cd project && mkdir src
printf 'int main() { return 0; }\n' >src/main.c
printf 'Notes, of some length, about this and that.\n' >readme.txt
printf 'old\n' >old.txt
git add . && GIT_AUTHOR_DATE=2026-11-20T09:15:00Z git commit -q -m 'Say hello'
printf 'int util;\n' >src/util.c
git add . && git commit -q -m 'Add utilities'
git mv readme.txt 'read me.txt' && git rm -q old.txt
printf 'int main() { return 1; }\n' >src/main.c
printf 'int x;\n' >src/new.c && git add src/new.c
printf 'x\n' >scratch.txt
)SH",
     "project"},
    {"", "project"},
    {R"SH(
git init -q demo && cd demo
printf 'int main() { return 0; }\n' >hello.c
git add . && git commit -q -m 'Say hello'
git checkout -q -b topic
printf 'int main() { return 2; }\n' >hello.c
printf 'int extra;\n' >extra.c
git add . && git commit -q -m 'Return 2'
git checkout -q main
printf 'int main() { return 1; }\n' >hello.c
git commit -q -a -m 'Return 1'
)SH",
     "demo"},
    {R"SH(
git clone -q --bare demo shared.git
git clone -q shared.git ann && git clone -q shared.git ben
cd ann && printf 'int ann;\n' >ann.c
git add . && git commit -q -m 'Add Ann' && git push -q origin main
cd ../ben && printf 'int ben;\n' >ben.c
git add . && git commit -q -m 'Add Ben'
)SH",
     "ben"},
    {"printf 'int more;\n' >demo/extra.c", "demo"},
    {"touch -d '3 hours ago' demo/.git/index.lock", "demo"},
};

std::string replaceAll(std::string text, std::string_view from, std::string_view to) {
    for (std::size_t i = 0; (i = text.find(from, i)) != std::string::npos; i += to.size()) {
        text.replace(i, from.size(), to);
    }
    return text;
}

/// The home folder of the examples, and the programs that run in it.
class Home {
public:
    /// Runs a script and returns both its outputs, with the page's name of the home folder.
    [[nodiscard]] std::string run(const std::string& script, const std::string& folder) const {
        const NebscOutcome outcome =
            runProgram("/bin/sh", {"-c", "{ " + script + "\n} 2>&1"},
                       {.folder = folder,
                        .variables = {{"PATH", NEB_BUILD_FOLDER "/bin:" + pathOfTest()},
                                      {"TZ", "UTC"},
                                      {"GIT_AUTHOR_DATE", "2026-11-21T18:04:00Z"},
                                      {"GIT_COMMITTER_DATE", "2026-11-21T18:04:00Z"}}});
        return replaceAll(outcome.output, _folder.path(), pageFolder);
    }
    void prepare(const Preparation& preparation) const {
        const std::string output =
            run("set -e\n" + std::string(preparation.script), _folder.path());
        EXPECT_EQ(output, "") << preparation.script;
    }
    /// Returns the output of a command of the page.
    [[nodiscard]] std::string outputOf(std::string command, std::string_view folder) const {
        command = replaceAll(command, pageFolder, _folder.path());
        if (!command.ends_with(firstRecordFilter)) {
            return run(command, _folder.path(folder));
        }
        command.resize(command.size() - firstRecordFilter.size());
        const std::string output = run(command, _folder.path(folder));
        return nlohmann::ordered_json::parse(output).at("result").at(0).dump(2) + "\n";
    }

private:
    static std::string pathOfTest() {
        const char* path = std::getenv("PATH");
        return path != nullptr ? path : "/usr/bin:/bin";
    }

    TemporaryFolder _folder;
};

/// Replaces each run of indented lines by the omission mark.
std::string abridged(const std::string& output) {
    std::string text;
    std::istringstream stream(output);
    for (std::string line; std::getline(stream, line);) {
        if (!line.starts_with("    ")) {
            text += line + "\n";
        } else if (!text.ends_with(omission)) {
            text += omission;
        }
    }
    return text;
}

/// Replaces durations and the location of git, which differ between machines.
std::string comparable(const std::string& block) {
    return std::regex_replace(std::regex_replace(block, std::regex(R"(\d+\.\d ms)"), "2.5 ms"),
                              std::regex(R"(&& /\S*/git )"), "&& /usr/bin/git ");
}

/// Returns the block with its commands and their actual outputs.
std::string blockOf(const Home& home, const std::string& page, std::string_view folder) {
    const bool isAbridged = page.find(omission) != std::string::npos;
    std::string block;
    std::istringstream stream(page);
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with("$ ")) {
            const std::string output = home.outputOf(line.substr(2), folder);
            block += (block.empty() ? "" : "\n") + line + "\n";
            block += isAbridged ? abridged(output) : output;
        }
    }
    return block;
}

TEST(Readme, QuotesCommandsWithTheirOutputs) {
    std::ifstream stream(file, std::ios::binary);
    std::string page(std::istreambuf_iterator<char>(stream), {});
    const Home home;
    std::size_t position = page.find(firstHeading);
    ASSERT_NE(position, std::string::npos);
    for (const Preparation& preparation : preparations) {
        position = page.find(blockStart, position);
        ASSERT_NE(position, std::string::npos) << "fewer blocks than preparations";
        position += blockStart.size();
        const std::size_t size = page.find(blockEnd, position) - position;
        const std::string quoted = page.substr(position, size);
        home.prepare(preparation);
        const std::string actual = blockOf(home, quoted, preparation.folder);
        if (std::getenv("NEB_WRITE_README") != nullptr) {
            page.replace(position, size, comparable(actual));
        } else {
            EXPECT_EQ(quoted, comparable(actual)) << "NEB_WRITE_README=1 updates the page";
        }
    }
    EXPECT_EQ(page.find(blockStart, position), std::string::npos) << "a block is not tested";
    if (std::getenv("NEB_WRITE_README") != nullptr) {
        std::ofstream(file, std::ios::binary) << page;
    }
}

}  // namespace
}  // namespace neb::test
