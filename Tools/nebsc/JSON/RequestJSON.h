// RequestJSON.h - a request from its JSON form.
//
//     { "type": 18,
//       "sourceTree": { "class": "NEBSourceControlWorkingTree", "location": "/path/or/URL",
//                       "name": "demo", "reachable": true, "isValid": true,
//                       "isRemoteDistributedRepository": false },
//       "repositoryToAuthenticate": { "class": "NEBSourceControlRepository", "reachable": true },
//       "destination": "topic", "files": ["/path/a.c"],
//       "startingRevision": "abc123", "endingRevision": "NEBSourceControlHEADRevisionName",
//       "remote": { "representsGitSVNBridge": false },
//       "options": { "NEBSourceControlRequestOptionLogOutputLimit": 50 } }
//
// Only "type" is required, an integer of 32 bits. null is a missing value. In a member, [] is taken
// for {} and {} for []. "class" is
// NEBSourceControlWorkingTree unless given, "name" the location's last component, "reachable" and
// "isValid" are true, "isRemoteDistributedRepository" (of a repository only) is false.
// "destination", the revisions, the elements of "files" and the values of "options" are any JSON
// scalar: a number that is no 64-bit integer becomes an object whose description is the number as
// it was written. The destination of a clone, where it has one, is an absolute path.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "JSON/JSONText.h"
#include "NEBFoundation/NEBSourceControlArgumentInjection.h"
#include "NEBFoundation/NEBSourceControlRequest.h"

namespace neb::nebsc {

struct RequestReading {
    /// Absent when the text was refused.
    std::shared_ptr<NEBSourceControlRequest> request;
    /// One sentence that names the member and what was expected; empty when there is a request.
    std::string refusal;
};

/// From any thread, as is the next.
[[nodiscard]] RequestReading requestFromJSON(std::string_view text);

/// Of a text that has been read.
[[nodiscard]] RequestReading requestFromJSON(const JSONNode& root);

/// Why a request in JSON is refused for the sake of a value.
[[nodiscard]] std::string sentenceOfRefusedValue(const NEBSourceControlArgumentInjection& value);

}  // namespace neb::nebsc
