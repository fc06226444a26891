#include "ReportCapture.h"

namespace neb::nebsc {

ReportCapture::ReportCapture() {
    LOMSetAssertionSink([this](const LOMAssertionReport& report) {
        const std::lock_guard lock(_mutex);
        _reports.push_back(report);
    });
}

ReportCapture::~ReportCapture() {
    LOMSetAssertionSink({});
}

std::vector<LOMAssertionReport> ReportCapture::reports() const {
    const std::lock_guard lock(_mutex);
    return _reports;
}

}  // namespace neb::nebsc
