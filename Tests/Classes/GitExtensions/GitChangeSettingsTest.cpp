#include "GitExtensions/GitChangeSettings.h"

#include <gmock/gmock.h>

#include "Classes/GitExtensions/ChangeRequests.h"

namespace neb::test {
namespace {

using testing::HasSubstr;

class ChangeSettings : public ChangeTest {
protected:
    [[nodiscard]] Operation changed(const char* action, const std::string& name,
                                    NEBDictionary options = {}) const {
        options.set(NEBSourceControlRequestOptionAction, action);
        options.set(NEBSourceControlRequestOptionSettingNames,
                    std::vector<NEBValue>{NEBValue(Data(name))});
        return performed(requestOf(NEBSourceControlRequestSettings, std::move(options)));
    }
    [[nodiscard]] Operation set(const std::string& name, const std::string& value,
                                NEBDictionary options = {}) const {
        options.set(NEBSourceControlRequestOptionValue, NEBValue(Data(value)));
        return changed("set", name, std::move(options));
    }
    [[nodiscard]] std::string valueOf(const std::string& name) const {
        return repository.git({"config", "--local", "--null", "--get", name});
    }
};

const NEBDictionary allValues{{NEBSourceControlRequestOptionAll, true}};

TEST_F(ChangeSettings, AreSetWithAnyValue) {
    using std::string_literals::operator""s;
    for (const std::string value : {"Ann", "", "-x", "two\nlines", "b\xe4r", " \"q\" # ;", "a=b"}) {
        const auto operation = set("user.name", value);
        ASSERT_EQ(operation->error(), std::nullopt) << value;
        EXPECT_EQ(valueOf("user.name"), value + "\0"s);
        EXPECT_EQ(nameIn(operation->result()->front(), NEBSourceControlOperationValueKey,
                         NEBSourceControlOperationValueBytesKey),
                  value);
    }
}

TEST_F(ChangeSettings, HaveAnyValidName) {
    for (const std::string name :
         {"User.Email", "branch.a.b/c.Merge", "url.https://x.example/.insteadOf", "a-1.b-2"}) {
        const auto operation = set(name, "v");
        ASSERT_EQ(operation->error(), std::nullopt) << name;
        EXPECT_EQ(git({"config", "--local", name}), "v");
        EXPECT_EQ(changed("unset", name)->error(), std::nullopt);
        EXPECT_NE(repository.gitStatus({"config", "--local", name}), 0);
    }
    EXPECT_EQ(set("User.Email", "v")->result()->front().text(NEBSourceControlOperationNameKey),
              "user.email");
}

TEST_F(ChangeSettings, AreRemovedWithTheirLastValue) {
    EXPECT_EQ(set("user.name", "Ben")->error(), std::nullopt);
    const auto removed = changed("unset", "user.name");
    EXPECT_EQ(removed->error(), std::nullopt);
    EXPECT_EQ(removed->result()->front().text(NEBSourceControlOperationValueKey), "Ben");
    const auto again = changed("unset", "user.name");
    EXPECT_THAT(again->error(), HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    EXPECT_THAT(again->error()->localizedDescription().value_or(""),
                HasSubstr("\"user.name\" is not set in this repository"));
}

TEST_F(ChangeSettings, WithSeveralValuesAreChangedOnlyAsAWhole) {
    repository.git({"config", "--add", "remote.x.fetch", "+a:b"});
    repository.git({"config", "--add", "remote.x.fetch", "+c:d"});
    for (const auto& operation :
         {set("remote.x.fetch", "+e:f"), changed("unset", "remote.x.fetch")}) {
        EXPECT_THAT(operation->error(), HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
        EXPECT_THAT(operation->error()->localizedDescription().value_or(""),
                    HasSubstr("has 2 values"));
    }
    EXPECT_EQ(git({"config", "--get-all", "remote.x.fetch"}), "+a:b\n+c:d");
    EXPECT_EQ(set("remote.x.fetch", "+e:f", allValues)->error(), std::nullopt);
    EXPECT_EQ(git({"config", "--get-all", "remote.x.fetch"}), "+e:f");
}

TEST_F(ChangeSettings, OfTheUserAreInAnotherFile) {
    const std::string before = git({"config", "--global", "user.name"});
    const NEBDictionary global{{NEBSourceControlRequestOptionScope, "global"}};
    EXPECT_EQ(set("neb.test", "1", global)->error(), std::nullopt);
    EXPECT_EQ(git({"config", "--global", "neb.test"}), "1");
    EXPECT_NE(repository.gitStatus({"config", "--local", "neb.test"}), 0);
    EXPECT_EQ(changed("unset", "neb.test", global)->error(), std::nullopt);
    EXPECT_NE(repository.gitStatus({"config", "neb.test"}), 0);
    EXPECT_EQ(git({"config", "--global", "user.name"}), before);
}

TEST_F(ChangeSettings, SayWhyNot) {
    using std::string_literals::operator""s;
    for (const std::string& name :
         {"user"s, ""s, ".name"s, "user."s, "us er.name"s, "user.1x"s, "user.na_me"s, "a.b\nc.d"s,
          "--list"s, "user.name=x"s, "a.b\0c.d"s}) {
        const auto refused = set(name, "v");
        EXPECT_THAT(refused->error(), HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
        EXPECT_THAT(refused->error()->localizedDescription().value_or(""),
                    HasSubstr("is not the name of one setting, such as \"user.name\"."))
            << name;
    }
    EXPECT_THAT(changed("set", "user.name")->error(),
                HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    const auto both = performed(NEBSourceControlRequestSettings,
                                {{NEBSourceControlRequestOptionAction, "set"},
                                 {NEBSourceControlRequestOptionValue, "x"},
                                 {NEBSourceControlRequestOptionSettingNames,
                                  std::vector<NEBValue>{"user.name", "user.email"}}});
    EXPECT_THAT(both->error(), HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    EXPECT_EQ(both->error()->localizedDescription(),
              "The request names 2 settings; only one can be changed at a time.");
    EXPECT_THAT(changed("add", "user.name")->error(),
                HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    EXPECT_THAT(set("user.name", "x", {{NEBSourceControlRequestOptionScope, "system"}})->error(),
                HasErrorClass(NEBSourceControlRequestInvalidErrorClass));
    EXPECT_NE(repository.gitStatus({"config", "--local", "user.name"}), 0);
}

}  // namespace
}  // namespace neb::test
