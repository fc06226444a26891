#include "LOMFoundation/LOMLogAspect.h"

#include <cstdio>
#include <utility>

#include "LOMFoundation/LOMFormat.h"
#include "LOMFoundation/LOMPasswordRedaction.h"

namespace neb {

void LOMLogAspect::_logAtLogLevel(int level, std::string_view format,
                                  const std::vector<std::string>& arguments) {
    if (level > logLevel) {
        return;
    }
    const std::string message = textWithoutPasswords(formattedText(format, arguments));
    const MutexLock lock(_mutex);
    if (_sink) {
        _sink(message);
    } else {
        // A failure to write to standard error cannot be reported.
        static_cast<void>(std::fprintf(stderr, "%s: %s\n", _name.c_str(), message.c_str()));
    }
}

void LOMLogAspect::setSink(Sink sink) {
    const MutexLock lock(_mutex);
    _sink = std::move(sink);
}

}  // namespace neb
