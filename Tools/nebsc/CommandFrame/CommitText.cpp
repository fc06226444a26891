#include "CommandFrame/CommitText.h"

#include <algorithm>
#include <vector>

#include "CommandFrame/BranchQueries.h"
#include "NEBFoundation/NEBValue.h"
#include "Platform/Text.h"
#include "Terminal/Colour.h"
#include "Terminal/LocalTime.h"
#include "Terminal/PrintableText.h"
#include "Terminal/StatusLabels.h"

namespace neb::nebsc {

namespace {

constexpr std::string_view indent = "    ";

/// A kind of references, and how git-log(1) shows one.
struct ReferenceKind {
    std::string_view prefix, label;
    Colour colour;
};

/// The last row matches any name.
constexpr ReferenceKind referenceKinds[] = {
    {"refs/heads/", "", Colour::boldGreen},
    {"refs/remotes/", "", Colour::boldRed},
    {"refs/tags/", "tag: ", Colour::boldYellow},
    {"", "", Colour::boldCyan},
};

constexpr Colour headColour = Colour::boldCyan;

std::string inColour(const std::string& text, Colour colour, const CommitStyle& style) {
    return style.isColoured ? coloured(text, colour) : text;
}

std::string shownReference(std::string_view reference, const CommitStyle& style) {
    const auto* kind = std::ranges::find_if(referenceKinds, [&](const ReferenceKind& row) {
        return reference.starts_with(row.prefix);
    });
    return inColour(std::string(kind->label) + printable(reference.substr(kind->prefix.size())),
                    kind->colour, style);
}

/// Returns the references, the branch of HEAD first.
std::vector<std::string> shownReferences(const LogEntry& entry, const CommitStyle& style) {
    const std::string head = std::string(localBranchPrefix) + style.branch.value_or("");
    const bool isBranch = entry.isHEAD && style.branch &&
                          std::ranges::find(entry.references, head) != entry.references.end();
    std::vector<std::string> shown;
    if (entry.isHEAD) {
        shown.push_back(isBranch
                            ? inColour("HEAD -> ", headColour, style) + shownReference(head, style)
                            : inColour("HEAD", headColour, style));
    }
    for (const std::string& reference : entry.references) {
        if (!isBranch || reference != head) {
            shown.push_back(shownReference(reference, style));
        }
    }
    return shown;
}

}  // namespace

std::string subjectOf(std::string_view message) {
    std::string subject;
    bool isAfter = false;
    forEachField(message, '\n', [&](std::string_view line) {
        line = textByTrimmingLineEnds(line);
        isAfter = isAfter || line.empty();
        if (!isAfter) {
            subject.append(subject.empty() ? "" : " ").append(line);
        }
    });
    return printable(subject);
}

std::string shownId(std::string_view id, const CommitStyle& style) {
    return inColour(printable(id), Colour::yellow, style);
}

std::string decorationOf(const LogEntry& entry, const CommitStyle& style) {
    std::string names;
    if (style.isDecorated) {
        for (const std::string& name : shownReferences(entry, style)) {
            names += (names.empty() ? "" : inColour(", ", Colour::yellow, style)) + name;
        }
    }
    return names.empty() ? names
                         : inColour("(", Colour::yellow, style) + names +
                               inColour(")", Colour::yellow, style);
}

std::string blockOf(const LogEntry& entry, const CommitStyle& style) {
    const std::string decoration = decorationOf(entry, style);
    std::string block =
        "commit " + shownId(entry.id, style) + (decoration.empty() ? "" : " " + decoration) + "\n";
    if (entry.parents.size() > 1) {
        block += "Merge:";
        for (const std::string& parent : entry.parents) {
            block.append(" ").append(parent, 0, shownIdLength);
        }
        block += "\n";
    }
    const bool isKnown = !entry.author.empty() || !entry.authorEmail.empty();
    block += "Author: " +
             (isKnown ? printable(entry.author + " <" + entry.authorEmail + ">") : "(unknown)") +
             "\nDate:   " + (entry.date ? localSecondWithZone(*entry.date) : "") + "\n";
    if (!entry.message.empty()) {
        block += "\n";
        forEachField(entry.message, '\n', [&block](std::string_view line) {
            line = textByTrimmingLineEnds(line);
            block.append(line.empty() ? "" : indent).append(printableLine(line)).append("\n");
        });
    }
    return block;
}

std::string filesOf(const LogEntry& entry, const WorkingCopyLocation& workingCopy,
                    const CommitStyle& style) {
    std::string lines;
    for (const ChangedFile& file : entry.files) {
        lines.append(indent)
            .append(statusColumn(NEBValue(file.status), style.isColoured))
            .append(shownPath(workingCopy, file.path))
            .append("\n");
    }
    return lines;
}

}  // namespace neb::nebsc
