#include "Commands/HunkKeys.h"

#include "Commands/HunkNavigation.h"
#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

/// A key, and its line of the help, in which VERB and CHANGE stand for what is asked.
struct Key {
    char letter;
    std::string_view help;
    /// Returns whether the key is offered; null if it always is.
    bool (*isPossible)(const HunkQuestion& question) = nullptr;
};

bool hasSeveral(const HunkQuestion& question) {
    return question.file.choices().size() > 1;
}

constexpr Key keys[] = {
    {'y', "VERB CHANGE"},
    {'n', "do not VERB CHANGE"},
    {'q', "quit; do not VERB CHANGE or any of the remaining ones"},
    {'a', "VERB CHANGE and all later ones in the file"},
    {'d', "do not VERB CHANGE or any of the later ones in the file"},
    {'k', "leave CHANGE undecided, go to the previous undecided one",
     [](const HunkQuestion& question) {
         return previousOpen(question.file, question.choice).has_value();
     }},
    {'K', "leave CHANGE undecided, go to the previous one",
     [](const HunkQuestion& question) { return question.choice > 0; }},
    {'j', "leave CHANGE undecided, go to the next undecided one",
     [](const HunkQuestion& question) {
         return nextOpen(question.file, question.choice).has_value();
     }},
    {'J', "leave CHANGE undecided, go to the next one",
     [](const HunkQuestion& question) {
         return question.choice + 1 < question.file.choices().size();
     }},
    {'g', "go to the change with a number", hasSeveral},
    {'/', "search for a change that matches a regular expression", hasSeveral},
    {'s', "split the hunk into smaller ones",
     [](const HunkQuestion& question) { return question.file.canSplit(question.choice); }},
    {'e', "edit the hunk",
     [](const HunkQuestion& question) {
         return question.hasEditor && question.file.canEdit(question.choice);
     }},
    {'?', "show this help"},
};

bool isPossible(const Key& key, const HunkQuestion& question) {
    return key.isPossible == nullptr || key.isPossible(question);
}

std::string_view nameOf(FileChoice::Kind kind) {
    using Kind = FileChoice::Kind;
    switch (kind) {
        case Kind::hunk:
            return "this hunk";
        case Kind::modeChange:
            return "this change of the mode";
        case Kind::rename:
            return "this rename";
        case Kind::addition:
            return "this new file";
        case Kind::deletion:
            return "this deletion";
        case Kind::typeChange:
            break;
    }
    return "this change of the type";
}

std::string_view changeOf(const HunkQuestion& question) {
    return nameOf(question.file.choices()[question.choice].kind);
}

std::string_view noteOn(Decision decision) {
    switch (decision) {
        case Decision::taken:
            return " (was: y)";
        case Decision::left:
            return " (was: n)";
        case Decision::open:
            break;
    }
    return "";
}

void replace(std::string& text, std::string_view name, std::string_view value) {
    if (const std::size_t at = text.find(name); at != std::string::npos) {
        text.replace(at, name.size(), value);
    }
}

}  // namespace

std::string textOf(const HunkQuestion& question) {
    std::string letters;
    for (const Key& key : keys) {
        if (isPossible(key, question)) {
            letters.append(letters.empty() ? "" : ",").append(1, key.letter);
        }
    }
    const std::vector<FileChoice>& choices = question.file.choices();
    return "(" + std::to_string(question.choice + 1) + "/" + std::to_string(choices.size()) + ") " +
           std::string(question.verb) + " " + std::string(changeOf(question)) +
           std::string(noteOn(choices[question.choice].decision)) + " [" + letters + "]?";
}

std::string helpFor(const HunkQuestion& question) {
    std::string help;
    for (const Key& key : keys) {
        if (isPossible(key, question)) {
            std::string text(key.help);
            replace(text, "VERB", lowercaseASCII(question.verb));
            replace(text, "CHANGE", changeOf(question));
            help.append(help.empty() ? "" : "\n").append(1, key.letter).append(" - ").append(text);
        }
    }
    return help;
}

HunkAnswer answerTo(const HunkQuestion& question, std::string_view line) {
    const std::string_view text = trimmed(line);
    if (text.empty()) {
        return {};
    }
    const char typed = text.front();
    const char letter = typed == 'J' || typed == 'K' ? typed : lowercaseASCII(typed);
    const std::string_view argument = trimmed(text.substr(1));
    const bool takesArgument = letter == 'g' || letter == '/';
    for (const Key& key : keys) {
        if (key.letter == letter && isPossible(key, question) &&
            (argument.empty() || takesArgument)) {
            return {letter, std::string(argument)};
        }
    }
    return {};
}

}  // namespace neb::nebsc
