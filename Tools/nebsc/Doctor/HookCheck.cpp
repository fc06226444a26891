#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>

#include "Doctor/Checks.h"
#include "Doctor/ProgramSearch.h"
#include "Platform/FileDescriptor.h"
#include "Platform/PathString.h"
#include "Platform/Text.h"
#include "Terminal/PrintableText.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view blanks = " \t";

/// The hooks of githooks(5), in its order.
constexpr std::string_view hookNames[] = {
    "applypatch-msg",
    "pre-applypatch",
    "post-applypatch",
    "pre-commit",
    "pre-merge-commit",
    "prepare-commit-msg",
    "commit-msg",
    "post-commit",
    "pre-rebase",
    "post-checkout",
    "post-merge",
    "pre-push",
    "pre-receive",
    "update",
    "proc-receive",
    "post-receive",
    "post-update",
    "reference-transaction",
    "push-to-checkout",
    "pre-auto-gc",
    "post-rewrite",
    "sendemail-validate",
    "fsmonitor-watchman",
    "p4-changelist",
    "p4-prepare-changelist",
    "p4-post-changelist",
    "p4-pre-submit",
    "post-index-change",
};

/// Returns the first line of a regular file, without its "\n". Limited to 256 bytes, as the kernel
/// limits a "#!" line.
std::string firstLineOf(const std::string& path) {
    std::array<char, 256> bytes{};
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    const ssize_t count = file.isOpen() ? ::read(file.get(), bytes.data(), bytes.size()) : 0;
    const std::string_view start(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    return std::string(start.substr(0, start.find('\n')));
}

/// Returns the program that env(1) runs: the whole argument, or with -S the first part that sets no
/// variable. Empty for other options.
std::string_view programOfEnv(std::string_view argument) {
    constexpr std::string_view split = "-S";
    if (!argument.starts_with(split)) {
        return argument.starts_with('-') ? std::string_view() : argument;
    }
    for (argument = trimmed(argument.substr(split.size()), blanks); !argument.empty();) {
        const std::string_view part = argument.substr(0, argument.find_first_of(blanks));
        if (part.find('=') == std::string_view::npos) {
            return part.starts_with('-') ? std::string_view() : part;
        }
        argument = trimmed(argument.substr(part.size()), blanks);
    }
    return {};
}

/// Returns the program that a "#!" line needs and that does not exist; empty if none is missing.
/// The kernel passes everything after the interpreter as one argument.
std::string missingProgramOf(const Examination& examination, std::string_view line) {
    const std::string_view command = trimmed(line.substr(2), blanks);
    std::string interpreter(command.substr(0, command.find_first_of(blanks)));
    if (!isProgram(interpreter)) {
        return interpreter;
    }
    if (lastPathComponent(interpreter) != "env") {
        return "";
    }
    const std::string program(programOfEnv(trimmed(command.substr(interpreter.size()), blanks)));
    return program.empty() || examination.isReachable(program) ? "" : program;
}

/// Checks an existing hook. Returns whether git can run it.
bool checkHook(Examination& examination, const std::string& path) {
    struct stat attributes {};
    if (::stat(path.c_str(), &attributes) != 0) {
        examination.add(Health::note, "hook", path + " is a broken symbolic link",
                        "Remove or correct the link.");
        return false;
    }
    if (!S_ISREG(attributes.st_mode)) {
        examination.add(Health::problem, "hook", path + " cannot run: it is not a regular file");
        return false;
    }
    if (::access(path.c_str(), X_OK) != 0) {
        examination.add(Health::note, "hook", path + " is not executable, so git ignores it",
                        "Run: chmod +x " + shellQuoted(path));
        return false;
    }
    const std::string line = firstLineOf(path);
    if (!line.starts_with("#!")) {
        return true;  // a program, or a script that git gives to sh
    }
    if (line.ends_with('\r')) {
        examination.add(Health::problem, "hook",
                        path + " cannot run: its first line ends with a carriage return",
                        "Convert its line endings with: sed -i 's/\\r$//' " + shellQuoted(path));
        return false;
    }
    const std::string program = missingProgramOf(examination, line);
    if (!program.empty()) {
        examination.add(Health::problem, "hook",
                        path + " cannot run: there is no program " + inQuotes(program),
                        "Install it, or correct the hook's first line.");
    }
    return program.empty();
}

}  // namespace

void checkHooks(Examination& examination) {
    const std::string folder = examination.gitPath("hooks");
    const std::string configured =
        trimmedOutputOf(examination.query({"config", "--get", "core.hooksPath"})).value_or("");
    std::error_code ignored;
    if (!configured.empty() && configured != "/dev/null" &&
        !std::filesystem::is_directory(folder, ignored)) {
        examination.add(Health::note, "hooks",
                        "there is no folder " + folder + ", so git runs no hooks",
                        "Create it, or correct the setting core.hooksPath.");
        return;
    }
    std::string working;
    bool hasHooks = false;
    for (const std::string_view name : hookNames) {
        const std::string path = pathByAppendingComponent(folder, name);
        struct stat attributes {};
        if (::lstat(path.c_str(), &attributes) == 0) {
            hasHooks = true;
            if (checkHook(examination, path)) {
                working.append(working.empty() ? "" : ", ").append(name);
            }
        }
    }
    if (!hasHooks) {
        examination.add(Health::ok, "hooks", "none installed");
    } else if (!working.empty()) {
        examination.add(Health::ok, "hooks", working);
    }
}

}  // namespace neb::nebsc
