#include "nebsc/Requests/RequestsPage.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <utility>

#include "Support/TestRepository.h"

namespace neb::test {

namespace {

constexpr const char* pageFile = NEB_SOURCE_FOLDER "/docs/requests.md";
constexpr std::string_view heading = "\n## ";
constexpr std::string_view fence = "```";
constexpr std::string_view factsPrefix = "Class: ";

std::string madeWith() {
    std::string version = TestRepository().git({"--version"});
    return "Made with " + version.substr(0, version.find('\n')) + ".";
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// Calls visit(kind, content) for each code block; `kind` is the text after the opening fence.
template <typename Visit>
void forEachBlock(const std::string& text, Visit visit) {
    std::optional<std::string> kind;
    std::string content;
    for (const std::string& line : linesOf(text)) {
        if (!line.starts_with(fence)) {
            content += line + "\n";
        } else if (kind) {
            visit(*kind, content);
            kind.reset();
        } else {
            kind = line.substr(fence.size());
            content.clear();
        }
    }
}

/// Returns the code spans of the entry "runs" that begin with a program; other spans are options.
std::vector<std::string> commandLinesIn(const std::string& text) {
    const std::size_t begin = text.find("\n- **runs** ");
    const std::string entry = std::regex_replace(
        text.substr(begin, text.find("\n- **returns**") - begin), std::regex(R"(\s+)"), " ");
    std::vector<std::string> lines;
    const std::regex code("`((git|/usr/bin/tar|/bin/sh) [^`]*)`");
    for (std::sregex_iterator match(entry.begin(), entry.end(), code), end; match != end; ++match) {
        lines.push_back((*match)[1]);
    }
    return lines;
}

RequestSection sectionOf(const std::string& text) {
    RequestSection section{
        .type = -1, .name = {}, .facts = {}, .commandLines = {}, .text = text, .examples = {}};
    std::istringstream stream(text.substr(heading.size()));
    stream >> section.type;
    std::getline(stream >> std::ws, section.name);
    for (const std::string& line : linesOf(text)) {
        if (line.starts_with(factsPrefix)) {
            section.facts = line;
        }
    }
    section.commandLines = commandLinesIn(text);
    RequestExample example;
    bool isOutcomeNext = false;
    forEachBlock(text, [&](const std::string& kind, const std::string& content) {
        if (kind == "sh") {
            example.script = content;
        } else if (!isOutcomeNext) {
            example.request = content;
            example.isPlan = kind == "json plan";
            isOutcomeNext = true;
        } else {
            example.outcome = content;
            section.examples.push_back(std::exchange(example, {}));
            isOutcomeNext = false;
        }
    });
    return section;
}

}  // namespace

RequestsPage::RequestsPage() : _isWritten(std::getenv("NEB_WRITE_REQUESTS_PAGE") != nullptr) {
    std::ifstream stream(pageFile, std::ios::binary);
    const std::string page(std::istreambuf_iterator<char>(stream), {});
    std::size_t begin = page.find(heading);
    _introduction = page.substr(0, begin);
    while (begin != std::string::npos) {
        const std::size_t end = page.find(heading, begin + 1);
        _sections.push_back(sectionOf(
            page.substr(begin, end == std::string::npos ? std::string::npos : end - begin)));
        begin = end;
    }
}

RequestsPage& RequestsPage::instance() {
    static RequestsPage page;
    return page;
}

bool RequestsPage::isOfThisGit() const {
    return _introduction.find(madeWith()) != std::string::npos;
}

void RequestsPage::set(const RequestSection& section, const std::string& facts,
                       const std::vector<std::string>& outcomes) {
    std::string text;
    std::size_t blocks = 0;
    bool isInBlock = false;
    bool isOutcome = false;
    for (const std::string& line : linesOf(section.text)) {
        if (line.starts_with(fence)) {
            isInBlock = !isInBlock;
            // Requests and outcomes alternate.
            const bool isJSON = isInBlock && line.starts_with("```json");
            blocks += isJSON ? 1 : 0;
            isOutcome = isJSON && blocks % 2 == 0;
            text += line + "\n" + (isOutcome ? outcomes.at(blocks / 2 - 1) : "");
        } else if (!isOutcome || !isInBlock) {
            text += (line.starts_with(factsPrefix) ? facts : line) + "\n";
        }
    }
    _newTexts[section.type] = text;
}

void RequestsPage::write() const {
    if (!_isWritten) {
        return;
    }
    std::ofstream stream(pageFile, std::ios::binary);
    stream << std::regex_replace(_introduction, std::regex(R"(Made with [^\n]*\.)"), madeWith());
    for (const RequestSection& section : _sections) {
        const auto text = _newTexts.find(section.type);
        stream << (text == _newTexts.end() ? section.text : text->second);
    }
}

namespace {

class PageWriter : public testing::Environment {
public:
    void TearDown() override { RequestsPage::instance().write(); }
};

[[maybe_unused]] const auto* const writer =
    testing::AddGlobalTestEnvironment(new PageWriter);  // gtest owns it

}  // namespace

}  // namespace neb::test
