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
    const std::string shell = call.arguments.value("SHELL").value_or("");
    for (const Script& script : scripts) {
        if (script.shell == shell) {
            return {.standardOutput = std::string(script.text),
                    .standardError = {},
                    .exitStatus = exitDone};
        }
    }
    return refusal(
        "No completions are known for the shell \"" + shell + "\", only for bash, zsh and fish.",
        exitNotUnderstood);
}

constexpr Parameter parameters[] = {
    {"SHELL", "The shell", Takes::text, Occurs::once, "bash|zsh|fish"},
};

}  // namespace

constinit const Command completionCommand{
    .name = "completion",
    .group = shellGroup,
    .summary = "Print what lets a shell complete commands, options, branches and files",
    .details =
        "An installed nebsc has it where the shells look for it.\n\n"
        "Examples:\n"
        "  eval \"$(nebsc completion bash)\"      a line for ~/.bashrc\n"
        "  source <(nebsc completion zsh)       a line for ~/.zshrc, behind compinit\n"
        "  nebsc completion fish | source       a line for ~/.config/fish/config.fish\n",
    .parameters = parameters,
    .run = run,
};

}  // namespace neb::nebsc
