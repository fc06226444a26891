#include "NEBFoundation/NEBSourceControlErrorClasses.h"

#include <gmock/gmock.h>

#include <set>
#include <string>
#include <vector>

#include "NEBFoundation/ErrorCatalogue/ErrorCatalogueRows.h"
#include "NEBFoundation/NEBSourceControlErrorCatalogue.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "Support/Matchers.h"

namespace neb {
namespace {

bool isSentence(std::string_view text) {
    return !text.empty() && text.ends_with('.') && text.find('\n') == std::string_view::npos &&
           text.find("  ") == std::string_view::npos &&
           text.find("nebsc") == std::string_view::npos;
}

TEST(ErrorClassTable, HasEachClassOnceWithASentence) {
    std::set<std::string_view> names;
    for (const NEBSourceControlErrorClass& row : NEBSourceControlErrorClasses()) {
        EXPECT_TRUE(names.insert(row.name).second) << row.name;
        EXPECT_TRUE(isSentence(row.description)) << row.name << ": " << row.description;
        EXPECT_TRUE(row.advice.empty() || isSentence(row.advice)) << row.name << ": " << row.advice;
        EXPECT_EQ(NEBSourceControlErrorClassNamed(row.name), &row);
    }
    EXPECT_EQ(NEBSourceControlErrorClassNamed("nosuch"), nullptr);
}

TEST(ErrorClassTable, HasEveryClassOfTheCatalogue) {
    const auto tables = errorCatalogueTables();
    std::vector<ErrorCatalogueTable> all(tables.begin(), tables.end());
    all.push_back(errorGeneralRows());
    for (const ErrorCatalogueTable rows : all) {
        for (const ErrorCatalogueRow& row : rows) {
            EXPECT_NE(NEBSourceControlErrorClassNamed(row.errorClass), nullptr) << row.errorClass;
        }
    }
}

TEST(ErrorClassTable, HasAdviceForEveryKnownFailure) {
    std::set<std::string_view> without;
    for (const NEBSourceControlErrorClass& row : NEBSourceControlErrorClasses()) {
        if (row.advice.empty()) {
            without.insert(row.name);
        }
    }
    EXPECT_EQ(without, (std::set<std::string_view>{NEBSourceControlCancelledErrorClass,
                                                   NEBSourceControlUnknownErrorClass,
                                                   NEBSourceControlUpToDateErrorClass}));
}

NEBSourceControlError errorOf(std::string_view errorClass) {
    auto error = NEBSourceControlError::withDescription(-1, "It failed.");
    error.errorClass = errorClass;
    return error;
}

TEST(ErrorClassTable, AddsAdviceToAnErrorWithoutASuggestion) {
    auto error = errorOf(NEBSourceControlDiskFullErrorClass);
    NEBSourceControlAddAdvice(error);
    EXPECT_EQ(error.localizedDescription(), "It failed.");
    EXPECT_EQ(error.localizedRecoverySuggestion(), "Free some space, then try again.");
}

TEST(ErrorClassTable, KeepsTheSuggestionOfAnError) {
    auto error = NEBSourceControlError::withDescription(-1, "It failed.", "Do this.");
    error.errorClass = NEBSourceControlDiskFullErrorClass;
    NEBSourceControlAddAdvice(error);
    EXPECT_EQ(error.localizedRecoverySuggestion(), "Do this.");
}

TEST(ErrorClassTable, AddsNothingWithoutDescriptionClassOrAdvice) {
    NEBSourceControlError bare;
    bare.errorClass = NEBSourceControlSourceDirectoryEmptyErrorClass;
    auto withoutClass = NEBSourceControlError::withDescription(-1, "It failed.");
    auto cancelled = errorOf(NEBSourceControlCancelledErrorClass);
    auto ofUnknownName = errorOf("nosuch");
    for (NEBSourceControlError* error : {&bare, &withoutClass, &cancelled, &ofUnknownName}) {
        NEBSourceControlAddAdvice(*error);
        EXPECT_EQ(error->localizedRecoverySuggestion(), std::nullopt);
    }
    EXPECT_TRUE(bare.userInfo.isEmpty());
}

TEST(ErrorClassTable, DescribesATextOfGit) {
    const std::string text =
        "fatal: could not read Username for 'http://127.0.0.1': terminal prompts disabled\n";
    const auto error = NEBSourceControlErrorFromText(
        text, *test::requestFor(NEBSourceControlRequestFetch, std::nullopt));
    EXPECT_EQ(error.localizedDescription(),
              "The server requires a user name and password, and none are stored.");
    EXPECT_EQ(error.localizedRecoverySuggestion(),
              NEBSourceControlErrorClassNamed(NEBSourceControlCredentialsNeededErrorClass)->advice);
    EXPECT_EQ(error.text, text);
}

TEST(ErrorClassTable, PrecedesTheHintsOfGit) {
    const char* text =
        "The following paths are ignored by one of your .gitignore files:\nx.o\nhint: Use -f if";
    const auto error = NEBSourceControlErrorFromText(
        text, *test::requestFor(NEBSourceControlRequestAdd, std::nullopt));
    EXPECT_EQ(error.localizedRecoverySuggestion(),
              NEBSourceControlErrorClassNamed(NEBSourceControlPathIgnoredErrorClass)->advice);
    EXPECT_THAT(error.hints, testing::ElementsAre("Use -f if"));
}

TEST(ErrorClassTable, KeepsATextWithoutAClassAndItsHints) {
    const char* text = "hint: Try this\nfatal: something new";
    const auto error = NEBSourceControlErrorFromText(
        text, *test::requestFor(NEBSourceControlRequestAdd, std::nullopt));
    EXPECT_EQ(error.errorClass, NEBSourceControlUnknownErrorClass);
    EXPECT_EQ(error.localizedDescription(), text);
    EXPECT_EQ(error.localizedRecoverySuggestion(), "Try this");
}

}  // namespace
}  // namespace neb
