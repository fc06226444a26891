// RunSettings.h - what a request says about the run of its operation, beside its values.
#pragma once

#include "NEBFoundation/NEBSourceControlLimits.h"
#include "NEBFoundation/NEBSourceControlOperation.h"

namespace neb::nebsc {

struct RunSettings {
    /// An absent limit is no limit.
    NEBSourceControlLimits limits = {};
    /// Whether no user waits for the result; see NEBSourceControlOperation::isBackgroundWork().
    bool isBackgroundWork = false;

    /// Prepares an operation that has not started.
    void applyTo(NEBSourceControlOperation& operation) const {
        operation.setLimits(limits);
        operation.setBackgroundWork(isBackgroundWork);
    }
};

}  // namespace neb::nebsc
