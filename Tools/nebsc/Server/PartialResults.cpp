#include "Server/PartialResults.h"

#include <cstddef>
#include <string>

#include "JSON/OutcomeJSON.h"
#include "Server/RPCMessage.h"

namespace neb::nebsc {

namespace {

/// In bytes. Records are sent only while less is waiting. Enough to keep the client busy, and less
/// than the server's limit for responses, so that "$/cancelRequest" is still read.
constexpr std::size_t mostWaitingBytes = std::size_t{1} << 20;

}  // namespace

NEBSourceControlRecordSink partialResultSink(const NEBSourceControlOperation& operation,
                                             MessageWriter& writer,
                                             const nlohmann::ordered_json& token) {
    const std::string start = "{\"token\":" + token.dump() + ",\"value\":{\"records\":";
    return [&operation, &writer, start](const NEBSourceControlResult& records) {
        const std::string text =
            rpcNotificationOfText("$/progress", start + textOfRecords(records) + "}}");
        writer.waitForSpace(mostWaitingBytes, [&operation] { return operation.isCancelled(); });
        writer.send(text);
    };
}

}  // namespace neb::nebsc
