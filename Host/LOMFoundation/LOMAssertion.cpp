#include "LOMFoundation/LOMAssertion.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "LOMFoundation/LOMFormat.h"
#include "LOMFoundation/LOMPasswordRedaction.h"
#include "Platform/Mutex.h"

namespace neb {

namespace {

struct SinkHolder {
    Mutex mutex;
    LOMAssertionSink sink NEB_GUARDED_BY(mutex);
};

SinkHolder& sinkHolder() {
    static SinkHolder holder;
    return holder;
}

LOMAssertionSink& sinkOfThread() {
    thread_local LOMAssertionSink sink;
    return sink;
}

void writeLine(const LOMAssertionReport& report) {
    // A failure to write to standard error cannot be reported.
    static_cast<void>(std::fprintf(stderr, "%s: %s:%d: %s\n", report.function.c_str(),
                                   report.file.c_str(), report.line, report.message.c_str()));
}

}  // namespace

void _LOMAssertionFailureHandler(std::string_view object, std::string_view command,
                                 std::string_view functionName, std::string_view fileName,
                                 int lineNumber, std::string_view format,
                                 const std::vector<std::string>& arguments) {
    const LOMAssertionReport report{
        .function = std::string(functionName),
        .file = std::string(fileName),
        .line = lineNumber,
        .message = textWithoutPasswords(formattedText(format, arguments)),
        .condition = arguments.empty() ? std::string() : arguments.back(),
        .object = std::string(object),
        .command = std::string(command),
    };
    if (const LOMAssertionSink& sink = sinkOfThread()) {
        sink(report);
        return;
    }
    SinkHolder& holder = sinkHolder();
    const MutexLock lock(holder.mutex);
    if (holder.sink) {
        holder.sink(report);
    } else {
        writeLine(report);
    }
}

void LOMReportFailedAssertion(std::string_view functionName, std::string_view fileName,
                              int lineNumber, std::string_view format,
                              const std::vector<std::string>& arguments) {
    std::string_view name = functionName;
    name.remove_prefix(std::min(name.find_first_not_of("-+["), name.size()));
    name = name.substr(0, name.rfind(']'));
    const std::size_t blank = std::min(name.rfind(' '), name.size());
    const std::string object = "<" + std::string(name.substr(0, blank)) + ">";
    _LOMAssertionFailureHandler(object, name.substr(std::min(blank + 1, name.size())), functionName,
                                fileName, lineNumber, format, arguments);
}

void LOMSetAssertionSink(LOMAssertionSink sink) {
    SinkHolder& holder = sinkHolder();
    const MutexLock lock(holder.mutex);
    holder.sink = std::move(sink);
}

void LOMSetAssertionSinkOfThread(LOMAssertionSink sink) {
    sinkOfThread() = std::move(sink);
}

LOMAssertionSink LOMAssertionSinkOfThread() {
    return sinkOfThread();
}

}  // namespace neb
