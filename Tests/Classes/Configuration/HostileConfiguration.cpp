#include "Classes/Configuration/HostileConfiguration.h"

#include <string_view>

namespace neb::test {

namespace {

/// PROGRAM is replaced with the program, FOLDER with the folder of the configuration.
constexpr std::string_view settings = R"(
[include]
    path = ~/.gitconfig
[color]
    ui = always
    advice = always
    branch = always
    decorate = always
    diff = always
    grep = always
    interactive = always
    pager = true
    push = always
    remote = always
    showBranch = always
    status = always
    transport = always
[color "blame"]
    highlightRecent = "blue,12 month ago,white,1 month ago,red"
    repeatedLines = cyan
[color "diff"]
    meta = yellow
[diff "color"]
    new = green
[status "color"]
    added = green
[column]
    ui = always
    branch = always
    clean = always
    status = always
    tag = always
[core]
    abbrev = 40
    askPass = PROGRAM
    editor = PROGRAM
    fsmonitor = PROGRAM
    pager = PROGRAM
    quotePath = true
    warnAmbiguousRefs = false
    whitespace = trailing-space,space-before-tab,tab-in-indent,tabwidth=3
[pager]
    blame = PROGRAM
    branch = PROGRAM
    config = PROGRAM
    diff = PROGRAM
    log = PROGRAM
    remote = PROGRAM
    status = PROGRAM
[sequence]
    editor = PROGRAM
[alias]
    add = !PROGRAM
    archive = !PROGRAM
    blame = !PROGRAM
    branch = !PROGRAM
    checkout = !PROGRAM
    commit = !PROGRAM
    diff = !PROGRAM
    log = !PROGRAM
    merge = !PROGRAM
    push = !PROGRAM
    status = !PROGRAM
    svn = !PROGRAM
[advice]
    addEmbeddedRepo = false
    addEmptyPathspec = false
    addIgnoredFile = false
    ambiguousFetchRefspec = false
    commitBeforeMerge = false
    detachedHead = false
    fetchShowForcedUpdates = false
    forceDeleteBranch = false
    implicitIdentity = false
    mergeConflict = false
    resolveConflict = false
    setUpstreamFailure = false
    skippedCherryPicks = false
    statusHints = false
    statusUoption = false
    suggestDetachingHead = false
[blame]
    blankBoundary = true
    coloring = highlightRecent
    date = relative
    markIgnoredLines = true
    markUnblamableLines = true
    showEmail = true
    showRoot = true
[log]
    abbrevCommit = true
    date = relative
    decorate = full
    diffMerges = first-parent
    excludeDecoration = refs/heads/*
    follow = true
    graphColors = red,blue
    initialDecorationSet = all
    mailmap = false
    showRoot = false
    showSignature = true
[format]
    notes = *
    pretty = fuller
    signOff = true
[notes]
    displayRef = refs/notes/*
[diff]
    algorithm = patience
    autoRefreshIndex = false
    colorMoved = zebra
    colorMovedWS = ignore-all-space
    context = 0
    dirstat = lines,0
    external = PROGRAM
    indentHeuristic = false
    interHunkContext = 9
    mnemonicPrefix = true
    noprefix = true
    orderFile = FOLDER/order
    relative = true
    renameLimit = 1
    renames = false
    statGraphWidth = 3
    statNameWidth = 3
    submodule = log
    suppressBlankEmpty = true
    wordRegex = .
    wsErrorHighlight = all
    srcPrefix = from/
    dstPrefix = to/
[diff "conv"]
    command = PROGRAM
    wordRegex = .
[status]
    aheadBehind = false
    branch = true
    displayCommentPrefix = true
    relativePaths = false
    renameLimit = 1
    renames = false
    short = true
    showStash = true
    showUntrackedFiles = no
    submoduleSummary = true
[branch]
    sort = -committerdate
[tag]
    gpgSign = false
    sort = -taggerdate
[fetch]
    all = true
    output = compact
    showForcedUpdates = false
[merge]
    guitool = PROGRAM
    stat = false
    tool = PROGRAM
    verbosity = 0
[mergetool "PROGRAM"]
    cmd = PROGRAM
[rebase]
    abbreviateCommands = true
    autoSquash = true
    autoStash = true
    backend = apply
    instructionFormat = %an
    missingCommitsCheck = error
    stat = true
    updateRefs = true
[push]
    default = nothing
[commit]
    status = true
    template = FOLDER/template
    verbose = true
[i18n]
    commitEncoding = ISO-8859-1
    logOutputEncoding = ISO-8859-1
[interactive]
    diffFilter = PROGRAM
    singleKey = true
[tar "tar"]
    command = PROGRAM
[help]
    autoCorrect = immediate
[trace2]
    eventTarget = 2
    normalTarget = 2
    perfTarget = 2
)";

std::string filledIn(std::string text, std::string_view place, const std::string& value) {
    for (std::size_t at = text.find(place); at != std::string::npos; at = text.find(place, at)) {
        text.replace(at, place.size(), value);
        at += value.size();
    }
    return text;
}

/// Returns variables that name the program, and those that enable traces.
VariableList programsAndTraces(const std::string& program) {
    return {
        {"EDITOR", program},
        {"GIT_ASKPASS", program},
        {"GIT_EDITOR", program},
        {"GIT_EXTERNAL_DIFF", program},
        {"GIT_PAGER", program},
        {"GIT_PROXY_COMMAND", program},
        {"GIT_SEQUENCE_EDITOR", program},
        {"GIT_SSH", program},
        {"GIT_SSH_COMMAND", program},
        {"PAGER", program},
        {"SSH_ASKPASS", program},
        {"VISUAL", program},
        {"GIT_CURL_VERBOSE", "1"},
        {"GIT_TRACE", "1"},
        {"GIT_TRACE2", "1"},
        {"GIT_TRACE2_EVENT", "1"},
        {"GIT_TRACE2_PERF", "1"},
        {"GIT_TRACE_PACKET", "1"},
        {"GIT_TRACE_PACK_ACCESS", "1"},
        {"GIT_TRACE_PERFORMANCE", "1"},
        {"GIT_TRACE_SETUP", "1"},
        {"GIT_TRACE_SHALLOW", "1"},
    };
}

}  // namespace

HostileConfiguration::HostileConfiguration() {
    const std::string program = _folder.writeProgram(
        "program", "#!/bin/sh\necho \"$0 $*\" >>'" + _folder.path("started") + "'\nsleep 20\n");
    _folder.write("order", "*.txt\n*.c\n");
    _folder.write("template", "A message of the template\n");
    _folder.write("config", filledIn(filledIn(std::string(settings), "PROGRAM", program), "FOLDER",
                                     _folder.path()));
    _variables.emplace(variables());
}

VariableList HostileConfiguration::variables() const {
    const std::string nowhere = _folder.path("nowhere");
    VariableList list{
        {"GIT_CONFIG_GLOBAL", _folder.path("config")},
        // colours and more, with a higher priority than any file
        {"GIT_CONFIG_PARAMETERS", "'color.ui'='always' 'core.abbrev'='9' 'status.short'='true'"},
        {"GIT_CONFIG_COUNT", "4"},
        {"GIT_CONFIG_KEY_0", "color.ui"},
        {"GIT_CONFIG_VALUE_0", "always"},
        {"GIT_CONFIG_KEY_1", "core.quotePath"},
        {"GIT_CONFIG_VALUE_1", "true"},
        {"GIT_CONFIG_KEY_2", "core.abbrev"},
        {"GIT_CONFIG_VALUE_2", "4"},
        {"GIT_CONFIG_KEY_3", "log.decorate"},
        {"GIT_CONFIG_VALUE_3", "short"},
        // another repository
        {"GIT_ALTERNATE_OBJECT_DIRECTORIES", nowhere},
        {"GIT_CEILING_DIRECTORIES", nowhere},
        {"GIT_COMMON_DIR", nowhere},
        {"GIT_CONFIG", nowhere},
        {"GIT_DIR", nowhere},
        {"GIT_GRAFT_FILE", nowhere},
        {"GIT_IMPLICIT_WORK_TREE", "0"},
        {"GIT_INDEX_FILE", nowhere},
        {"GIT_INTERNAL_SUPER_PREFIX", "sub/"},
        {"GIT_NAMESPACE", "elsewhere"},
        {"GIT_NO_REPLACE_OBJECTS", "1"},
        {"GIT_OBJECT_DIRECTORY", nowhere},
        {"GIT_PREFIX", "dir/"},
        {"GIT_QUARANTINE_PATH", nowhere},
        {"GIT_REPLACE_REF_BASE", "refs/elsewhere/"},
        {"GIT_SHALLOW_FILE", nowhere},
        {"GIT_WORK_TREE", nowhere},
        {"GIT_ATTR_SOURCE", "nosuch"},
        // the output of git, and the meaning of names
        {"COLUMNS", "33"},
        {"GIT_ADVICE", "0"},
        {"GIT_DIFF_OPTS", "--unified=1"},
        {"GIT_FLUSH", "1"},
        {"GIT_GLOB_PATHSPECS", "1"},
        {"GIT_ICASE_PATHSPECS", "1"},
        {"GIT_LITERAL_PATHSPECS", "1"},
        {"GIT_MERGE_VERBOSITY", "0"},
        {"GIT_NOGLOB_PATHSPECS", "1"},
        {"GIT_OPTIONAL_LOCKS", "0"},
        {"GIT_PAGER_IN_USE", "1"},
        {"GIT_PRINT_SHA1_ELLIPSIS", "yes"},
        {"LANG", "de_DE.UTF-8"},
        {"LANGUAGE", "de"},
        {"LC_ALL", "de_DE.UTF-8"},
        {"LC_MESSAGES", "de_DE.UTF-8"},
        {"TAR_OPTIONS", "--verbose --strip-components=1"},
        {"TERM", "xterm-256color"},
    };
    for (const auto& [name, value] : programsAndTraces(_folder.path("program"))) {
        list.emplace_back(name, value);
    }
    return list;
}

}  // namespace neb::test
