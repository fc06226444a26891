#include <unistd.h>

#include "Commands/Commands.h"
#include "Server/Server.h"
#include "Session/OperationRun.h"

namespace neb::nebsc {

namespace {

CommandOutput run(const CommandCall& call) {
    Interruption interruption;
    const Server::End end = Server(call.session, interruption).run(STDIN_FILENO, STDOUT_FILENO);
    CommandOutput reply{.standardOutput = {},
                        .standardError = end.failure.empty() ? "" : complaint(end.failure),
                        .exitStatus = end.isOrderly ? exitDone : exitFailed};
    noteInterruption(reply, interruption.end());
    return reply;
}

}  // namespace

constinit const Command serveCommand{
    .name = "serve",
    .group = requestsGroup,
    .summary = "Serve requests over JSON-RPC, as language servers do",
    .details =
        "Speaks JSON-RPC 2.0 on standard input and output, each message behind a\n"
        "Content-Length header. Requests run side by side; those that write to one working\n"
        "copy run one after the other. Ends with \"exit\", or when the client is gone: 0 after\n"
        "\"shutdown\", else 1.\n\n"
        "Example:\n"
        "  nebsc serve    for an editor to start; docs/server.md tells of the methods\n",
    .run = run,
};

}  // namespace neb::nebsc
