#include "NEBFoundation/NEBSourceControlChildEnvironment.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <map>
#include <sstream>

#include "NEBFoundation/NEBSourceControlTaskOperation.h"
#include "Support/Matchers.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;
using Variables = std::vector<std::string>;

/// Returns the configuration entries of an environment, in the order in which git reads them.
std::vector<std::pair<std::string, std::string>> settingsOf(const Variables& environment) {
    std::map<std::string, std::string> variables;
    for (const std::string& variable : environment) {
        const std::size_t end = variable.find('=');
        variables[variable.substr(0, end)] = variable.substr(end + 1);
    }
    std::vector<std::pair<std::string, std::string>> settings;
    for (int i = 0; i < std::stoi(variables.at("GIT_CONFIG_COUNT")); ++i) {
        settings.emplace_back(variables.at("GIT_CONFIG_KEY_" + std::to_string(i)),
                              variables.at("GIT_CONFIG_VALUE_" + std::to_string(i)));
    }
    return settings;
}

Variables withoutSettings(const Variables& environment) {
    Variables rest;
    for (const std::string& variable : environment) {
        if (variable.rfind("GIT_CONFIG_", 0) != 0) {
            rest.push_back(variable);
        }
    }
    return rest;
}

using Settings = std::vector<std::pair<std::string, std::string>>;

/// The variables for a git that runs hooks. They do not change what a git in a hook does.
const Settings pinnedForEveryChild{
    {"color.ui", "false"},
    {"color.advice", "false"},
    {"color.branch", "false"},
    {"color.diff", "false"},
    {"color.push", "false"},
    {"color.remote", "false"},
    {"color.status", "false"},
    {"color.transport", "false"},
    {"core.abbrev", "auto"},
    {"i18n.commitEncoding", "UTF-8"},
    {"i18n.logOutputEncoding", "UTF-8"},
    {"core.fsmonitor", "false"},
    {"protocol.fd.allow", "never"},
    {"merge.stat", "true"},
    {"merge.verbosity", "2"},
    {"fetch.output", "full"},
    {"diff.statGraphWidth", "0"},
    {"diff.statNameWidth", "0"},
    {"advice.forceDeleteBranch", "true"},
    {"advice.detachedHead", "true"},
};

const Settings pinnedWithoutHooks{
    {"column.ui", "never"},
    {"column.branch", "never"},
    {"column.status", "never"},
    {"core.quotePath", "false"},
    {"status.showUntrackedFiles", "normal"},
    {"status.renames", "true"},
    {"status.renameLimit", "1000"},
    {"status.relativePaths", "true"},
    {"status.branch", "false"},
    {"status.short", "false"},
    {"status.showStash", "false"},
    {"status.submoduleSummary", "false"},
    {"core.useReplaceRefs", "true"},
    {"core.bigFileThreshold", "512m"},
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
    {"branch.sort", "refname"},
};

Settings joined(Settings settings, const Settings& others) {
    settings.insert(settings.end(), others.begin(), others.end());
    return settings;
}

const Settings pinned = joined(pinnedForEveryChild, pinnedWithoutHooks);

const Variables always{
    "LC_ALL=C.UTF-8",        "LANGUAGE=",     "GIT_TERMINAL_PROMPT=0", "GIT_EDITOR=:",
    "GIT_SEQUENCE_EDITOR=:", "GIT_PAGER=cat", "GIT_TRACE2=0",          "GIT_TRACE2_PERF=0",
    "GIT_TRACE2_EVENT=0",
};

TEST(ChildEnvironment, HasAllVariablesForGit) {
    const Variables environment = NEBSourceControlChildEnvironment({}, {});
    EXPECT_EQ(withoutSettings(environment), always);
    EXPECT_EQ(settingsOf(environment), pinned);
}

TEST(ChildEnvironment, AGitThatRunsHooksGetsOnlyWhatItNeeds) {
    const Variables environment = NEBSourceControlChildEnvironment({}, {.mayRunHooks = true});
    EXPECT_EQ(withoutSettings(environment), always);
    EXPECT_EQ(settingsOf(environment), pinnedForEveryChild);
}

TEST(ChildEnvironment, AnArchiveMayBeForItsOwnerOnly) {
    const Variables environment = NEBSourceControlChildEnvironment({}, {.archivesForOwner = true});
    EXPECT_EQ(settingsOf(environment), joined(pinned, {{"tar.umask", "077"}}));
}

TEST(ChildEnvironment, KeepsGitFromFetchingObjectsWithAnyVersion) {
    const Variables environment = NEBSourceControlChildEnvironment(
        {"GIT_ALLOW_PROTOCOL=file:https", "GIT_NO_LAZY_FETCH=1"}, {.mayFetchObjects = false});
    EXPECT_THAT(environment, Contains("GIT_ALLOW_PROTOCOL="));
    EXPECT_THAT(environment, Not(Contains("GIT_ALLOW_PROTOCOL=file:https")));
    // With this variable, git 2.45 and newer report other causes than the missing object.
    EXPECT_THAT(environment, Not(Contains("GIT_NO_LAZY_FETCH=1")));
}

TEST(ChildEnvironment, KeepsTheVariablesOfTheHostThatAreNotSet) {
    const Variables environment = NEBSourceControlChildEnvironment(
        {"HOME=/h", "PATH=/bin", "LC_ALL=de_DE.UTF-8", "LANGUAGE=de", "GIT_EDITOR=vi",
         "GIT_ASKPASS=/a", "SSH_AUTH_SOCK=/s", "GIT_SSH_COMMAND=ssh -v", "GIT_AUTHOR_NAME=A",
         "GIT_CONFIG_GLOBAL=/g", "EMPTY=", "NOVALUE"},
        {});
    Variables expected{"HOME=/h",
                       "PATH=/bin",
                       "GIT_ASKPASS=/a",
                       "SSH_AUTH_SOCK=/s",
                       "GIT_SSH_COMMAND=ssh -v",
                       "GIT_AUTHOR_NAME=A"};
    EXPECT_THAT(environment, IsSupersetOf(expected));
    EXPECT_THAT(environment, Contains("GIT_CONFIG_GLOBAL=/g"));
    EXPECT_THAT(environment, Contains("EMPTY="));
    EXPECT_THAT(environment, Not(Contains("LC_ALL=de_DE.UTF-8")));
    EXPECT_THAT(environment, Not(Contains("GIT_EDITOR=vi")));
}

TEST(ChildEnvironment, HasNoVariablesThatSelectARepositoryOrTraceToStderr) {
    Variables inherited;
    for (const char* name : {"GIT_ALTERNATE_OBJECT_DIRECTORIES",
                             "GIT_CONFIG",
                             "GIT_CONFIG_PARAMETERS",
                             "GIT_OBJECT_DIRECTORY",
                             "GIT_DIR",
                             "GIT_WORK_TREE",
                             "GIT_IMPLICIT_WORK_TREE",
                             "GIT_GRAFT_FILE",
                             "GIT_INDEX_FILE",
                             "GIT_NO_REPLACE_OBJECTS",
                             "GIT_REPLACE_REF_BASE",
                             "GIT_PREFIX",
                             "GIT_SHALLOW_FILE",
                             "GIT_COMMON_DIR",
                             "GIT_INTERNAL_SUPER_PREFIX",
                             "GIT_TRACE",
                             "GIT_TRACE2",
                             "GIT_TRACE2_EVENT",
                             "GIT_TRACE_SETUP",
                             "GIT_LITERAL_PATHSPECS",
                             "GIT_GLOB_PATHSPECS",
                             "GIT_NOGLOB_PATHSPECS",
                             "GIT_ICASE_PATHSPECS",
                             "GIT_DIFF_OPTS",
                             "GIT_EXTERNAL_DIFF",
                             "GIT_ADVICE",
                             "GIT_PAGER_IN_USE",
                             "GIT_OPTIONAL_LOCKS",
                             "GIT_CURL_VERBOSE",
                             "GIT_FLUSH",
                             "GIT_NAMESPACE",
                             "GIT_QUARANTINE_PATH",
                             "GIT_ATTR_SOURCE",
                             "GIT_MERGE_VERBOSITY",
                             "GIT_PRINT_SHA1_ELLIPSIS",
                             "COLUMNS",
                             "TAR_OPTIONS"}) {
        inherited.push_back(std::string(name) + "=1");
    }
    EXPECT_EQ(withoutSettings(NEBSourceControlChildEnvironment(inherited, {})), always);
}

TEST(ChildEnvironment, RemovesAllVariablesThatTheInstalledGitCallsLocal) {
    const test::TestRepository repository;
    std::istringstream names(repository.git({"rev-parse", "--local-env-vars"}));
    std::string name;
    int count = 0;
    while (std::getline(names, name)) {
        ++count;
        const Variables environment = NEBSourceControlChildEnvironment({name + "=7"}, {});
        EXPECT_THAT(environment, Not(Contains(name + "=7")));
    }
    EXPECT_GT(count, 10);
}

TEST(ChildEnvironment, SettingsFollowThoseOfTheUser) {
    auto expected = pinned;
    expected.insert(expected.begin(), {{"user.name", "A B"}, {"color.ui", ""}});
    EXPECT_EQ(settingsOf(NEBSourceControlChildEnvironment(
                  {"GIT_CONFIG_VALUE_1=", "GIT_CONFIG_COUNT=2", "GIT_CONFIG_KEY_0=user.name",
                   "GIT_CONFIG_VALUE_0=A B", "GIT_CONFIG_KEY_1=color.ui", "GIT_CONFIG_KEY_7=x.y"},
                  {})),
              expected);
}

TEST(ChildEnvironment, LeavesOutSettingsThatGitWouldFailOn) {
    for (const char* count : {"two", "", "-1", "1x", "99999999999999999999"}) {
        EXPECT_EQ(settingsOf(NEBSourceControlChildEnvironment(
                      {std::string("GIT_CONFIG_COUNT=") + count, "GIT_CONFIG_KEY_0=a.b",
                       "GIT_CONFIG_VALUE_0=c"},
                      {})),
                  pinned)
            << count;
    }
    auto expected = pinned;
    expected.insert(expected.begin(), {"c.d", "2"});
    EXPECT_EQ(settingsOf(NEBSourceControlChildEnvironment(
                  {"GIT_CONFIG_COUNT=4000000000", "GIT_CONFIG_KEY_0=a.b", "GIT_CONFIG_KEY_1=c.d",
                   "GIT_CONFIG_VALUE_1=2", "GIT_CONFIG_KEY_2=", "GIT_CONFIG_VALUE_2=3"},
                  {})),
              expected);
}

TEST(ChildEnvironment, TraitsAffectOnlyTheirChild) {
    EXPECT_THAT(NEBSourceControlChildEnvironment({}, {.hasPatternCharacters = true}),
                Contains("GIT_LITERAL_PATHSPECS=1"));
    EXPECT_THAT(NEBSourceControlChildEnvironment({}, {.writesWholeBuffers = true}),
                Contains("GIT_FLUSH=0"));
    EXPECT_THAT(NEBSourceControlChildEnvironment({}, {.isBackgroundWork = true}),
                Contains("GIT_OPTIONAL_LOCKS=0"));
    EXPECT_THAT(NEBSourceControlChildEnvironment({}, {}), Not(Contains(StartsWith("GIT_LIT"))));
    EXPECT_THAT(NEBSourceControlChildEnvironment({}, {}), Not(Contains(StartsWith("GIT_OPT"))));
}

TEST(ChildEnvironment, ReportsRemovedVariablesWithValuesAndReasons) {
    const auto variables = NEBSourceControlIgnoredVariables(
        {"HOME=/x", "GIT_DIR=/a=b", "GIT_TRACE_SETUP=1", "GIT_SSH=ssh", "LC_ALL=C", "GIT_DIR"});
    ASSERT_EQ(variables.size(), 2U);
    EXPECT_EQ(variables[0].name, "GIT_DIR");
    EXPECT_EQ(variables[0].value, "/a=b");
    EXPECT_EQ(variables[0].reason, "ties a process to one repository");
    EXPECT_EQ(variables[1].name, "GIT_TRACE_SETUP");
    EXPECT_EQ(variables[1].reason, "adds to the text of errors");
}

TEST(ChildEnvironment, MakesGitWaitForLockedReferences) {
    const Variables variables = NEBSourceControlChildEnvironment(
        {}, {.mayRunHooks = true, .lockWait = std::chrono::milliseconds(1500)});
    const auto key = std::ranges::find_if(variables, [](const std::string& variable) {
        return variable.ends_with("=core.filesRefLockTimeout");
    });
    ASSERT_LT(key + 3, variables.end());
    EXPECT_TRUE((key + 1)->ends_with("=1500"));
    EXPECT_TRUE((key + 2)->ends_with("=core.packedRefsTimeout"));
    EXPECT_TRUE((key + 3)->ends_with("=1500"));
}

TEST(ChildEnvironment, LetsGitWaitNoLongerThanItsSettingsCan) {
    EXPECT_THAT(NEBSourceControlChildEnvironment({}, {.lockWait = std::chrono::hours(10'000)}),
                testing::Contains(testing::EndsWith("=2147483647")).Times(2));
}

TEST(ChildEnvironment, IsTheEnvironmentOfTheChildrenOfOperations) {
    class EnvironmentOperation : public NEBSourceControlTaskOperation {
    public:
        using NEBSourceControlTaskOperation::NEBSourceControlTaskOperation;
        std::string launchPath() override { return "/usr/bin/env"; }
    };
    ::setenv("GIT_DIR", "/elsewhere", 1);
    EnvironmentOperation operation(test::requestFor(NEBSourceControlRequestStatus, std::nullopt));
    const Variables expected = NEBSourceControlChildEnvironment(
        NEBSourceControlInheritedEnvironment(), {.lockWait = std::chrono::seconds(2)});
    operation.start();
    ::unsetenv("GIT_DIR");
    std::string lines;
    for (const std::string& variable : expected) {
        lines += variable + "\n";
    }
    EXPECT_EQ(*operation.data(), lines);
    EXPECT_THAT(expected, IsSupersetOf(always));
}

}  // namespace
}  // namespace neb
