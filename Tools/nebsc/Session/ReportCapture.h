// ReportCapture.h - collects the assertion reports that a thread, and the operations made on it,
// make while it lives.
//
// Several captures may live at once, each on a thread of its own. The operations must have ended
// when it goes.
#pragma once

#include <vector>

#include "LOMFoundation/LOMAssertion.h"
#include "Platform/Mutex.h"

namespace neb::nebsc {

/// Of the thread that makes it, and never two at a time there.
class ReportCapture {
public:
    ReportCapture();
    ReportCapture(const ReportCapture&) = delete;
    ReportCapture& operator=(const ReportCapture&) = delete;
    ~ReportCapture();

    /// Those made so far, in order.
    [[nodiscard]] std::vector<LOMAssertionReport> reports() const;

private:
    mutable Mutex _mutex;
    std::vector<LOMAssertionReport> _reports NEB_GUARDED_BY(_mutex);
};

}  // namespace neb::nebsc
