// ReportCapture.h - a scope that collects assertion reports.
#pragma once

#include <vector>

#include "LOMFoundation/LOMAssertion.h"
#include "Platform/Mutex.h"

namespace neb::nebsc {

/// Collects the assertion reports of the thread that creates it, and of the operations created on
/// that thread, while it exists. A thread can have only one capture at a time; different threads
/// can have one each. The operations must end before the capture is destroyed.
class ReportCapture {
public:
    ReportCapture();
    ReportCapture(const ReportCapture&) = delete;
    ReportCapture& operator=(const ReportCapture&) = delete;
    ~ReportCapture();

    /// Returns the reports so far, in order. Thread-safe.
    [[nodiscard]] std::vector<LOMAssertionReport> reports() const;

private:
    mutable Mutex _mutex;
    std::vector<LOMAssertionReport> _reports NEB_GUARDED_BY(_mutex);
};

}  // namespace neb::nebsc
