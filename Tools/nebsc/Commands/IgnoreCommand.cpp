#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "CommandFrame/CommandTask.h"
#include "Commands/Commands.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlFileError.h"
#include "Platform/ErrnoText.h"
#include "Platform/FileDescriptor.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"
#include "Session/GitProgram.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view files = "FILE";

/// Returns the line of .gitignore that matches this path from the top and no other.
std::string lineFor(std::string_view pathFromTop, bool isFolder) {
    constexpr std::string_view special = "*?[\\";
    std::string line = "/";
    for (const char character : pathFromTop) {
        line.append(special.find(character) == std::string_view::npos ? "" : "\\");
        line += character;
    }
    if (isFolder) {
        return line + "/";
    }
    // git ignores a blank at the end of a line unless it is escaped.
    if (line.ends_with(' ')) {
        line.insert(line.size() - 1, "\\");
    }
    return line;
}

/// Appends to a file, which is created if missing. Does not follow a symbolic link: git does not
/// either, and it may lead out of the working copy. Returns 0 or the errno of the failure.
int appendLines(const std::string& path, const std::string& lines) {
    constexpr mode_t mode = 0666;
    const FileDescriptor file(::open(
        path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, mode));
    struct stat attributes {};
    if (!file.isOpen() || ::fstat(file.get(), &attributes) != 0) {
        return errno;
    }
    if (!S_ISREG(attributes.st_mode)) {
        return EINVAL;
    }
    char last = '\n';
    if (attributes.st_size > 0 && ::pread(file.get(), &last, 1, attributes.st_size - 1) < 0) {
        return errno;
    }
    return writeAll(file.get(), last == '\n' ? lines : "\n" + lines);
}

class IgnoreTask : public CommandTask {
public:
    using CommandTask::CommandTask;

protected:
    std::optional<CommandOutput> validate() override;
    std::shared_ptr<NEBSourceControlRequest> makeRequest() override {
        return newRequest(NEBSourceControlRequestIgnore, paths(files));
    }
    void finish(Outcome& outcome) override;
    void report(const Outcome& outcome, CommandOutput& output) override;

private:
    [[nodiscard]] std::optional<CommandOutput> refusalOf(const std::string& path);

    /// The lines to write, with line ends.
    std::string _lines;
};

std::optional<CommandOutput> IgnoreTask::refusalOf(const std::string& path) {
    if (auto refused = refusalOfPathOutside(git(), path)) {
        return refused;
    }
    if (auto refused = refusalInsideGitFolder(git(), path)) {
        return refused;
    }
    const std::string name = inQuotes(pathAsSeen(workingCopy(), path));
    if (path == workingCopy().location) {
        return refusal("The whole working copy cannot be ignored.", exitFailed,
                       NEBSourceControlPathInvalidErrorClass);
    }
    if (path.find_first_of("\n\r") != std::string::npos) {
        return refusal("The name " + name + " contains a line end, so .gitignore cannot list it.",
                       exitFailed, NEBSourceControlPathInvalidErrorClass);
    }
    if (git().isTracked(path)) {
        CommandOutput output = refusal(name + " is tracked, so its changes cannot be ignored.",
                                       exitFailed, NEBSourceControlPathInvalidErrorClass);
        addAdvice(output, "'git rm -r --cached' stops tracking it and keeps it on disk.");
        return output;
    }
    return std::nullopt;
}

std::optional<CommandOutput> IgnoreTask::validate() {
    if (auto refused = refusalOutsideWorkingCopy(git())) {
        return refused;
    }
    for (const std::string& path : paths(files)) {
        if (auto refused = refusalOf(path)) {
            return refused;
        }
    }
    for (const std::string& path : paths(files)) {
        if (!git().isIgnored(path)) {
            _lines += lineFor(pathFromTop(workingCopy(), path), isFolderItself(path)) + "\n";
        }
    }
    return std::nullopt;
}

/// The request itself changes nothing.
void IgnoreTask::finish(Outcome& outcome) {
    const std::string ignoreFile = pathByAppendingComponent(workingCopy().location, ".gitignore");
    if (const int failure = _lines.empty() ? 0 : appendLines(ignoreFile, _lines); failure != 0) {
        outcome.error = NEBSourceControlErrorFromFileFailure(
            {failure, "Cannot write " + inQuotes(ignoreFile) + ": " + textOfErrno(failure) + "."});
    }
}

void IgnoreTask::report(const Outcome& /*outcome*/, CommandOutput& output) {
    if (_lines.empty()) {
        output.standardOutput = "Already ignored.\n";
        return;
    }
    output.standardOutput = "Added to " + inQuotes(shown(".gitignore")) + ":\n";
    forEachLine(_lines, [&output](std::string_view line) {
        output.standardOutput += "    " + printable(line) + "\n";
    });
}

constexpr Parameter parameters[] = {
    {files, "An untracked file or folder, which need not exist", Takes::path, Occurs::oneOrMore},
};

}  // namespace

constinit const Command ignoreCommand{
    .name = "ignore",
    .group = changeGroup,
    .summary = "Ignore untracked files",
    .details =
        "Adds the paths to .gitignore at the top of the working copy. To share them, add\n"
        "and commit that file.\n"
        "\n"
        "Example:\n"
        "  nebsc ignore build notes.txt    ignore a folder and a file\n",
    .parameters = parameters,
    .activity = "Reading",
    .run = runTask<IgnoreTask>,
};

}  // namespace neb::nebsc
