// Failure.h - everyday failures of git, each with what must be told of it and how it is brought
// about with the git that is installed.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Scene.h"

namespace neb::test {

using Request = std::shared_ptr<NEBSourceControlRequest>;

struct Failure {
    /// How it is brought about, a clause; no two failures have the same.
    std::string_view how;
    std::string_view errorClass;
    std::int64_t code;
    /// How the child ended; absent where none ran.
    std::optional<int> exitStatus;
    /// The files told, temporary folders by their placeholder, see withoutAccidents().
    std::vector<std::string> files;
    /// Sets the scene, which lives until the request has been carried out, and answers the request
    /// that fails. Calls skip() of the scene where this machine cannot do it.
    Request (*provoke)(Scene& scene);
};

using Failures = std::vector<Failure>;

Failures networkFailures();
Failures exchangeFailures();
Failures workingCopyFailures();
Failures nameFailures();
Failures commitFailures();
Failures machineFailures();
Failures ambiguityFailures();
Failures contentFailures();
Failures damageFailures();

/// All of them, family by family.
const Failures& allFailures();

/// The text without what differs from run to run: temporary folders are "/tmp/…", ports "PORT",
/// times "N ms", commits and other objects "COMMIT".
std::string withoutAccidents(std::string text);

}  // namespace neb::test
