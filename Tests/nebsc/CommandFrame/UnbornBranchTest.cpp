// Repositories without commits: commands say so instead of calling HEAD unknown.

#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

class UnbornBranch : public CommandTest {};

TEST_F(UnbornBranch, IsTheReasonWhyHEADIsUnknown) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"reset", "HEAD"},
                                               {"reset", "--hard", "@"},
                                               {"cherry-pick", "HEAD"},
                                               {"revert", "--commit", "HEAD~1"},
                                               {"cat", "HEAD:a"},
                                               {"ls", "HEAD:"},
                                               {"log", "HEAD"}}) {
        SCOPED_TRACE(arguments.front());
        expectFailed(nebsc(arguments),
                     "nebsc: the current branch 'main' does not have any commits yet\n");
    }
}

TEST_F(UnbornBranch, IsNoReasonForOtherNames) {
    for (const char* revision : {"nosuch", "HEAD2", "head", "@x"}) {
        const std::string message = std::string("nebsc: unknown revision '") + revision + "'\n";
        expectFailed(nebsc({"reset", revision}), message);
    }
}

}  // namespace
}  // namespace neb::test
