#include "NSData+GitUtilities.h"

#include "LOMFoundation/LOMAssertion.h"
#include "Platform/Text.h"

namespace neb {

namespace {

void addIfText(std::vector<std::string>& components, std::string_view segment) {
    if (isUTF8(segment)) {
        components.emplace_back(segment);
    }
}

}  // namespace

std::vector<std::string> git_componentsSeparatedByNULLTerminator(std::string_view data) {
    std::vector<std::string> components;
    std::size_t bytes = 0;
    for (std::size_t nul = data.find('\0'); nul != std::string_view::npos;
         nul = data.find('\0', bytes)) {
        addIfText(components, data.substr(bytes, nul - bytes));
        bytes = nul + 1;
    }
    const std::size_t bytesEnd = data.size();
    if (bytes < bytesEnd) {
        addIfText(components, data.substr(bytes));
        bytes = bytesEnd;
    }
    if (bytes != bytesEnd) {  // cannot be; kept as the one promise of the walk
        LOMReportFailedAssertion("-[NSData(GitUtilities) git_componentsSeparatedByNULLTerminator]",
                                 "Classes/NSData+GitUtilities", 46, "No trailing \\n on last line",
                                 {std::string(LOMAssertionFailedFormat), "bytes == bytesEnd"});
    }
    return components;
}

}  // namespace neb
