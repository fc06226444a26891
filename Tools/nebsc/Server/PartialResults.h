// PartialResults.h - "$/progress" notifications with the records of a running request, as in the
// Language Server Protocol 3.17, "Partial Result Progress":
//
//     {"token": "t", "value": {"records": [{"NEBSourceControlOperationRevisionKey":
//     "0123456789ab"}]}}
#pragma once

#include <nlohmann/json.hpp>

#include "NEBFoundation/NEBSourceControlOperation.h"
#include "Server/MessageWriter.h"

namespace neb::nebsc {

/// Returns a sink for the operation that sends each batch of records. While the client does not
/// read, it blocks, and git waits. After a cancellation of the operation and then
/// MessageWriter::wakeWaiting(), it no longer blocks. All arguments must outlive the sink.
[[nodiscard]] NEBSourceControlRecordSink partialResultSink(
    const NEBSourceControlOperation& operation, MessageWriter& writer,
    const nlohmann::ordered_json& token);

}  // namespace neb::nebsc
