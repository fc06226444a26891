#include "NEBFoundation/NEBSourceControlArgumentInjection.h"

#include <algorithm>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

using Injection = NEBSourceControlArgumentInjection;

/// Separate arguments in a command line of the shell. A line end in an argument is quoted.
constexpr std::string_view blanks = " \t";

/// Returns the text that the command line holds for a value of any kind; absent for no value.
std::optional<std::string> textOf(const NEBValue& value) {
    return value.isPresent() ? std::optional(value.description()) : std::nullopt;
}

/// Returns the first of the blank-separated parts that begins with "-"; absent when none does.
std::optional<std::string> firstOptionLikePart(std::string_view text) {
    bool isAtStart = true;
    for (std::size_t position = 0; position < text.size(); ++position) {
        if (isAtStart && text[position] == '-') {
            const std::string_view rest = text.substr(position);
            return std::string(rest.substr(0, rest.find_first_of(blanks)));
        }
        isAtStart = blanks.find(text[position]) != std::string_view::npos;
    }
    return std::nullopt;
}

std::string_view withoutFirstPart(std::string_view text) {
    return text.substr(std::min(text.find_first_of(blanks), text.size()));
}

std::string fieldOf(NEBConstant option) {
    return "options." + std::string(option);
}

/// Finds the first value that git would take for an option.
class OptionSearch {
public:
    OptionSearch(const NEBSourceControlRequest& request, std::uint32_t exposedValues)
        : _request(request), _exposedValues(exposedValues) {}

    std::optional<Injection> run() {
        if (_request.sourceTree) {
            check(NEBSourceControlExposedLocation, "sourceTree.location",
                  _request.sourceTree->location);
        }
        check(NEBSourceControlExposedDestination, "destination", textOf(_request.destination));
        check(NEBSourceControlExposedStartingRevision, "startingRevision",
              textOf(_request.startingRevision));
        checkStartingRevisions();
        check(NEBSourceControlExposedEndingRevision, "endingRevision",
              textOf(_request.endingRevision));
        for (std::size_t i = 0; i < _request.fileCount(); ++i) {
            checkFile(i);
        }
        checkOption(NEBSourceControlExposedBranch, NEBSourceControlRequestOptionBranch);
        const std::string branch =
            textOf(_request.option(NEBSourceControlRequestOptionBranch)).value_or("");
        check(NEBSourceControlExposedBranchParts, fieldOf(NEBSourceControlRequestOptionBranch),
              firstOptionLikePart(withoutFirstPart(branch)));
        checkOption(NEBSourceControlExposedRemoteName, NEBSourceControlRequestOptionRemoteName);
        checkOption(NEBSourceControlExposedSourceLocation,
                    NEBSourceControlRequestOptionSourceLocation);
        return std::move(_found);
    }

private:
    void check(NEBSourceControlExposedValue value, const std::string& field,
               std::optional<std::string> text) {
        if (!_found && (_exposedValues & value) != 0 && text && text->starts_with('-')) {
            _found = {.field = field, .value = *std::move(text)};
        }
    }

    void checkOption(NEBSourceControlExposedValue value, NEBConstant key) {
        check(value, fieldOf(key), textOf(_request.option(key)));
    }

    /// The option is an array, or the only element of one.
    void checkStartingRevisions() {
        constexpr NEBConstant key = NEBSourceControlRequestOptionStartingRevisions;
        const NEBValue& value = _request.option(key);
        const auto* elements = value.array();
        if (elements == nullptr) {
            checkOption(NEBSourceControlExposedStartingRevision, key);
            return;
        }
        for (std::size_t i = 0; i < elements->size(); ++i) {
            check(NEBSourceControlExposedStartingRevision,
                  fieldOf(key) + "[" + std::to_string(i) + "]", textOf((*elements)[i]));
        }
    }

    void checkFile(std::size_t index) {
        const std::string file = textOf((*_request.files)[index]).value_or("");
        const std::string field = "files[" + std::to_string(index) + "]";
        check(NEBSourceControlExposedFiles, field, file);
        check(NEBSourceControlExposedFileNames, field, lastPathComponent(file));
        check(NEBSourceControlExposedFileParts, field, firstOptionLikePart(file));
    }

    const NEBSourceControlRequest& _request;
    std::uint32_t _exposedValues;
    std::optional<Injection> _found;
};

/// Returns the limit of a log when it is not a number.
std::optional<Injection> invalidLogLimit(const NEBSourceControlRequest& request) {
    const auto limit = textOf(request.option(NEBSourceControlRequestOptionLogOutputLimit));
    const bool isCount =
        limit && !limit->empty() && limit->find_first_not_of("0123456789") == std::string::npos;
    if (!limit || isCount) {
        return std::nullopt;
    }
    return Injection{.field = fieldOf(NEBSourceControlRequestOptionLogOutputLimit),
                     .value = *limit};
}

/// Returns the first side of "branch:destination" that is more than the name of one branch.
std::optional<Injection> invalidRefspecSide(const NEBSourceControlRequest& request) {
    if (request.remote && request.remote->representsGitSVNBridge) {
        return std::nullopt;
    }
    const std::pair<std::string, std::optional<std::string>> sides[] = {
        {fieldOf(NEBSourceControlRequestOptionBranch),
         textOf(request.option(NEBSourceControlRequestOptionBranch))},
        {"destination", textOf(request.destination)}};
    for (const auto& [field, text] : sides) {
        if (text && text->empty()) {
            return Injection{field, *text, "delete a branch of the remote"};
        }
        if (text && text->starts_with('+')) {
            return Injection{field, *text, "overwrite the remote's branch"};
        }
        if (text && text->find('*') != std::string::npos) {
            return Injection{field, *text, "take it for many branches"};
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<NEBSourceControlArgumentInjection> NEBSourceControlFirstArgumentInjection(
    const NEBSourceControlRequest& request) {
    const std::uint32_t exposed =
        NEBSourceControlDescriptionOfRequestType(request.type).exposedValues;
    auto found = OptionSearch(request, exposed).run();
    if (!found && (exposed & NEBSourceControlExposedLogLimit) != 0) {
        found = invalidLogLimit(request);
    }
    if (!found && (exposed & NEBSourceControlExposedRefspec) != 0) {
        found = invalidRefspecSide(request);
    }
    return found;
}

}  // namespace neb
