#include "CommandFrame/RepositoryQuestions.h"

#include <algorithm>

#include "Session/GitProgram.h"

namespace neb::nebsc {

namespace {

/// More arguments than this are files.
constexpr std::size_t mostRevisions = 8;

/// "true" or "false", then the top if there is a working copy; a line end after each.
constexpr const char* locationArguments[] = {"rev-parse", "--is-inside-work-tree",
                                             "--show-toplevel"};

bool areBasic(const RepositoryQuestions& questions, const std::string& folder) {
    return (questions.revisions.empty() && !questions.asksBranch && !questions.asksUpstream) ||
           folder.find('\n') != std::string::npos;
}

std::size_t countOfRevisions(const RepositoryQuestions& questions) {
    return std::min(questions.revisions.size(), mostRevisions);
}

std::string_view withoutLastLine(std::string_view text) {
    text.remove_suffix(text.ends_with('\n') ? 1 : 0);
    return text.substr(0, text.rfind('\n') + 1);
}

/// Removes and returns the first line, without its end; absent if there is no complete line.
std::optional<std::string_view> takeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end + 1);
    return line;
}

/// git repeats an argument that it does not understand; no such line has the form of an id, because
/// the arguments end with "}" or are "HEAD".
std::optional<std::string> takeCommit(std::string_view& text) {
    const auto line = takeLine(text);
    return line && isObjectId(*line) ? std::optional(std::string(*line)) : std::nullopt;
}

/// The top may contain line ends, but ends before the commit of HEAD, which is the last line.
void readBasicAnswers(const ChildOutcome& outcome, std::string_view output,
                      RepositoryAnswers& answers) {
    constexpr int isNoCommit = 1;
    const bool hasCommit = outcome.status.isSuccess();
    const std::string_view top = hasCommit ? withoutLastLine(output) : output;
    if (!top.empty()) {
        answers.top = top.substr(0, top.size() - 1);
    }
    if (hasCommit || (answers.top && outcome.status.exitStatus() == isNoCommit)) {
        answers.hasCommits = hasCommit;
    }
}

/// If one of the names is ambiguous, git leaves it out and continues.
void readBranchAnswers(const ChildOutcome& outcome, std::string_view output, bool asksUpstream,
                       RevisionAnswers& answers) {
    const auto head = takeLine(output);
    const auto upstream = takeLine(output);
    const bool isComplete = upstream || !asksUpstream;
    if (head && isComplete == outcome.status.isSuccess()) {
        answers.head = *head;
        answers.upstream = upstream;
    }
}

void readFurtherAnswers(const ChildOutcome& outcome, std::string_view output,
                        const RepositoryQuestions& questions, RepositoryAnswers& answers) {
    answers.top = takeLine(output);
    const auto head = takeCommit(output);
    if (!head) {
        return;
    }
    answers.hasCommits = true;
    for (std::size_t i = 0; i < countOfRevisions(questions); ++i) {
        const auto commit = takeCommit(output);
        if (commit || outcome.status.exitStatus()) {
            answers.revisions.commits[questions.revisions[i]] = commit;
        }
        if (!commit) {
            return;
        }
    }
    if (questions.asksBranch || questions.asksUpstream) {
        readBranchAnswers(outcome, output, questions.asksUpstream, answers.revisions);
    }
}

}  // namespace

std::vector<std::string> argumentsFor(const RepositoryQuestions& questions,
                                      const std::string& folder) {
    std::vector<std::string> arguments(std::begin(locationArguments), std::end(locationArguments));
    if (areBasic(questions, folder)) {
        arguments.insert(arguments.end(), {"--verify", "--quiet", "HEAD"});
        return arguments;
    }
    arguments.emplace_back("HEAD");
    for (std::size_t i = 0; i < countOfRevisions(questions); ++i) {
        arguments.push_back(questions.revisions[i] + "^{commit}");
    }
    if (questions.asksBranch || questions.asksUpstream) {
        arguments.insert(arguments.end(), {"--symbolic-full-name", "HEAD"});
    }
    if (questions.asksUpstream) {
        arguments.emplace_back("@{upstream}");
    }
    return arguments;
}

RepositoryAnswers answersIn(const ChildOutcome& outcome, const RepositoryQuestions& questions,
                            const std::string& folder) {
    RepositoryAnswers answers;
    std::string_view output = outcome.output;
    answers.isRepository = !output.empty();
    if (!takeLine(output)) {
        return answers;
    }
    if (areBasic(questions, folder)) {
        readBasicAnswers(outcome, output, answers);
    } else {
        readFurtherAnswers(outcome, output, questions, answers);
    }
    return answers;
}

/// "A..B" is a range to git if both sides are revisions, whatever else it may stand for.
std::vector<std::string> revisionsToAskFor(const std::string& argument) {
    const auto isAskable = [](const std::string& side) {
        return !side.starts_with('-') && !side.starts_with('^') &&
               side.find("..") == std::string::npos;
    };
    const std::size_t dots = argument.find("..");
    if (dots == std::string::npos) {
        return !argument.empty() && isAskable(argument) ? std::vector{argument}
                                                        : std::vector<std::string>{};
    }
    const std::size_t end = dots + (argument.substr(dots).starts_with("...") ? 3 : 2);
    std::vector<std::string> sides{argument.substr(0, dots), argument.substr(end)};
    if (std::all_of(sides.begin(), sides.end(), [](const auto& side) { return side.empty(); }) ||
        !std::all_of(sides.begin(), sides.end(), isAskable)) {
        return {};
    }
    std::replace(sides.begin(), sides.end(), std::string(), std::string("HEAD"));
    return sides;
}

}  // namespace neb::nebsc
