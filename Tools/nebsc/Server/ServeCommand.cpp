#include <unistd.h>

#include "Commands/Commands.h"
#include "Server/Server.h"
#include "Session/OperationRun.h"

namespace neb::nebsc {

namespace {

CommandOutput run(const CommandCall& call) {
    Interruption interruption(call.timeLimit);
    const Server::End end = Server(call.session, interruption, call.plugIn.load.plugIn->version())
                                .run(STDIN_FILENO, STDOUT_FILENO);
    CommandOutput output{.standardOutput = {},
                         .standardError = end.failure.empty() ? "" : diagnostic(end.failure),
                         .exitStatus = end.isOrderly ? exitDone : exitFailed};
    const std::optional<int> signalNumber = interruption.end();
    noteEndOfTime(output, interruption);
    noteInterruption(output, signalNumber);
    return output;
}

}  // namespace

constinit const Command serveCommand{
    .name = "serve",
    .group = requestsGroup,
    .summary = "Serve requests over JSON-RPC, as language servers do",
    .details =
        "Uses JSON-RPC 2.0 on standard input and output; each message has a\n"
        "Content-Length header. Requests run in parallel; those that write to the same\n"
        "working copy run one after the other. Ends after 'exit' or when the client\n"
        "closes its streams. The exit status is 0 after 'shutdown' and 'exit', else 1.\n"
        "docs/server.md describes the methods.\n"
        "\n"
        "Example:\n"
        "  nebsc serve    run by an editor\n",
    .run = run,
};

}  // namespace neb::nebsc
