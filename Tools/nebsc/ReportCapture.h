// ReportCapture.h - collects the assertion reports that a thread makes while it lives.
//
// An operation reports on the thread that makes and starts it. Several captures may live at once,
// each on a thread of its own; reports of threads without one go where reports go by default.
#pragma once

#include <vector>

#include "LOMFoundation/LOMAssertion.h"

namespace neb::nebsc {

/// Of the thread that makes it, and never two at a time there.
class ReportCapture {
public:
    ReportCapture();
    ReportCapture(const ReportCapture&) = delete;
    ReportCapture& operator=(const ReportCapture&) = delete;
    ~ReportCapture();

    /// Those made so far, in order.
    [[nodiscard]] const std::vector<LOMAssertionReport>& reports() const { return _reports; }

private:
    std::vector<LOMAssertionReport> _reports;
};

}  // namespace neb::nebsc
