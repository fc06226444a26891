// RequestJSON.h - reads a request from its JSON form.
//
//     { "type": 18,
//       "sourceTree": { "class": "NEBSourceControlWorkingTree", "location": "/path/or/URL",
//                       "name": "demo", "reachable": true, "isValid": true,
//                       "isRemoteDistributedRepository": false },
//       "repositoryToAuthenticate": { "class": "NEBSourceControlRepository", "reachable": true },
//       "destination": "topic", "files": ["/path/a.c"],
//       "startingRevision": "abc123", "endingRevision": "NEBSourceControlHEADRevisionName",
//       "remote": { "representsGitSVNBridge": false },
//       "options": { "NEBSourceControlRequestOptionLogOutputLimit": 50 },
//       "limits": { "silenceMilliseconds": 30000, "totalMilliseconds": 600000,
//                   "outputBytes": 100000000, "lockWaitMilliseconds": 2000 },
//       "background": true, "trust": "inspect" }
//
// Only "type" is required; it is a 32-bit integer. null means absent. A member can
// be [] instead of {} and {} instead of [].
//
// Defaults of a source tree: "class" is NEBSourceControlWorkingTree, "name" is the last component
// of the location, "reachable" and "isValid" are true, "isRemoteDistributedRepository" is false
// (only a repository can set it to true).
//
// "destination", the revisions, the elements of "files" and the values of "options" can be any JSON
// scalar, or bytes that are not UTF-8 as {"base64": "…"}. The value of an option can also be an
// array of them. A number that is not a 64-bit integer becomes an object whose description is the
// text of the number. The destination of a clone, if present, must be an absolute path.
//
// "trust" is "trusted", the default, or "inspect"; see NEBSourceControlTrust.
//
// Every function is thread-safe.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "JSON/JSONText.h"
#include "NEBFoundation/NEBSourceControlArgumentInjection.h"
#include "NEBFoundation/NEBSourceControlRequest.h"
#include "Session/RunSettings.h"

namespace neb::nebsc {

/// A request, or the reason why it was refused.
struct RequestReading {
    /// Null if the text was refused.
    std::shared_ptr<NEBSourceControlRequest> request;
    RunSettings settings = {};
    /// One sentence that names the member and the expected value; empty on success.
    std::string refusal = {};
};

/// Reads a request from JSON text.
[[nodiscard]] RequestReading requestFromJSON(std::string_view text);

/// Reads a request from JSON that has been parsed. `defaultTrust` is for one without "trust".
[[nodiscard]] RequestReading requestFromJSON(
    const JSONNode& root, NEBSourceControlTrust defaultTrust = NEBSourceControlTrust::trusted);

/// Returns the message for a request that is refused because of the value.
[[nodiscard]] std::string sentenceOfRefusedValue(const NEBSourceControlArgumentInjection& value);

}  // namespace neb::nebsc
