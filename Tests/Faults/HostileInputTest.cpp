// Passes names and texts that break shells, option parsers and JSON through requests, commands and
// the server: no unexpected program runs, and names are reported unchanged.

#include <gmock/gmock.h>

#include <filesystem>

#include "NEBFoundation/NEBSourceControlArgumentInjection.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/Text.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"
#include "nebsc/NebscRun.h"
#include "nebsc/Server/ServerClient.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using testing::HasSubstr;
using JSON = nlohmann::ordered_json;

/// Each text would run the program "evil" or write the file "evil" if it were interpreted.
const std::vector<std::string>& hostileTexts() {
    static const std::vector<std::string> texts{
        "$(evil)",
        "`evil`",
        ";evil;",
        "|evil",
        "&evil&",
        "x\nevil\n",
        "'\nevil\n'",
        "\";evil;\"",
        "');evil;('",
        ">evil",
        "\\\nevil",
        "${IFS}evil$(evil)",
        "x; evil # ",
        "--upload-pack=evil",
        "--exec=evil",
        "--output=evil",
        "-oProxyCommand=evil",
        "-c core.sshCommand=evil",
        "--config=core.fsmonitor=evil",
        "-",
        "--",
        "ext::evil",
        "ext::sh -c evil",
        "ssh://-oProxyCommand=evil/x",
        "fd::17",
        "file://$(evil)/x",
        "\x1b]0;evil\x07\x1b[2J",
        "\xe2\x80\xae"
        "live\xe2\x81\xa6",
        "\",\"error\":null,\"x\":\"",
        "\\u0000\\",
        "%s%n%s",
        std::string(4000, 'n'),
        std::string(2000, '\'') + "$(evil)",
    };
    return texts;
}

/// A folder for PATH with a program "evil" that records its calls; git is the real one.
class Evil {
public:
    Evil() {
        _folder.writeProgram("evil", "#!/bin/sh\necho \"$0 $*\" >>'" + _folder.path("ran") + "'\n");
    }
    [[nodiscard]] std::pair<std::string, std::optional<std::string>> path() const {
        return {"PATH", _folder.path() + ":/usr/bin:/bin"};
    }
    [[nodiscard]] std::string whatRan() const { return _folder.read("ran"); }

private:
    TemporaryFolder _folder;
};

/// Returns a request of the type with the text in every member.
JSON requestHolding(int type, const std::string& location, const std::string& text) {
    JSON options;
    for (const char* option : {"RepositoryPath", "WorkingCopyPath", "Branch", "RemoteName",
                               "SourceLocation", "Message"}) {
        if (type != NEBSourceControlRequestCreateRepository ||
            std::string(option) != "RepositoryPath") {
            options[std::string("NEBSourceControlRequestOption") + option] = text;
        }
    }
    // With these, git would look for another repository and fail.
    options.erase("NEBSourceControlRequestOptionRepositoryPath");
    options.erase("NEBSourceControlRequestOptionWorkingCopyPath");
    JSON request{{"type", type},
                 {"sourceTree", {{"location", location}, {"name", text}}},
                 {"repositoryToAuthenticate", {{"class", "NEBSourceControlRepository"}}},
                 {"destination", text},
                 {"files", {text}},
                 {"startingRevision", text},
                 {"endingRevision", text},
                 {"remote", {{"representsGitSVNBridge", false}}},
                 {"options", options}};
    if (type == NEBSourceControlRequestClone) {
        request["destination"] = location + "/clone";
        request["sourceTree"] = {
            {"class", "NEBSourceControlRepository"},
            {"location", text.find("://") == std::string::npos ? "file:///" + text : text}};
    }
    return request;
}

class HostileInput : public HygienicTest {
protected:
    HostileInput() { repository.commitFile("a", "1\n", "First"); }

    void expectHarmless() const {
        EXPECT_EQ(evil.whatRan(), "");
        for (const auto& entry : fs::recursive_directory_iterator(repository.path())) {
            EXPECT_NE(entry.path().filename(), "evil") << entry.path();
        }
        EXPECT_FALSE(fs::exists("evil"));
        EXPECT_EQ(repository.gitStatus({"fsck"}), 0);
    }

    TestRepository repository;
    Evil evil;
    TemporaryFolder temporary;
};

TEST_F(HostileInput, TheProgramWouldBeFoundIfAnythingRanIt) {
    const NebscOutcome outcome =
        runProgram("/bin/sh", {"-c", "evil"}, {.variables = {evil.path()}});
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_NE(evil.whatRan(), "");
}

TEST_F(HostileInput, ThroughTheServerRunsNothing) {
    ServerClient client({evil.path(), {"GIT_ALLOW_PROTOCOL", std::nullopt}});
    client.initialize();
    int id = 0;
    for (const std::string& text : hostileTexts()) {
        for (int type = 0; type <= 39; ++type) {
            client.send(++id, "sourceControl/perform",
                        requestHolding(type, repository.path(), text));
            const JSON answer = client.answerTo(id);
            ASSERT_TRUE(answer.is_object()) << type << text;
            ASSERT_TRUE(answer.contains("result") || answer["error"]["code"] == -32602)
                << answer.dump();
        }
    }
    client.send(++id, "shutdown");
    client.answerTo(id);
    client.send({}, "exit");
    EXPECT_EQ(client.exitStatus(), 0);
    expectHarmless();
}

TEST_F(HostileInput, ThroughRequestsRunsNothing) {
    for (const std::string& text : hostileTexts()) {
        for (const std::int32_t type : {NEBSourceControlRequestAdd, NEBSourceControlRequestCommit,
                                        NEBSourceControlRequestList, NEBSourceControlRequestBlame,
                                        NEBSourceControlRequestListRemoteBranches}) {
            const NebscOutcome outcome =
                runRequest(requestHolding(type, repository.path(), text).dump(),
                           {.folder = repository.path(), .variables = {evil.path()}});
            ASSERT_THAT(outcome.exitStatus, AnyOf(0, 1, 2)) << text;
            EXPECT_TRUE(isUTF8(outcome.output) && isUTF8(outcome.errors));
            if (outcome.exitStatus != 2) {
                EXPECT_EQ(outcome.json()["type"], type);
            }
        }
    }
    expectHarmless();
}

TEST_F(HostileInput, ThroughCommandsRunsNothing) {
    const std::vector<std::vector<std::string>> commands{{"status"},
                                                         {"add"},
                                                         {"rm"},
                                                         {"mv", "a"},
                                                         {"cp", "a"},
                                                         {"mkdir"},
                                                         {"revert"},
                                                         {"commit", "--allow-empty", "-m"},
                                                         {"checkout"},
                                                         {"merge"},
                                                         {"merge-base", "main"},
                                                         {"branch", "create"},
                                                         {"branch", "delete"},
                                                         {"branch", "track", "t"},
                                                         {"branch", "tracking"},
                                                         {"log"},
                                                         {"log", "--branch"},
                                                         {"log", "--author"},
                                                         {"log", "--grep"},
                                                         {"log", "--content"},
                                                         {"log", "--since"},
                                                         {"log", "--until"},
                                                         {"log", "--follow"},
                                                         {"show"},
                                                         {"cat"},
                                                         {"status", "--short"},
                                                         {"blame", "--lines"},
                                                         {"diff", "--staged"},
                                                         {"blame"},
                                                         {"diff"},
                                                         {"ls"},
                                                         {"export", "HEAD"},
                                                         {"export-tree"},
                                                         {"init"},
                                                         {"clone"},
                                                         {"remote", "add", "r"},
                                                         {"remote", "rm"},
                                                         {"remote", "branches"},
                                                         {"fetch"},
                                                         {"push", "origin"},
                                                         {"update", "origin"}};
    // On a command line, texts of one kind are treated alike.
    for (const std::size_t i : {0U, 4U, 6U, 13U, 15U, 16U, 21U, 23U}) {
        const std::string& text = hostileTexts()[i];
        for (std::vector<std::string> words : commands) {
            words.push_back(text);
            const NebscOutcome outcome =
                runNebsc(words, {.folder = repository.path(),
                                 .variables = {evil.path(), {"TMPDIR", temporary.path()}}});
            EXPECT_THAT(outcome.exitStatus, AnyOf(0, 1, 2)) << words[0] << " " << text;
        }
    }
    EXPECT_EQ(evil.whatRan(), "");
}

// ---- existing names -----------------------------------------------------------------------------

TEST_F(HostileInput, FoldersOfARepositoryAreListedAsTheyAreCalled) {
    for (const std::string& text : hostileTexts()) {
        const bool isName = text.find('/') == std::string::npos && text.size() < 255 &&
                            text.find("n\nevil") == std::string::npos;
        if (!isName || text == "-" || text == "--") {
            continue;
        }
        SCOPED_TRACE(text);
        repository.write("d/" + text + "/inside", "1\n");
        repository.git({"add", "--all"});
        repository.git({"commit", "--quiet", "--allow-empty", "-m", text});
        auto request = requestFor(NEBSourceControlRequestList, repository.path());
        request->files = valuesOf({"d"});
        ::setenv("PATH", evil.path().second->c_str(), 1);
        const auto operation = perform(request);
        EXPECT_EQ(operation->error(), std::nullopt);
        std::vector<std::string> names;
        for (const NEBDictionary& record : operation->result().value()) {
            names.emplace_back(*record.value(NEBSourceControlOperationNameKey).string());
        }
        EXPECT_THAT(names, testing::Contains(text));
    }
    EXPECT_EQ(evil.whatRan(), "");
}

TEST_F(HostileInput, AuthorsMessagesAndBranchesComeOutAsTheyAre) {
    for (const std::string& text :
         {std::string("$(evil)"), std::string("\",\"error\":null,\"x\":\""),
          std::string("\x1b]0;evil\x07"),
          std::string("\xe2\x80\xae"
                      "live"),
          std::string(4000, 'n')}) {
        repository.git(
            {"-c", "user.name=" + text, "commit", "--quiet", "--allow-empty", "-m", text});
        const JSON request{{"type", NEBSourceControlRequestLog},
                           {"sourceTree", {{"location", repository.path()}}}};
        const JSON outcome = runRequest(request.dump(), {.variables = {evil.path()}}).json();
        EXPECT_EQ(outcome["result"][0]["NEBSourceControlOperationMessageKey"], text);
        EXPECT_EQ(outcome["error"], nullptr);
    }
    repository.git({"update-ref", "refs/heads/-evil", "HEAD"});
    repository.git({"update-ref", "refs/heads/$(evil)", "HEAD"});
    repository.git({"update-ref", "refs/heads/--upload-pack=evil", "HEAD"});
    const JSON request{{"type", NEBSourceControlRequestListBranches},
                       {"sourceTree", {{"location", repository.path()}}},
                       {"repositoryToAuthenticate", {{"class", "NEBSourceControlRepository"}}}};
    const JSON outcome = runRequest(request.dump(), {.variables = {evil.path()}}).json();
    const std::string names = outcome["result"].dump();
    EXPECT_THAT(names, testing::AllOf(HasSubstr("\"-evil\""), HasSubstr("\"$(evil)\""),
                                      HasSubstr("\"--upload-pack=evil\"")));
    EXPECT_EQ(evil.whatRan(), "");
}

TEST_F(HostileInput, BytesThatAreNoTextAreReplacedAndJSONStaysJSON) {
    const std::string name =
        "bad\xff\xfe"
        "name";
    repository.write(name, "1\n");
    repository.write("d/" + name, "1\n");
    repository.git({"add", "--all"});
    repository.git({"-c", "i18n.commitEncoding=none", "commit", "--quiet", "-m", "m\xff"});
    for (const std::int32_t type : {NEBSourceControlRequestStatus, NEBSourceControlRequestLog,
                                    NEBSourceControlRequestList, NEBSourceControlRequestDiff}) {
        JSON request{{"type", type}, {"sourceTree", {{"location", repository.path()}}}};
        if (type == NEBSourceControlRequestDiff) {
            request["startingRevision"] = "HEAD~1";
        }
        if (type == NEBSourceControlRequestList) {
            request["files"] = {"d"};
        }
        const NebscOutcome outcome = runRequest(request.dump());
        EXPECT_TRUE(isUTF8(outcome.output)) << type;
        EXPECT_EQ(outcome.json()["error"], nullptr) << type;
    }
}

}  // namespace
}  // namespace neb::test
