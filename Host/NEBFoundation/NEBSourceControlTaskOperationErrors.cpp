// The errors of an operation that runs a child process.

#include <cerrno>

#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlErrorDetails.h"
#include "NEBFoundation/NEBSourceControlLockFile.h"
#include "NEBFoundation/NEBSourceControlTaskOperation.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/ErrnoText.h"
#include "Platform/PathString.h"

namespace neb {

namespace {

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

NEBSourceControlError errorOfClass(std::string_view errorClass, const std::string& description) {
    auto error = NEBSourceControlError::withDescription(NEBSourceControlGenericError, description);
    error.errorClass = errorClass;
    return error;
}

/// Returns the class of a child that could not be started. `reason` ends with the text of an error
/// number.
std::string_view classOfStartFailure(std::string_view reason) {
    return reason.ends_with(textOfErrno(ENOMEM))  ? NEBSourceControlOutOfMemoryErrorClass
           : reason.ends_with(textOfErrno(E2BIG)) ? NEBSourceControlSystemLimitErrorClass
                                                  : NEBSourceControlNotStartedErrorClass;
}

}  // namespace

std::optional<NEBSourceControlError> NEBSourceControlTaskOperation::translatedErrorData() {
    return _errorData && !_errorData->empty()
               ? errorFromErrorMessage(_nebsc_stringFromData(_errorData))
               : std::nullopt;
}

std::optional<NEBSourceControlError> NEBSourceControlTaskOperation::errorFromErrorMessage(
    const std::optional<std::string>& message) {
    const bool isNotice = _terminationStatus && _terminationStatus->isSuccess();
    if (!message || isNotice || isBlank(*message)) {
        return std::nullopt;
    }
    return errorOfText(*message);
}

NEBSourceControlError NEBSourceControlTaskOperation::errorOfText(const std::string& text) const {
    return NEBSourceControlErrorWithoutDetails(text, *request());
}

std::string NEBSourceControlTaskOperation::classOfText(const std::string& text) const {
    return runsGit() ? std::string(NEBSourceControlErrorClassOfText(text))
                     : errorOfText(text).errorClass.value_or("");
}

/// Uses the whole output, whatever parseData() left of it: a rejected push has an error beside its
/// content. If standard error has no known class (messages of a hook, a warning about line ends) or
/// only the class of a failure to write ("could not write index"), standard output may have one:
/// git reports conflicts and "nothing to commit" only there, with exit status 1. With any other
/// status, standard output is content.
std::optional<NEBSourceControlError> NEBSourceControlTaskOperation::errorOfFailure(
    const ChildText& childText, std::optional<NEBSourceControlError> found) {
    if (!found && !isBlank(childText.errorText)) {
        found = errorFromErrorMessage(childText.errorText);
        if (!found) {
            found = errorOfText(childText.errorText);
        }
    }
    const bool isVague = found && (found->errorClass == NEBSourceControlUnknownErrorClass ||
                                   found->errorClass == NEBSourceControlIOErrorClass);
    const bool isInOutput =
        _terminationStatus->exitStatus() == 1 &&
        classOfText(childText.outputText) != NEBSourceControlUnknownErrorClass.text();
    if ((!found && !isBlank(childText.outputText)) || (isVague && isInOutput)) {
        found = errorOfText(childText.outputText);
        if (!isBlank(childText.errorText)) {
            found->text = childText.errorText + "\n" + childText.outputText;
        }
    }
    if (!found && childText.isPresent) {
        found = errorOfClass(NEBSourceControlUnknownErrorClass,
                             "The operation was not completed: \"" + launchPath() +
                                 "\" ended with " + _terminationStatus->description() + ".");
    }
    return !found || found->errorClass == NEBSourceControlUnknownErrorClass
               ? errorFromUnknownFailure(std::move(found))
               : found;
}

NEBSourceControlError NEBSourceControlTaskOperation::errorOfAbnormalEnd() {
    const std::string how = _terminationStatus->description();
    if (!_terminationStatus->started()) {
        return errorOfClass(classOfStartFailure(how),
                            "The operation could not be performed because " + how + ".");
    }
    auto error = _terminationStatus->signalNumber()
                     ? errorOfClass(NEBSourceControlKilledErrorClass,
                                    "The operation was not completed because \"" + launchPath() +
                                        "\" was ended by " + how + ".")
                     : errorOfClass(NEBSourceControlUnknownErrorClass,
                                    "Whether the operation was completed is not known: \"" +
                                        launchPath() + "\" ended, but " + how + ".");
    error.terminationStatus = _terminationStatus;
    return error;
}

/// Adds class, text, end of the child and details to the error.
void NEBSourceControlTaskOperation::completeError(
    NEBSourceControlError& error, const ChildText& childText,
    const std::optional<TerminationStatus>& status) const {
    const std::string& text =
        isBlank(childText.errorText) ? childText.outputText : childText.errorText;
    if (!error.errorClass) {
        error.errorClass = classOfText(childText.errorText);
        if (error.errorClass == NEBSourceControlUnknownErrorClass && status &&
            status->exitStatus() == 1) {
            error.errorClass = classOfText(childText.outputText);
        }
    }
    if (!error.text && !isBlank(text)) {
        error.text = text;
    }
    if (!error.terminationStatus) {
        error.terminationStatus = status;
    }
    if (!runsGit()) {
        return;
    }
    error.hints = NEBSourceControlHintsInText(childText.errorText);
    error.remoteLines = NEBSourceControlRemoteLinesInText(childText.errorText);
    error.files = NEBSourceControlFilesInText(childText.errorText + "\n" + childText.outputText,
                                              *error.errorClass);
    NEBSourceControlAddLockDetails(error,
                                   pathByExpandingTilde(_currentDirectoryPath.value_or(".")));
}

}  // namespace neb
