#include "ErrorsTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include "Presentation.h"
#include "Support/TestRepository.h"

namespace neb::test {

namespace {

constexpr const char* file = NEB_SOURCE_FOLDER "/docs/errors.md";
constexpr std::string_view endOfIntroduction = "Made with ";
constexpr std::string_view indentation = "    ";

std::string gitVersion() {
    static const std::string version = [] {
        const std::string words = TestRepository().git({"--version"});
        return words.substr(0, words.find_last_not_of('\n') + 1);
    }();
    return version;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string inCode(std::string text) {
    std::replace(text.begin(), text.end(), '`', '\'');
    for (std::size_t bar = 0; (bar = text.find('|', bar)) != std::string::npos; bar += 2) {
        text.insert(bar, "\\");
    }
    return "`" + text + "`";
}

/// The sentence and the suggestion; git's words below them are indented.
std::string shown(const NEBSourceControlError& error) {
    std::string cell;
    for (const std::string& line : linesOf(withoutAccidents(nebsc::errorLines(error)))) {
        if (!line.empty() && !line.starts_with(indentation)) {
            cell += (cell.empty() ? "" : "<br>") + inCode(line);
        }
    }
    return cell;
}

std::string verdictOn(const Failure& failure, const NEBSourceControlError& error) {
    if (error.errorClass == failure.errorClass) {
        return "right";
    }
    return error.errorClass == "unknown" ? "unknown" : "wrong";
}

/// What a row begins with; no other row does.
std::string beginningOf(const Failure& failure) {
    return "| " + std::string(failure.how) + " | `" + std::string(failure.errorClass) + "` | ";
}

/// What stands before the table of failures, the table of the classes too: people write it.
std::string introductionOf(const std::string& document) {
    return document.substr(0, document.find(endOfIntroduction));
}

std::vector<std::string> rowsOf(const std::string& document) {
    std::vector<std::string> rows;
    for (const std::string& line : linesOf(document.substr(introductionOf(document).size()))) {
        if (line.starts_with("| ") && line.find(" | `") != std::string::npos) {
            rows.push_back(line);
        }
    }
    return rows;
}

std::string sumsOf(const std::vector<std::string>& rows) {
    const auto count = [&rows](const std::string& verdict) {
        return std::to_string(std::count_if(rows.begin(), rows.end(), [&](const std::string& row) {
            return row.ends_with("| " + verdict + " |");
        }));
    };
    std::set<std::string_view> classes;
    for (const Failure& failure : allFailures()) {
        classes.insert(failure.errorClass);
    }
    return std::to_string(rows.size()) + " failures of " + std::to_string(classes.size()) +
           " classes: " + count("right") + " right, " + count("unknown") + " unknown, " +
           count("wrong") + " wrong.";
}

std::string madeWith(const std::string& version) {
    return std::string(endOfIntroduction) + version + ".";
}

}  // namespace

ErrorsTable::ErrorsTable() : _isWritten(std::getenv("NEB_WRITE_ERRORS_TABLE") != nullptr) {
    std::ifstream stream(file, std::ios::binary);
    _document.assign(std::istreambuf_iterator<char>(stream), {});
}

ErrorsTable& ErrorsTable::instance() {
    static ErrorsTable table;
    return table;
}

void ErrorsTable::compare(const Failure& failure, const NEBSourceControlError& error) {
    const std::string beginning = beginningOf(failure);
    const std::string end = " | " + verdictOn(failure, error) + " |";
    const std::string row = beginning + shown(error) + end;
    if (_isWritten) {
        _newRows[std::string(failure.how)] = row;
        return;
    }
    const std::vector<std::string> rows = rowsOf(_document);
    const auto documented = std::find_if(
        rows.begin(), rows.end(),
        [&](const std::string& candidate) { return candidate.starts_with(beginning); });
    ASSERT_NE(documented, rows.end()) << file << " has no row that begins with " << beginning;
    EXPECT_TRUE(documented->ends_with(end)) << *documented;
    if (_document.find(madeWith(gitVersion())) != std::string::npos) {
        EXPECT_EQ(*documented, row) << "NEB_WRITE_ERRORS_TABLE=1 writes " << file << " anew";
    }
}

void ErrorsTable::compareRows() const {
    if (_isWritten) {
        return;
    }
    const std::vector<std::string> rows = rowsOf(_document);
    ASSERT_EQ(rows.size(), allFailures().size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_TRUE(rows[i].starts_with(beginningOf(allFailures()[i]))) << rows[i];
    }
    EXPECT_NE(_document.find(sumsOf(rows)), std::string::npos) << sumsOf(rows);
}

void ErrorsTable::compareClasses() const {
    const std::vector<std::string> lines = linesOf(introductionOf(_document));
    std::set<std::string> documented;
    for (const std::string& line : lines) {
        if (line.starts_with("| `")) {
            EXPECT_TRUE(documented.insert(line.substr(3, line.find('`', 3) - 3)).second) << line;
        }
    }
    for (const Failure& failure : allFailures()) {
        const std::string beginning = "| `" + std::string(failure.errorClass) + "` | ";
        const auto row = std::find_if(
            lines.begin(), lines.end(),
            [&beginning](const std::string& line) { return line.starts_with(beginning); });
        ASSERT_NE(row, lines.end()) << file << " has no row for " << failure.errorClass;
        const std::string codes =
            row->substr(beginning.size(), row->find(" |", beginning.size()) - beginning.size());
        EXPECT_NE((", " + codes + ",").find(", " + std::to_string(failure.code) + ","),
                  std::string::npos)
            << *row << " lacks the code of: " << failure.how;
        documented.erase(std::string(failure.errorClass));
    }
    // Those that none of these failures shows.
    const std::set<std::string> textOnly = {"bare-repository-forbidden",
                                            "client-certificate-refused",
                                            "editor-failed",
                                            "git-bug",
                                            "io-error",
                                            "merge-failed",
                                            "no-current-branch",
                                            "no-push-destination",
                                            "nothing-in-progress",
                                            "out-of-memory",
                                            "push-stale",
                                            "reference-changed",
                                            "remote-url-missing",
                                            "submodule-failed",
                                            "system-limit",
                                            "unsafe-content"};
    std::set<std::string> expected = {"cancelled", "unknown", "up-to-date"};
    expected.insert(textOnly.begin(), textOnly.end());
    EXPECT_EQ(documented, expected);
}

void ErrorsTable::write() const {
    if (!_isWritten) {
        return;
    }
    std::vector<std::string> rows;
    std::string table = "| what happens | class | what a person sees | told |\n|---|---|---|---|\n";
    for (const Failure& failure : allFailures()) {
        if (const auto row = _newRows.find(std::string(failure.how)); row != _newRows.end()) {
            rows.push_back(row->second);
            table += row->second + "\n";
        }
    }
    const std::string introduction = introductionOf(_document);
    std::ofstream stream(file, std::ios::binary);
    stream << introduction << madeWith(gitVersion()) << "\n\n"
           << table << "\n"
           << sumsOf(rows) << "\n";
}

namespace {

class TableWriter : public testing::Environment {
public:
    void TearDown() override { ErrorsTable::instance().write(); }
};

[[maybe_unused]] const auto* const writer =
    testing::AddGlobalTestEnvironment(new TableWriter);  // gtest owns it

}  // namespace

}  // namespace neb::test
