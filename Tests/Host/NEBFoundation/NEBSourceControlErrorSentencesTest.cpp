// The sentences of errors with their keys, and their translation to German.

#include <gmock/gmock.h>

#include <fstream>
#include <set>
#include <sstream>

#include "NEBFoundation/ErrorCatalogue/ErrorCatalogueRows.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "NEBFoundation/NEBSourceControlErrorTexts.h"
#include "NEBFoundation/NEBSourceControlLimits.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Support/ErrorTexts.h"
#include "Support/Matchers.h"

namespace neb {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

NEBSourceControlErrorTexts german() {
    std::ifstream file(NEB_SOURCE_FOLDER "/examples/error-texts/de.txt");
    std::ostringstream content;
    content << file.rdbuf();
    return NEBSourceControlErrorTexts::fromText(content.str());
}

NEBSourceControlError errorWith(const std::string& description, const char* errorClass,
                                const std::optional<std::string>& suggestion = {}) {
    auto error = NEBSourceControlError::withDescription(-1, description, suggestion);
    error.errorClass = errorClass;
    return error;
}

// ---- the sentences -----------------------------------------------------------------------------

TEST(ErrorSentences, HaveUniqueKeysThatNameTheirKind) {
    std::set<std::string> keys;
    for (const NEBSourceControlErrorSentence& sentence : NEBSourceControlErrorSentences()) {
        EXPECT_TRUE(keys.insert(sentence.key).second) << sentence.key;
        EXPECT_TRUE(sentence.key.ends_with(".description") || sentence.key.ends_with(".advice"))
            << sentence.key;
        EXPECT_FALSE(sentence.english.empty()) << sentence.key;
    }
}

TEST(ErrorSentences, ContainThoseOfTheClassesAndOfTheCatalogue) {
    std::set<std::string_view> sentences;
    for (const NEBSourceControlErrorSentence& sentence : NEBSourceControlErrorSentences()) {
        sentences.insert(sentence.english);
    }
    sentences.insert("");
    for (const NEBSourceControlErrorClass& row : NEBSourceControlErrorClasses()) {
        EXPECT_THAT(sentences, Contains(row.description));
        EXPECT_THAT(sentences, Contains(row.advice));
    }
    for (const ErrorCatalogueTable table : errorCatalogueTables()) {
        for (const ErrorCatalogueRow& row : table) {
            EXPECT_THAT(sentences, Contains(row.sentence.description));
            EXPECT_THAT(sentences, Contains(row.sentence.advice));
        }
    }
}

// ---- German ------------------------------------------------------------------------------------

TEST(GermanErrorTexts, HaveEverySentence) {
    const NEBSourceControlErrorTexts texts = german();
    EXPECT_THAT(texts.problems(), IsEmpty());
    EXPECT_THAT(texts.missingKeys(), IsEmpty());
}

TEST(GermanErrorTexts, TranslateTheErrorsOfAllMessagesOfGit) {
    const NEBSourceControlErrorTexts texts = german();
    const auto request = test::requestFor(NEBSourceControlRequestStatus, "/demo");
    std::size_t translated = 0;
    for (const test::TextOfGit& message : test::textsOfGit()) {
        const auto error = NEBSourceControlErrorFromText(message.text, *request);
        if (error.errorClass == NEBSourceControlUnknownErrorClass) {
            continue;
        }
        ++translated;
        EXPECT_NE(texts.description(error), std::nullopt) << message.text;
        EXPECT_NE(texts.description(error), error.localizedDescription()) << message.text;
        const auto* row = NEBSourceControlErrorClassNamed(*error.errorClass);
        EXPECT_EQ(texts.suggestion(error).has_value(), !row->advice.empty()) << message.text;
    }
    EXPECT_GT(translated, 50U);
}

TEST(GermanErrorTexts, KeepNamesAndNumbers) {
    const NEBSourceControlErrorTexts texts = german();
    EXPECT_THAT(texts.description(errorWith(
                    "The operation could not be performed because the working copy \"a \"b\" c\" "
                    "has uncommitted changes.",
                    "needs-clean-tree")),
                Optional(std::string("Der Vorgang konnte nicht ausgeführt werden, weil die "
                                     "Arbeitskopie „a \"b\" c“ nicht committete Änderungen hat.")));
    EXPECT_THAT(
        texts.suggestion(errorWith("x", "index-locked",
                                   "\"/r/.git/index.lock\" is 3 s old and held by \"git "
                                   "commit\" (process 12). Wait until that has ended.")),
        Optional(std::string("„/r/.git/index.lock“ ist 3 s alt und wird von „git commit“ "
                             "gehalten (Prozess 12). Warten Sie, bis dieser beendet ist.")));
    const auto exceeded = NEBSourceControlExceededLimitError(ChildLimit::outputBytes,
                                                             {.outputBytes = 1000}, "/usr/bin/git");
    EXPECT_THAT(texts.description(exceeded),
                Optional(std::string(
                    "„/usr/bin/git“ wurde beendet, weil es mehr als 1000 Bytes schrieb.")));
}

TEST(GermanErrorTexts, HaveSentencesThatAreBuiltFromParts) {
    const std::pair<const char*, const char*> sentences[] = {
        {"The operation could not be performed because the program \"/bin/git\" could not be "
         "started: No such file or directory.",
         "Der Vorgang konnte nicht ausgeführt werden, weil das Programm „/bin/git“ nicht gestartet "
         "werden konnte: No such file or directory."},
        {"The operation was not completed because \"/bin/git\" was ended by signal 9 (Killed).",
         "Der Vorgang wurde nicht abgeschlossen, weil „/bin/git“ vom Signal 9 beendet wurde "
         "(Killed)."},
        {"The request lacks the name of a tag.", "Der Anfrage fehlt der Name eines Tags."},
        {"The request lacks NEBSourceControlRequestOptionScope.",
         "Der Anfrage fehlt: NEBSourceControlRequestOptionScope."},
        {"\"src\" is not a folder.", "„src“ ist kein Ordner."},
        {"\"src\" is a folder.", "„src“ ist ein Ordner."},
    };
    for (const auto& [english, translated] : sentences) {
        EXPECT_THAT(german().description(errorWith(english, "x")),
                    Optional(std::string(translated)));
    }
}

TEST(GermanErrorTexts, CanHaveAnotherOrderOfValues) {
    EXPECT_THAT(
        german().description(errorWith("The revision v1 was not found for the file \"b.c\".", "x")),
        Optional(std::string("Die Datei „b.c“ hat keine Revision v1.")));
}

// ---- tables of a host --------------------------------------------------------------------------

TEST(ErrorTexts, OfASentenceWithoutTextAreThoseOfTheClass) {
    const auto texts = NEBSourceControlErrorTexts::fromText(
        "# comment\n\n  disk-full.description = Voll.  \ndisk-full.advice = Platz schaffen.\n");
    EXPECT_THAT(texts.problems(), IsEmpty());
    EXPECT_THAT(texts.description(errorWith("The disk is full.", "disk-full")),
                Optional(std::string("Voll.")));
    EXPECT_THAT(texts.description(errorWith("\"x\" could not be written: no space.", "disk-full")),
                Optional(std::string("Voll.")));
    EXPECT_EQ(texts.description(errorWith("There is nothing to commit.", "nothing-to-commit")),
              std::nullopt);
    EXPECT_EQ(texts.description(NEBSourceControlError()), std::nullopt);
    EXPECT_EQ(texts.suggestion(errorWith("The disk is full.", "disk-full")), std::nullopt);
    EXPECT_EQ(texts.suggestion(errorWith("The disk is full.", "disk-full", "A hint of git.")),
              std::nullopt);
    EXPECT_THAT(texts.missingKeys(), Contains("nothing-to-commit.description"));
}

TEST(ErrorTexts, OutputOfGitIsNotReplacedByTheSentenceOfTheUnknownClass) {
    EXPECT_EQ(german().description(errorWith("fatal: something new", "unknown")), std::nullopt);
}

TEST(ErrorTexts, ReportWhatIsWrongWithATable) {
    const auto texts = NEBSourceControlErrorTexts::fromText(
        "disk-full.description\nnosuch.advice = x\nremote-ahead.description = %@ und %@\n"
        "disk-full.advice = %2$@\nkilled.description = 100 % und $@\n");
    EXPECT_THAT(texts.problems(),
                ElementsAre("Line 1: it is not of the form \"KEY = TEXT\".",
                            "Line 2: no sentence has the key \"nosuch.advice\".",
                            "Line 3: the sentence \"remote-ahead.description\" does not have that "
                            "many values.",
                            "Line 4: the sentence \"disk-full.advice\" does not have that many "
                            "values."));
    EXPECT_THAT(texts.description(errorWith("A signal terminated git.", "killed")),
                Optional(std::string("100 % und $@")));
}

}  // namespace
}  // namespace neb
