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
constexpr const char* introduction =
    R"(# What failures look like

Every failure below is brought about with the git that is installed, by `Tests/Failures`, which
compares its class, code, files and exit status with what they should be, and its row here. The class
is the word in the error's `class` (see [json.md](json.md)). What a person sees is the sentence and the
suggestion of `nebsc`; git's own words stand below them where they say more. Ports, times, commits
and temporary folders are placeholders. Where the sentence speaks of authentication and the class does not, the
plug-in's own table of errors, which hosts rely on, has the sentence; the class is the true one.

Two classes are known from git's texts alone, as no request gives rise to them: `push-stale` and
`no-push-destination`.

`NEB_WRITE_ERRORS_TABLE=1 build/debug/bin/failure_tests` writes this file anew, on a machine where none
of its tests is skipped. The third column is compared only with the git that made it.
)";
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

std::vector<std::string> rowsOf(const std::string& document) {
    std::vector<std::string> rows;
    for (const std::string& line : linesOf(document)) {
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
    return "Made with " + version + ".";
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
