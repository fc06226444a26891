// The manual page of the build.

#include <fstream>
#include <iterator>
#include <regex>

#include "CommandLine/CommonOptions.h"
#include "Commands/Commands.h"
#include "Help/Usage.h"
#include "nebsc/CommandTest.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;
using testing::ContainsRegex;
using testing::HasSubstr;

constexpr const char* manualFile = NEB_BUILD_FOLDER "/share/man/man1/nebsc.1";

std::string textOfFile(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// The text with roff's special characters escaped.
std::string asInPage(std::string_view text) {
    std::string escaped;
    for (const char character : text) {
        escaped += character == '-'    ? std::string("\\-")
                   : character == '\'' ? std::string("\\(aq")
                                       : std::string(1, character);
    }
    return escaped;
}

void expectInPage(const std::string& page, const nebsc::Command& command,
                  const std::string& names) {
    const std::string whole = names + std::string(command.name);
    EXPECT_THAT(page, HasSubstr("\n.SS \"" + asInPage(whole))) << whole;
    EXPECT_THAT(page, HasSubstr(asInPage(command.summary) + ".\n")) << whole;
    EXPECT_THAT(page, HasSubstr("\n" + asInPage(whole))) << whole << " has no example";
    for (const nebsc::Parameter& parameter : command.parameters) {
        EXPECT_THAT(page, HasSubstr(asInPage(parameter.help) + ".\n")) << whole;
        EXPECT_THAT(page, HasSubstr(asInPage(nebsc::headingOf(parameter)))) << whole;
    }
    for (const nebsc::Command* inner : command.commands) {
        expectInPage(page, *inner, whole + " ");
    }
}

TEST(Manual, IsWhatTheProgramPrints) {
    const std::string page = textOfFile(manualFile);
    ASSERT_FALSE(page.empty());
    expectDone(runNebsc({"manual"}), page);
}

TEST(Manual, HasEveryCommandAndOption) {
    const std::string page = textOfFile(manualFile);
    for (const nebsc::Command* command : nebsc::allCommands()) {
        expectInPage(page, *command, "nebsc ");
    }
    for (const nebsc::Parameter& option : nebsc::commonOptions()) {
        EXPECT_THAT(page, HasSubstr(asInPage(option.help) + ".\n"));
    }
    for (const char* name : {"NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "COMMANDS",
                             "EXIT STATUS", "ENVIRONMENT", "FILES", "SEE ALSO"}) {
        EXPECT_THAT(page, HasSubstr(std::string("\n.SH \"") + name + "\"\n"));
    }
}

TEST(Manual, NamesEveryVariableThatIsRead) {
    const std::string page = textOfFile(manualFile);
    const std::string variables = page.substr(page.find(".SH \"ENVIRONMENT\""));
    const std::regex reading(R"~((getenv|variable)\("([A-Z_]+)"\))~");
    std::size_t count = 0;
    for (const char* folder : {"/Tools", "/Host", "/Classes"}) {
        for (const auto& entry :
             fs::recursive_directory_iterator(std::string(NEB_SOURCE_FOLDER) + folder)) {
            const std::string source = entry.is_regular_file() ? textOfFile(entry.path()) : "";
            for (std::sregex_iterator match(source.begin(), source.end(), reading), end;
                 match != end; ++match) {
                const std::string name = (*match)[2].str();
                EXPECT_TRUE(std::regex_search(variables, std::regex("\n\\.B .*\\b" + name)))
                    << name << " is read in " << entry.path();
                ++count;
            }
        }
    }
    EXPECT_GE(count, 7U);
}

TEST(Manual, IsFormattedWithoutAWarning) {
    const NebscOutcome outcome =
        runProgram("/usr/bin/env", {"groff", "-man", "-ww", "-z", manualFile}, {});
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST(Manual, IsReadable) {
    const NebscOutcome outcome = runProgram(
        "/usr/bin/env", {"groff", "-man", "-Tascii", "-P-c", "-P-b", "-P-u", manualFile}, {});
    // The indentation depends on the version of groff.
    EXPECT_THAT(outcome.output, ContainsRegex("\n +nebsc rm --force old.c    "));
    EXPECT_THAT(outcome.output,
                ContainsRegex("\nENVIRONMENT\n +PATH   The directories that are searched for git"));
    EXPECT_THAT(outcome.output, HasSubstr("130 after Ctrl-C"));
}

}  // namespace
}  // namespace neb::test
