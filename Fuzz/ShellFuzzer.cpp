// Escapes names for /bin/sh and runs it: it must get exactly the intended arguments and do nothing
// else. One shell is used for many inputs.

#include <sys/types.h>
#include <unistd.h>

#include "GitOperations/GitShellText.h"
#include "Property.h"

using namespace neb::fuzz;

namespace {

/// A shell that prints the number of its arguments, the arguments and an end marker, each with a
/// NUL after it.
class Shell {
public:
    Shell() {
        int input[2];
        int output[2];
        require(::pipe(input) == 0 && ::pipe(output) == 0, "pipes are available");
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::dup2(input[0], 0);
            ::dup2(output[1], 1);
            ::close(input[1]);
            ::close(output[0]);
            ::execl("/bin/sh", "sh", static_cast<char*>(nullptr));
            ::_exit(127);
        }
        ::close(input[0]);
        ::close(output[1]);
        _input = input[1];
        _output = output[0];
        write("set -f\n");  // do not expand wildcards
    }

    std::vector<std::string> argumentsOf(const std::string& text) {
        write("set -- " + text + "\nprintf '%s\\0' \"$#\" \"$@\" 'the end marker'\n");
        std::string printed;
        const std::string endMarker("\0the end marker\0", 16);
        while (printed.size() < endMarker.size() || !printed.ends_with(endMarker)) {
            char bytes[4096];
            const ssize_t count = ::read(_output, bytes, sizeof bytes);
            require(count > 0, "the shell is still running");
            printed.append(bytes, static_cast<std::size_t>(count));
        }
        printed.resize(printed.size() - endMarker.size() + 1);
        std::vector<std::string> arguments = split(printed, '\0');
        arguments.pop_back();
        require(arguments.front() == std::to_string(arguments.size() - 1), "no argument is lost");
        arguments.erase(arguments.begin());
        return arguments;
    }

private:
    void write(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t count = ::write(_input, text.data(), text.size());
            require(count > 0, "the shell reads its input");
            text.remove_prefix(static_cast<std::size_t>(count));
        }
    }

    int _input = -1;
    int _output = -1;
};

/// Returns the arguments between spaces.
std::vector<std::string> expectedArgumentsOf(std::string text) {
    for (char& character : text) {
        character = character == '\t' ? ' ' : character;
    }
    std::vector<std::string> arguments;
    for (std::string& word : split(text, ' ')) {
        if (!word.empty()) {
            arguments.push_back(std::move(word));
        }
    }
    return arguments;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Shell shell;
    const std::string name = bytesOf(data, size);
    if (name.find('\0') != std::string::npos) {
        return 0;  // no argument can contain a NUL character
    }
    const std::vector<std::string> one =
        name.empty() ? std::vector<std::string>{} : std::vector<std::string>{name};
    require(shell.argumentsOf(neb::gitShellWord(name)) == one, "an escaped name is one argument");
    require(shell.argumentsOf(neb::gitShellPattern(name)) == expectedArgumentsOf(name),
            "a pattern is the arguments between its spaces");
    return 0;
}
