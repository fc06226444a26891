#include "NEBFoundation/NEBSourceControlErrorTextNormalizer.h"

#include <algorithm>
#include <iterator>

#include "Platform/Text.h"

namespace neb {

namespace {

bool startsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

bool isWordCharacter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= '0' && character <= '9');
}

/// Returns the part of a name that identifies the failure, with the closing quote: the suffix of a
/// lock file, the prefix of a remote helper, or the separator of a URL.
std::string_view keptPartOf(std::string_view name) {
    return name.ends_with("index.lock")                 ? "index.lock'"
           : name.ends_with(".lock")                    ? ".lock'"
           : name.starts_with("remote-")                ? "remote-'"
           : name.find("://") != std::string_view::npos ? "://'"
                                                        : "'";
}

/// Returns the line without the preceding progress of a rebase, which ends with a carriage return.
std::string_view withoutProgress(std::string_view line) {
    constexpr std::string_view progress = "rebasing (";
    while (startsWith(line, progress) && line.find('\r') != std::string_view::npos) {
        line.remove_prefix(line.find('\r') + 1);
    }
    return line;
}

/// Returns the part of the line before a name without quotes, the subject of a commit or a message
/// of the remote; the whole line if it has none of these.
std::string_view messageOf(std::string_view line) {
    constexpr std::string_view prefixes[] = {"conflict (",
                                             "auto-merging ",
                                             "fatal: no such path ",
                                             "fatal: remote error: ",
                                             "on branch ",
                                             "could not apply ",
                                             "error: could not apply ",
                                             "error: could not revert ",
                                             "dropping ",
                                             "applying: ",
                                             "patch failed at ",
                                             "head is now at ",
                                             "previous head position was "};
    constexpr std::string_view knownReasons[] = {
        "hook declined)", "(branch is currently checked out)", "(shallow update not allowed)",
        "repository not found", "repository not exported"};
    const bool isKnown = std::any_of(
        std::begin(knownReasons), std::end(knownReasons),
        [line](std::string_view reason) { return line.find(reason) != std::string_view::npos; });
    for (const std::string_view prefix : prefixes) {
        if (startsWith(line, prefix) && !isKnown) {
            return line.substr(0, prefix.size());
        }
    }
    constexpr std::string_view rejected = "[remote rejected]";
    const std::size_t offset = line.find(rejected);
    return offset != std::string_view::npos && !isKnown ? line.substr(0, offset + rejected.size())
                                                        : line;
}

/// Returns the line without the names between quotes, so that no name of a file, branch or
/// repository counts as a message. The quotes stay. An apostrophe inside a word is not a quote.
std::string withoutNames(std::string_view line) {
    const auto isOpening = [line](std::size_t i) {
        return line[i] == '\'' && (i == 0 || !isWordCharacter(line[i - 1]));
    };
    const auto isClosing = [line](std::size_t i) {
        return line[i] == '\'' && (i + 1 == line.size() || !isWordCharacter(line[i + 1]));
    };
    // The end of the last closing quote: after it, no search for a closing quote can succeed.
    std::size_t lastClosing = line.size();
    while (lastClosing > 0 && !isClosing(lastClosing - 1)) {
        --lastClosing;
    }
    std::string text;
    for (std::size_t i = 0; i < line.size(); ++i) {
        text += line[i];
        if (isOpening(i) && i + 1 < lastClosing) {
            std::size_t end = i + 1;
            while (!isClosing(end)) {
                ++end;
            }
            const std::string_view name = line.substr(i + 1, end - i - 1);
            text += keptPartOf(name);
            i = end;
        }
    }
    return text;
}

/// Returns the lines for which `isKept` is true, without the names in them.
template <typename Predicate>
std::string linesOf(std::string_view text, const Predicate& isKept) {
    std::string kept;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::size_t length = end == std::string_view::npos ? text.size() : end + 1;
        if (isKept(text.substr(0, length))) {
            kept += withoutNames(messageOf(withoutProgress(text.substr(0, length))));
            kept += kept.ends_with('\n') ? "" : "\n";
        }
        text.remove_prefix(length);
    }
    return kept;
}

/// Whether the line is a message of git: not from the remote, not an entry of a list, not the URL
/// of a transfer.
bool isStatement(std::string_view line) {
    constexpr std::string_view others[] = {"remote:", "\t", "  ", "to ", "from ", "#"};
    return std::none_of(std::begin(others), std::end(others),
                        [line](std::string_view other) { return startsWith(line, other); });
}

/// Whether the warning explains why a name is unknown: git ignores references that it cannot read.
bool isCause(std::string_view warning) {
    return startsWith(warning, "warning: ignoring broken ref ") ||
           startsWith(warning, "warning: ignoring dangling symref ");
}

}  // namespace

std::string NEBSourceControlStatementsInText(std::string_view text) {
    return linesOf(lowercaseASCII(text), isStatement);
}

std::string NEBSourceControlStatementsWithoutAsides(std::string_view statements) {
    return linesOf(statements, [](std::string_view line) {
        return (!startsWith(line, "warning:") && !startsWith(line, "hint:")) || isCause(line);
    });
}

std::string NEBSourceControlFailuresAmongStatements(std::string_view statements) {
    return linesOf(statements, [](std::string_view line) {
        return startsWith(line, "fatal:") || startsWith(line, "error:");
    });
}

}  // namespace neb
