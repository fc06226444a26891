#include "Support/TestRepository.h"

#include <cstdlib>
#include <stdexcept>

#include "LOMFoundation/LOMDeveloperPaths.h"
#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Platform/ChildProcess.h"

namespace neb::test {

namespace {

std::string gitProgram() {
    return LOMDeveloperPaths::defaultPaths()
        .binSearchPathForPlatform(std::nullopt)
        .pathOfProgram("git");
}

ChildOutcome run(const std::string& folder, std::string program,
                 std::vector<std::string> arguments) {
    ChildProcess process;
    return process.run({{.launchPath = std::move(program),
                         .arguments = std::move(arguments),
                         .currentDirectoryPath = folder,
                         .environment = NEBSourceControlInheritedEnvironment()}})[0];
}

ChildOutcome runGit(const std::string& folder, std::vector<std::string> arguments) {
    return run(folder, gitProgram(), std::move(arguments));
}

std::string outputOf(const ChildOutcome& outcome, const std::vector<std::string>& arguments) {
    if (outcome.status.isSuccess()) {
        return std::string(outcome.output);
    }
    std::string words = "git";
    for (const std::string& argument : arguments) {
        words += " " + argument;
    }
    throw std::runtime_error(words + ": " + outcome.status.description() + ": " +
                             std::string(outcome.errorOutput));
}

}  // namespace

void isolateFromMachine() {
    static const TemporaryFolder home;
    home.write(".gitconfig",
               "[user]\n\tname = Ann Example\n\temail = ann@example.org\n"
               "[init]\n\tdefaultBranch = main\n[protocol \"file\"]\n\tallow = always\n");
    const std::pair<const char*, std::string> variables[] = {
        {"HOME", home.path()},
        {"XDG_CONFIG_HOME", home.path(".config")},
        {"GIT_CONFIG_NOSYSTEM", "1"},
        {"GIT_AUTHOR_DATE", "2020-09-13T12:26:40Z"},
        {"GIT_COMMITTER_DATE", "2020-09-13T12:26:40Z"},
    };
    for (const auto& [name, value] : variables) {
        ::setenv(name, value.c_str(), 1);
    }
    for (const char* name : {"GIT_DIR", "GIT_WORK_TREE", "GIT_INDEX_FILE", "GIT_CONFIG_GLOBAL",
                             "GIT_CONFIG_SYSTEM", "GIT_CONFIG_COUNT", "GIT_CONFIG_PARAMETERS"}) {
        ::unsetenv(name);
    }
}

TestRepository::TestRepository() {
    std::filesystem::create_directory(path());
    git({"init", "--quiet"});
}

TestRepository::TestRepository(const std::string& location) {
    std::filesystem::create_directory(path());
    git({"clone", "--quiet", location, "."});
}

void TestRepository::write(std::string_view name, std::string_view bytes) const {
    _folder.write(std::string("repository/").append(name), bytes);
}

std::string TestRepository::git(std::vector<std::string> arguments) const {
    return outputOf(runGit(path(), arguments), arguments);
}

std::string TestRepository::gitWithInput(std::vector<std::string> arguments,
                                         std::string_view input) const {
    std::vector<std::string> words{"-c", "exec \"$@\" <\"$0\"", _folder.write("input", input),
                                   gitProgram()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return outputOf(run(path(), "/bin/sh", std::move(words)), arguments);
}

int TestRepository::gitStatus(std::vector<std::string> arguments) const {
    return runGit(path(), std::move(arguments)).status.exitStatus().value_or(-1);
}

void TestRepository::commitFile(std::string_view name, std::string_view bytes,
                                std::string_view message) const {
    write(name, bytes);
    git({"add", "--", std::string(name)});
    git({"commit", "--quiet", "-m", std::string(message)});
}

}  // namespace neb::test
