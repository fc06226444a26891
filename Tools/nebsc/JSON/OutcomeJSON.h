// OutcomeJSON.h - an outcome in its JSON form.
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
// Every member is always there, null where it is absent. "name" is the type's plain name; it
// and "type" are null where no request was made. The
// "pipeTo" of a command is a command, "terminationStatus" is null for a child that did not exit. A
// date is "2012-03-04T05:06:07Z", a file path its string, a dictionary an object. "error" is null
// or { "domain", "code", "class", "terminationStatus", "text", "hints", "remoteLines", "files",
// "localizedDescription", "localizedRecoverySuggestion", "userInfo" }; its "terminationStatus" is
// an exit status or the name of a signal, the three in the plural are arrays of strings.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "Session/Outcome.h"

namespace neb::nebsc {

/// Returns the outcome's JSON in one line without a line end; bytes that are no UTF-8 become
/// U+FFFD. Throws std::bad_alloc where memory runs out. Thread-safe, as is all below.
[[nodiscard]] std::string textOfOutcome(const Outcome& outcome);

/// Returns what `write` makes of the outcome. Where memory runs out meanwhile, the result is freed,
/// and `write` is called again with an outcome whose error, of the class "out-of-memory", says so.
[[nodiscard]] std::string writtenOutcome(Outcome& outcome,
                                         const std::function<std::string(const Outcome&)>& write);

/// The JSON on one line, line end included; bytes that are no UTF-8 become U+FFFD.
[[nodiscard]] std::string lineOfJSON(const nlohmann::ordered_json& json);

}  // namespace neb::nebsc
