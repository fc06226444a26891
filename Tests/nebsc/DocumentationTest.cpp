// DocumentationTest.cpp - tests that the pages name only files and folders that exist, and the
// contract version of the program.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

#include "NEBFoundation/NEBSourceControlPlugIn.h"

namespace neb::test {
namespace {

namespace fs = std::filesystem;

const fs::path sourceFolder = NEB_SOURCE_FOLDER;

std::vector<fs::path> pages() {
    std::vector<fs::path> paths{sourceFolder / "README.md", sourceFolder / "CONTRIBUTING.md"};
    for (const fs::directory_entry& entry : fs::directory_iterator(sourceFolder / "docs")) {
        if (entry.path().extension() == ".md") {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::string contentOf(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Returns the first group of each match.
std::vector<std::string> matchesIn(const std::string& text, const std::string& expression) {
    const std::regex pattern(expression);
    std::vector<std::string> matches;
    for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end;
         ++match) {
        matches.push_back((*match)[1]);
    }
    return matches;
}

/// Returns the anchor of a heading: lower case, spaces as hyphens, no punctuation.
std::string anchorOf(const std::string& heading) {
    std::string anchor;
    for (const char character : heading) {
        if (std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '-') {
            anchor += static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
        } else if (character == ' ') {
            anchor += '-';
        }
    }
    return anchor;
}

bool hasAnchor(const fs::path& page, const std::string& anchor) {
    const std::vector<std::string> headings = matchesIn(contentOf(page), "\n#+ ([^\n]+)");
    return std::any_of(headings.begin(), headings.end(), [&anchor](const std::string& heading) {
        return anchorOf(heading) == anchor;
    });
}

class Documentation : public testing::TestWithParam<fs::path> {};

/// A path such as `Host/Platform/ChildPipeline.cpp` or `scripts/run` in backquotes.
TEST_P(Documentation, NamesOnlyExistingFiles) {
    const std::string folders =
        "Benchmarks|Classes|Fuzz|Host|Packaging|Tests|Tools|docs|examples|scripts|\\.ci";
    for (const std::string& path :
         matchesIn(contentOf(GetParam()), "`((?:" + folders + ")(?:/[A-Za-z0-9_.+-]*)+)[` ]")) {
        EXPECT_TRUE(fs::exists(sourceFolder / path)) << path;
    }
}

TEST_P(Documentation, LinksOnlyToExistingPagesAndHeadings) {
    for (const std::string& link : matchesIn(contentOf(GetParam()), "\\]\\(([^): ]+)\\)")) {
        const std::size_t hash = link.find('#');
        const std::string file = link.substr(0, hash);
        const fs::path target = file.empty() ? GetParam() : GetParam().parent_path() / file;
        ASSERT_TRUE(fs::exists(target)) << link;
        if (hash != std::string::npos) {
            EXPECT_TRUE(hasAnchor(target, link.substr(hash + 1))) << link;
        }
    }
}

TEST(DocumentationIndex, ListsEveryPage) {
    const std::string index = contentOf(sourceFolder / "docs/README.md");
    for (const fs::path& page : pages()) {
        if (page.parent_path() == sourceFolder / "docs" && page.filename() != "README.md") {
            EXPECT_NE(index.find("](" + page.filename().string() + ")"), std::string::npos) << page;
        }
    }
}

TEST(DocumentationOfTheServer, ShowsTheContractVersion) {
    EXPECT_EQ(matchesIn(contentOf(sourceFolder / "docs/server.md"), R"("contractVersion": (\d+))"),
              std::vector{std::to_string(NEBSourceControlContractVersion)});
}

std::string testNameOf(const testing::TestParamInfo<fs::path>& info) {
    std::string name = info.param.parent_path().filename() == "docs" ? "docs_" : "";
    name += info.param.stem().string();
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(All, Documentation, testing::ValuesIn(pages()), testNameOf);

}  // namespace
}  // namespace neb::test
