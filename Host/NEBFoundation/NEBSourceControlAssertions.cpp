#include "NEBFoundation/NEBSourceControlAssertions.h"

#include <string>
#include <vector>

#include "LOMFoundation/LOMAssertion.h"

namespace neb {

namespace {

void report(const NEBSourceControlAssertionSite& site, std::string_view format,
            std::vector<std::string> arguments, std::string condition) {
    arguments.emplace_back(LOMAssertionFailedFormat);
    arguments.push_back(std::move(condition));
    LOMReportFailedAssertion(site.function, site.file, site.line, format, arguments);
}

}  // namespace

void NEBSourceControlAssert(const NEBSourceControlAssertionSite& site, bool holds,
                            std::string_view condition) {
    if (!holds) {
        LOMReportFailedAssertion(site.function, site.file, site.line, LOMAssertionFailedFormat,
                                 {std::string(condition)});
    }
}

void NEBSourceControlAssertNotNil(const NEBSourceControlAssertionSite& site, bool isPresent,
                                  std::string_view expression) {
    const std::string text(expression);
    if (!isPresent) {
        report(site, "%s should not be nil.", {text}, "(" + text + ") != nil");
    }
}

void NEBSourceControlAssertNonEmptyString(const NEBSourceControlAssertionSite& site,
                                          const NEBValue& value, std::string_view expression) {
    const std::string text(expression);
    if (!value.isPresent()) {
        report(site, "%s should be a non-empty string, but it is nil", {text},
               "(" + text + ") != nil");
    } else if (!value.isString()) {
        report(site, "%s should be a non-empty string, but it is %@",
               {text, value.descriptionForAssertionMessage()},
               "CFGetTypeID(" + text + ") == CFStringGetTypeID()");
    } else if (value.string()->empty()) {
        report(site, "%s should be a non-empty string, but it's an empty string", {text},
               "![@\"\" isEqualToString:(" + text + ")]");
    }
}

void NEBSourceControlAssertInstance(const NEBSourceControlAssertionSite& site,
                                    const NEBValue& value, bool isInstance,
                                    std::string_view expression, std::string_view className) {
    const std::string text(expression);
    const std::string name(className);
    if (!value.isPresent()) {
        report(site, "%s should be an instance inheriting from %@, but it is nil", {text, name},
               "(" + text + ") != nil");
    } else if (!isInstance) {
        report(site, "%s should be an instance inheriting from %@, but it is %@",
               {text, name, value.descriptionForAssertionMessage()},
               "[(id)(" + text + ") isKindOfClass:[" + name + " class]]");
    }
}

}  // namespace neb
