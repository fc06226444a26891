// The option --anonymous, and the member of the same name.

#include <filesystem>
#include <fstream>
#include <set>

#include "JSON/Base64.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/Text.h"
#include "Recording/NameMapping.h"
#include "nebsc/CommandTest.h"
#include "nebsc/Recording/RecordedFile.h"
#include "nebsc/Server/ServerClient.h"
#include "nebsc/Server/SlowGit.h"

namespace neb::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using JSON = nlohmann::ordered_json;

// ---- words ------------------------------------------------------------------------------------

/// Returns the texts with their words replaced.
std::vector<std::string> mapped(const std::vector<std::string>& texts) {
    nebsc::NameMapping mapping;
    for (const std::string& text : texts) {
        mapping.collect(text);
    }
    std::vector<std::string> results;
    for (const std::string& text : texts) {
        results.push_back(mapping.replaced(text));
    }
    return results;
}

TEST(NameMapping, KeepsLengthsSeparatorsAndCapitals) {
    const std::vector<std::string> texts =
        mapped({"/home/wilma/Secret_Plan-12.txt", "WILMA", "wilma"});
    EXPECT_THAT(texts[0],
                testing::MatchesRegex("/home/[a-z]{5}/[A-Z][a-z]{5}_[A-Z][a-z]{3}-12\\.[a-z]{3}"));
    EXPECT_EQ(texts[2], texts[0].substr(6, 5));
    EXPECT_EQ(lowercaseASCII(texts[1]), texts[2]);
    EXPECT_THAT(texts[2], Not(HasSubstr("wilma")));
    EXPECT_NE(mapped({"wilma wilhelmina"}), mapped({"wilma wilhelmina"})) << "the key is random";
}

TEST(NameMapping, ReplacesLettersOfOtherScripts) {
    const std::string name = "J\xC3\xBCrgensen \xE5\x8C\x97\xE4\xBA\xAC \xF0\xA0\x80\x80";
    const std::string text = mapped({name})[0];
    EXPECT_EQ(text.size(), name.size());
    EXPECT_TRUE(isUTF8(text));
    EXPECT_THAT(text, Not(HasSubstr("\xE5\x8C\x97\xE4\xBA\xAC")));
    EXPECT_THAT(text, Not(HasSubstr("rgensen")));
    EXPECT_THAT(text, Not(HasSubstr("\xF0\xA0\x80\x80")));
}

TEST(NameMapping, HasAReplacementForEachHexadecimalWord) {
    std::vector<std::string> words;
    for (char first = 'a'; first <= 'f'; ++first) {
        for (char second = 'a'; second <= 'f'; ++second) {
            for (char third = 'a'; third <= 'f'; ++third) {
                words.push_back({first, second, third});
            }
        }
    }
    std::erase_if(words, [](const std::string& word) { return word == "add" || word == "bad"; });
    std::vector<std::string> all = mapped(words);
    all.insert(all.end(), words.begin(), words.end());
    EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), 2 * words.size());
}

TEST(NameMapping, FindsWordsAfterABackslash) {
    const std::vector<std::string> texts =
        mapped({R"(C:\temp\wilma CORP\ann)", "temp ann", R"("C:\temp\303" \temp)", "\"\n\\temp"});
    EXPECT_EQ(texts[0].substr(3, 4), texts[1].substr(0, 4));
    EXPECT_EQ(texts[0].substr(19, 3), texts[1].substr(5, 3));
    EXPECT_THAT(texts[0], testing::MatchesRegex(R"(C:\\[a-z]{4}\\[a-z]{5} [A-Z]{4}\\[a-z]{3})"));
    EXPECT_THAT(texts[2], testing::MatchesRegex(R"("C:\\t[a-z]{3}\\303" \\[a-z]{4})"));
    EXPECT_EQ(texts[3].substr(3), texts[1].substr(0, 4)) << "the quotes end with the line";
}

TEST(NameMapping, KeepsWhatGitMeans) {
    for (const std::string text :
         {"refs/heads/ab", "HEAD -> origin", "0123456789abcdef0123456789abcdef01234567 1a2b",
          "2024-05-06T05:08:09Z", "R100", "100644", "NEBSourceControlOperationPathKey", "xxxxxx",
          "fatal: not a git repository", "\xE4\xE4\xE4"}) {
        EXPECT_EQ(mapped({text})[0], text);
    }
}

// ---- recordings -------------------------------------------------------------------------------

/// Returns the file with the bytes of all {"base64": "…"} appended, in lower case.
std::string searchableContentOf(const std::string& path) {
    const std::string content = contentOfFile(path);
    constexpr std::string_view mark = R"({"base64":")";
    std::string bytes;
    for (std::size_t at = content.find(mark); at != std::string::npos;
         at = content.find(mark, at)) {
        at += mark.size();
        bytes += nebsc::bytesOfBase64(content.substr(at, content.find('"', at) - at)).value_or("");
    }
    return lowercaseASCII(content + bytes);
}

class AnonymousRecording : public CommandTest {
protected:
    void SetUp() override {
        repository.commitFile("Dromedary/Xylophone.txt", "Kaleidoscope\nsecond\nthird\n");
        repository.git({"commit", "-q", "--amend", "--author=Zebulon Quimby <zq@Quokka.example>",
                        "-m", "Vaporize the wombat", "-m", "J\xC3\xBCrgensen asked for it"});
        repository.git({"branch", "Orangutan/feature"});
        repository.git({"tag", "-m", "Flugelhorn", "Flamingo-7"});
        repository.git({"remote", "add", "Narwhal", "ssh://git@host.quokka.example/Platypus.git"});
        repository.git({"switch", "-q", "Orangutan/feature"});
        repository.write("Dromedary/Xylophone.txt", "Zeppelin\nsecond\nthird\n");
        repository.git({"commit", "-q", "-a", "-m", "Winchester the spinnaker"});
        repository.git({"switch", "-q", "main"});
        repository.write("Dromedary/Xylophone.txt", "Bassoon\nsecond\nthird\n");
        repository.git({"mv", "Dromedary/Xylophone.txt", "Marimba.txt"});
        repository.write("Pangolin", "x\n");
        repository.write("caf\xE9 Toucan", "x\n");
    }
    [[nodiscard]] static std::vector<std::string> names() {
        return {"dromedary", "xylophone", "kaleidoscope", "zebulon",    "quimby",     "quokka",
                "vaporize",  "wombat",    "rgensen",      "orangutan",  "flugelhorn", "flamingo",
                "narwhal",   "platypus",  "zeppelin",     "winchester", "spinnaker",  "bassoon",
                "marimba",   "pangolin",  "toucan",       "wilhelmina"};
    }
    /// Records the command, and expects that the file has no name and replays equally.
    void expectAnonymous(std::vector<std::string> command) {
        const std::string file = _folder.path(std::to_string(++_count));
        const std::string shown = testing::PrintToString(command);
        command.insert(command.begin(), {"--record", file, "--anonymous"});
        const NebscOutcome outcome = runNebsc(
            command, {.folder = repository.path(),
                      .variables = {{"HOME", _folder.path("Wilhelmina")}, {"USER", "wilhelmina"}}});
        EXPECT_LE(outcome.exitStatus, 1) << shown;
        EXPECT_THAT(outcome.errors, Not(HasSubstr("recording"))) << shown;
        expectNoNameIn(file, shown);
        const NebscOutcome replayed = runNebsc({"replay", file}, {.folder = "/"});
        EXPECT_EQ(replayed.exitStatus, 0) << shown << replayed.output << replayed.errors;
        EXPECT_THAT(replayed.output, EndsWith("none different\n")) << shown;
        EXPECT_THAT(replayed.output, Not(HasSubstr("not replayed"))) << shown;
    }
    static void expectNoNameIn(const std::string& file, const std::string& shown) {
        const std::string content = searchableContentOf(file);
        EXPECT_NE(content, "") << shown;
        for (const std::string& name : names()) {
            EXPECT_EQ(content.find(name), std::string::npos)
                << shown << ": " << name << " in "
                << content.substr(
                       content.find(name) - std::min<std::size_t>(content.find(name), 80), 160);
        }
    }
    [[nodiscard]] std::string path(std::string_view name) const { return _folder.path(name); }

private:
    TemporaryFolder _folder;
    int _count = 0;
};

TEST_F(AnonymousRecording, HasNoNamesAndReplaysEqually) {
    for (const std::vector<std::string>& command :
         std::vector<std::vector<std::string>>{{"status"},
                                               {"status", "--short"},
                                               {"status", "--json"},
                                               {"log"},
                                               {"log", "--json"},
                                               {"show"},
                                               {"blame", "Marimba.txt"},
                                               {"diff"},
                                               {"diff", "--stat"},
                                               {"diff", "HEAD", "Orangutan/feature"},
                                               {"ls"},
                                               {"branch", "list"},
                                               {"tag", "list"},
                                               {"remote"},
                                               {"cat", "HEAD:Dromedary/Xylophone.txt"},
                                               {"diff", "HEAD", "--", "Pelican/missing"},
                                               {"log", "Vaporize"}}) {
        expectAnonymous(command);
    }
}

TEST_F(AnonymousRecording, HasNoNamesOfChanges) {
    for (const std::vector<std::string>& command :
         std::vector<std::vector<std::string>>{{"stash", "push", "-m", "Winchester"},
                                               {"stash", "pop"},
                                               {"commit", "-m", "Winchester the Bassoon", "-a"},
                                               {"merge", "Orangutan/feature"},
                                               {"status"},
                                               {"branch", "create", "Narwhal/Toucan"},
                                               {"commit", "-m", "Nothing of Wombat"}}) {
        expectAnonymous(command);
    }
}

TEST_F(AnonymousRecording, HasNoNameOfAPersonThatIsATermOfGit) {
    repository.git({"commit", "-q", "--allow-empty", "-m", "x", "--author=Mark Long <will@x.y>"});
    const std::string file = path("recording");
    EXPECT_EQ(runNebsc({"--record", file, "--anonymous", "log", "-n", "1"},
                       {.folder = repository.path(),
                        .variables = {{"HOME", path("stage")}, {"USER", "grace"}}})
                  .exitStatus,
              0);
    const std::string content = searchableContentOf(file);
    for (const char* text : {"mark long", "will@", "/stage\""}) {
        EXPECT_THAT(content, Not(HasSubstr(text)));
    }
    EXPECT_EQ(runNebsc({"replay", file}, {.folder = "/"}).exitStatus, 0);
}

TEST_F(AnonymousRecording, HasNoNameOfTheFolderOfGit) {
    const TemporaryFolder home;
    home.writeProgram("Wilhelmina/git",
                      "#!/bin/sh\ncase \"$*\" in *--pretty*) kill -SEGV $$;; esac\n"
                      "exec /usr/bin/git \"$@\"\n");
    const std::string file = path("recording");
    const NebscOutcome outcome =
        runNebsc({"--record", file, "--anonymous", "log"},
                 {.folder = repository.path(),
                  .variables = {{"HOME", home.path("Wilhelmina")},
                                {"PATH", home.path("Wilhelmina") + ":/usr/bin:/bin"}}});
    EXPECT_THAT(outcome.errors, HasSubstr("was ended by signal 11"));
    EXPECT_THAT(outcome.errors, Not(HasSubstr("recording")));
    expectNoNameIn(file, "folder of git");
    const NebscOutcome replayed = runNebsc({"replay", file}, {.folder = "/"});
    EXPECT_EQ(replayed.exitStatus, 0) << replayed.output;
}

TEST_F(AnonymousRecording, IsRefusedWhereWordsAreHidden) {
    const std::string wide("s\0e\0c\0r\0e\0t\0 \0p\0l\0a\0n\0\n\0", 24);
    const std::string compressed = "PK\x03\x04\x14\x01\x02\x08\x9C\xFF\xFE\x05\x06";
    for (const std::string& content : {wide, compressed}) {
        repository.commitFile("file", content);
        const std::string file = path("recording");
        const NebscOutcome outcome = runNebsc({"--record", file, "--anonymous", "cat", "HEAD:file"},
                                              {.folder = repository.path()});
        EXPECT_EQ(outcome.exitStatus, 1);
        EXPECT_THAT(outcome.errors, HasSubstr("binary file, or text in UTF-16"));
        EXPECT_FALSE(std::filesystem::exists(file));
    }
}

TEST_F(AnonymousRecording, NeedsARecording) {
    expectFailed(nebsc({"--anonymous", "log"}),
                 "nebsc: option '--anonymous' requires '--record FILE'\n", 2);
    expectFailed(nebsc({"--record", path("file"), "--anonymous", "serve"}),
                 "nebsc: option '--anonymous' cannot be used with 'serve'; use the member 'record' "
                 "of a request\n",
                 2);
}

TEST_F(AnonymousRecording, IsAMemberOfTheServersRecord) {
    ServerClient client;
    client.initialize();
    int id = 1;
    const auto perform = [&](const JSON& record) {
        JSON request = requestAbout(NEBSourceControlRequestLog, repository.path());
        request["record"] = record;
        client.send(++id, "sourceControl/perform", request);
        return client.answerTo(id);
    };
    EXPECT_EQ(perform({{"file", path("log")}, {"anonymous", true}})["result"]["error"], nullptr);
    EXPECT_EQ(perform({{"file", path("plain")}})["result"]["error"], nullptr);
    expectNoNameIn(path("log"), "server");
    EXPECT_THAT(searchableContentOf(path("plain")), HasSubstr("zebulon"));
    EXPECT_EQ(runNebsc({"replay", path("log")}, {}).exitStatus, 0);
    EXPECT_THAT(perform({{"file", "x"}})["error"]["message"],
                HasSubstr("'record.file' is a relative path; expected an absolute path."));
    EXPECT_THAT(perform({{"file", path("x")}, {"anonymous", 1}})["error"]["message"],
                HasSubstr("'record.anonymous' is an integer; expected a boolean."));
    EXPECT_THAT(perform({{"file", path("x")}, {"names", 1}})["error"]["message"],
                HasSubstr("'record.names' is unknown; expected 'file' or 'anonymous'."));
    EXPECT_THAT(perform({{"anonymous", true}})["error"]["message"],
                HasSubstr("'record.file' is missing."));
}

TEST_F(AnonymousRecording, IsMadeFromAnotherRecording) {
    const std::string file = path("plain");
    EXPECT_EQ(runNebsc({"--record", file, "log"},
                       {.folder = repository.path(), .variables = {{"HOME", path("Wilhelmina")}}})
                  .exitStatus,
              0);
    const auto copied = [&](const std::string& from, const std::string& name) {
        return runNebsc({"report", "--anonymous", "--from", from, path(name)}, {.folder = "/"});
    };
    const NebscOutcome outcome = copied(file, "copy");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_THAT(outcome.output,
                testing::StartsWith("Copied: " + file + "\n  requests:          log\n"));
    EXPECT_THAT(outcome.output, HasSubstr("Names and texts are replaced"));
    expectNoNameIn(path("copy"), "copy");
    EXPECT_EQ(runNebsc({"replay", path("copy")}, {.folder = "/"}).exitStatus, 0);

    expectFailed(copied(file, "copy"), HasSubstr("could not be created: File exists"), 2);
    expectFailed(copied(path("missing"), "x"), HasSubstr("cannot be read: No such file"), 2);
    std::string content = contentOfFile(file);
    std::ofstream(path("part"), std::ios::binary) << content.substr(0, content.rfind("{\"kind\""));
    expectFailed(copied(path("part"), "x"), HasSubstr("' is incomplete: after line "), 2);
    const std::string old = "Vaporize";  // first in the output of git, then in the outcome
    content.replace(content.find(old), old.size(), "Fluidize");
    std::ofstream(path("other"), std::ios::binary) << content;
    expectFailed(copied(path("other"), "x"), HasSubstr("the replay of request 1 differs: - {"));
    EXPECT_FALSE(std::filesystem::exists(path("x")));
}

TEST_F(AnonymousRecording, IsMadeInAFolderThatIsNotUTF8) {
    const std::string folder = path("caf\xE9 Toucan");
    std::filesystem::copy(repository.path(), folder, std::filesystem::copy_options::recursive);
    const std::string plain = path("plain"), copy = path("copy");
    EXPECT_EQ(runNebsc({"--record", plain, "status"}, {.folder = folder}).exitStatus, 0);
    EXPECT_EQ(replayed(plain).exitStatus, 0) << replayed(plain).errors;
    EXPECT_EQ(runNebsc({"report", "--anonymous", "--from", plain, copy}, {}).errors, "");
    expectNoNameIn(copy, "folder");
    EXPECT_EQ(replayed(copy).exitStatus, 0) << replayed(copy).output;
}

TEST_F(AnonymousRecording, IsMadeByAReport) {
    const auto run = [this](const std::vector<std::string>& arguments) {
        return runNebsc(arguments, {.folder = repository.path(),
                                    .variables = {{"XDG_STATE_HOME", path("state")}}});
    };
    EXPECT_EQ(run({"log", "Wombat"}).exitStatus, 1);
    const NebscOutcome outcome = run({"report", "--anonymous", path("report")});
    EXPECT_EQ(outcome.errors, "");
    EXPECT_THAT(outcome.output, HasSubstr("Names and texts are replaced"));
    EXPECT_THAT(outcome.output, EndsWith("Nothing was sent.\n"));
    expectNoNameIn(path("report"), "report");
}

}  // namespace
}  // namespace neb::test
