#include "NEBFoundation/NEBSourceControlLimits.h"

#include <algorithm>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "NEBFoundation/NEBSourceControlKeys.h"

namespace neb {

namespace {

/// Returns "1 second", "2.5 seconds"; "0 seconds" for a negative time.
std::string secondsText(std::chrono::milliseconds time) {
    time = std::max(time, std::chrono::milliseconds(0));
    std::string text = std::to_string(time.count() / 1000);
    if (const auto rest = time.count() % 1000; rest != 0) {
        std::string digits = std::to_string(1000 + rest).substr(1);
        digits.erase(digits.find_last_not_of('0') + 1);
        text += "." + digits;
    }
    return text + (text == "1" ? " second" : " seconds");
}

NEBSourceControlError errorOfClass(NEBConstant errorClass, const std::string& description) {
    auto error = NEBSourceControlError::withDescription(NEBSourceControlGenericError, description);
    error.errorClass = errorClass;
    NEBSourceControlAddAdvice(error);
    return error;
}

}  // namespace

NEBSourceControlError NEBSourceControlTimedOutError(std::chrono::milliseconds total) {
    return errorOfClass(
        NEBSourceControlTimedOutErrorClass,
        "The operation was ended because it took longer than " + secondsText(total) + ".");
}

NEBSourceControlError NEBSourceControlExceededLimitError(ChildLimit limit,
                                                         const NEBSourceControlLimits& limits,
                                                         const std::string& launchPath) {
    const std::string ended = "\"" + launchPath + "\" was ended because it wrote ";
    switch (limit) {
        case ChildLimit::silence:
            return errorOfClass(NEBSourceControlTimedOutErrorClass,
                                ended + "nothing for " + secondsText(*limits.silence) + ".");
        case ChildLimit::outputBytes:
            return errorOfClass(NEBSourceControlOutputTooLargeErrorClass,
                                ended + "more than " + std::to_string(*limits.outputBytes) +
                                    (*limits.outputBytes == 1 ? " byte." : " bytes."));
        case ChildLimit::total:
            break;
    }
    return NEBSourceControlTimedOutError(*limits.total);
}

}  // namespace neb
