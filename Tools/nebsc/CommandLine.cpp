#include "CommandLine.h"

#include <CLI/CLI.hpp>

namespace neb::nebsc {

namespace {

constexpr const char* description =
    "Drives the source-control plug-in NEBGit: hands it requests, as a development\n"
    "environment does, and shows what comes of them.";

constexpr const char* examples = R"(Examples:
  nebsc status                        what has changed in the working copy around here
  nebsc status src/main.c             the same for one file or folder
  nebsc status --json                 the same for a program to read
  nebsc types                         which types of request there are, and what each needs
  echo '{"type": 15, "sourceTree": {"location": "/path"}}' | nebsc request
  nebsc request --dry-run log.json    what a request would run, without running it

Exit status: 0 done, 1 the operation failed, 2 the call cannot be understood.
)";

/// The words of one command line, filled while they are read.
struct Words {
    CLI::App app{description, "nebsc"};
    CLI::App* request = nullptr;
    CLI::App* status = nullptr;
    CLI::App* types = nullptr;
    RequestCall requestCall;
    StatusCall statusCall;
    std::string plugIn;
    bool isJSON = false;
    bool isVersion = false;

    Words();
};

/// The options of all commands, which the help of a single one does not list.
constexpr const char* commonOptions =
    "--json and --plugin FILE may stand here too; see nebsc --help.\n";

Words::Words() {
    app.fallthrough();  // before the commands, which take it over: options may follow them
    app.require_subcommand(0, 1);
    app.footer(examples);
    app.add_option("--plugin", plugIn,
                   "The plug-in's file; unless given, NEBGit.so in lib beside nebsc's own folder")
        ->type_name("FILE");
    app.add_flag("--json", isJSON, "One line of JSON instead of text for a person")
        ->disable_flag_override();
    app.add_flag("--version", isVersion, "Show the versions of nebsc, the plug-in and git")
        ->disable_flag_override();

    status = app.add_subcommand("status", "Show which files of a working copy have changed");
    status
        ->add_option(
            "PATH", statusCall.path,
            "A file or folder, deleted ones included; unless given, the whole working copy")
        ->type_name("");
    request = app.add_subcommand("request", "Carry out a request in JSON and print its outcome");
    request
        ->add_option("FILE", requestCall.file,
                     "The request; unless given, or for -, standard input is read")
        ->type_name("");
    request->add_flag("--dry-run", requestCall.isDryRun, "Make the operation, do not run it")
        ->disable_flag_override();
    types = app.add_subcommand("types", "List the types of request and what each needs");
    for (CLI::App* command : {status, request, types}) {
        command->footer(commonOptions);
    }
}

Reply helpReply(const CLI::App& app) {
    return {.standardOutput = app.help(), .standardError = {}, .exitStatus = exitDone};
}

Reply refusedCall(std::string reason) {
    if (!reason.empty() && reason.back() == '.') {
        reason.pop_back();
    }
    return refusal(reason + " (see nebsc --help).", exitNotUnderstood);
}

std::variant<Call, Reply> understood(const Words& words, bool isAlone) {
    Call call{.command = Call::Version(), .plugIn = words.plugIn, .isJSON = words.isJSON};
    if (words.isVersion) {
        return call;
    }
    if (words.request->parsed()) {
        call.command = words.requestCall;
    } else if (words.status->parsed()) {
        call.command = words.statusCall;
    } else if (words.types->parsed()) {
        call.command = Call::Types();
    } else if (isAlone) {
        return helpReply(words.app);
    } else {
        return refusedCall("A command is missing: status, request or types was expected");
    }
    return call;
}

}  // namespace

std::variant<Call, Reply> readCommandLine(int argc, const char* const* argv) {
    Words words;
    try {
        words.app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        return helpReply(words.app);
    } catch (const CLI::ParseError& error) {
        return refusedCall(error.what());
    }
    return understood(words, argc < 2);
}

}  // namespace neb::nebsc
