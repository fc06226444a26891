// OutcomeJSON.h - the JSON form of an outcome.
//
//     { "type": 18, "name": "log", "authenticationRequired": false, "valid": true,
//       "operation": "GitLogOperation",
//       "command": { "launchPath": "/usr/bin/git", "arguments": ["log", "…"],
//                    "currentDirectoryPath": "/path", "pipeTo": null },
//       "commands": [ { "launchPath": "…", "arguments": ["…"], "currentDirectoryPath": "…",
//                       "terminationStatus": 0, "milliseconds": 3.1 } ],
//       "reports": [ { "function": "-[GitController operationForRequest:]",
//                      "file": "Classes/GitController", "line": 107,
//                      "message": "Assertion failed: request.destination",
//                      "condition": "request.destination" } ],
//       "result": [ { "NEBSourceControlOperationRevisionKey": "0123456789ab" } ],
//       "error": null }
//
// All these members are always present; an absent value is null. Four more members exist only if
// the outcome has them: "recordCount", the number of records that were delivered while the
// operation ran, "omittedRevisions", an array of strings, "switchedOff", an array of strings, and
// "settledConflicts", an array of strings or null if git failed to list the files.
//
// "name" is the name of the type; both are null if no request was made. "pipeTo" is a command with
// the same members. The "terminationStatus" of a command is null if the child did not exit. A date
// is "2012-03-04T05:06:07Z", a file path a string, a dictionary an object. Bytes are an object with
// one member: {"base64": "4oKs"}.
//
// "error" is null or { "domain", "code", "class", "terminationStatus", "text", "hints",
// "remoteLines", "files", "localizedDescription", "localizedRecoverySuggestion", "userInfo" }. Its
// "terminationStatus" is an exit status or the name of a signal; "hints", "remoteLines" and "files"
// are arrays of strings.
//
// Every function is thread-safe.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "Session/Outcome.h"

namespace neb::nebsc {

/// Returns the outcome as JSON on one line, without a line end. Bytes that are not UTF-8 become
/// U+FFFD. Throws std::bad_alloc if memory runs out.
[[nodiscard]] std::string textOfOutcome(const Outcome& outcome);

/// Returns the line {"outcome": …} that follows the records of a streamed request, with its end.
/// Throws std::bad_alloc if memory runs out.
[[nodiscard]] std::string lineOfStreamedOutcome(const Outcome& outcome);

/// Returns the record as a JSON object, as in the member "result". Throws std::bad_alloc if memory
/// runs out.
[[nodiscard]] std::string textOfRecord(const NEBDictionary& record);

/// Returns the records as a JSON array, as in the member "result". Throws std::bad_alloc if memory
/// runs out.
[[nodiscard]] std::string textOfRecords(const NEBSourceControlResult& records);

/// Returns the result of `write`. If `write` throws because memory runs out, frees the result, sets
/// an error of the class "out-of-memory", and calls `write` again.
[[nodiscard]] std::string writtenOutcome(Outcome& outcome,
                                         const std::function<std::string(const Outcome&)>& write);

/// Returns the JSON on one line, with a line end. Bytes that are not UTF-8 become U+FFFD.
[[nodiscard]] std::string lineOfJSON(const nlohmann::ordered_json& json);

}  // namespace neb::nebsc
