// LOMAssertion.h - reports of conditions that should hold and do not.
//
// A report never stops the work: whoever reports goes on with what there is.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Export.h"

namespace neb {

/// One failed condition.
struct LOMAssertionReport {
    /// The method's full name, as in "-[GitController operationForRequest:]".
    std::string function;
    /// The source, as in "Classes/GitController".
    std::string file;
    int line = 0;
    /// The format filled in: "request.destination should be a non-empty string, but it is nil". The
    /// plain shape begins with "Assertion failed: ".
    std::string message;
    /// The condition's text alone.
    std::string condition;
    /// A description of the reporting object, and its method; for a host that wants to know more.
    std::string object = {};
    std::string command = {};
};

/// The format of the plain shape; its argument is the condition's text.
inline constexpr std::string_view LOMAssertionFailedFormat = "Assertion failed: %s";

/// Reports a failed condition to the sink and returns.
/// - `object`: the description of the reporting object, `command` its method.
/// - `format` with its `arguments`: for the plain shape the condition's text alone; for any other
///   the arguments of the format, then the pair LOMAssertionFailedFormat and the condition's text.
/// May be called from any thread.
NEB_EXPORT void _LOMAssertionFailureHandler(std::string_view object, std::string_view command,
                                            std::string_view functionName,
                                            std::string_view fileName, int lineNumber,
                                            std::string_view format,
                                            const std::vector<std::string>& arguments);

/// The same, for a reporter that has no more to tell of itself than its method's full name
/// "-[Class method:]", from which the object and the command are taken.
NEB_EXPORT void LOMReportFailedAssertion(std::string_view functionName, std::string_view fileName,
                                         int lineNumber, std::string_view format,
                                         const std::vector<std::string>& arguments);

/// Where reports go. Called by one thread at a time; it must not report itself.
using LOMAssertionSink = std::function<void(const LOMAssertionReport&)>;

/// Sets the sink for the process; an absent one goes back to the default, which writes one line on
/// standard error. From any thread.
NEB_EXPORT void LOMSetAssertionSink(LOMAssertionSink sink);

/// Sets the sink for what the calling thread reports, in place of the process's; an absent one
/// takes it away. For a host that serves several callers at once. An operation that is made on the
/// thread reports there too, on whatever thread it runs: such a sink may be called by several.
NEB_EXPORT void LOMSetAssertionSinkOfThread(LOMAssertionSink sink);
/// The calling thread's own; absent when it has none.
[[nodiscard]] NEB_EXPORT LOMAssertionSink LOMAssertionSinkOfThread();

}  // namespace neb
