#include "Commands/HunkDialogue.h"

#include "Commands/HunkEditing.h"
#include "Commands/HunkNavigation.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Text.h"
#include "Session/Editor.h"
#include "Session/LineInput.h"
#include "Terminal/Colour.h"

namespace neb::nebsc {

HunkDialogue::HunkDialogue(const GitQueries& git, std::string_view verb, int descriptor,
                           bool isColoured)
    : _git(git),
      _verb(verb),
      _descriptor(descriptor),
      _isColoured(isColoured),
      _hasEditor(canEdit()),
      _patchText(descriptor, isColoured) {}

HunkDialogue::Result HunkDialogue::ask(FileChoices& file) {
    if (!write(_patchText.textOf(file.header()))) {
        return Result::failed;
    }
    Place place{file};
    while (place.choice < file.choices().size()) {
        switch (askAbout(place)) {
            case Next::question:
                break;
            case Next::end:
                return Result::quit;
            case Next::interruption:
                return Result::interrupted;
            case Next::failure:
                return Result::failed;
        }
    }
    return Result::answered;
}

HunkDialogue::Next HunkDialogue::askAbout(Place& place) {
    if (!write(_patchText.textOf(place.file.text(place.choice)))) {
        return Next::failure;
    }
    std::string line;
    const Next next = ask(textOf(questionAt(place)), line);
    return next == Next::question ? carryOut(answerTo(questionAt(place), line), place) : next;
}

HunkDialogue::Next HunkDialogue::carryOut(const HunkAnswer& answer, Place& place) {
    switch (answer.key) {
        case 'q':
            return Next::end;
        case 's':
            return split(place);
        case 'e':
            return edit(place);
        case '?':
            return say(helpFor(questionAt(place)));
        case 'y':
        case 'n':
        case 'a':
        case 'd':
            decide(answer.key, place);
            return Next::question;
        default:
            return go(answer, place);
    }
}

void HunkDialogue::decide(char key, Place& place) {
    const Decision decision = key == 'y' || key == 'a' ? Decision::taken : Decision::left;
    place.file.decide(place.choice, decision);
    if (key == 'a' || key == 'd') {
        for (auto next = nextOpen(place.file, place.choice); next;
             next = nextOpen(place.file, *next)) {
            place.file.decide(*next, decision);
        }
    }
    place.choice = openAfter(place.file, place.choice);
}

HunkDialogue::Next HunkDialogue::go(const HunkAnswer& answer, Place& place) {
    if (answer.key == 'j' || answer.key == 'k') {
        const auto choice = answer.key == 'j' ? nextOpen(place.file, place.choice)
                                              : previousOpen(place.file, place.choice);
        place.choice = choice.value_or(place.choice);
        return Next::question;
    }
    if (answer.key == 'J' || answer.key == 'K') {
        place.choice = answer.key == 'J' ? place.choice + 1 : place.choice - 1;
        return Next::question;
    }
    const bool isSearch = answer.key == '/';
    std::string argument = answer.argument;
    if (argument.empty()) {
        const Next next =
            isSearch
                ? ask("Search for:", argument)
                : ask(listOfChoices(place.file) + "Go to the change with the number:", argument);
        if (next != Next::question || argument.empty()) {
            return next;
        }
    }
    const ChoiceFound found = isSearch
                                  ? choiceLike(place.file, place.choice, argument)
                                  : choiceWithNumber(place.file, std::string(trimmed(argument)));
    if (!found.failure.empty()) {
        return say(found.failure + ".");
    }
    place.choice = found.choice;
    return Next::question;
}

HunkDialogue::Next HunkDialogue::split(Place& place) {
    const std::size_t parts = place.file.split(place.choice);
    return say("Split into " + std::to_string(parts) + " hunks.", Colour::bold);
}

HunkDialogue::Next HunkDialogue::edit(Place& place) {
    const std::string failure = editHunk(_git, place.file, place.choice);
    if (failure.empty()) {
        place.choice = openAfter(place.file, place.choice);
        return Next::question;
    }
    return say(failure);
}

HunkQuestion HunkDialogue::questionAt(const Place& place) const {
    return {place.file, place.choice, _verb, _hasEditor};
}

HunkDialogue::Next HunkDialogue::ask(const std::string& question, std::string& answer) {
    if (!write(emphasized(question, Colour::boldBlue) + " ")) {
        return Next::failure;
    }
    std::optional<InputLine> line = readInputLine(_git.interruption());
    if (!line) {
        return Next::interruption;
    }
    if (line->isEnd) {
        return write("\n") ? Next::end : Next::failure;
    }
    answer = std::move(line->text);
    return Next::question;
}

HunkDialogue::Next HunkDialogue::say(const std::string& text, Colour colour) {
    return write(emphasized(text, colour) + "\n") ? Next::question : Next::failure;
}

std::string HunkDialogue::emphasized(const std::string& text, Colour colour) const {
    return _isColoured ? coloured(text, colour) : text;
}

bool HunkDialogue::write(const std::string& text) const {
    return writeAll(_descriptor, text) == 0;
}

}  // namespace neb::nebsc
