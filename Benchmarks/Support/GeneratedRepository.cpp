#include "Support/GeneratedRepository.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "Platform/ChildProcess.h"

namespace neb::benchmarks {

namespace {

std::string messageOf(int number) {
    std::string message = "Let part " + std::to_string(number) + " of the system do what it says\n";
    if (number % 4 != 0) {
        message +=
            "\nUntil now it did so only without an observer, which no test could show.\n"
            "The order of the two calls decides; it is the other way round now, and\n"
            "the test looks at both.\n";
    }
    return message;
}

}  // namespace

Data runProgram(const std::string& folder, const std::string& program,
                std::vector<std::string> arguments) {
    ChildProcess process;
    auto outcomes =
        process.run({{.launchPath = program,
                      .arguments = std::move(arguments),
                      .currentDirectoryPath = folder,
                      .environment = NEBSourceControlChildEnvironment(
                          NEBSourceControlInheritedEnvironment(), {.writesWholeBuffers = true})}});
    if (!outcomes[0].status.isSuccess()) {
        throw std::runtime_error(program + ": " + std::string(outcomes[0].errorOutput));
    }
    return std::move(outcomes[0].output);
}

Data runGit(const std::string& folder, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "git");
    return runProgram(folder, "/usr/bin/env", std::move(arguments));
}

void importRepository(const std::string& folder, const std::function<void(std::ostream&)>& write) {
    std::filesystem::create_directories(folder);
    runGit(folder, {"init", "--quiet", "--initial-branch=main"});
    const std::filesystem::path file = std::filesystem::path(folder) / ".git" / "stream";
    std::ofstream stream(file, std::ios::binary);
    write(stream);
    stream.close();
    if (!stream) {
        throw std::runtime_error("cannot write " + file.string());
    }
    runProgram(folder, "/bin/sh", {"-c", "git fast-import --quiet <.git/stream"});
    std::filesystem::remove(file);
    runGit(folder, {"commit-graph", "write"});
}

void writeCommit(std::ostream& stream, int number) {
    const std::string message = messageOf(number);
    const int author = number % 50;
    const long long when = 1400000000LL + 60LL * number;
    stream << "commit refs/heads/main\nauthor Author Number" << author << " <author" << author
           << "@example.org> " << when << " +0200\ncommitter C <c@x> " << when << " +0200\ndata "
           << message.size() << "\n"
           << message;
}

void writeFile(std::ostream& stream, std::string_view path, std::string_view content) {
    stream << "M 100644 inline " << path << "\ndata " << content.size() << "\n" << content << "\n";
}

std::string pathOf(int number) {
    return "source/folder" + std::to_string(number / 100) + "/file" + std::to_string(number % 100) +
           ".cpp";
}

void writeHistory(std::ostream& stream, int commits) {
    for (int number = 1; number <= commits; ++number) {
        writeCommit(stream, number);
        for (int file = 0; file < 3; ++file) {
            const long long folder = (number * 7LL + file) % 50;
            const long long place = (number * 31LL + file) % 100;
            writeFile(stream, pathOf(static_cast<int>(folder * 100 + place)),
                      std::to_string(number) + "\n");
        }
    }
}

}  // namespace neb::benchmarks
