// NEBSourceControlError.h - a failure that a person is told of.
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

/// A value.
class NEB_EXPORT NEBSourceControlError {
public:
    /// An error in NEBSourceControlErrorDomain with this description, and a suggestion unless that
    /// is absent.
    static NEBSourceControlError withDescription(std::int64_t code, const std::string& description,
                                                 const std::optional<std::string>& suggestion = {});

    std::string domain{NEBSourceControlErrorDomain.text()};
    std::int64_t code = NEBSourceControlGenericError;
    NEBDictionary userInfo;
    /// The class of failure, a short fixed word such as "remote-ahead"; "unknown" where none is
    /// certain. Every error of an operation that has finished has one; the refusal of a request has
    /// none.
    std::optional<std::string> errorClass;
    /// The tool's own words, as they were but for passwords; absent where no tool said anything.
    std::optional<std::string> text;
    /// How the child ended that the error is about; absent where none ran.
    std::optional<TerminationStatus> terminationStatus;
    /// What the text holds beside what happened, see NEBSourceControlErrorDetails.h; empty where it
    /// holds nothing of the kind.
    std::vector<std::string> hints;
    std::vector<std::string> remoteLines;
    std::vector<std::string> files;

    /// From the user info, nothing where it has none.
    [[nodiscard]] std::optional<std::string> localizedDescription() const;
    [[nodiscard]] std::optional<std::string> localizedRecoverySuggestion() const;

    /// Takes the passwords that URLs hold out of all texts, see textWithoutPasswords(). An
    /// operation's error has none.
    void hidePasswords();
};

}  // namespace neb
