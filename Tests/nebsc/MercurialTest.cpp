// The plug-in of examples/mercurial-plug-in, loaded by nebsc, with the real hg.

#include <csignal>
#include <filesystem>
#include <map>

#include "nebsc/MercurialTest.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using JSON = nlohmann::ordered_json;

// ---- requests ---------------------------------------------------------------------------------

TEST_F(Mercurial, StatusHasEachStateAndRenamesUnderTheNewName) {
    folder.write("work/a.txt", "changed\n");
    folder.write("work/new.txt", "n\n");
    folder.write("work/s p.txt", "untracked\n");
    hg({"add", "new.txt"});
    hg({"mv", "b.txt", "c.txt"});
    const std::map<std::string, int> expected{{top + "/a.txt", 4},
                                              {top + "/new.txt", 1},
                                              {top + "/c.txt", 4096},
                                              {top + "/s p.txt", 256}};
    EXPECT_EQ(states(), expected);
}

TEST_F(Mercurial, ARemovedFileIsNoSourceBecauseOfItsName) {
    folder.write("work/x/a.txt", "other\n");
    hg({"commit", "--addremove", "--quiet", "--message=Third"});
    hg({"mv", "a.txt", "c.txt"});
    hg({"remove", "x/a.txt"});
    const std::map<std::string, int> expected{{top + "/c.txt", 4096}, {top + "/x/a.txt", 2}};
    EXPECT_EQ(states(), expected);
}

TEST_F(Mercurial, ACopyIsAnAddedFile) {
    hg({"cp", "a.txt", "d.txt"});
    hg({"mv", "b.txt", "c.txt"});
    const std::map<std::string, int> expected{{top + "/c.txt", 4096}, {top + "/d.txt", 1}};
    EXPECT_EQ(states(), expected);
}

TEST_F(Mercurial, AMissingAndARemovedFileAreDeleted) {
    fs::remove(top + "/a.txt");
    hg({"remove", "b.txt"});
    const JSON outcome = request({{"type", 15}});
    ASSERT_EQ(outcome["result"].size(), 2U);
    for (const JSON& record : outcome["result"]) {
        EXPECT_EQ(record["NEBSourceControlOperationWCStatusKey"], 2);
    }
    EXPECT_EQ(request({{"type", 15}, {"destination", top + "/a.txt"}})["result"].size(), 1U);
}

TEST_F(Mercurial, ANameThatIsNotUTF8KeepsItsBytes) {
    folder.write("work/n\xff.txt", "");
    const JSON record = request({{"type", 15}})["result"][0];
    EXPECT_EQ(record["NEBSourceControlOperationPathKey"], top + "/n\uFFFD.txt");
    EXPECT_TRUE(record.contains("NEBSourceControlOperationPathBytesKey"));
}

TEST_F(Mercurial, LogHasTheCommitsFromTheLatestOn) {
    const JSON log = request(
        {{"type", 18},
         {"options", {{"NEBSourceControlRequestOptionLogOutputFilesChanged", true}}}})["result"];
    ASSERT_EQ(log.size(), 2U);
    EXPECT_EQ(log[0]["NEBSourceControlOperationMessageKey"], "Grüße\n\nmore");
    EXPECT_EQ(log[0]["NEBSourceControlOperationRevisionKey"], idOf("1"));
    EXPECT_EQ(log[0]["NEBSourceControlOperationAuthorKey"], "Ann Example");
    EXPECT_EQ(log[0]["NEBSourceControlOperationAuthorEmailKey"], "ann@example.org");
    EXPECT_EQ(log[0]["NEBSourceControlOperationDateKey"], "2026-03-04T05:06:08Z");
    EXPECT_EQ(log[0]["NEBSourceControlOperationFilesKey"], (JSON{{"b.txt", 1}, {"a.txt", 4}}));
    EXPECT_EQ(log[1]["NEBSourceControlOperationMessageKey"], "First");
}

TEST_F(Mercurial, LogHasLimitsRevisionsAndFiles) {
    const auto messages = [this](const JSON& asked) {
        std::vector<std::string> all;
        const JSON outcome = request(asked);
        for (const JSON& record : outcome["result"]) {
            const std::string message = record["NEBSourceControlOperationMessageKey"];
            all.push_back(message.substr(0, message.find('\n')));
        }
        return all;
    };
    EXPECT_THAT(
        messages({{"type", 18}, {"options", {{"NEBSourceControlRequestOptionLogOutputLimit", 1}}}}),
        ElementsAre("Grüße"));
    EXPECT_THAT(messages({{"type", 18}, {"startingRevision", "0"}}), ElementsAre("First"));
    EXPECT_THAT(messages({{"type", 18}, {"files", {top + "/b.txt"}}}), ElementsAre("Grüße"));
    EXPECT_THAT(messages({{"type", 18}, {"startingRevision", "0"}, {"endingRevision", "tip"}}),
                ElementsAre("Grüße"));
    EXPECT_THAT(messages({{"type", 18}, {"startingRevision", "tip~1"}}), ElementsAre("First"));
    EXPECT_THAT(messages({{"type", 18}, {"startingRevision", ".^"}}), ElementsAre("First"));
}

TEST_F(Mercurial, ANameOfARevisionIsNoExpression) {
    for (const std::string name : {"release (1)", "a|b", "it's", R"(back\nslash)"}) {
        hg({"branch", "--quiet", name});
        folder.write("work/a.txt", name);
        hg({"commit", "--quiet", "--message=" + name});
        const auto latest = [&](const JSON& asked) {
            return request(asked)["result"][0]["NEBSourceControlOperationMessageKey"];
        };
        EXPECT_EQ(latest({{"type", 18}, {"startingRevision", name}}), name);
        EXPECT_EQ(latest({{"type", 18}, {"startingRevision", "0"}, {"endingRevision", name}}),
                  name);
        EXPECT_EQ(
            latest({{"type", 18}, {"options", {{"NEBSourceControlRequestOptionBranch", name}}}}),
            name);
        EXPECT_EQ(request({{"type", 1002},
                           {"files", {"a.txt"}},
                           {"startingRevision",
                            name}})["result"][0]["NEBSourceControlOperationContentKey"],
                  name);
    }
    EXPECT_EQ(classOf({{"type", 18}, {"startingRevision", "0) or all("}}), "revision-unknown");
}

TEST_F(Mercurial, AnEmptyRepositoryHasNoCommits) {
    hg({"init", folder.path("empty")});
    const NebscOutcome log = nebsc({"log"}, "empty");
    EXPECT_EQ(log.output, "");
    EXPECT_EQ(log.errors, "No matching commits.\n");
    EXPECT_EQ(nebsc({"branch", "list"}, "empty").output, "* default\n");
}

TEST_F(Mercurial, BlameMarksLinesThatAreNotCommitted) {
    folder.write("work/a.txt", "one\ntwo\nthree\n");
    const JSON lines = request({{"type", 28}, {"files", {top + "/a.txt"}}})["result"];
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0]["NEBSourceControlOperationDateKey"], "2026-03-04T05:06:07Z");
    EXPECT_EQ(lines[1]["NEBSourceControlOperationRevisionKey"], idOf("1"));
    EXPECT_EQ(lines[1]["NEBSourceControlOperationLineNumberKey"], "2");
    EXPECT_EQ(lines[2]["NEBSourceControlOperationRevisionKey"], "000000000000");
    EXPECT_EQ(
        request({{"type", 28}, {"files", {"a.txt"}}, {"startingRevision", "0"}})["result"].size(),
        1U);
}

TEST_F(Mercurial, DiffIsAPatchOrNames) {
    folder.write("work/a.txt", "one\n");
    EXPECT_EQ(request({{"type", 30}})["result"][0]["NEBSourceControlOperationContentKey"],
              hg({"diff", "--git"}));
    const JSON names =
        request({{"type", 30},
                 {"startingRevision", "0"},
                 {"endingRevision", "1"},
                 {"options",
                  {{"NEBSourceControlRequestOptionDiffFileNameAndStatusOnly", true}}}})["result"];
    ASSERT_EQ(names.size(), 2U);
    EXPECT_EQ(names[0]["NEBSourceControlOperationPathKey"], top + "/a.txt");
    EXPECT_EQ(names[1]["NEBSourceControlOperationWCStatusKey"], 1);
    EXPECT_EQ(request({{"type", 30}, {"files", {top + "/b.txt"}}})["result"], nullptr);
}

TEST_F(Mercurial, ContentIsThatOfTheCommit) {
    folder.write("work/latin.txt", "\xe4\n");
    hg({"commit", "--addremove", "--quiet", "--message=Latin"});
    EXPECT_EQ(request({{"type", 1002}, {"files", {"a.txt"}}, {"startingRevision", "0"}})["result"],
              JSON::array({{{"NEBSourceControlOperationContentKey", "one\n"}}}));
    EXPECT_TRUE(request({{"type", 1002}, {"files", {"latin.txt"}}})["result"][0].contains(
        "NEBSourceControlOperationContentBytesKey"));
}

TEST_F(Mercurial, ChangesArePassedToHg) {
    folder.write("work/n.txt", "n\n");
    EXPECT_EQ(classOf({{"type", 6}, {"files", {top + "/n.txt"}}}), "none");
    const JSON commit =
        request({{"type", 3},
                 {"files", {top + "/n.txt"}},
                 {"options", {{"NEBSourceControlRequestOptionMessage", "--config=x\n\nÄ"}}}});
    EXPECT_EQ(hg({"log", "--rev=tip", "--template={node|short} {desc}"}),
              commit["result"][0]["NEBSourceControlOperationRevisionKey"].get<std::string>() +
                  " --config=x\n\nÄ");
    EXPECT_EQ(classOf({{"type", 5}, {"files", {top + "/n.txt"}}}), "none");
    EXPECT_EQ(hg({"status"}), "R n.txt\n");
    EXPECT_FALSE(fs::exists(top + "/n.txt"));
}

TEST_F(Mercurial, TheOutputOfAHookIsNotTheRevisionOfACommit) {
    folder.write("work/.hg/hgrc",
                 "[ui]\nusername = A\n[hooks]\nprecommit = echo before: x\n"
                 "commit = echo hook: ran\n");
    folder.write("work/a.txt", "changed\n");
    const JSON commit =
        request({{"type", 3}, {"options", {{"NEBSourceControlRequestOptionMessage", "m"}}}});
    EXPECT_EQ(commit["result"][0]["NEBSourceControlOperationRevisionKey"], idOf("tip"));
}

TEST_F(Mercurial, BranchesHaveTheirNames) {
    hg({"branch", "--quiet", "topic one"});
    EXPECT_EQ(request({{"type", 26}})["result"],
              JSON::array({{{"NEBSourceControlOperationNameKey", "topic one"}}}));
    EXPECT_EQ(request({{"type", 25}})["result"],
              JSON::array({{{"NEBSourceControlOperationNameKey", "default"}}}));
}

// ---- errors -----------------------------------------------------------------------------------

TEST_F(Mercurial, ErrorsHaveTheClassesOfTheContract) {
    EXPECT_EQ(classOf({{"type", 18}, {"startingRevision", "zz"}}), "revision-unknown");
    EXPECT_EQ(classOf({{"type", 18}, {"startingRevision", "a b"}}), "revision-unknown");
    EXPECT_EQ(classOf({{"type", 1002}, {"files", {"no"}}}), "path-unknown");
    EXPECT_EQ(classOf({{"type", 28}, {"files", {"no"}}}), "path-unknown");
    EXPECT_EQ(classOf({{"type", 28}}), "request-invalid");
    EXPECT_EQ(classOf({{"type", 5}, {"files", {"/elsewhere"}}}), "path-outside");
    EXPECT_EQ(classOf({{"type", 3}}), "nothing-to-commit");
    folder.write("work/a.txt", "changed\n");
    EXPECT_EQ(classOf({{"type", 3}}), "message-empty");
    folder.write("work/.hg/hgrc", "[ui]\nusername = A\n[hooks]\npretxncommit.no = false\n");
    const JSON commit = {{"type", 3}, {"options", {{"NEBSourceControlRequestOptionMessage", "m"}}}};
    EXPECT_EQ(classOf(commit), "local-hook-refused");
    folder.write("work/.hg/hgrc", "[ui]\nusername =\n");
    EXPECT_EQ(classOf(commit), "identity-unknown");
    fs::remove_all(top + "/.hg");
    EXPECT_EQ(classOf({{"type", 15}}), "not-a-repository");
}

TEST_F(Mercurial, AnErrorNamesMercurialAndKeepsItsText) {
    const JSON error = request({{"type", 18}, {"startingRevision", "zz"}})["error"];
    EXPECT_EQ(error["code"], 4);
    EXPECT_EQ(error["text"], "abort: unknown revision 'zz'");
    EXPECT_EQ(error["localizedDescription"], "There is no such branch, tag or commit.");
    EXPECT_EQ(error["localizedRecoverySuggestion"],
              "\"hg log\", \"hg branches\" and \"hg tags\" list the names.");
}

TEST_F(Mercurial, AHeldLockIsAnErrorAfterTwoSeconds) {
    fs::create_symlink("elsewhere:1", top + "/.hg/wlock");
    folder.write("work/a.txt", "changed\n");
    EXPECT_EQ(classOf({{"type", 3}, {"options", {{"NEBSourceControlRequestOptionMessage", "m"}}}}),
              "index-locked");
}

TEST_F(Mercurial, ARepositoryThatIsNotTrustedIsRefused) {
    const NebscOutcome outcome = nebsc({"--inspect", "status"});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("is not trusted, and 'hg' cannot be kept from"));
}

TEST_F(Mercurial, ATypeWithoutAnOperationIsRefused) {
    EXPECT_EQ(request({{"type", 9}, {"destination", "x"}})["error"]["localizedDescription"],
              "The plug-in has no operation for the request type 9 (merge).");
}

// ---- streaming and cancelling -----------------------------------------------------------------

/// A script in the place of hg, which writes a commit and then waits.
class SlowMercurial : public Mercurial {
protected:
    void SetUp() override {
        bin.writeProgram(
            "hg", "#!/bin/sh\nprintf 'aaaaaaaaaaaa\\nAnn\\na@b\\n0 0\\n\\nFirst\\0'; sleep 600");
    }
    TemporaryFolder bin;
    const std::pair<std::string, std::optional<std::string>> path{"PATH",
                                                                  bin.path() + ":/usr/bin:/bin"};
};

TEST_F(SlowMercurial, ALogIsStreamedAndCancelled) {
    Nebsc nebsc({"request", "--stream", "--plugin", plugIn},
                {.folder = folder.path(),
                 .input = R"({"type": 18, "sourceTree": {"location": ")" + folder.path() + "\"}}",
                 .variables = {path},
                 .output = NebscOutput::pipe});
    EXPECT_THAT(nebsc.awaitLine(), HasSubstr("aaaaaaaaaaaa")) << "hg still runs";
    nebsc.send(SIGTERM);
    EXPECT_THAT(nebsc.awaitLine(), HasSubstr("\"cancelled\""));
}

TEST_F(SlowMercurial, ALimitNamesTheProgram) {
    const NebscOutcome outcome = runNebsc(
        {"request", "--plugin", plugIn},
        {.input =
             R"({"type": 18, "limits": {"totalMilliseconds": 200}, "sourceTree": {"location": ")" +
             folder.path() + "\"}}",
         .variables = {path}});
    EXPECT_EQ(outcome.json()["error"]["class"], "timed-out");
    EXPECT_THAT(outcome.json()["error"]["localizedRecoverySuggestion"].get<std::string>(),
                StartsWith("Check whether hg waits for a server or a hook."));
}

}  // namespace
}  // namespace neb::test
