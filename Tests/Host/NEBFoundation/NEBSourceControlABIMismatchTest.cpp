#include "NEBFoundation/NEBSourceControlABIMismatch.h"

#include <elf.h>
#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "NEBFoundation/NEBSourceControlABIStamp.h"
#include "NEBFoundation/NEBSourceControlPlugIn.h"
#include "Support/TemporaryFolder.h"

namespace neb {
namespace {

const std::string plugInFile = NEB_BUILD_FOLDER "/lib/NEBGit.so";
const std::string ourStamp = NEBSourceControlABIStamp.stamp;

std::string withLine(const std::string& item, const std::string& value) {
    const std::size_t begin = ourStamp.find(item + "=") + item.size() + 1;
    std::string changed = ourStamp;
    return changed.replace(begin, changed.find('\n', begin) - begin, value);
}

// ---- comparing ---------------------------------------------------------------------------------

TEST(ABIMismatch, OurOwnStampFits) {
    EXPECT_EQ(NEBSourceControlABIMismatch("This program", ourStamp), "");
    EXPECT_EQ(NEBSourceControlHostMismatch(), nullptr);
}

TEST(ABIMismatch, NamesTheFirstDifferenceAndBothSides) {
    EXPECT_EQ(NEBSourceControlABIMismatch("X", withLine("size of NEBValue", "24")),
              "X does not fit the host library: its size of NEBValue is 24, that of the host "
              "library is " +
                  std::to_string(sizeof(NEBValue)) + ".");
    const std::string other = withLine("contract version", "1000");
    EXPECT_STREQ(
        NEBSourceControlMismatchOfHostStamp(other.c_str()),
        ("This program does not fit the host library: its contract version is 1000, that of "
         "the host library is " +
         std::to_string(NEBSourceControlContractVersion) + ".")
            .c_str());
}

TEST(ABIMismatch, AStampWithOtherLinesDoesNotFit) {
    const std::string unknown = " does not fit the host library: its contract version is unknown, ";
    EXPECT_THAT(NEBSourceControlABIMismatch("X", ""), testing::HasSubstr(unknown));
    EXPECT_THAT(NEBSourceControlABIMismatch("X", "something else"), testing::HasSubstr(unknown));
    const std::string shorter = ourStamp.substr(0, ourStamp.rfind("size of"));
    EXPECT_THAT(NEBSourceControlABIMismatch("X", shorter), testing::HasSubstr(" is unknown, "));
}

// ---- the stamp in a file -----------------------------------------------------------------------

TEST(StampOfFile, IsReadWithoutLoadingTheFile) {
    const NEBSourceControlFileStamp found = NEBSourceControlStampOfFile(plugInFile);
    EXPECT_TRUE(found.isLibrary);
    EXPECT_EQ(found.stamp, ourStamp);
    const auto without = NEBSourceControlStampOfFile(NEB_TEST_MODULES "/NoPlugIn.so");
    EXPECT_TRUE(without.isLibrary);
    EXPECT_EQ(without.stamp, "");
    EXPECT_FALSE(NEBSourceControlStampOfFile("/no/such/file").isLibrary);
    EXPECT_FALSE(NEBSourceControlStampOfFile("/").isLibrary);
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

TEST(StampOfFile, ADamagedFileHasNone) {
    const test::TemporaryFolder folder;
    const std::string content = contentOf(plugInFile).substr(0, 4096);
    for (std::size_t length = 0; length < content.size(); length += 97) {
        const std::string path = folder.write("short.so", content.substr(0, length));
        EXPECT_THAT(NEBSourceControlStampOfFile(path).stamp, testing::AnyOf("", ourStamp));
    }
    // Bytes of the headers and of the headers of the notes.
    for (std::size_t i = EI_NIDENT; i < 1024; i += 9) {
        std::string damaged = content;
        damaged[i] = '\xff';
        const auto found = NEBSourceControlStampOfFile(folder.write("damaged.so", damaged));
        EXPECT_LE(found.stamp.size(), NEBSourceControlABINote::capacity);
    }
}

// ---- plug-ins and hosts that were built in another way -----------------------------------------

/// A plug-in and a host that were compiled in another way than the host library.
struct Foreign {
    const char* module;
    /// The item of the stamp that differs, and its value there.
    const char* item;
    std::string theirs;
    std::string ours;
};

void PrintTo(const Foreign& foreign, std::ostream* stream) {
    *stream << foreign.module;
}

std::vector<Foreign> foreignModules() {
    const std::string library(standardLibrary);
    const bool isLibcxx = library.starts_with("libc++");
    return {
        {"OtherContract", "contract version", "1000",
         std::to_string(NEBSourceControlContractVersion)},
        {"OldStrings", "standard library", "libstdc++ (_GLIBCXX_USE_CXX11_ABI=0)", library},
        {"DebugMode", "debug mode", "on (_GLIBCXX_DEBUG)", "off"},
        {"OtherLibrary", "standard library",
         isLibcxx ? "libstdc++ (std::__cxx11)" : "libc++ (std::__1)", library},
    };
}

class ForeignModule : public testing::TestWithParam<Foreign> {
protected:
    void SetUp() override {
        if (!std::filesystem::exists(module())) {
            GTEST_SKIP() << "this build cannot have it, see Tests/ForeignModules.cmake";
        }
    }
    static std::string module() {
        return std::string(NEB_TEST_MODULES "/") + GetParam().module + ".so";
    }
    static std::string complaintAbout(const std::string& subject) {
        return subject + " does not fit the host library: its " + GetParam().item + " is " +
               GetParam().theirs + ", that of the host library is " + GetParam().ours + ".";
    }
};

INSTANTIATE_TEST_SUITE_P(, ForeignModule, testing::ValuesIn(foreignModules()),
                         [](const auto& info) { return std::string(info.param.module); });

TEST_P(ForeignModule, PlugInIsRefusedWithOneSentenceBeforeItsCodeRuns) {
    const auto load = NEBSourceControlPlugIn::load(module());
    EXPECT_FALSE(load.plugIn.has_value());
    EXPECT_EQ(load.failure, complaintAbout("The plug-in \"" + module() + "\""));
}

TEST_P(ForeignModule, HostIsRefusedWithOneSentence) {
    const std::string host = std::string(NEB_TEST_MODULES "/") + GetParam().module + "-host";
    const std::string command = host + " " + plugInFile;
    FILE* pipe = ::popen(command.c_str(), "re");
    ASSERT_NE(pipe, nullptr);
    char line[1024] = {};
    EXPECT_NE(std::fgets(line, sizeof line, pipe), nullptr);
    EXPECT_EQ(WEXITSTATUS(::pclose(pipe)), 1);
    EXPECT_EQ(line, complaintAbout("This program") + "\n");
}

}  // namespace
}  // namespace neb
