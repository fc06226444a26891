#include "NEBFoundation/NEBSourceControlRepositoryPrograms.h"

#include <gmock/gmock.h>

#include <initializer_list>

#include "NEBFoundation/NEBSourceControlInspection.h"

namespace neb {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

/// Joins texts as git ends them in a listing.
std::string listing(std::initializer_list<std::string_view> pieces) {
    std::string text;
    for (const std::string_view piece : pieces) {
        text.append(piece).push_back('\0');
    }
    return text;
}

auto isSetting(const std::string& key, const std::string& value) {
    return testing::AllOf(testing::Field(&NEBSourceControlSetting::key, key),
                          testing::Field(&NEBSourceControlSetting::value, value));
}

std::vector<std::string> keysOf(const std::vector<NEBSourceControlSetting>& settings) {
    std::vector<std::string> keys;
    for (const NEBSourceControlSetting& setting : settings) {
        keys.push_back(setting.key);
    }
    return keys;
}

TEST(RepositoryPrograms, AreThoseOfTheRepositoryAlone) {
    const auto programs = NEBSourceControlProgramsInSettings(
        listing({"system", "file:/etc/gitconfig", "filter.lfs.clean\ngit-lfs clean %f", "global",
                 "file:/home/me/.gitconfig", "core.pager\nless", "local", "file:.git/config",
                 "core.bare\nfalse", "local", "file:.git/config", "filter.evil.clean\nrm -r .",
                 "worktree", "file:.git/config.worktree", "filter.evil.required", "command",
                 "command line:", "core.editor\nvi"}));
    EXPECT_THAT(programs.switchedOff, ElementsAre("filter.evil.clean", "filter.evil.required"));
    EXPECT_THAT(programs.pinned, Contains(isSetting("filter.evil.clean", "")));
    EXPECT_THAT(programs.pinned, Contains(isSetting("filter.evil.required", "false")));
    EXPECT_THAT(keysOf(programs.pinned), Not(Contains("filter.lfs.clean")));
    EXPECT_EQ(programs.file, ".git/config");
    EXPECT_THAT(programs.transport, IsEmpty());
}

TEST(RepositoryPrograms, AreReplacedWithThoseOfTheUser) {
    const auto programs = NEBSourceControlProgramsInSettings(
        listing({"system", "file:/s", "filter.lfs.clean\nold", "global", "file:/g",
                 "filter.lfs.clean\nnew", "local", "file:.git/config", "filter.lfs.clean\nevil",
                 "local", "file:.git/config", "core.sshcommand\nevil"}));
    EXPECT_THAT(programs.pinned, Contains(isSetting("filter.lfs.clean", "new")));
    EXPECT_THAT(programs.pinned, Contains(isSetting("core.sshcommand", "ssh")));
}

TEST(RepositoryPrograms, FillListsWithThoseOfTheUser) {
    const auto programs = NEBSourceControlProgramsInSettings(
        listing({"global", "file:/g", "credential.helper\nstore", "global", "file:/g",
                 "credential.https://h.helper\nh", "local", "file:.git/config",
                 "credential.helper\nevil"}));
    const std::vector<NEBSourceControlSetting> last(programs.pinned.end() - 3,
                                                    programs.pinned.end());
    EXPECT_THAT(last, ElementsAre(isSetting("credential.helper", ""),
                                  isSetting("credential.helper", "store"),
                                  isSetting("credential.https://h.helper", "h")));
}

TEST(RepositoryPrograms, AlwaysLackHooksAndOtherProtocols) {
    const auto programs = NEBSourceControlProgramsInSettings(
        listing({"global", "file:/g", "core.hookspath\n.githooks", "global", "file:/g",
                 "protocol.ext.allow\nalways", "global", "file:/g", "protocol.allow\nuser",
                 "global", "file:/g", "protocol.https.allow\nnever"}));
    EXPECT_THAT(programs.pinned, Contains(isSetting("core.hookspath", "/dev/null")));
    EXPECT_THAT(programs.pinned, Contains(isSetting("protocol.ext.allow", "never")));
    EXPECT_THAT(programs.pinned, Contains(isSetting("protocol.allow", "never")));
    EXPECT_THAT(programs.pinned, Contains(isSetting("protocol.https.allow", "never")));
    EXPECT_THAT(programs.pinned, Contains(isSetting("protocol.ssh.allow", "user")));
    EXPECT_THAT(programs.switchedOff, IsEmpty());
}

TEST(RepositoryPrograms, NameWhatCannotBeReplaced) {
    const auto programs = NEBSourceControlProgramsInSettings(
        listing({"local", "file:.git/config", "remote.a.b.uploadpack\nx", "local",
                 "file:.git/config", "url.ssh://x/.insteadof\ny", "local", "file:.git/config",
                 "remote.origin.url\nz", "local", "file:.git/config", "http.proxy\nevil:1"}));
    EXPECT_THAT(programs.transport,
                ElementsAre("remote.a.b.uploadpack", "url.ssh://x/.insteadof", "http.proxy"));
    EXPECT_THAT(programs.switchedOff, IsEmpty());
}

TEST(RepositoryPrograms, SurviveAListingThatIsCutOff) {
    const std::string whole =
        listing({"local", "file:.git/config", "filter.x.clean\ny", "odd", "", "filter.z.smudge"});
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const auto programs =
            NEBSourceControlProgramsInSettings(std::string_view(whole).substr(0, size));
        EXPECT_LE(programs.switchedOff.size(), 2U);
    }
    EXPECT_THAT(NEBSourceControlProgramsInSettings(whole).switchedOff,
                ElementsAre("filter.x.clean", "filter.z.smudge"));
}

TEST(InspectedCommand, KeepsGlobalArgumentsInFront) {
    const NEBSourceControlInspectedCommand command(
        "/usr/bin/git", {"--git-dir=/r", "-c", "a.b=c", "diff", "HEAD", "--", "f"}, "/w");
    EXPECT_THAT(command.settingsArguments(),
                ElementsAre("--git-dir=/r", "-c", "a.b=c", "config", "--null", "--show-scope",
                            "--show-origin", "--list"));
    EXPECT_THAT(command.safeArguments(),
                ElementsAre("--git-dir=/r", "-c", "a.b=c", "diff", "--no-textconv", "--no-ext-diff",
                            "--ignore-submodules=dirty", "HEAD", "--", "f"));
    EXPECT_TRUE(command.examinesSubmodules());
    EXPECT_FALSE(command.contactsServer());
}

TEST(InspectedCommand, ChangesNoOtherProgram) {
    const NEBSourceControlInspectedCommand command("/bin/sh", {"-c", "git diff"}, "/w");
    EXPECT_THAT(command.safeArguments(), ElementsAre("-c", "git diff"));
    EXPECT_FALSE(command.examinesSubmodules());
    EXPECT_THAT(command.settingsArguments(),
                ElementsAre("config", "--null", "--show-scope", "--show-origin", "--list"));
    EXPECT_TRUE(
        NEBSourceControlInspectedCommand("/usr/bin/git", {"ls-remote"}, "/").contactsServer());
}

}  // namespace
}  // namespace neb
