#include "Terminal/Reply.h"

#include <unistd.h>

#include <algorithm>

#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "Platform/ErrnoText.h"
#include "Platform/Passwords.h"
#include "Terminal/Output.h"
#include "Terminal/Pager.h"
#include "Terminal/Presentation.h"

namespace neb::nebsc {

std::string complaint(std::string_view sentence) {
    return "nebsc: " + printable(textWithoutPasswords(sentence)) + "\n";
}

Reply refusal(std::string_view sentence, int exitStatus,
              std::optional<std::string_view> errorClass) {
    Reply reply{
        .standardOutput = {}, .standardError = complaint(sentence), .exitStatus = exitStatus};
    if (exitStatus == exitFailed) {
        reply.error = NEBSourceControlError::withDescription(NEBSourceControlGenericError,
                                                             textWithoutPasswords(sentence));
        reply.error->errorClass = errorClass.value_or(NEBSourceControlUnknownErrorClass.text());
        NEBSourceControlAddAdvice(*reply.error);
    }
    return reply;
}

Reply failureWith(const NEBSourceControlError& error) {
    return {.standardOutput = {},
            .standardError = errorLines(error),
            .exitStatus = exitFailed,
            .error = error};
}

void addFailure(Reply& reply, const Reply& failure) {
    reply.standardError += failure.standardError;
    reply.exitStatus = failure.exitStatus;
    if (!reply.error) {
        reply.error = failure.error;
    }
}

int deliver(const Reply& reply) {
    int exitStatus = reply.exitStatus;
    std::string complaints = reply.standardError;
    bool isShown = false;
    if (reply.pager && !reply.standardOutput.empty()) {
        isShown = showThroughPager(*reply.pager, reply.standardOutput);
        complaints += isShown ? ""
                              : complaint("The pager " + inQuotes(*reply.pager) +
                                          " could not be started; the output is shown without it.");
    }
    const std::string_view output = isShown ? std::string_view{} : reply.standardOutput;
    if (const int failure = writeAll(STDOUT_FILENO, output); failure != 0) {
        complaints +=
            complaint("Standard output could not be written: " + textOfErrno(failure) + ".");
        exitStatus = std::max(exitStatus, exitFailed);
    }
    // There is nobody left to tell when this fails.
    static_cast<void>(writeAll(STDERR_FILENO, complaints));
    return exitStatus;
}

}  // namespace neb::nebsc
