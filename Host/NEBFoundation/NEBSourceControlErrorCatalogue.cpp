#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"

#include <algorithm>

#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogueRows.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "NEBFoundation/NEBSourceControlErrorDetails.h"
#include "NEBFoundation/NEBSourceControlErrorTextNormalizer.h"

namespace neb {

namespace {

bool shows(std::string_view text, const ErrorTextSign& sign) {
    const std::size_t place = sign.first.empty() ? std::string_view::npos : text.find(sign.first);
    return place != std::string_view::npos &&
           (sign.second.empty() ||
            text.find(sign.second, place + sign.first.size()) != std::string_view::npos);
}

using Rows = std::span<const ErrorCatalogueRow>;

const ErrorCatalogueRow* firstRowShownBy(std::string_view text, Rows rows) {
    const auto row =
        std::find_if(rows.begin(), rows.end(), [text](const ErrorCatalogueRow& candidate) {
            return std::any_of(candidate.signs.begin(), candidate.signs.end(),
                               [text](const ErrorTextSign& sign) { return shows(text, sign); });
        });
    return row != rows.end() ? &*row : nullptr;
}

/// The statements as the signs want them: a line feed before the first line, and of a text that is
/// very long, only its beginning and its end. The cause stands in one of them, and the time that a
/// look at the whole table takes stays bounded.
std::string searchedPart(std::string_view statements) {
    constexpr std::size_t half = 32 * std::size_t{1024};
    std::string part = "\n";
    if (statements.size() <= 2 * half) {
        return part.append(statements);
    }
    return part.append(statements.substr(0, half))
        .append("\n")
        .append(statements.substr(statements.size() - half));
}

const ErrorCatalogueRow* rowOfText(std::string_view text) {
    const std::string statements = NEBSourceControlStatementsInText(text);
    const std::string telling = NEBSourceControlStatementsWithoutAsides(statements);
    if (const auto* row = firstRowShownBy(searchedPart(telling), errorCatalogueRows())) {
        return row;
    }
    const std::string failures = NEBSourceControlFailuresAmongStatements(telling);
    if (const auto* row = firstRowShownBy(searchedPart(failures), generalErrorCatalogueRows())) {
        return row;
    }
    return firstRowShownBy(searchedPart(statements), errorCatalogueRows());
}

/// Whether the description of an error with this code is the text itself, as hosts expect it.
bool isDescribedByText(std::int64_t code) {
    return code == NEBSourceControlFastForwardError || code == NEBSourceControlBinaryMergeError;
}

/// What the row says, and what its class says where the row says nothing; empty without a row.
ErrorSentence sentenceOf(const ErrorCatalogueRow* row) {
    ErrorSentence sentence = row != nullptr ? row->sentence : ErrorSentence{};
    const NEBSourceControlErrorClass* known =
        row != nullptr ? NEBSourceControlErrorClassNamed(row->errorClass) : nullptr;
    if (known != nullptr && sentence.description.empty() && !isDescribedByText(row->code)) {
        sentence.description = known->description;
    }
    if (known != nullptr && sentence.suggestion.empty()) {
        sentence.suggestion = known->advice;
    }
    return sentence;
}

}  // namespace

std::string_view NEBSourceControlErrorClassOfText(std::string_view text) {
    const ErrorCatalogueRow* row = rowOfText(text);
    return row != nullptr ? row->errorClass : NEBSourceControlUnknownErrorClass.text();
}

NEBSourceControlError NEBSourceControlErrorFromText(std::string_view text,
                                                    const NEBSourceControlRequest& request) {
    NEBSourceControlError error = NEBSourceControlErrorWithoutDetails(text, request);
    error.remoteLines = NEBSourceControlRemoteLinesInText(text);
    error.files = NEBSourceControlFilesInText(text, *error.errorClass);
    return error;
}

NEBSourceControlError NEBSourceControlErrorWithoutDetails(std::string_view text,
                                                          const NEBSourceControlRequest& request) {
    const ErrorCatalogueRow* row = rowOfText(text);
    NEBSourceControlError error;
    error.code = row != nullptr ? row->code : NEBSourceControlGenericError;
    error.errorClass = row != nullptr ? row->errorClass : NEBSourceControlUnknownErrorClass.text();
    error.text = text;
    error.hints = NEBSourceControlHintsInText(text);
    const ErrorSentence sentence = sentenceOf(row);
    error.userInfo.set(NEBLocalizedDescriptionKey,
                       sentence.description.empty()
                           ? std::string(text)
                           : formattedText(sentence.description, {request.sourceTreeName()}));
    const std::string suggestion = sentence.suggestion.empty()
                                       ? NEBSourceControlAdviceOfHints(error.hints)
                                       : std::string(sentence.suggestion);
    if (!suggestion.empty()) {
        error.userInfo.set(NEBLocalizedRecoverySuggestionKey, suggestion);
    }
    return error;
}

}  // namespace neb
