#include "NSData+GitUtilities.h"

#include "LOMFoundation/LOMAssertion.h"
#include "Platform/Text.h"

namespace neb {

namespace {

void visitIfText(std::string_view segment, const std::function<void(std::string_view)>& visit) {
    if (isUTF8(segment)) {
        visit(segment);
    }
}

}  // namespace

std::vector<std::string> git_componentsSeparatedByNULLTerminator(std::string_view data) {
    std::vector<std::string> components;
    git_forEachComponentSeparatedByNULLTerminator(
        data, [&components](std::string_view component) { components.emplace_back(component); });
    return components;
}

void git_forEachComponentSeparatedByNULLTerminator(
    std::string_view data, const std::function<void(std::string_view)>& visit) {
    std::size_t bytes = 0;
    for (std::size_t nul = data.find('\0'); nul != std::string_view::npos;
         nul = data.find('\0', bytes)) {
        visitIfText(data.substr(bytes, nul - bytes), visit);
        bytes = nul + 1;
    }
    const std::size_t bytesEnd = data.size();
    if (bytes < bytesEnd) {
        visitIfText(data.substr(bytes), visit);
        bytes = bytesEnd;
    }
    if (bytes != bytesEnd) {  // an invariant of the loop above
        LOMReportFailedAssertion("-[NSData(GitUtilities) git_componentsSeparatedByNULLTerminator]",
                                 "Classes/NSData+GitUtilities", 46, "No trailing \\n on last line",
                                 {std::string(LOMAssertionFailedFormat), "bytes == bytesEnd"});
    }
}

}  // namespace neb
