#include <algorithm>
#include <filesystem>
#include <system_error>

#include "Commands/Commands.h"
#include "Completion/CompletionPoint.h"
#include "Completion/RepositoryNames.h"
#include "Platform/Text.h"
#include "Session/StartFolder.h"

namespace neb::nebsc {

namespace fs = std::filesystem;

namespace {

/// The paths that the shell adds by itself.
enum class Paths { none, files, folders };

struct Completion {
    Paths paths = Paths::none;
    std::vector<NameInRepository> words{};
};

/// Those in the current folder, or below it, with a "/" behind a folder. A name that begins with a
/// dot must be typed so, as in a shell.
std::vector<NameInRepository> pathsThatBeginWith(const std::string& text, bool foldersAlone) {
    const std::size_t slash = text.rfind('/');
    const std::string head = slash == std::string::npos ? "" : text.substr(0, slash + 1);
    const std::string start = text.substr(head.size());
    std::vector<NameInRepository> paths;
    std::error_code failure;
    for (fs::directory_iterator entry(head.empty() ? "." : head, failure), end;
         !failure && entry != end; entry.increment(failure)) {
        const std::string name = entry->path().filename().string();
        std::error_code ignored;
        const bool isFolder = entry->is_directory(ignored);
        if (name.starts_with(start) && (isFolder || !foldersAlone) &&
            (!name.starts_with('.') || !start.empty())) {
            paths.push_back({head + name + (isFolder ? "/" : ""), ""});
        }
    }
    std::sort(paths.begin(), paths.end(),
              [](const auto& left, const auto& right) { return left.name < right.name; });
    return paths;
}

/// Finds what the value at a point can become.
class ValueCompletion {
public:
    ValueCompletion(const CompletionPoint& point, const HostSession& session)
        : _point(point), _names(session), _head(point.head), _text(point.text) {}

    [[nodiscard]] Completion find();

private:
    [[nodiscard]] std::vector<NameInRepository> pairs();
    [[nodiscard]] std::vector<NameInRepository> sidesOfRange();
    [[nodiscard]] std::vector<NameInRepository> choices() const;
    void findPaths(Completion& completion) const;
    void moveHeadTo(std::size_t end) {
        _head += _text.substr(0, end);
        _text.erase(0, end);
    }
    /// The remote that the word before names.
    [[nodiscard]] std::string remote() const {
        return _point.formerWords.empty() ? "" : _point.formerWords.back();
    }

    const CompletionPoint& _point;
    RepositoryNames _names;
    std::string _head;
    std::string _text;
};

/// Behind the colon stand the remote's branches, before it those of this repository.
std::vector<NameInRepository> ValueCompletion::pairs() {
    const std::size_t colon = _text.find(':');
    if (colon == std::string::npos) {
        return _names.branches();
    }
    moveHeadTo(colon + 1);
    return _names.branchesOf(remote());
}

std::vector<NameInRepository> ValueCompletion::sidesOfRange() {
    const std::size_t dots = _text.rfind("..");
    if (dots != std::string::npos && dots > 0) {
        moveHeadTo(dots + 2);
    }
    return _names.revisions();
}

/// "auto|always|never"
std::vector<NameInRepository> ValueCompletion::choices() const {
    const std::string_view name = _point.parameter->valueName;
    std::vector<NameInRepository> words;
    if (name.find('|') != std::string_view::npos) {
        forEachPiece(name, '|', [&words](std::string_view word) {
            words.push_back({std::string(word), ""});
        });
    }
    return words;
}

/// In place of the shell, which would look for them in its own folder.
void ValueCompletion::findPaths(Completion& completion) const {
    if (completion.paths != Paths::none) {
        const auto paths = pathsThatBeginWith(_text, completion.paths == Paths::folders);
        completion.words.insert(completion.words.end(), paths.begin(), paths.end());
        completion.paths = Paths::none;
    }
}

Completion ValueCompletion::find() {
    Completion completion;
    auto& [paths, words] = completion;
    switch (_point.parameter->takes) {
        case Takes::nothing:
            break;
        case Takes::text:
            words = choices();
            break;
        case Takes::path:
        case Takes::pathAsWritten:
            paths = Paths::files;
            break;
        case Takes::folder:
            paths = Paths::folders;
            break;
        case Takes::branch:
            words = _names.branches();
            break;
        case Takes::revision:
            words = _names.revisions();
            break;
        case Takes::revisionOrPath:
            words = sidesOfRange();
            paths = Paths::files;
            break;
        case Takes::remote:
            words = _names.remotes();
            break;
        case Takes::remoteBranch:
            words = _names.remoteBranches();
            break;
        case Takes::branchOfRemote:
            words = _names.branchesOf(remote());
            break;
        case Takes::branchPair:
            words = pairs();
            break;
        case Takes::location:
            words = _names.locations();
            paths = Paths::folders;
            break;
    }
    if (!_point.folders.empty()) {
        findPaths(completion);
    }
    std::erase_if(words, [this](const NameInRepository& word) {
        return !word.name.starts_with(_text) || word.name.starts_with('-');
    });
    for (NameInRepository& word : words) {
        word.name.insert(0, _head);
    }
    return completion;
}

std::vector<NameInRepository> commandsAt(const CompletionPoint& point) {
    std::vector<NameInRepository> words;
    for (const Command* command : point.commands) {
        if (command->group != hiddenGroup && command->name.starts_with(point.text)) {
            words.push_back({std::string(command->name), std::string(command->summary)});
        }
    }
    constexpr std::string_view help = "help";
    if (point.command == nullptr && !point.isForHelp && help.starts_with(point.text)) {
        words.push_back({std::string(help), "Say what a command does, with an example"});
    }
    return words;
}

std::vector<NameInRepository> optionsAt(const CompletionPoint& point) {
    std::vector<NameInRepository> words;
    for (const Parameter* option : optionsOf(point.command)) {
        const auto& former = point.formerOptions;
        if (!option->isRepeated() &&
            std::find(former.begin(), former.end(), option) != former.end()) {
            continue;
        }
        for (const std::string_view spelling : spellingsOf(*option)) {
            if (spelling.starts_with(point.text)) {
                words.push_back({std::string(spelling), std::string(option->help)});
            }
        }
    }
    return words;
}

Completion completionAt(const CompletionPoint& point, const HostSession& session) {
    switch (point.kind) {
        case CompletionPoint::Kind::nothing:
            break;
        case CompletionPoint::Kind::command:
            return {.words = commandsAt(point)};
        case CompletionPoint::Kind::option:
            return {.words = optionsAt(point)};
        case CompletionPoint::Kind::value:
            return ValueCompletion(point, session).find();
    }
    return {};
}

/// What would break a line, or is not what the repository has, cannot be given to a shell.
bool isPlain(std::string_view text) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    return text.find(replacement) == std::string_view::npos &&
           std::all_of(text.begin(), text.end(), [](char character) {
               const auto byte = static_cast<unsigned char>(character);
               return byte >= 0x20 && byte != 0x7F;
           });
}

std::string linesOf(const Completion& completion) {
    static constexpr const char* directions[] = {"none\n", "files\n", "folders\n"};
    std::string lines = directions[static_cast<std::size_t>(completion.paths)];
    for (const auto& [name, description] : completion.words) {
        if (isPlain(name)) {
            const bool isShown = !description.empty() && isPlain(description);
            lines.append(name).append(isShown ? "\t" : "").append(isShown ? description : "");
            lines += '\n';
        }
    }
    return lines;
}

CommandOutput run(const CommandCall& call) {
    const CompletionPoint point = completionPointOf(call.arguments.all("WORD"));
    const bool isThere = point.kind != CompletionPoint::Kind::value || !enterFolders(point.folders);
    return {.standardOutput = linesOf(isThere ? completionAt(point, call.session) : Completion()),
            .standardError = {},
            .exitStatus = exitDone};
}

constexpr Parameter parameters[] = {
    {"WORD", "The words behind \"nebsc\"; the last one is being typed, and may be empty",
     Takes::text, Occurs::anyNumber},
};

}  // namespace

constinit const Command completeCommand{
    .name = "complete",
    .group = hiddenGroup,
    .summary = "Say what the word that is being typed can become",
    .details =
        "For the completion scripts of shells. The first line says which paths the shell adds\n"
        "by itself: none, files or folders (of \"--option=path\" those behind the \"=\"; none\n"
        "behind -C, which has its own files among the words). Each\n"
        "line behind it is a word that begins like the one being typed and, behind a TAB, what\n"
        "may be shown beside it. Whatever fails leaves words out. It takes a second at most.\n\n"
        "Example:\n"
        "  nebsc complete -- checkout ma    the branches and tags that begin with \"ma\"\n",
    .parameters = parameters,
    .run = run,
};

}  // namespace neb::nebsc
