// Messages of git are recognised although the user has set another language.

#include <gmock/gmock.h>

#include "Classes/Configuration/RequestMatrix.h"
#include "Classes/Configuration/Variables.h"
#include "Support/HygienicTest.h"

namespace neb {
namespace {

using test::Outcome;
using test::outcomeOf;
using test::preparedRequest;
using test::RequestCase;
using test::requestMatrix;
using test::Variables;
using test::World;
using testing::HasSubstr;

class InAnotherLanguage : public test::HygienicTest {};

TEST_F(InAnotherLanguage, FailuresAreToldApartAllTheSame) {
    const World home;
    home.run("localedef -i de_DE -f UTF-8 ../de_DE.UTF-8");
    const test::VariableList german{{"LOCPATH", home.path()},
                                    {"LANG", "de_DE.UTF-8"},
                                    {"LC_ALL", "de_DE.UTF-8"},
                                    {"LANGUAGE", "de"}};
    {
        const Variables language(german);
        ASSERT_THAT(home.run("git rm nosuch 2>&1 || true"), HasSubstr("Pfadspezifikation"))
            << "git does not speak German here";
    }
    int failures = 0;
    for (const RequestCase& requestCase : requestMatrix()) {
        const bool mayFail = requestCase.name.find("Unknown") != std::string::npos ||
                             requestCase.name.find("Nothing") != std::string::npos ||
                             requestCase.name.find("Twice") != std::string::npos;
        if (!mayFail) {
            continue;
        }
        const World english;
        const Outcome expected = outcomeOf(english, preparedRequest(english, requestCase));
        const World world;
        const auto request = preparedRequest(world, requestCase);
        const Variables language(german);
        EXPECT_EQ(outcomeOf(world, request), expected) << requestCase.name;
        failures += expected.error == "none" ? 0 : 1;
    }
    EXPECT_GT(failures, 10);
}

}  // namespace
}  // namespace neb
