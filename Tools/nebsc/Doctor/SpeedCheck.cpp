#include "Doctor/Checks.h"
#include "Doctor/SpeedExamination.h"

namespace neb::nebsc {

namespace {

constexpr const char* subject = "speed";

constexpr SpeedLimits limits{.whole = std::chrono::milliseconds(2000),
                             .probe = std::chrono::milliseconds(300),
                             .repetition = std::chrono::milliseconds(100)};

}  // namespace

void checkSpeed(Examination& examination) {
    if (!examination.repository || !examination.settings) {
        return;
    }
    const SpeedReport report = SpeedExamination(examination, limits).report(leastGainOfTuning);
    for (const SlowFinding& finding : report.findings) {
        const Slowness& slowness = finding.slowness;
        examination.add(Health::note, subject, slowness.text + ": " + textOf(finding.measurements),
                        slowness.obstacle.empty()
                            ? "'nebsc tune' offers to " + std::string(finding.cause->remedy) + "."
                            : slowness.obstacle);
    }
    std::string unchecked;
    for (const std::string_view name : report.unchecked) {
        unchecked.append(unchecked.empty() ? "" : ", ").append(name);
    }
    if (!unchecked.empty()) {
        examination.add(Health::note, subject, "no time was left to check: " + unchecked,
                        "'nebsc tune --dry-run' takes more time.");
    } else if (report.findings.empty()) {
        examination.add(Health::ok, subject, "no setting or missing file slows git down");
    }
}

}  // namespace neb::nebsc
