#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"

#include <algorithm>

#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/ErrorCatalogue/ErrorCatalogueRows.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "NEBFoundation/NEBSourceControlErrorDetails.h"
#include "NEBFoundation/NEBSourceControlErrorTextNormalizer.h"
#include "NEBFoundation/NEBSourceControlOutputExcerpt.h"

namespace neb {

namespace {

bool matches(std::string_view text, const ErrorPattern& pattern) {
    const std::size_t offset = text.find(pattern.first);
    return offset != std::string_view::npos &&
           (pattern.second.empty() ||
            text.find(pattern.second, offset + pattern.first.size()) != std::string_view::npos);
}

/// Returns the first row that matches, or null.
const ErrorCatalogueRow* matchingRow(std::string_view text, ErrorCatalogueTable rows) {
    const auto row =
        std::find_if(rows.begin(), rows.end(), [text](const ErrorCatalogueRow& candidate) {
            return std::any_of(
                candidate.patterns.begin(), candidate.patterns.end(),
                [text](const ErrorPattern& pattern) { return matches(text, pattern); });
        });
    return row != rows.end() ? &*row : nullptr;
}

const ErrorCatalogueRow* matchingRow(std::string_view text) {
    for (const ErrorCatalogueTable rows : errorCatalogueTables()) {
        if (const ErrorCatalogueRow* row = matchingRow(text, rows)) {
            return row;
        }
    }
    return nullptr;
}

/// Returns the first row of the class, or null.
const ErrorCatalogueRow* rowOfClass(std::string_view errorClass) {
    for (const ErrorCatalogueTable rows : errorCatalogueTables()) {
        for (const ErrorCatalogueRow& row : rows) {
            if (row.errorClass == errorClass) {
                return &row;
            }
        }
    }
    return nullptr;
}

/// Returns the statements in the form that patterns are compared with: a line feed before the first
/// line, and of a very long text only the beginning and the end, which bounds the time of a search.
std::string searchableText(std::string_view statements) {
    constexpr std::size_t half = 32 * std::size_t{1024};
    std::string text = "\n";
    if (statements.size() <= 2 * half) {
        return text.append(statements);
    }
    return text.append(statements.substr(0, half))
        .append("\n")
        .append(statements.substr(statements.size() - half));
}

/// The messages for an unknown revision, if it is HEAD. They are compared with the text of git
/// itself: names are removed from statements, and a branch may have the name "head".
constexpr std::string_view textsOfUnknownHEAD[] = {
    "ambiguous argument 'HEAD': unknown revision",
    "bad revision 'HEAD'",
    "ailed to resolve 'HEAD' as a valid",
    "ot a valid object name: 'HEAD'",
    "ot a valid object name: HEAD\n",
    "ot a valid object name HEAD\n",
    "nvalid object name 'HEAD'",
    "nvalid reference: HEAD\n",
    "nvalid upstream 'HEAD'",
    "ould not resolve HEAD\n",
    "HEAD - not something we can merge",
    "malformed object name HEAD\n",
};

/// Without commits, git does not know HEAD. Returns the row for that instead of the one for an
/// unknown revision, if the text says so.
const ErrorCatalogueRow* rowOfUnknownHEAD(const ErrorCatalogueRow* row, std::string_view text) {
    if (row == nullptr || row->errorClass != NEBSourceControlRevisionUnknownErrorClass) {
        return row;
    }
    const std::string lines = std::string(text) + "\n";
    const bool namesHEAD =
        std::any_of(std::begin(textsOfUnknownHEAD), std::end(textsOfUnknownHEAD),
                    [&](std::string_view part) { return lines.find(part) != std::string::npos; });
    return namesHEAD ? rowOfClass(NEBSourceControlNoCommitsYetErrorClass) : row;
}

/// Returns the row of the text, or null. Warnings and hints count only if nothing else matches.
const ErrorCatalogueRow* rowOfStatements(std::string_view text) {
    const std::string statements = NEBSourceControlStatementsInText(text);
    const std::string errors = NEBSourceControlStatementsWithoutAsides(statements);
    if (const auto* row = matchingRow(searchableText(errors))) {
        return row;
    }
    const std::string failures = NEBSourceControlFailuresAmongStatements(errors);
    if (const auto* row = matchingRow(searchableText(failures), errorGeneralRows())) {
        return row;
    }
    return matchingRow(searchableText(statements));
}

const ErrorCatalogueRow* rowOfText(std::string_view text) {
    return rowOfUnknownHEAD(rowOfStatements(text), text);
}

/// Whether hosts expect the text itself as the description of an error with this code.
bool isDescribedByText(std::int64_t code) {
    return code == NEBSourceControlFastForwardError || code == NEBSourceControlBinaryMergeError;
}

/// Returns the texts of the row, completed by those of its class; empty without a row.
ErrorSentence sentenceOf(const ErrorCatalogueRow* row) {
    ErrorSentence sentence = row != nullptr ? row->sentence : ErrorSentence{};
    const NEBSourceControlErrorClass* known =
        row != nullptr ? NEBSourceControlErrorClassNamed(row->errorClass) : nullptr;
    if (known != nullptr && sentence.description.empty() && !isDescribedByText(row->code)) {
        sentence.description = known->description;
    }
    if (known != nullptr && sentence.advice.empty()) {
        sentence.advice = known->advice;
    }
    return sentence;
}

}  // namespace

std::string_view NEBSourceControlErrorClassOfText(std::string_view text) {
    const ErrorCatalogueRow* row = rowOfText(NEBSourceControlOutputExcerpt(text));
    return row != nullptr ? row->errorClass : NEBSourceControlUnknownErrorClass;
}

NEBSourceControlError NEBSourceControlErrorFromText(std::string_view text,
                                                    const NEBSourceControlRequest& request) {
    NEBSourceControlError error = NEBSourceControlErrorWithoutDetails(text, request);
    error.remoteLines = NEBSourceControlRemoteLinesInText(*error.text);
    error.files = NEBSourceControlFilesInText(*error.text, *error.errorClass);
    return error;
}

NEBSourceControlError NEBSourceControlErrorWithoutDetails(std::string_view text,
                                                          const NEBSourceControlRequest& request) {
    const std::string excerpt = NEBSourceControlOutputExcerpt(text);
    const ErrorCatalogueRow* row = rowOfText(excerpt);
    NEBSourceControlError error;
    error.code = row != nullptr ? row->code : NEBSourceControlGenericError;
    error.errorClass = row != nullptr ? row->errorClass : NEBSourceControlUnknownErrorClass;
    error.text = excerpt;
    error.hints = NEBSourceControlHintsInText(excerpt);
    const ErrorSentence sentence = sentenceOf(row);
    error.userInfo.set(NEBLocalizedDescriptionKey,
                       sentence.description.empty()
                           ? excerpt
                           : formattedText(sentence.description, {request.sourceTreeName()}));
    const std::string suggestion = sentence.advice.empty()
                                       ? NEBSourceControlAdviceOfHints(error.hints)
                                       : std::string(sentence.advice);
    if (!suggestion.empty()) {
        error.userInfo.set(NEBLocalizedRecoverySuggestionKey, suggestion);
    }
    return error;
}

}  // namespace neb
