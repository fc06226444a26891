#include "NEBFoundation/NEBSourceControlChildEnvironment.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace neb {

namespace {

struct SetVariable {
    std::string_view name, value, reason;
};

constexpr SetVariable setVariables[] = {
    {"LC_ALL", "C.UTF-8", "errors are recognised by their English texts; names are UTF-8"},
    {"LANGUAGE", "", "would select a translation despite LC_ALL"},
    {"GIT_TERMINAL_PROMPT", "0", "a prompt for credentials fails at once"},
    {"GIT_EDITOR", ":", "a missing message is an error; no editor is started"},
    {"GIT_SEQUENCE_EDITOR", ":", "a rebase uses the list of git"},
    {"GIT_PAGER", "cat", "output is parsed"},
    // trace2 settings of the user may write to standard error, which is parsed.
    {"GIT_TRACE2", "0", "overrides the setting trace2.normalTarget"},
    {"GIT_TRACE2_PERF", "0", "overrides the setting trace2.perfTarget"},
    {"GIT_TRACE2_EVENT", "0", "overrides the setting trace2.eventTarget"},
};

struct RemovedVariable {
    std::string_view name, reason;
};

constexpr std::string_view tiesToRepository = "ties a process to one repository";
constexpr std::string_view changesNames = "changes the meaning of names in the arguments";

constexpr RemovedVariable removedVariables[] = {
    // The variables that `git rev-parse --local-env-vars` lists. The entries of GIT_CONFIG_COUNT
    // belong to the user; they are kept below, before ours.
    {"GIT_ALTERNATE_OBJECT_DIRECTORIES", tiesToRepository},
    {"GIT_CONFIG", tiesToRepository},
    {"GIT_CONFIG_PARAMETERS", "would override the pinned settings"},
    {"GIT_OBJECT_DIRECTORY", tiesToRepository},
    {"GIT_DIR", tiesToRepository},
    {"GIT_WORK_TREE", tiesToRepository},
    {"GIT_IMPLICIT_WORK_TREE", tiesToRepository},
    {"GIT_GRAFT_FILE", tiesToRepository},
    {"GIT_INDEX_FILE", tiesToRepository},
    {"GIT_NO_REPLACE_OBJECTS", tiesToRepository},
    {"GIT_REPLACE_REF_BASE", tiesToRepository},
    {"GIT_PREFIX", tiesToRepository},
    {"GIT_SHALLOW_FILE", tiesToRepository},
    {"GIT_COMMON_DIR", tiesToRepository},
    {"GIT_INTERNAL_SUPER_PREFIX", tiesToRepository},
    {"GIT_LITERAL_PATHSPECS", changesNames},
    {"GIT_GLOB_PATHSPECS", changesNames},
    {"GIT_NOGLOB_PATHSPECS", changesNames},
    {"GIT_ICASE_PATHSPECS", changesNames},
    {"GIT_DIFF_OPTS", "changes the number of context lines"},
    {"GIT_EXTERNAL_DIFF", "replaces a diff with the output of another program"},
    {"GIT_ADVICE", "silences the hint that identifies an unmerged branch"},
    {"GIT_OPTIONAL_LOCKS", "is set for each child"},
    {"GIT_FLUSH", "makes communicating git processes wait forever when it is 0"},
    {"GIT_NAMESPACE", "selects another set of references"},
    {"GIT_QUARANTINE_PATH", "forbids changes of references, as during a received push"},
    {"GIT_ATTR_SOURCE", "takes attributes from another tree"},
    {"GIT_MERGE_VERBOSITY", "silences the lines that name the files in conflict"},
    {"GIT_PRINT_SHA1_ELLIPSIS", "appends dots to commit ids"},
    {"COLUMNS", "fits the summary of a pull to a terminal"},
    {"TAR_OPTIONS", "changes the options of tar in an export"},
    {"GIT_CURL_VERBOSE", "adds to the text of errors"},
    {"GIT_PAGER_IN_USE", "makes git format its output for a terminal"},
};

constexpr std::string_view removedPrefix = "GIT_TRACE";
constexpr std::string_view reasonToRemovePrefix = "adds to the text of errors";

constexpr std::string_view configCount = "GIT_CONFIG_COUNT";
constexpr std::string_view configKey = "GIT_CONFIG_KEY_";
constexpr std::string_view configValue = "GIT_CONFIG_VALUE_";

/// The children that a setting is pinned for. The git processes of a hook inherit the environment
/// and must use the configuration of the user. Therefore a git that may run hooks gets only
/// settings for its own output, and none that change the behaviour of other git processes.
enum class Reach { everyChild, childrenWithoutHooks };

struct PinnedSetting {
    std::string_view key, value;
    Reach reach = Reach::childrenWithoutHooks;
};

/// Pins settings that change parsed output. Settings that express an intention of the user are not
/// pinned: identity and signing; line ends, filters and ignored files; the behaviour of merge,
/// pull, rebase, fetch, push and clone (merge.ff, pull.rebase, fetch.prune, push.followTags …); the
/// clean-up and completion of messages (commit.cleanup, merge.log); hooks, helpers, rewritten URLs;
/// textconv drivers (diff.<driver>.textconv) and ignored submodules (diff.ignoreSubmodules,
/// submodule.<name>.ignore), whose names are not known here; blame.ignoreRevsFile, a list that no
/// setting clears.
constexpr PinnedSetting pinnedSettings[] = {
    // colour: a git of a hook writes to a pipe, so that this changes it only for users who force
    // colours
    {"color.ui", "false", Reach::everyChild},
    {"color.advice", "false", Reach::everyChild},
    {"color.branch", "false", Reach::everyChild},
    {"color.diff", "false", Reach::everyChild},
    {"color.push", "false", Reach::everyChild},
    {"color.remote", "false", Reach::everyChild},
    {"color.status", "false", Reach::everyChild},
    {"color.transport", "false", Reach::everyChild},
    // abbreviations as git chooses them: that of a commit is its result
    {"core.abbrev", "auto", Reach::everyChild},
    // git's input and output is UTF-8
    {"i18n.commitEncoding", "UTF-8", Reach::everyChild},
    {"i18n.logOutputEncoding", "UTF-8", Reach::everyChild},
    // a program that reports changed files may fail or hang
    {"core.fsmonitor", "false", Reach::everyChild},
    // a URL that uses an inherited descriptor: the child inherits none, and would wait forever
    {"protocol.fd.allow", "never", Reach::everyChild},
    // messages of merge, fetch and checkout; of the hints, one that identifies an unmerged branch
    // and one that is part of the output
    {"merge.stat", "true", Reach::everyChild},
    {"merge.verbosity", "2", Reach::everyChild},
    {"fetch.output", "full", Reach::everyChild},
    {"diff.statGraphWidth", "0", Reach::everyChild},
    {"diff.statNameWidth", "0", Reach::everyChild},
    {"advice.forceDeleteBranch", "true", Reach::everyChild},
    {"advice.detachedHead", "true", Reach::everyChild},
    // no columns, and unquoted names where git can print them
    {"column.ui", "never"},
    {"column.branch", "never"},
    {"column.status", "never"},
    {"core.quotePath", "false"},
    // status
    {"status.showUntrackedFiles", "normal"},
    {"status.renames", "true"},
    {"status.renameLimit", "1000"},
    {"status.relativePaths", "true"},
    {"status.branch", "false"},
    {"status.short", "false"},
    {"status.showStash", "false"},
    {"status.submoduleSummary", "false"},
    // what a commit refers to, and the size limit of text files
    {"core.useReplaceRefs", "true"},
    {"core.bigFileThreshold", "512m"},
    // differences
    {"diff.renames", "true"},
    {"diff.renameLimit", "1000"},
    {"diff.noprefix", "false"},
    {"diff.mnemonicPrefix", "false"},
    {"diff.srcPrefix", "a/"},
    {"diff.dstPrefix", "b/"},
    {"diff.relative", "false"},
    {"diff.orderFile", "/dev/null"},
    {"diff.context", "3"},
    {"diff.interHunkContext", "0"},
    {"diff.algorithm", "default"},
    {"diff.indentHeuristic", "true"},
    {"diff.suppressBlankEmpty", "false"},
    {"diff.autoRefreshIndex", "true"},
    {"diff.submodule", "short"},
    {"diff.colorMoved", "no"},
    // blame and log
    {"blame.date", "iso"},
    {"blame.showEmail", "false"},
    {"blame.showRoot", "false"},
    {"blame.blankBoundary", "false"},
    {"blame.coloring", "none"},
    {"blame.markUnblamableLines", "false"},
    {"blame.markIgnoredLines", "false"},
    {"log.decorate", "false"},
    {"log.showSignature", "false"},
    {"log.showRoot", "true"},
    {"log.follow", "false"},
    {"log.abbrevCommit", "false"},
    // the order of listings
    {"branch.sort", "refname"},
};

/// How long git tries to lock a reference, in milliseconds; see git-config(1).
constexpr std::string_view timeoutsOfReferenceLocks[] = {"core.filesRefLockTimeout",
                                                         "core.packedRefsTimeout"};

std::string_view nameOf(std::string_view variable) {
    return variable.substr(0, variable.find('='));
}

bool isManagedVariable(std::string_view name) {
    return std::any_of(std::begin(setVariables), std::end(setVariables),
                       [name](const SetVariable& row) { return row.name == name; });
}

/// Returns why a variable is removed; empty for one that is kept.
std::string_view reasonToRemove(std::string_view name) {
    if (name.substr(0, removedPrefix.size()) == removedPrefix) {
        return reasonToRemovePrefix;
    }
    const auto* row =
        std::find_if(std::begin(removedVariables), std::end(removedVariables),
                     [name](const RemovedVariable& other) { return other.name == name; });
    return row == std::end(removedVariables) ? std::string_view() : row->reason;
}

bool isConfiguration(std::string_view name) {
    return name == configCount || name.substr(0, configKey.size()) == configKey ||
           name.substr(0, configValue.size()) == configValue;
}

std::optional<std::string_view> valueOf(const std::vector<std::string>& environment,
                                        std::string_view name) {
    for (const std::string_view variable : environment) {
        if (nameOf(variable) == name && variable.size() > name.size()) {
            return variable.substr(name.size() + 1);
        }
    }
    return std::nullopt;
}

/// Appends configuration entries in the form in which git reads them from the environment.
class ConfigurationWriter {
public:
    explicit ConfigurationWriter(std::vector<std::string>& environment)
        : _environment(environment) {}

    void add(std::string_view key, std::string_view value) {
        const std::string number = std::to_string(_count++);
        _environment.push_back(std::string(configKey) + number + "=" + std::string(key));
        _environment.push_back(std::string(configValue) + number + "=" + std::string(value));
    }
    void finish() {
        _environment.push_back(std::string(configCount) + "=" + std::to_string(_count));
    }

private:
    std::vector<std::string>& _environment;
    std::size_t _count = 0;
};

/// Returns the entries of the user. git fails if the count is not a number or a pair is incomplete;
/// such entries are left out.
void addUsersEntries(const std::vector<std::string>& inherited, ConfigurationWriter& writer) {
    const std::string_view countText = valueOf(inherited, configCount).value_or("");
    std::size_t count = 0;
    const auto [end, failure] =
        std::from_chars(countText.data(), countText.data() + countText.size(), count);
    if (failure != std::errc() || end != countText.data() + countText.size()) {
        return;
    }
    // There cannot be more pairs than variables, whatever the count.
    for (std::size_t i = 0; i < std::min(count, inherited.size()); ++i) {
        const std::string number = std::to_string(i);
        const auto key = valueOf(inherited, std::string(configKey) + number);
        const auto value = valueOf(inherited, std::string(configValue) + number);
        if (key && value && !key->empty()) {
            writer.add(*key, *value);
        }
    }
}

/// git fails on a value that is no 32-bit integer.
void addLockTimeouts(std::chrono::milliseconds time, ConfigurationWriter& writer) {
    constexpr std::chrono::milliseconds longest(std::numeric_limits<std::int32_t>::max());
    if (time > std::chrono::milliseconds(0)) {
        for (const std::string_view key : timeoutsOfReferenceLocks) {
            writer.add(key, std::to_string(std::min(time, longest).count()));
        }
    }
}

void addSettings(std::span<const NEBSourceControlSetting> settings, ConfigurationWriter& writer) {
    for (const NEBSourceControlSetting& setting : settings) {
        writer.add(setting.key, setting.value);
    }
}

/// Without protocols, git fetches nothing and reports the missing object. With GIT_NO_LAZY_FETCH
/// (git 2.45), several commands report other causes instead, such as "no such path", or succeed.
void preventFetches(std::vector<std::string>& environment) {
    std::erase_if(environment, [](const std::string& variable) {
        const std::string_view name = nameOf(variable);
        return name == "GIT_ALLOW_PROTOCOL" || name == "GIT_NO_LAZY_FETCH";
    });
    environment.emplace_back("GIT_ALLOW_PROTOCOL=");
}

}  // namespace

std::vector<std::string> NEBSourceControlChildEnvironment(
    const std::vector<std::string>& inherited, const NEBSourceControlChildTraits& traits) {
    std::vector<std::string> environment;
    for (const std::string& variable : inherited) {
        const std::string_view name = nameOf(variable);
        if (!isManagedVariable(name) && reasonToRemove(name).empty() && !isConfiguration(name)) {
            environment.push_back(variable);
        }
    }
    for (const SetVariable& row : setVariables) {
        environment.push_back(std::string(row.name) + "=" + std::string(row.value));
    }
    if (traits.hasPatternCharacters) {
        environment.emplace_back("GIT_LITERAL_PATHSPECS=1");
    }
    if (!traits.mayFetchObjects) {
        preventFetches(environment);
    }
    if (traits.isBackgroundWork) {
        environment.emplace_back("GIT_OPTIONAL_LOCKS=0");
    }
    if (traits.writesWholeBuffers) {
        environment.emplace_back("GIT_FLUSH=0");
    }
    ConfigurationWriter writer(environment);
    addUsersEntries(inherited, writer);
    for (const PinnedSetting& setting : pinnedSettings) {
        if (!traits.mayRunHooks || setting.reach == Reach::everyChild) {
            writer.add(setting.key, setting.value);
        }
    }
    if (traits.archivesForOwner) {
        writer.add("tar.umask", "077");
    }
    addLockTimeouts(traits.lockWait, writer);
    addSettings(traits.settings, writer);
    writer.finish();
    return environment;
}

void NEBSourceControlSetVariables(std::vector<std::string>& environment,
                                  const std::vector<std::string>& variables) {
    for (const std::string& variable : variables) {
        std::erase_if(environment, [&variable](const std::string& other) {
            return nameOf(other) == nameOf(variable);
        });
        environment.push_back(variable);
    }
}

std::vector<NEBSourceControlPinnedSetting> NEBSourceControlPinnedSettings() {
    std::vector<NEBSourceControlPinnedSetting> settings;
    for (const PinnedSetting& setting : pinnedSettings) {
        settings.push_back({setting.key, setting.value});
    }
    return settings;
}

std::vector<NEBSourceControlIgnoredVariable> NEBSourceControlIgnoredVariables(
    const std::vector<std::string>& inherited) {
    std::vector<NEBSourceControlIgnoredVariable> variables;
    for (const std::string& variable : inherited) {
        const std::string_view name = nameOf(variable);
        const std::string_view reason = reasonToRemove(name);
        if (!reason.empty() && variable.size() > name.size()) {
            variables.push_back({std::string(name), variable.substr(name.size() + 1), reason});
        }
    }
    return variables;
}

std::vector<std::string> NEBSourceControlInheritedEnvironment() {
    std::vector<std::string> variables;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        variables.emplace_back(*variable);
    }
    return variables;
}

}  // namespace neb
