// Provokes each failure with the installed git and compares the error with the expected one and
// with its row in docs/errors.md.

#include <gmock/gmock.h>

#include <regex>

#include "ErrorsTable.h"
#include "Failure.h"
#include "Support/HygienicTest.h"
#include "Support/RequestRun.h"

namespace neb::test {

Failures allFailures() {
    static const std::vector<Failure> all = [] {
        std::vector<Failure> failures;
        for (const auto& family : {&networkFailures, &exchangeFailures, &workingCopyFailures,
                                   &nameFailures, &commitFailures, &machineFailures,
                                   &ambiguityFailures, &contentFailures, &damageFailures}) {
            const Failures rows = family();
            failures.insert(failures.end(), rows.begin(), rows.end());
        }
        return failures;
    }();
    return all;
}

std::string withoutVariableParts(std::string text) {
    const std::pair<const char*, const char*> replacements[] = {
        {R"((/[^\s'":]*)?/neb-test-\w{6})", "/tmp"},
        {R"((127\.0\.0\.1( port |:))\d+)", "$1PORT"},
        {R"(\d+ ms)", "N ms"},
        {R"(is \d+ s old)", "is N s old"},
        {R"(\b[0-9a-f]{7,64}\b)", "COMMIT"},
        // paths that differ between distributions
        {R"( at /\S+ line \d+)", " at FILE line N"},
        {R"(CAfile: \S+)", "CAfile: FILE"},
        // either side may report it first
        {R"(([Rr]emote error: |git )(upload-pack: not our ref))", "$2"},
    };
    for (const auto& [pattern, replacement] : replacements) {
        text = std::regex_replace(text, std::regex(pattern), replacement);
    }
    return text;
}

namespace {

/// Returns the clause in camel case, as the name of a test.
std::string testNameOf(const testing::TestParamInfo<Failure>& info) {
    std::string name;
    bool isNewWord = true;
    for (const char character : info.param.how) {
        const bool isLetter = std::isalnum(static_cast<unsigned char>(character)) != 0;
        if (isLetter) {
            name += isNewWord ? static_cast<char>(std::toupper(character)) : character;
        }
        isNewWord = !isLetter;
    }
    return name;
}

class CommonFailure : public HygienicTest, public testing::WithParamInterface<Failure> {};

TEST_P(CommonFailure, HasTheExpectedError) {
    const Failure& failure = GetParam();
    Scene scene;
    const Request request = failure.provoke(scene);
    if (!scene.reasonToSkip().empty()) {
        GTEST_SKIP() << scene.reasonToSkip();
    }
    const auto operation = perform(request);
    const auto& error = operation->error();
    ASSERT_TRUE(error.has_value());
    SCOPED_TRACE(error->text.value_or("(no text)"));
    EXPECT_EQ(error->errorClass, failure.errorClass);
    EXPECT_EQ(error->code, failure.code);
    EXPECT_THAT(error->terminationStatus ? error->terminationStatus->exitStatus() : std::nullopt,
                testing::AnyOf(failure.exitStatus, failure.laterExitStatus ? failure.laterExitStatus
                                                                           : failure.exitStatus));
    std::vector<std::string> files;
    for (const std::string& file : error->files) {
        files.push_back(withoutVariableParts(file));
    }
    EXPECT_EQ(files, failure.files);
    ErrorsTable::instance().compare(failure, *error);
}

INSTANTIATE_TEST_SUITE_P(All, CommonFailure, testing::ValuesIn(allFailures()), testNameOf);

TEST(CommonFailures, AreTheRowsOfTheDocumentedTable) {
    ErrorsTable::instance().compareRows();
}

TEST(CommonFailures, HaveDocumentedClasses) {
    ErrorsTable::instance().compareClasses();
}

}  // namespace
}  // namespace neb::test
