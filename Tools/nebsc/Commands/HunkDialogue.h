// HunkDialogue.h - asks which changes of a file to stage or to unstage, as git-add(1) does with
// --patch.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "CommandFrame/FileChoices.h"
#include "CommandFrame/GitQueries.h"
#include "Commands/HunkKeys.h"
#include "Terminal/Colour.h"
#include "Terminal/PatchText.h"

namespace neb::nebsc {

/// Asks about one file after the other. For the main thread.
class HunkDialogue {
public:
    enum class Result {
        /// The file is done.
        answered,
        /// The user wants no further questions, or the input has ended.
        quit,
        /// A signal arrived, or the time is up.
        interrupted,
        /// The changes cannot be shown.
        failed,
    };

    /// `verb` is what is asked for: "Stage". Reads standard input, and writes to the descriptor.
    HunkDialogue(const GitQueries& git, std::string_view verb, int descriptor, bool isColoured);

    /// Asks about each change of the file, and notes in it which are taken.
    [[nodiscard]] Result ask(FileChoices& file);

private:
    /// The change that is asked about; after the last one if all are decided.
    struct Place {
        FileChoices& file;
        std::size_t choice = 0;
    };
    /// What follows from an answer: the next question, or the end.
    enum class Next { question, end, interruption, failure };

    /// Shows the change and asks about it.
    [[nodiscard]] Next askAbout(Place& place);
    /// Carries out an answer, and goes to the change that is asked about next.
    [[nodiscard]] Next carryOut(const HunkAnswer& answer, Place& place);
    /// Carries out the answers that go to another change: 'j', 'J', 'k', 'K', 'g' and '/'.
    [[nodiscard]] Next go(const HunkAnswer& answer, Place& place);
    [[nodiscard]] Next split(Place& place);
    [[nodiscard]] Next edit(Place& place);
    /// Decides a change and, for 'a' and 'd', the later ones that are not decided.
    static void decide(char key, Place& place);

    [[nodiscard]] HunkQuestion questionAt(const Place& place) const;
    /// Asks for a line, and stores it.
    [[nodiscard]] Next ask(const std::string& question, std::string& answer);
    /// Writes lines that are no part of a change; the last one without its end.
    [[nodiscard]] Next say(const std::string& text, Colour colour = Colour::boldRed);
    [[nodiscard]] std::string emphasized(const std::string& text, Colour colour) const;
    [[nodiscard]] bool write(const std::string& text) const;

    const GitQueries& _git;
    std::string _verb;
    int _descriptor;
    bool _isColoured;
    bool _hasEditor;
    PatchText _patchText;
};

}  // namespace neb::nebsc
