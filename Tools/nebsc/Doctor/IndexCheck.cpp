#include "Doctor/Checks.h"
#include "Doctor/IndexFile.h"
#include "Session/GitProgram.h"
#include "Terminal/ShellText.h"

namespace neb::nebsc {

std::string adviceOnDamagedIndex(Examination& examination) {
    return "Recreate it with: rm " + shellQuoted(examination.gitPath("index")) +
           " && git reset (files stay as they are; what was staged is no longer staged)";
}

namespace {

/// git reads a damaged index in spite of its wrong hash.
void checkHash(Examination& examination) {
    const std::optional<std::string> bytes = indexBytesAt(examination.gitPath("index"));
    if (bytes && !hasIntactHash(*bytes)) {
        examination.add(Health::problem, "index", "is damaged: its hash is wrong",
                        adviceOnDamagedIndex(examination));
    } else {
        examination.add(Health::ok, "index", "is readable");
    }
}

}  // namespace

void checkIndex(Examination& examination) {
    if (examination.repository->workingCopy.empty()) {
        return;
    }
    // No tracked file has this name; git reads the whole index to find out.
    const ChildOutcome outcome = examination.query({"ls-files", "--", ":(top,literal).git"});
    if (outcome.status.isSuccess()) {
        checkHash(examination);
        return;
    }
    const std::string reason = reasonOf(outcome);
    const bool isForbidden = reason.find("Permission denied") != std::string::npos;
    examination.add(Health::problem, "index", "git cannot read it: " + reason,
                    isForbidden ? "Make it readable with: chmod u+rw " +
                                      shellQuoted(examination.gitPath("index"))
                                : adviceOnDamagedIndex(examination));
}

}  // namespace neb::nebsc
