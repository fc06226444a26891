#include "Commands/HunkEditing.h"

#include <unistd.h>

#include "Commands/TextEditing.h"
#include "Platform/Text.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

std::string guide(PatchUse use) {
    const bool isForward = use == PatchUse::forward;
    const std::string removed(1, isForward ? '-' : '+'), added(1, isForward ? '+' : '-');
    return "# ---\n"
           "# To leave out a line that begins with '" +
           removed + "', put a blank in place of the '" + removed +
           "'.\n"
           "# To leave out a line that begins with '" +
           added +
           "', delete it.\n"
           "# Lines that begin with '#' are removed. If all lines of the hunk are deleted,\n"
           "# it stays as it was.\n";
}

std::string withoutComments(std::string_view text) {
    std::string lines;
    forEachLine(text, [&lines](std::string_view line) {
        if (!line.starts_with('#')) {
            lines.append(line).append(1, '\n');
        }
    });
    return lines;
}

}  // namespace

std::string editHunk(const GitQueries& git, FileChoices& file, std::size_t choice) {
    const FileChoice& asked = file.choices()[choice];
    std::string text = asked.draft.empty()
                           ? file.text(choice)
                           : "# The edited hunk does not apply: " + asked.draftFailure + ".\n" +
                                 withoutComments(asked.draft);
    EditedText edited = editText(git, "addp-hunk-edit.diff", text + guide(file.use()));
    ::unlink(edited.file.c_str());
    if (!edited.failure.empty()) {
        return printable(edited.failure) + "; the hunk is as it was.";
    }
    if (file.edit(choice, std::move(edited.text))) {
        return "";
    }
    return asked.draft.empty() ? "The hunk is as it was."
                               : "The edited hunk does not apply: " + asked.draftFailure +
                                     ". The key 'e' lets you edit it again.";
}

}  // namespace neb::nebsc
