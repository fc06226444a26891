#include <algorithm>
#include <array>

#include "Commands/Commands.h"
#include "CompletionScripts.h"

namespace neb::nebsc {

namespace {

struct Script {
    std::string_view shell;
    std::string_view text;
};

constexpr std::array<Script, 3> scripts{{
    {"bash", bashCompletion},
    {"zsh", zshCompletion},
    {"fish", fishCompletion},
}};

CommandOutput run(const CommandCall& call) {
    const std::string shell = *call.arguments.value("SHELL");
    const auto* script = std::find_if(scripts.begin(), scripts.end(),
                                      [&shell](const Script& row) { return row.shell == shell; });
    return {
        .standardOutput = std::string(script->text), .standardError = {}, .exitStatus = exitDone};
}

/// The choices are the shells of the table above.
constexpr Parameter parameters[] = {
    {"SHELL", "The shell: bash, zsh or fish", Takes::text, Occurs::once, "bash|zsh|fish"},
};

}  // namespace

constinit const Command completionCommand{
    .name = "completion",
    .group = shellGroup,
    .summary = "Print the completion script of a shell",
    .details =
        "The script completes commands, options, branches and files. An installed nebsc\n"
        "needs no setup: its scripts are where the shells look for them.\n"
        "\n"
        "Examples:\n"
        "  eval \"$(nebsc completion bash)\"      enable it in bash (~/.bashrc)\n"
        "  source <(nebsc completion zsh)       in zsh (~/.zshrc, after compinit)\n"
        "  nebsc completion fish | source       in fish (~/.config/fish/config.fish)\n",
    .parameters = parameters,
    .needsPlugIn = false,
    .run = run,
};

}  // namespace neb::nebsc
