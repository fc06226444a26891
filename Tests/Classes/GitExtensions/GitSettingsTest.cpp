#include "GitExtensions/GitSettings.h"

#include "Classes/GitExtensions/ExtensionTest.h"

namespace neb::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::shared_ptr<NEBSourceControlRequest> namesRequest(std::vector<NEBValue> names) {
    auto request = requestFor(NEBSourceControlRequestSettings, "/w");
    request->options = NEBDictionary{{NEBSourceControlRequestOptionSettingNames, std::move(names)}};
    return request;
}

TEST(SettingParser, ReadsThreePiecesPerSetting) {
    using std::string_literals::operator""s;
    const auto records = recordsOf<GitSettingListOperation>(
        namesRequest({"Remote.O.rigin.URL", "core.BARE", "color.ui", "http.x", "a.b"}),
        "local\0file:.git/config\0remote.O.rigin.url\na\nb\0global\0file:/h\xe4\0core.bare\0"
        "command\0command line:\0color.ui\nfalse\0command\0command line:\0http.x\n\0"
        "local\0file:x\0other.y\n1\0local\0file:x\0a.b"s);
    EXPECT_THAT(records,
                ElementsAre(NEBDictionary{{NEBSourceControlOperationKindKey, "setting"},
                                          {NEBSourceControlOperationNameKey, "remote.O.rigin.url"},
                                          {NEBSourceControlOperationValueKey, "a\nb"},
                                          {NEBSourceControlOperationScopeKey, "local"},
                                          {NEBSourceControlOperationOriginKey, "file:.git/config"}},
                            NEBDictionary{{NEBSourceControlOperationKindKey, "setting"},
                                          {NEBSourceControlOperationNameKey, "core.bare"},
                                          {NEBSourceControlOperationScopeKey, "global"},
                                          {NEBSourceControlOperationOriginKey, "file:/h\uFFFD"},
                                          {NEBSourceControlOperationOriginBytesKey,
                                           NEBValue::ofBytes("file:/h\xe4")}},
                            NEBDictionary{{NEBSourceControlOperationKindKey, "setting"},
                                          {NEBSourceControlOperationNameKey, "http.x"},
                                          {NEBSourceControlOperationValueKey, ""},
                                          {NEBSourceControlOperationScopeKey, "command"},
                                          {NEBSourceControlOperationOriginKey, "command line:"}}));
}

class Settings : public ExtensionTest {};

TEST_F(Settings, HaveIdentityAndOrigin) {
    repository.git({"config", "user.name", "Jos\u00e9 \"J\" B"});
    const auto records = recordsOf(request(NEBSourceControlRequestSettings));
    ASSERT_EQ(records.size(), 5U);
    EXPECT_EQ(records[0],
              (NEBDictionary{{NEBSourceControlOperationKindKey, "author"},
                             {NEBSourceControlOperationAuthorKey, "Jos\u00e9 \"J\" B"},
                             {NEBSourceControlOperationAuthorEmailKey, "ann@example.org"}}));
    EXPECT_EQ(records[1].text(NEBSourceControlOperationKindKey), "committer");
    EXPECT_EQ(records[2].text(NEBSourceControlOperationScopeKey), "global");
    EXPECT_EQ(records[4].text(NEBSourceControlOperationValueKey), "Jos\u00e9 \"J\" B");
    EXPECT_EQ(records[4].text(NEBSourceControlOperationScopeKey), "local");
}

TEST_F(Settings, HaveNoIdentityIfGitKnowsNone) {
    repository.git({"config", "user.useConfigOnly", "true"});
    repository.git({"config", "user.email", ""});
    const auto asked = request(NEBSourceControlRequestSettings);
    asked->options = NEBDictionary{
        {NEBSourceControlRequestOptionSettingNames, std::vector<NEBValue>{"user.useconfigonly"}}};
    const auto records = recordsOf(asked);
    ASSERT_FALSE(records.empty());
    EXPECT_EQ(records.back().text(NEBSourceControlOperationValueKey), "true");
}

/// What an operation sets for its own git is not the user's.
TEST_F(Settings, LeaveOutThoseOfTheOperation) {
    const auto asked = request(NEBSourceControlRequestSettings);
    asked->options = NEBDictionary{
        {NEBSourceControlRequestOptionSettingNames,
         std::vector<NEBValue>{"color.ui", "status.showUntrackedFiles", "core.bare"}}};
    const auto records = recordsOf(asked);
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[2].text(NEBSourceControlOperationNameKey), "core.bare");
}

TEST_F(Settings, OfABrokenFileAreAnError) {
    repository.write(".git/config", "[broken");
    EXPECT_EQ(errorClassOf(request(NEBSourceControlRequestSettings)), "configuration-broken");
}

}  // namespace
}  // namespace neb::test
