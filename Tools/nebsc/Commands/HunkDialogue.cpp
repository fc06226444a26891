#include "Commands/HunkDialogue.h"

#include "Platform/FileDescriptor.h"
#include "Platform/Text.h"
#include "Session/LineInput.h"
#include "Terminal/Colour.h"

namespace neb::nebsc {

namespace {

using Kind = FileChoice::Kind;

std::string_view nameOf(Kind kind) {
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

}  // namespace

HunkDialogue::HunkDialogue(Interruption& interruption, std::string_view verb, int descriptor,
                           bool isColoured)
    : _interruption(interruption),
      _verb(verb),
      _descriptor(descriptor),
      _isColoured(isColoured),
      _patchText(descriptor, isColoured) {}

HunkDialogue::Result HunkDialogue::ask(FileChoices& file) {
    if (!write(_patchText.textOf(file.header()))) {
        return Result::failed;
    }
    std::size_t choice = 0;
    while (choice < file.choices().size()) {
        switch (askAbout(file, choice)) {
            case Next::choice:
                ++choice;
                break;
            case Next::again:
                break;
            case Next::file:
                return Result::answered;
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

HunkDialogue::Next HunkDialogue::askAbout(FileChoices& file, std::size_t choice) {
    if (!write(_patchText.textOf(file.text(choice)) +
               emphasized(question(file, choice), Colour::boldBlue) + " ")) {
        return Next::failure;
    }
    const std::optional<InputLine> line = readInputLine(_interruption);
    if (!line) {
        return Next::interruption;
    }
    if (line->isEnd) {
        return write("\n") ? Next::end : Next::failure;
    }
    const std::string_view text = trimmed(line->text);
    return answer(file, choice, text.size() == 1 ? lowercaseASCII(text.front()) : '?');
}

HunkDialogue::Next HunkDialogue::answer(FileChoices& file, std::size_t choice, char letter) {
    switch (letter) {
        case 'y':
        case 'n':
            file.choose(choice, letter == 'y');
            return Next::choice;
        case 'a':
        case 'd':
            chooseRest(file, choice, letter == 'a');
            return Next::file;
        case 'q':
            return Next::end;
        case 's':
            if (file.canSplit(choice)) {
                const std::size_t parts = file.split(choice);
                return write(emphasized("Split into " + std::to_string(parts) + " hunks.",
                                        Colour::bold) +
                             "\n")
                           ? Next::again
                           : Next::failure;
            }
            break;
        default:
            break;
    }
    return write(help(file, choice)) ? Next::again : Next::failure;
}

std::string HunkDialogue::question(const FileChoices& file, std::size_t choice) const {
    return "(" + std::to_string(choice + 1) + "/" + std::to_string(file.choices().size()) + ") " +
           _verb + " " + std::string(nameOf(file.choices()[choice].kind)) + " [y,n,q,a,d" +
           (file.canSplit(choice) ? ",s" : "") + ",?]?";
}

std::string HunkDialogue::help(const FileChoices& file, std::size_t choice) const {
    const std::string verb = lowercaseASCII(_verb);
    const std::string change = " " + std::string(nameOf(file.choices()[choice].kind));
    std::string text = "y - " + verb + change + "\nn - do not " + verb + change +
                       "\nq - quit; do not " + verb + change +
                       " or any of the remaining ones\na - " + verb + change +
                       " and all later ones in the file\nd - do not " + verb + change +
                       " or any of the later ones in the file\n";
    if (file.canSplit(choice)) {
        text += "s - split the hunk into smaller ones\n";
    }
    return emphasized(text + "? - show this help", Colour::boldRed) + "\n";
}

void HunkDialogue::chooseRest(FileChoices& file, std::size_t choice, bool isChosen) {
    for (std::size_t i = choice; i < file.choices().size(); ++i) {
        file.choose(i, isChosen);
    }
}

std::string HunkDialogue::emphasized(const std::string& text, Colour colour) const {
    return _isColoured ? coloured(text, colour) : text;
}

bool HunkDialogue::write(const std::string& text) const {
    return writeAll(_descriptor, text) == 0;
}

}  // namespace neb::nebsc
