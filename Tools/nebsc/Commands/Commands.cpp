#include "Commands/Commands.h"

#include <array>

#include "Commands/RecordingCommands.h"

namespace neb::nebsc {

namespace {

constexpr std::array commands{
    &statusCommand,
    &logCommand,
    &showCommand,
    &blameCommand,
    &diffCommand,
    &listCommand,
    &catCommand,
    &exportCommand,
    &exportTreeCommand,
    &infoCommand,
    &browseCommand,
    &doctorCommand,
    //
    &initCommand,
    &addCommand,
    &removeCommand,
    &moveCommand,
    &copyCommand,
    &makeDirectoryCommand,
    &ignoreCommand,
    &revertCommand,
    &commitCommand,
    &stageCommand,
    &unstageCommand,
    &discardCommand,
    &stashCommand,
    &continueCommand,
    &skipCommand,
    &abortCommand,
    &configCommand,
    &tuneCommand,
    //
    &branchCommand,
    &checkoutCommand,
    &switchCommand,
    &mergeCommand,
    &mergeBaseCommand,
    &tagCommand,
    &cherryPickCommand,
    &resetCommand,
    &worktreeCommand,
    &submoduleCommand,
    //
    &cloneCommand,
    &remoteCommand,
    &fetchCommand,
    &pushCommand,
    &updateCommand,
    &pullCommand,
    //
    &subversionCommand,
    //
    &requestCommand,
    &serveCommand,
    &replayCommand,
    &reportCommand,
    &typesCommand,
    //
    &completionCommand,
    &completeCommand,
    &manualCommand,
};

}  // namespace

std::span<const Command* const> allCommands() {
    return commands;
}

}  // namespace neb::nebsc
