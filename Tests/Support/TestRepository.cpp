#include "Support/TestRepository.h"

#include <cstdlib>
#include <stdexcept>

#include "LOMFoundation/LOMDeveloperPaths.h"
#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Platform/ChildProcess.h"

namespace neb::test {

namespace fs = std::filesystem;

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
    std::string command = "git";
    for (const std::string& argument : arguments) {
        command += " " + argument;
    }
    throw std::runtime_error(command + ": " + outcome.status.description() + ": " +
                             std::string(outcome.errorOutput));
}

/// The result of `git init`, without the sample hooks. Copying it is faster than running git.
const fs::path& emptyRepository() {
    static const TemporaryFolder folder;
    static const fs::path path = [] {
        outputOf(runGit(folder.path(), {"init", "--quiet"}), {"init"});
        for (const auto& hook : fs::directory_iterator(folder.path(".git/hooks"))) {
            fs::remove(hook.path());
        }
        return fs::path(folder.path(".git"));
    }();
    return path;
}

}  // namespace

void isolateFromMachine() {
    static const TemporaryFolder home;
    home.write(".gitconfig",
               "[user]\n\tname = Ann Example\n\temail = ann@example.org\n"
               "[init]\n\tdefaultBranch = main\n[protocol \"file\"]\n\tallow = always\n"
               // Each commit and fetch would start a process that finds nothing to do.
               "[maintenance]\n\tauto = false\n");
    const std::pair<const char*, std::string> variables[] = {
        {"HOME", home.path()},
        {"XDG_CONFIG_HOME", home.path(".config")},
        {"GIT_CONFIG_NOSYSTEM", "1"},
        {"GIT_AUTHOR_DATE", "2020-09-13T12:26:40Z"},
        {"GIT_COMMITTER_DATE", "2020-09-13T12:26:40Z"},
        // git's messages do not depend on whether the temporary folder is a mount point.
        {"GIT_DISCOVERY_ACROSS_FILESYSTEM", "1"},
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
    fs::create_directory(path());
    fs::copy(emptyRepository(), path(".git"), fs::copy_options::recursive);
}

TestRepository::TestRepository(const std::string& location) {
    fs::create_directory(path());
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
    std::vector<std::string> shellArguments{"-c", "exec \"$@\" <\"$0\"",
                                            _folder.write("input", input), gitProgram()};
    shellArguments.insert(shellArguments.end(), arguments.begin(), arguments.end());
    return outputOf(run(path(), "/bin/sh", std::move(shellArguments)), arguments);
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
