// Failure.h - common failures of git: how to provoke them, and the errors to expect.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Scene.h"

namespace neb::test {

using Request = std::shared_ptr<NEBSourceControlRequest>;

struct Failure {
    /// What fails, as a noun phrase or a clause; unique.
    std::string_view how;
    std::string_view errorClass;
    std::int64_t code = NEBSourceControlGenericError;
    /// The exit status of the child; absent if none ran or a signal ended it.
    std::optional<int> exitStatus = {};
    /// The exit status of newer versions of git, if it differs.
    std::optional<int> laterExitStatus = {};
    /// The files of the error, see withoutVariableParts().
    std::vector<std::string> files = {};
    /// Prepares the scene and returns the request that fails. The scene lives until the request has
    /// finished. Calls Scene::skip() if this machine cannot provoke the failure.
    Request (*provoke)(Scene& scene);
};

using Failures = std::span<const Failure>;

// The failures by topic, each in the file of its name.
Failures networkFailures();
Failures exchangeFailures();
Failures workingCopyFailures();
Failures nameFailures();
Failures commitFailures();
Failures machineFailures();
Failures ambiguityFailures();
Failures contentFailures();
Failures damageFailures();

/// Returns all failures, topic by topic.
Failures allFailures();

/// Replaces what differs from run to run: temporary folders by "/tmp/…", ports by "PORT", times by
/// "N ms", names of commits and other objects by "COMMIT".
std::string withoutVariableParts(std::string text);

}  // namespace neb::test
