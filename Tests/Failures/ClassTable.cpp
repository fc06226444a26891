#include "ClassTable.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <string_view>

#include "Failure.h"
#include "GitOperations/GitOperation.h"
#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "NEBFoundation/NEBSourceControlInspection.h"
#include "NEBFoundation/NEBSourceControlLimits.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/ErrorTexts.h"
#include "Support/Matchers.h"

namespace neb::test {

namespace {

/// Collects the codes of each class, in the order in which they were measured.
class CodesOfClasses {
public:
    void add(std::string_view errorClass, std::int64_t code) {
        std::vector<std::int64_t>& codes = _codes[std::string(errorClass)];
        if (std::find(codes.begin(), codes.end(), code) == codes.end()) {
            codes.push_back(code);
        }
    }
    /// Adds the error into which an operation of the type translates the text.
    void addText(std::string_view text, std::int32_t type = NEBSourceControlRequestLog) {
        GitOperation operation(requestFor(type, std::nullopt));
        if (const auto error = operation.errorFromErrorMessage(std::string(text))) {
            add(error->errorClass.value_or(std::string(NEBSourceControlErrorClassOfText(text))),
                error->code);
        }
    }
    [[nodiscard]] std::string of(std::string_view errorClass) const {
        std::string text;
        if (const auto entry = _codes.find(errorClass); entry != _codes.end()) {
            for (const std::int64_t code : entry->second) {
                text += (text.empty() ? "" : ", ") + std::to_string(code);
            }
        }
        return text;
    }

private:
    std::map<std::string, std::vector<std::int64_t>, std::less<>> _codes;
};

CodesOfClasses measuredCodes() {
    CodesOfClasses codes;
    for (const Failure& failure : allFailures()) {
        codes.add(failure.errorClass, failure.code);
    }
    for (const CatalogueText& text : catalogueTexts()) {
        codes.addText(text.text);
    }
    for (const auto& texts : {textsOfGit(), familyTexts()}) {
        for (const TextOfGit& text : texts) {
            codes.addText(text.text);
        }
    }
    // A failure of git that prints this all the same.
    codes.addText("Already up-to-date.");
    codes.addText("Everything up-to-date", NEBSourceControlRequestPush);
    const NEBSourceControlLimits limits{.total = std::chrono::seconds(1), .outputBytes = 1};
    for (const NEBSourceControlError& error :
         {NEBSourceControlCancelledError(), NEBSourceControlTimedOutError(*limits.total),
          NEBSourceControlExceededLimitError(ChildLimit::outputBytes, limits, "git"),
          NEBSourceControlNotTrustedError("", {})}) {
        codes.add(*error.errorClass, error.code);
    }
    return codes;
}

}  // namespace

std::vector<std::string> classTable() {
    std::vector<std::string> lines{"| class | code | description | advice |", "|---|---|---|---|"};
    const CodesOfClasses codes = measuredCodes();
    for (const NEBSourceControlErrorClass& row : NEBSourceControlErrorClasses()) {
        lines.push_back("| `" + std::string(row.name) + "` | " + codes.of(row.name) + " | " +
                        formattedText(row.description, {std::string("NAME")}) + " | " +
                        std::string(row.advice.empty() ? "–" : row.advice) + " |");
    }
    return lines;
}

}  // namespace neb::test
