#include "ReportCapture.h"

namespace neb::nebsc {

ReportCapture::ReportCapture() {
    LOMSetAssertionSinkOfThread(
        [this](const LOMAssertionReport& report) { _reports.push_back(report); });
}

ReportCapture::~ReportCapture() {
    LOMSetAssertionSinkOfThread({});
}

}  // namespace neb::nebsc
