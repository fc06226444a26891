#include "Terminal/CommandOutput.h"

#include <unistd.h>

#include <algorithm>

#include "LOMFoundation/LOMPasswordRedaction.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/ErrnoText.h"
#include "Platform/FileDescriptor.h"
#include "Terminal/ErrorText.h"
#include "Terminal/Pager.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

std::string complaint(std::string_view sentence) {
    return "nebsc: " + messageLine(printable(textWithoutPasswords(sentence))) + "\n";
}

CommandOutput refusal(std::string_view sentence, int exitStatus,
                      std::optional<std::string_view> errorClass) {
    CommandOutput output{
        .standardOutput = {}, .standardError = complaint(sentence), .exitStatus = exitStatus};
    if (exitStatus == exitFailed) {
        output.error = NEBSourceControlError::withDescription(NEBSourceControlGenericError,
                                                              textWithoutPasswords(sentence));
        output.error->errorClass = errorClass.value_or(NEBSourceControlUnknownErrorClass.text());
        NEBSourceControlAddAdvice(*output.error);
    }
    return output;
}

CommandOutput failureWith(const NEBSourceControlError& error) {
    return {.standardOutput = {},
            .standardError = errorLines(error),
            .exitStatus = exitFailed,
            .error = error};
}

void addAdvice(CommandOutput& output, const std::string& advice) {
    output.standardError += printable(advice) + "\n";
    if (output.error) {
        output.error->userInfo.set(NEBLocalizedRecoverySuggestionKey, advice);
    }
}

void addFailure(CommandOutput& output, const CommandOutput& failure) {
    output.standardError += failure.standardError;
    output.exitStatus = failure.exitStatus;
    if (!output.error) {
        output.error = failure.error;
    }
}

int deliver(const CommandOutput& output) {
    int exitStatus = output.exitStatus;
    std::string errorText = output.standardError;
    bool isShown = false;
    if (output.pager && !output.standardOutput.empty()) {
        isShown = showThroughPager(*output.pager, output.standardOutput);
        errorText += isShown ? ""
                             : complaint("The pager " + inQuotes(*output.pager) +
                                         " could not be started; the output is shown without it.");
    }
    const std::string_view remaining = isShown ? std::string_view{} : output.standardOutput;
    if (const int failure = writeAll(STDOUT_FILENO, remaining); failure != 0) {
        errorText +=
            complaint("Standard output could not be written: " + textOfErrno(failure) + ".");
        exitStatus = std::max(exitStatus, exitFailed);
    }
    // There is nowhere to report a failure of this write.
    static_cast<void>(writeAll(STDERR_FILENO, errorText));
    return exitStatus;
}

}  // namespace neb::nebsc
