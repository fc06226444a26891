// Hooks have the same effect under NEBGit as under git.

#include <gmock/gmock.h>

#include <map>
#include <ostream>
#include <sstream>

#include "Classes/Configuration/World.h"
#include "NEBFoundation/NEBSourceControlChildEnvironment.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"

namespace neb {
namespace {

using test::perform;
using test::requestFor;
using test::World;
using testing::HasSubstr;

/// A hook, the request that runs it, and the command that does the same.
struct HookCase {
    std::string hook;
    std::string preparation;
    std::shared_ptr<NEBSourceControlRequest> (*request)(const World& world);
    std::string command;
};

void PrintTo(const HookCase& hookCase, std::ostream* stream) {
    *stream << hookCase.hook;
}

std::shared_ptr<NEBSourceControlRequest> commitRequest(const World& world) {
    auto request = requestFor(NEBSourceControlRequestCommit, world.repository());
    request->options = NEBDictionary{{NEBSourceControlRequestOptionMessage, "by hand"}};
    return request;
}

std::shared_ptr<NEBSourceControlRequest> exchangeRequest(const World& world, std::int32_t type) {
    auto request = requestFor(type, world.repository());
    request->destination = "new";
    request->remote = std::make_shared<NEBSourceControlRemote>();
    request->options = NEBDictionary{{NEBSourceControlRequestOptionRemoteName, "origin"},
                                     {NEBSourceControlRequestOptionBranch, "main"},
                                     {NEBSourceControlRequestOptionPullByFastForwarding, true}};
    return request;
}

std::vector<HookCase> hookCases() {
    const std::string staged = "printf 'é\\n' >>é.txt; git mv old.c renamed.c; git add -A";
    const auto checkOut = [](const World& world) {
        auto request = requestFor(NEBSourceControlRequestCheckout, world.repository());
        request->destination = "topic";
        return request;
    };
    const auto merge = [](const World& world) {
        auto request = requestFor(NEBSourceControlRequestMerge, world.repository());
        request->destination = "topic";
        return request;
    };
    const auto push = [](const World& world) { return exchangeRequest(world, 33); };
    const auto pull = [](const World& world) { return exchangeRequest(world, 13); };
    const auto fetch = [](const World& world) { return exchangeRequest(world, 37); };
    const auto createBranch = [](const World& world) {
        auto request = requestFor(NEBSourceControlRequestCreateBranch, world.repository());
        request->destination = "made";
        return request;
    };
    const std::string mergeCommand = "git merge -s recursive -X ours topic";
    return {
        {"pre-commit", staged, commitRequest, "git commit -m 'by hand' --"},
        {"commit-msg", staged, commitRequest, "git commit -m 'by hand' --"},
        {"post-commit", staged, commitRequest, "git commit -m 'by hand' --"},
        {"post-checkout", staged, checkOut, "git checkout topic --merge"},
        {"pre-merge-commit", "", merge, mergeCommand},
        {"post-merge", "", merge, mergeCommand},
        {"post-merge", "", pull, "git pull --ff-only origin main"},
        {"pre-push", "", push, "git push origin main:new"},
        {"reference-transaction", "", fetch, "git fetch -q origin"},
        {"reference-transaction", "", createBranch, "git branch made"},
    };
}

class Hooks : public test::HygienicTest, public testing::WithParamInterface<HookCase> {
protected:
    /// What the hook wrote to the file "seen" of the world, run by the request and run by the
    /// command.
    struct Seen {
        std::string underRequest, underCommand;
    };

    static Seen seenBy(const std::string& script, const std::string& settings) {
        const World ours;
        prepare(ours, script, settings);
        const auto operation = perform(GetParam().request(ours));
        EXPECT_EQ(operation->error(), std::nullopt);
        const World plain;
        prepare(plain, script, settings);
        plain.run(GetParam().command);
        return {seenIn(ours), seenIn(plain)};
    }

private:
    static void prepare(const World& world, const std::string& script,
                        const std::string& settings) {
        world.run(GetParam().preparation + "\n" + settings);
        world.run("cat >.git/hooks/" + GetParam().hook + " <<'END'\n#!/bin/sh\n{ " + script +
                  "; } >>../seen 2>&1\nEND\nchmod +x .git/hooks/" + GetParam().hook);
    }
    static std::string seenIn(const World& world) {
        const std::string seen = world.run("cat ../seen");
        EXPECT_NE(seen, "") << "the hook did not run";
        return world.withoutPlace(seen);
    }
};

std::map<std::string, std::string> variablesIn(const std::string& lines) {
    std::map<std::string, std::string> variables;
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) {
        const std::size_t end = line.find('=');
        variables[line.substr(0, end)] = line.substr(end + 1);
    }
    return variables;
}

/// The table in docs/children.md, and the settings of NEBSourceControlChildTraits.
const std::map<std::string, std::string> ours{
    {"GIT_EDITOR", ":"},          {"GIT_PAGER", "cat"}, {"GIT_SEQUENCE_EDITOR", ":"},
    {"GIT_TERMINAL_PROMPT", "0"}, {"GIT_TRACE2", "0"},  {"GIT_TRACE2_EVENT", "0"},
    {"GIT_TRACE2_PERF", "0"},     {"LANGUAGE", ""},     {"LC_ALL", "C.UTF-8"},
};

/// The settings for a git that may run hooks, as variables.
std::map<std::string, std::string> settingsThatHooksSee() {
    std::string lines;
    const NEBSourceControlChildTraits traits{.mayRunHooks = true,
                                             .lockWait = NEBSourceControlLimits().lockWait};
    for (const std::string& variable : NEBSourceControlChildEnvironment({}, traits)) {
        lines += variable.starts_with("GIT_CONFIG_") ? variable + "\n" : "";
    }
    return variablesIn(lines);
}

TEST_P(Hooks, SeeTheHostsVariablesAndTheFewThatAreWrittenDown) {
    const Seen seen = seenBy("env", "");
    const auto underRequest = variablesIn(seen.underRequest);
    auto expected = variablesIn(seen.underCommand);
    for (const auto& [name, value] : ours) {
        expected[name] = value;
    }
    for (const auto& [name, value] : settingsThatHooksSee()) {
        expected[name] = value;
    }
    // Set by shells.
    for (const char* name : {"_", "OLDPWD", "SHLVL"}) {
        expected.erase(name);
    }
    auto known = underRequest;
    for (const char* name : {"_", "OLDPWD", "SHLVL"}) {
        known.erase(name);
    }
    EXPECT_EQ(known, expected);
}

/// Settings that change the output of git or what it compares, and colours in pipes.
const std::string userSettings = R"(
git config blame.date relative
git config blame.showEmail true
git config branch.sort -committerdate
git config column.ui always
git config core.quotePath true
git config diff.algorithm patience
git config diff.context 0
git config diff.mnemonicPrefix true
git config diff.orderFile ../order
git config diff.renames false
git config diff.submodule log
git config log.abbrevCommit true
git config log.decorate full
git config log.showRoot false
git config log.showSignature true
git config status.branch true
git config status.renames false
git config status.short true
git config status.showStash true
git config status.showUntrackedFiles no
printf '*.txt\n*.c\n' >../order
)";

TEST_P(Hooks, RunAGitThatWorksAsTheUserHasConfiguredIt) {
    const std::string script =
        "git status; git status --porcelain; git diff --cached; git diff --cached --name-only; "
        "git diff --cached --name-status; git diff --cached --name-only -- '*.c' ':!old.c'; "
        "git diff v1 main; git diff-index --cached HEAD; git diff-tree -r v1 main; "
        "git log -p; git log --oneline --graph; git show --stat; git blame a.c | cut -c 1-9; "
        "git branch -v; git branch -a; git ls-files; git ls-tree -r HEAD; git grep -n one; "
        "git tag; git stash list; git describe --always; git rev-parse --short HEAD; "
        "git config --get status.short; git merge-tree v1 main topic; git var GIT_AUTHOR_IDENT";
    const Seen seen = seenBy(script, userSettings);
    EXPECT_EQ(seen.underRequest, seen.underCommand);
    EXPECT_THAT(seen.underCommand, HasSubstr("tag: refs/tags/v1"));
}

INSTANTIATE_TEST_SUITE_P(Of, Hooks, testing::ValuesIn(hookCases()), [](const auto& tested) {
    std::string title = tested.param.hook + std::to_string(tested.index);
    std::erase(title, '-');
    return title;
});

}  // namespace
}  // namespace neb
