// Matchers.h - matchers for errors, and a collector of assertion reports.
#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "LOMFoundation/LOMAssertion.h"
#include "NEBFoundation/NEBSourceControlError.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"

namespace neb {

/// Prints a dictionary in a failed expectation.
inline void PrintTo(const NEBDictionary& dictionary, std::ostream* stream) {
    *stream << NEBValue(dictionary).description();
}

}  // namespace neb

namespace neb::test {

/// Matches an optional error with this code and a matching description.
MATCHER_P2(IsSourceControlError, code, description, "") {
    const std::optional<NEBSourceControlError>& error = arg;
    if (!error) {
        *result_listener << "there is no error";
        return false;
    }
    *result_listener << "code " << error->code << ", class " << error->errorClass.value_or("(none)")
                     << ", \"" << error->localizedDescription().value_or("(none)") << "\"";
    return error->domain == NEBSourceControlErrorDomain && error->code == code &&
           testing::Matches(description)(error->localizedDescription().value_or("(none)"));
}

/// Matches an optional error of this class.
MATCHER_P(HasErrorClass, errorClass, "") {
    const std::optional<NEBSourceControlError>& error = arg;
    *result_listener << (error ? error->errorClass.value_or("(none)") : "there is no error");
    return error && error->errorClass == errorClass;
}

/// Collects the assertion reports during its lifetime.
class ReportCollector {
public:
    ReportCollector() {
        LOMSetAssertionSink(
            [this](const LOMAssertionReport& report) { _reports.push_back(report); });
    }
    ReportCollector(const ReportCollector&) = delete;
    ReportCollector& operator=(const ReportCollector&) = delete;
    ~ReportCollector() { LOMSetAssertionSink({}); }

    [[nodiscard]] const std::vector<LOMAssertionReport>& reports() const { return _reports; }

private:
    std::vector<LOMAssertionReport> _reports;
};

/// Returns a request for the working tree at `location`, named "demo".
inline std::shared_ptr<NEBSourceControlRequest> requestFor(std::int32_t type,
                                                           std::optional<std::string> location) {
    auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->location = std::move(location);
    tree->name = "demo";
    return NEBSourceControlRequest::initWithType(type, tree, std::nullopt, std::nullopt);
}

}  // namespace neb::test
