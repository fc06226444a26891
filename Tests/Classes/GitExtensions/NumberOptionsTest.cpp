// NumberOptionsTest.cpp - options that git would silently take for another number.
#include "Classes/GitExtensions/ExtensionTest.h"

namespace neb::test {
namespace {

struct NumberOption {
    std::int32_t type;
    NEBConstant option;
    NEBValue smallest;
    NEBValue tooSmall;
};

const NumberOption numberOptions[] = {
    {NEBSourceControlRequestHistory, NEBSourceControlRequestOptionLogOutputLimit, 0, -1},
    {NEBSourceControlRequestContent, NEBSourceControlRequestOptionStage, 0, -1},
    {NEBSourceControlRequestAnnotation, NEBSourceControlRequestOptionFirstLine, 1, 0},
    {NEBSourceControlRequestAnnotation, NEBSourceControlRequestOptionLastLine, 1, 0},
    {NEBSourceControlRequestChanges, NEBSourceControlRequestOptionContextLines, 0, -1},
    {NEBSourceControlRequestPick, NEBSourceControlRequestOptionMainline, 1, 0},
};

class NumberOptions : public ExtensionTest {
protected:
    /// Returns the error class of a request with this value.
    [[nodiscard]] std::string classWith(const NumberOption& row, const NEBValue& value) const {
        auto asked = fileRequest(row.type, "f", {{row.option, value}});
        asked->startingRevision = "HEAD";
        return errorClassOf(asked);
    }
};

TEST_F(NumberOptions, AreRefusedUnlessGitReadsThemAsTheyAre) {
    repository.commitFile("f", "one\ntwo\n");
    for (const NumberOption& row : numberOptions) {
        SCOPED_TRACE(std::string(row.option));
        EXPECT_NE(classWith(row, row.smallest), "request-invalid");
        const NEBValue wrong[] = {row.tooSmall, "x",  "",           "1.5",
                                  " 1",         "+1", "2147483648", std::int64_t{1} << 32};
        for (const NEBValue& value : wrong) {
            EXPECT_EQ(classWith(row, value), "request-invalid") << value.description();
        }
    }
}

TEST_F(NumberOptions, AreRefusedBeforeGitRuns) {
    auto asked = fileRequest(NEBSourceControlRequestChanges, "f",
                             {{NEBSourceControlRequestOptionContextLines, -1}});
    const auto operation = perform(asked);
    EXPECT_TRUE(operation->commandLog()->runs().empty());
    EXPECT_EQ(operation->error()->localizedDescription(),
              "The value \"-1\" is not one of NEBSourceControlRequestOptionContextLines.");
}

}  // namespace
}  // namespace neb::test
