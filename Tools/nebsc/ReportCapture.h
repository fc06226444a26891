// ReportCapture.h - collects the assertion reports made while it lives.
//
// Reports go through one sink of the process, so one capture lives at a time; the default sink is
// back when it is gone. Reports may come from any thread.
#pragma once

#include <mutex>
#include <vector>

#include "LOMFoundation/LOMAssertion.h"

namespace neb::nebsc {

class ReportCapture {
public:
    ReportCapture();
    ReportCapture(const ReportCapture&) = delete;
    ReportCapture& operator=(const ReportCapture&) = delete;
    ~ReportCapture();

    /// Those made so far, in order.
    [[nodiscard]] std::vector<LOMAssertionReport> reports() const;

private:
    mutable std::mutex _mutex;
    std::vector<LOMAssertionReport> _reports;  // guarded by _mutex
};

}  // namespace neb::nebsc
