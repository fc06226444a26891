// Requests affect exactly the named file, whatever its name.

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <ostream>

#include "NEBFoundation/NEBSourceControlArgumentInjection.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb {
namespace {

namespace fs = std::filesystem;
using test::perform;
using test::requestFor;
using test::TestRepository;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::UnorderedElementsAre;

struct NameCase {
    std::string title;
    std::string name;
};

void PrintTo(const NameCase& nameCase, std::ostream* stream) {
    *stream << nameCase.title;
}

std::vector<NameCase> hostileNames() {
    return {
        {"Set", "a[1].c"},
        {"Star", "*"},
        {"StarWithin", "a*.c"},
        {"QuestionMark", "?"},
        {"Magic", ":(top)x"},
        {"Exclusion", ":!x"},
        {"Colon", ":x"},
        {"ShortOption", "-n"},
        {"LongOption", "--help"},
        {"TwoDashes", "--"},
        {"LeadingBlank", " lead"},
        {"TrailingBlank", "trail "},
        {"Quote", "quo\"te"},
        {"Backslash", "back\\slash"},
        {"LineFeed", "line\nfeed"},
        {"CarriageReturn", "return\r"},
        {"Tab", "tab\t"},
        {"Apostrophe", "'"},
        {"Substitution", "$(touch x)"},
        {"Braces", "{a,b}"},
        {"NonASCII", "zwölf 日本"},
        {"NotUTF8", "lat\xe4n"},
        {"Exclamation", "!x"},
        {"Hash", "#x"},
        {"Tilde", "~"},
        {"Caret", "^x"},
        {"At", "@"},
        {"Revision", "HEAD"},
        {"LikeGits", ".gitx"},
        {"Percent", "%20"},
        {"Long", std::string(255, 'l')},
    };
}

/// The neighbours: names for which a name above could be mistaken, and others.
const std::vector<std::string> neighbours{"a1.c", "x",    "n",     "help",   "lead",      "trail",
                                          "tab",  "a",    "quote", "return", "backslash", "line",
                                          "feed", "main", " ",     "latn",   "20"};

/// Returns the name as git prints it for people: quoted with escapes if necessary.
std::string asGitWrites(const std::string& name, std::string_view quote) {
    std::string escaped;
    for (const char character : name) {
        switch (character) {
            case '"':
                escaped += "\\\"";
                break;
            case '\\':
                escaped += "\\\\";
                break;
            case '\n':
                escaped += "\\n";
                break;
            case '\r':
                escaped += "\\r";
                break;
            case '\t':
                escaped += "\\t";
                break;
            default:
                escaped += character;
        }
    }
    return escaped == name ? name : std::string(quote) + escaped + std::string(quote);
}

std::string asText(const std::string& bytes) {
    return *_nebsc_stringFromData(Data(bytes));
}

/// A working copy with the named file and its neighbours, all committed and then changed.
class Names : public test::HygienicTest, public testing::WithParamInterface<NameCase> {
protected:
    void SetUp() override {
        HygienicTest::SetUp();
        repository = std::make_unique<TestRepository>();
        std::vector<std::string> all = neighbours;
        all.push_back(name());
        repository->gitWithInput({"fast-import", "--quiet"},
                                 commitOf("all", all, "one\n") +
                                     commitOf("the file", {name()}, "two\n") +
                                     commitOf("the others", neighbours, "two\n"));
        repository->git({"reset", "-q", "--hard"});
        writeAll("changed\n");
    }
    void TearDown() override {
        repository.reset();
        HygienicTest::TearDown();
    }

    [[nodiscard]] static std::string name() { return GetParam().name; }
    [[nodiscard]] std::string path() const { return repository->path() + "/" + name(); }
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> request(
        std::int32_t type, const std::vector<std::string>& files) const {
        auto asked = requestFor(type, repository->path());
        asked->files = test::valuesOf(files);
        return asked;
    }
    /// Runs the request, which must succeed, and returns its result.
    static NEBSourceControlResult resultOf(const std::shared_ptr<NEBSourceControlRequest>& asked) {
        EXPECT_EQ(NEBSourceControlFirstArgumentInjection(*asked), std::nullopt);
        const auto operation = perform(asked);
        EXPECT_EQ(operation->error(), std::nullopt)
            << operation->error()->localizedDescription().value_or("");
        return operation->result().value_or(NEBSourceControlResult());
    }
    [[nodiscard]] std::string read(const std::string& file) const {
        std::ifstream stream(fs::path(repository->path()) / file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    void expectNeighboursUntouched() const {
        for (const std::string& neighbour : neighbours) {
            EXPECT_EQ(read(neighbour), "changed\n") << neighbour;
        }
        EXPECT_EQ(repository->git(withNames({"diff", "--cached", "--name-only", "-z", "--"})), "");
    }
    /// Returns the names of a NUL-separated listing of git.
    [[nodiscard]] std::vector<std::string> namesOf(std::vector<std::string> arguments) const {
        std::vector<std::string> names;
        std::string rest = repository->git(std::move(arguments));
        for (std::size_t end = rest.find('\0'); end != std::string::npos; end = rest.find('\0')) {
            names.push_back(rest.substr(0, end));
            rest.erase(0, end + 1);
        }
        return names;
    }
    [[nodiscard]] std::vector<std::string> staged() const {
        return namesOf({"diff", "--cached", "--no-renames", "--name-only", "-z"});
    }

    std::unique_ptr<TestRepository> repository;

private:
    static std::vector<std::string> withNames(std::vector<std::string> arguments) {
        for (const std::string& neighbour : neighbours) {
            arguments.push_back(":(literal)" + neighbour);
        }
        return arguments;
    }
    void writeAll(std::string_view bytes) const {
        for (const std::string& neighbour : neighbours) {
            repository->write(neighbour, bytes);
        }
        repository->write(name(), bytes);
    }
    /// Returns the commit as a fast-import stream, based on the previous one.
    static std::string commitOf(const std::string& message, const std::vector<std::string>& names,
                                const std::string& bytes) {
        const auto data = [](const std::string& text) {
            return "data " + std::to_string(text.size()) + "\n" + text + "\n";
        };
        std::string commit =
            "commit refs/heads/main\n"
            "committer Ann Example <ann@example.org> 1600000000 +0000\n" +
            data(message);
        for (const std::string& name : names) {
            const std::string written = asGitWrites(name, "\"");
            commit += "M 100644 inline " + (written == name ? "\"" + name + "\"" : written) + "\n" +
                      data(bytes);
        }
        return commit + "\n";
    }
};

TEST_P(Names, AddStagesTheFile) {
    resultOf(request(NEBSourceControlRequestAddFiles, {path()}));
    EXPECT_THAT(staged(), ElementsAre(name()));
}

TEST_P(Names, AddOfADestinationStagesTheFile) {
    auto asked = requestFor(NEBSourceControlRequestAdd, repository->path());
    asked->destination = path();
    resultOf(asked);
    EXPECT_THAT(staged(), ElementsAre(name()));
}

TEST_P(Names, RemoveTakesTheFileAway) {
    resultOf(request(NEBSourceControlRequestRemove, {path()}));
    EXPECT_FALSE(fs::exists(path()));
    EXPECT_THAT(staged(), ElementsAre(name()));
    expectNeighboursUntouched();
}

TEST_P(Names, MoveRenamesTheFile) {
    auto asked = request(NEBSourceControlRequestMove, {path()});
    asked->destination = repository->path("moved");
    resultOf(asked);
    EXPECT_FALSE(fs::exists(path()));
    EXPECT_EQ(read("moved"), "changed\n");
    EXPECT_THAT(staged(), UnorderedElementsAre(name(), "moved"));
    expectNeighboursUntouched();
}

TEST_P(Names, MoveGivesTheName) {
    repository->git({"rm", "-q", "-f", "--", ":(literal)" + name()});
    repository->git({"commit", "-q", "-m", "gone"});
    auto asked = request(NEBSourceControlRequestMove, {repository->path("a1.c")});
    asked->destination = path();
    resultOf(asked);
    EXPECT_EQ(read(name()), "changed\n");
    EXPECT_THAT(staged(), UnorderedElementsAre(name(), "a1.c"));
}

TEST_P(Names, CommitRecordsTheFile) {
    auto asked = request(NEBSourceControlRequestCommit, {path()});
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionMessage, "named"}};
    EXPECT_THAT(resultOf(asked), SizeIs(1));
    EXPECT_THAT(namesOf({"diff-tree", "-r", "-z", "--name-only", "HEAD^", "HEAD", "--"}),
                ElementsAre(name()));
    expectNeighboursUntouched();
}

TEST_P(Names, RevertRestoresTheFile) {
    resultOf(request(NEBSourceControlRequestRevert, {path()}));
    EXPECT_EQ(read(name()), "two\n");
    expectNeighboursUntouched();
}

TEST_P(Names, LogIsThatOfTheFile) {
    const NEBSourceControlResult records = resultOf(request(NEBSourceControlRequestLog, {path()}));
    ASSERT_THAT(records, SizeIs(2));
    EXPECT_EQ(*records[0].value(NEBSourceControlOperationMessageKey).string(), "the file");
    EXPECT_EQ(*records[1].value(NEBSourceControlOperationMessageKey).string(), "all");
}

/// A name that is not UTF-8 is quoted as with core.quotePath=true.
TEST_P(Names, LogListsTheFile) {
    auto asked = request(NEBSourceControlRequestLog, {path()});
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionLogOutputFilesChanged, true}};
    const NEBSourceControlResult records = resultOf(asked);
    ASSERT_THAT(records, SizeIs(2));
    const bool isText = asText(name()) == name();
    for (const NEBDictionary& record : records) {
        const NEBDictionary* files = record.value(NEBSourceControlOperationFilesKey).dictionary();
        ASSERT_EQ(files->size(), 1U);
        EXPECT_EQ(files->begin()->key(), isText ? asGitWrites(name(), "\"") : R"("lat\344n")");
    }
}

TEST_P(Names, BlameIsThatOfTheFile) {
    repository->git({"reset", "-q", "--hard"});
    const NEBSourceControlResult records =
        resultOf(request(NEBSourceControlRequestBlame, {path()}));
    ASSERT_THAT(records, SizeIs(2)) << "one for the line, one for what is behind its end";
    EXPECT_EQ(*records[0].value(NEBSourceControlOperationRevisionKey).string(),
              repository->git({"rev-parse", "HEAD^"}).substr(0, 12));
}

TEST_P(Names, DiffIsThatOfTheFile) {
    const NEBSourceControlResult records = resultOf(request(NEBSourceControlRequestDiff, {path()}));
    ASSERT_THAT(records, SizeIs(1));
    const std::string text(records[0].value(NEBSourceControlOperationContentKey).string().value());
    EXPECT_EQ(text, asText(repository->git({"--literal-pathspecs", "-c", "core.quotePath=false",
                                            "diff", "HEAD", "--", name()})));
    EXPECT_THAT(text, HasSubstr("\n-two\n+changed\n"));
    EXPECT_EQ(text.find("diff --git", 1), std::string::npos);
}

/// Blanks at the beginning of a name are lost, as they are parsed as separators.
TEST_P(Names, DiffNamesTheFile) {
    auto asked = request(NEBSourceControlRequestDiff, {path()});
    asked->options = NEBDictionary{{NEBSourceControlRequestOptionDiffFileNameAndStatusOnly, true}};
    const NEBSourceControlResult records = resultOf(asked);
    ASSERT_THAT(records, SizeIs(1));
    const std::string written = asGitWrites(name(), "");
    EXPECT_EQ(*records[0].value(NEBSourceControlOperationPathKey).string(),
              repository->path() + "/" + asText(written.substr(written.find_first_not_of(' '))));
}

TEST_P(Names, StatusNamesTheFile) {
    auto asked = requestFor(NEBSourceControlRequestStatus, repository->path());
    asked->destination = path();
    const NEBSourceControlResult records = resultOf(asked);
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_EQ(*records[0].value(NEBSourceControlOperationPathKey).string(),
              repository->path() + "/" + asText(asGitWrites(name(), "")));
}

TEST_P(Names, ExportHasTheFile) {
    auto asked = request(NEBSourceControlRequestExportFiles, {path()});
    asked->startingRevision = "HEAD";
    if (name().starts_with('-')) {
        const auto refused = NEBSourceControlFirstArgumentInjection(*asked);
        ASSERT_TRUE(refused.has_value()) << "git would read it as an option";
        EXPECT_EQ(refused->field, "files[0]");
        return;
    }
    const NEBSourceControlResult records = resultOf(asked);
    ASSERT_THAT(records, SizeIs(1));
    const std::string target =
        records[0].value(NEBSourceControlOperationPathKey).filePath()->pathString();
    std::ifstream stream(target, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), "two\n");
    fs::remove(target);
    expectNeighboursUntouched();
}

/// A copy and its add run concurrently, in any order.
auto nothingOrOnly(const std::string& path) {
    return testing::AnyOf(testing::IsEmpty(), ElementsAre(path));
}

TEST_P(Names, CopyCopiesTheFile) {
    auto asked = request(NEBSourceControlRequestCopy, {path()});
    asked->destination = repository->path("copied");
    resultOf(asked);
    EXPECT_EQ(read("copied"), "changed\n");
    EXPECT_THAT(staged(), nothingOrOnly("copied"));
    expectNeighboursUntouched();
}

TEST_P(Names, CopyGivesTheName) {
    fs::create_directory(repository->path("folder"));
    auto asked = request(NEBSourceControlRequestCopy, {repository->path("a1.c")});
    asked->destination = repository->path("folder/") + name();
    resultOf(asked);
    EXPECT_EQ(read("folder/" + name()), "changed\n");
    EXPECT_THAT(staged(), nothingOrOnly("folder/" + name()));
    expectNeighboursUntouched();
}

INSTANTIATE_TEST_SUITE_P(Hostile, Names, testing::ValuesIn(hostileNames()),
                         [](const auto& tested) { return tested.param.title; });

/// Relative to the top of the working copy, git could take them for options.
TEST(NamesLikeOptions, AreRefusedWhereNothingStandsBeforeThem) {
    for (const char* name : {"-n", "--help", "-"}) {
        for (const std::int32_t type :
             {NEBSourceControlRequestMove, NEBSourceControlRequestList,
              NEBSourceControlRequestExportFiles, NEBSourceControlRequestExport}) {
            auto asked = requestFor(type, "/w");
            asked->files = {NEBValue(name)};
            const auto refused = NEBSourceControlFirstArgumentInjection(*asked);
            ASSERT_TRUE(refused.has_value()) << type << " " << name;
            EXPECT_EQ(refused->value, name);
        }
        for (const std::int32_t type :
             {NEBSourceControlRequestAdd, NEBSourceControlRequestCommit,
              NEBSourceControlRequestRemove, NEBSourceControlRequestAddFiles,
              NEBSourceControlRequestRevert, NEBSourceControlRequestLog,
              NEBSourceControlRequestBlame, NEBSourceControlRequestDiff}) {
            auto asked = requestFor(type, "/w");
            asked->files = {NEBValue(name)};
            EXPECT_EQ(NEBSourceControlFirstArgumentInjection(*asked), std::nullopt) << type;
        }
    }
}

}  // namespace
}  // namespace neb
