// LOMAssertion.h - reports of failed assertions.
//
// A failed assertion does not stop the program: the function that reports it continues.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Export.h"

namespace neb {

/// One failed assertion.
struct LOMAssertionReport {
    /// The full name of the method, as in "-[GitController operationForRequest:]".
    std::string function;
    /// The source file, as in "Classes/GitController".
    std::string file;
    /// The line in that file.
    int line = 0;
    /// The format with its arguments: "request.destination should be a non-empty string, but it is
    /// nil". The plain form begins with "Assertion failed: ". Passwords of URLs are redacted.
    std::string message;
    /// The text of the condition.
    std::string condition;
    /// A description of the reporting object.
    std::string object = {};
    /// The method of the object.
    std::string command = {};
};

/// The format of the plain form. Its argument is the text of the condition.
inline constexpr std::string_view LOMAssertionFailedFormat = "Assertion failed: %s";

/// Reports a failed assertion to the sink of the calling thread, or else to that of the process,
/// and returns. Thread-safe.
///
/// - `object` describes the reporting object, `command` is its method.
/// - `functionName`, `fileName` and `lineNumber` are the location of the assertion.
/// - `format` is LOMAssertionFailedFormat, or a format with "%@" and "%s".
/// - `arguments` are the arguments of the format. The last element is always the text of the
///   condition; if the format is another one, LOMAssertionFailedFormat precedes it.
NEB_EXPORT void _LOMAssertionFailureHandler(std::string_view object, std::string_view command,
                                            std::string_view functionName,
                                            std::string_view fileName, int lineNumber,
                                            std::string_view format,
                                            const std::vector<std::string>& arguments);

/// Reports a failed assertion as above. The object and the command are taken from the function name
/// "-[Class method:]". Thread-safe.
NEB_EXPORT void LOMReportFailedAssertion(std::string_view functionName, std::string_view fileName,
                                         int lineNumber, std::string_view format,
                                         const std::vector<std::string>& arguments);

/// A function that receives reports. It must not report a failed assertion itself.
using LOMAssertionSink = std::function<void(const LOMAssertionReport&)>;

/// Sets the sink of the process, which is called by one thread at a time. An empty function
/// restores the default, which writes one line to standard error. Thread-safe.
NEB_EXPORT void LOMSetAssertionSink(LOMAssertionSink sink);

/// Sets a sink for the calling thread, which replaces that of the process; an empty function
/// removes it. A host that serves several clients at once can so separate their reports. An
/// operation that is created on this thread uses the sink on every thread on which it runs, so the
/// sink may be called by several threads.
NEB_EXPORT void LOMSetAssertionSinkOfThread(LOMAssertionSink sink);
/// Returns the sink of the calling thread, empty if it has none.
[[nodiscard]] NEB_EXPORT LOMAssertionSink LOMAssertionSinkOfThread();

}  // namespace neb
