// Anonymization.h - replaces names and texts in a recording, so that it still replays equally;
// docs/recordings.md says what is replaced.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Recording/Replay.h"

namespace neb::nebsc {

/// Replaces the names and texts in the lines of a complete recording, with random words that are
/// forgotten. Replays the result, without git. Returns why the lines are not anonymous, or do not
/// replay equally; empty on success. The lines must not be used after a failure.
[[nodiscard]] std::string makeAnonymous(std::vector<nlohmann::ordered_json>& lines,
                                        const HostSession& session,
                                        const OwnOperationMaker& makeOwn);

}  // namespace neb::nebsc
