#include "Session/ReportCapture.h"

namespace neb::nebsc {

ReportCapture::ReportCapture() {
    LOMSetAssertionSinkOfThread([this](const LOMAssertionReport& report) {
        const MutexLock lock(_mutex);
        _reports.push_back(report);
    });
}

std::vector<LOMAssertionReport> ReportCapture::reports() const {
    const MutexLock lock(_mutex);
    return _reports;
}

ReportCapture::~ReportCapture() {
    LOMSetAssertionSinkOfThread({});
}

}  // namespace neb::nebsc
