// Replay.h - carries out a recorded request without git, and compares the outcome.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "NEBFoundation/NEBSourceControlTaskOperation.h"
#include "Recording/RecordingReader.h"
#include "Session/HostSession.h"

namespace neb::nebsc {

/// Returns an operation of nebsc's own by the name of its class; null for an unknown one.
using OwnOperationMaker = std::function<std::shared_ptr<NEBSourceControlTaskOperation>(
    const std::string& className, const std::shared_ptr<NEBSourceControlRequest>& request)>;

/// The result of a replay.
struct ReplayedRequest {
    int number = 0;
    /// The name of the request type, "log", or its number.
    std::string name{};
    std::size_t childCount = 0;
    std::size_t recordCount = 0;
    /// Why the request was not replayed; empty if it was.
    std::string notReplayed{};
    /// The differences as lines: "- " and what was recorded, "+ " and what there is now. Empty if
    /// the outcomes are equal.
    std::vector<std::string> differences{};
    /// The outcome, and the records that were delivered before it, as a recording has them; null if
    /// the request was not replayed.
    nlohmann::ordered_json outcome{}, delivered{};
};

/// Replays one request. Starts no process, and neither reads nor changes a file.
[[nodiscard]] ReplayedRequest replay(const HostSession& session, const RecordedRequest& recorded,
                                     const OwnOperationMaker& makeOwn);

}  // namespace neb::nebsc
