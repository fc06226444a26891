// NEBSourceControlError.h - the error of a request.
//
//     if (const auto& error = operation->error()) {
//         show(error->localizedDescription().value_or("git failed."));
//         if (error->errorClass == NEBSourceControlCredentialsRefusedErrorClass) {
//             askForCredentials();
//         }
//     }
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBDictionary.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Export.h"
#include "Platform/TerminationStatus.h"

namespace neb {

/// Describes a failure to a user and to programs. A value type: copies are independent.
class NEB_EXPORT NEBSourceControlError {
public:
    /// Returns an error in NEBSourceControlErrorDomain with this code, description and, unless
    /// absent, recovery suggestion.
    static NEBSourceControlError withDescription(std::int64_t code, const std::string& description,
                                                 const std::optional<std::string>& suggestion = {});

    /// The domain that defines the code: NEBSourceControlErrorDomain, or NEBPOSIXErrorDomain for a
    /// failure of the file system.
    std::string domain{NEBSourceControlErrorDomain.text()};
    /// In NEBSourceControlErrorDomain a NEBSourceControlErrorCode, in NEBPOSIXErrorDomain a number
    /// of <errno.h>.
    std::int64_t code = NEBSourceControlGenericError;
    /// The texts for the user; see localizedDescription() and localizedRecoverySuggestion().
    NEBDictionary userInfo;
    /// The class of the failure, a constant of NEBSourceControlErrorClassNames.h such as
    /// "remote-ahead"; "unknown" when none is certain. Errors of finished operations always have a
    /// class; the refusal of a request has none.
    std::optional<std::string> errorClass;
    /// The output of the tool, unchanged except for passwords. Absent when it printed nothing.
    std::optional<std::string> text;
    /// How the child process ended. Absent when none ran.
    std::optional<TerminationStatus> terminationStatus;
    /// Parts of `text`: advice of git ("hint:"), messages of the server ("remote:"), and the paths
    /// of the files concerned. Empty when git printed none of them.
    std::vector<std::string> hints;
    std::vector<std::string> remoteLines;
    std::vector<std::string> files;

    /// Return the texts of the user info: what happened, and what to do about it. Absent when not
    /// set.
    [[nodiscard]] std::optional<std::string> localizedDescription() const;
    [[nodiscard]] std::optional<std::string> localizedRecoverySuggestion() const;

    /// Removes the passwords of URLs from all texts. The error of an operation has none.
    void hidePasswords();
};

}  // namespace neb
