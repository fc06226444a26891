// HunkDialogue.h - asks which changes of a file to stage or to unstage, as git-add(1) does with
// --patch.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "CommandFrame/FileChoices.h"
#include "Session/Interruption.h"
#include "Terminal/Colour.h"
#include "Terminal/PatchText.h"

namespace neb::nebsc {

/// Asks about one file after the other. Not thread-safe.
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
    HunkDialogue(Interruption& interruption, std::string_view verb, int descriptor,
                 bool isColoured);

    /// Asks about each change of the file, and notes in it which are chosen.
    [[nodiscard]] Result ask(FileChoices& file);

private:
    /// What follows from an answer.
    enum class Next { choice, file, again, end, interruption, failure };

    /// Shows a change and asks about it.
    [[nodiscard]] Next askAbout(FileChoices& file, std::size_t choice);
    [[nodiscard]] Next answer(FileChoices& file, std::size_t choice, char letter);
    [[nodiscard]] std::string question(const FileChoices& file, std::size_t choice) const;
    [[nodiscard]] std::string help(const FileChoices& file, std::size_t choice) const;
    /// Notes the same for a choice and all after it.
    static void chooseRest(FileChoices& file, std::size_t choice, bool isChosen);
    [[nodiscard]] std::string emphasized(const std::string& text, Colour colour) const;
    [[nodiscard]] bool write(const std::string& text) const;

    Interruption& _interruption;
    std::string _verb;
    int _descriptor;
    bool _isColoured;
    PatchText _patchText;
};

}  // namespace neb::nebsc
