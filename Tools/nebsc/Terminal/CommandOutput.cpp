#include "Terminal/CommandOutput.h"

#include <unistd.h>

#include "LOMFoundation/LOMPasswordRedaction.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/FileDescriptor.h"
#include "Terminal/ErrorText.h"
#include "Terminal/PrintableText.h"
#include "Terminal/StreamedOutput.h"

namespace neb::nebsc {

std::string diagnostic(std::string_view sentence) {
    return "nebsc: " + messageLine(printable(textWithoutPasswords(sentence))) + "\n";
}

CommandOutput refusal(std::string_view sentence, int exitStatus,
                      std::optional<std::string_view> errorClass) {
    CommandOutput output{
        .standardOutput = {}, .standardError = diagnostic(sentence), .exitStatus = exitStatus};
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

CommandOutput refusalWithAdvice(std::string_view sentence, const std::string& advice,
                                std::string_view errorClass) {
    CommandOutput output = refusal(sentence, exitFailed, errorClass);
    addAdvice(output, advice);
    return output;
}

void addFailure(CommandOutput& output, const CommandOutput& failure) {
    output.standardError += failure.standardError;
    output.exitStatus = failure.exitStatus;
    if (!output.error) {
        output.error = failure.error;
    }
}

int deliver(const CommandOutput& output) {
    CommandOutput written{.standardOutput = {},
                          .standardError = output.standardError,
                          .exitStatus = output.exitStatus};
    StreamedOutput standardOutput([&output] { return output.pager; });
    static_cast<void>(standardOutput.write(output.standardOutput));
    standardOutput.finish(written);
    // There is nowhere to report a failure of this write.
    static_cast<void>(writeAll(STDERR_FILENO, written.standardError));
    return written.exitStatus;
}

}  // namespace neb::nebsc
