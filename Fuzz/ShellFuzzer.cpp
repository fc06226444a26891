// Names in a command line, read by the real /bin/sh: it sees exactly the words that are meant, and
// does nothing else. One shell serves for many inputs.

#include <sys/types.h>
#include <unistd.h>

#include "GitOperations/GitShellText.h"
#include "Property.h"

using namespace neb::fuzz;

namespace {

/// A shell that prints how many words it was given and the words, each with a NUL behind it, and
/// then the mark.
class Shell {
public:
    Shell() {
        int input[2];
        int output[2];
        require(::pipe(input) == 0 && ::pipe(output) == 0, "there are pipes");
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
        write("set -f\n");  // wildcards stay as they are: which files match is no matter of words
    }

    std::vector<std::string> wordsOf(const std::string& text) {
        write("set -- " + text + "\nprintf '%s\\0' \"$#\" \"$@\" 'the mark'\n");
        std::string answer;
        const std::string mark("\0the mark\0", 10);
        while (answer.size() < mark.size() || !answer.ends_with(mark)) {
            char piece[4096];
            const ssize_t count = ::read(_output, piece, sizeof piece);
            require(count > 0, "the shell goes on");
            answer.append(piece, static_cast<std::size_t>(count));
        }
        answer.resize(answer.size() - mark.size() + 1);
        std::vector<std::string> words = piecesOf(answer, '\0');
        words.pop_back();
        require(words.front() == std::to_string(words.size() - 1), "no word is lost");
        words.erase(words.begin());
        return words;
    }

private:
    void write(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t count = ::write(_input, text.data(), text.size());
            require(count > 0, "the shell takes its input");
            text.remove_prefix(static_cast<std::size_t>(count));
        }
    }

    int _input = -1;
    int _output = -1;
};

/// The words between blanks.
std::vector<std::string> plainWordsOf(std::string text) {
    for (char& character : text) {
        character = character == '\t' ? ' ' : character;
    }
    std::vector<std::string> words;
    for (std::string& word : piecesOf(text, ' ')) {
        if (!word.empty()) {
            words.push_back(std::move(word));
        }
    }
    return words;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Shell shell;
    const std::string name = bytesOf(data, size);
    if (name.find('\0') != std::string::npos) {
        return 0;  // no argument of a program can hold one, and none is started with it
    }
    const std::vector<std::string> one =
        name.empty() ? std::vector<std::string>{} : std::vector<std::string>{name};
    require(shell.wordsOf(neb::gitShellWord(name)) == one, "a word is one word");
    require(shell.wordsOf(neb::gitShellPattern(name)) == plainWordsOf(name),
            "a pattern is the words between its blanks");
    return 0;
}
