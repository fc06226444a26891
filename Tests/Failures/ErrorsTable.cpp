#include "ErrorsTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <utility>

#include "ClassTable.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlErrorClasses.h"
#include "Support/TestRepository.h"
#include "Terminal/ErrorText.h"

namespace neb::test {

namespace {

constexpr const char* file = NEB_SOURCE_FOLDER "/docs/errors.md";
constexpr std::string_view endOfIntroduction = "Made with ";
constexpr std::string_view indentation = "    ";

std::string gitVersion() {
    static const std::string version = [] {
        const std::string output = TestRepository().git({"--version"});
        return output.substr(0, output.find_last_not_of('\n') + 1);
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

/// Returns the line of git's text that reports the failure: the first with an error, else the
/// first.
std::string failureLineOf(const std::vector<std::string>& lines) {
    const auto isError = [](const std::string& line) {
        const std::string_view text = std::string_view(line).substr(indentation.size());
        return text.starts_with("fatal: ") || text.starts_with("error: ") ||
               text.starts_with(" ! [") || text.starts_with("! [") || text.starts_with("CONFLICT");
    };
    const auto found = std::find_if(lines.begin(), lines.end(), isError);
    return found != lines.end() ? *found : lines.empty() ? std::string() : lines.front();
}

/// Returns the description, the suggestion unless it is the advice of the class, and the line of
/// git's text, which is indented, that reports the failure.
std::string shown(const NEBSourceControlError& error) {
    const auto* known = NEBSourceControlErrorClassNamed(error.errorClass.value_or(""));
    NEBSourceControlError bare = error;
    if (known != nullptr && error.localizedRecoverySuggestion() == known->advice) {
        bare.userInfo = {};
        if (const auto description = error.localizedDescription()) {
            bare.userInfo.set(NEBLocalizedDescriptionKey, *description);
        }
    }
    std::string cell;
    std::vector<std::string> textOfGit;
    for (const std::string& line : linesOf(withoutVariableParts(nebsc::errorLines(bare)))) {
        if (line.starts_with(indentation)) {
            textOfGit.push_back(line);
        } else if (!line.empty()) {
            cell += (cell.empty() ? "" : "<br>") + inCode(line);
        }
    }
    const std::string line = failureLineOf(textOfGit);
    return line.empty() ? cell : cell + "<br>" + inCode(line.substr(line.find_first_not_of(' ')));
}

std::string verdictOn(const Failure& failure, const NEBSourceControlError& error) {
    if (error.errorClass == failure.errorClass) {
        return "right";
    }
    return error.errorClass == NEBSourceControlUnknownErrorClass ? "unknown" : "wrong";
}

/// Returns the unique beginning of the row.
std::string beginningOf(const Failure& failure) {
    return "| " + std::string(failure.how) + " | `" + std::string(failure.errorClass) + "` | ";
}

/// Returns the part before the table of failures: the written text and the table of classes.
std::string introductionOf(const std::string& document) {
    return document.substr(0, document.find(endOfIntroduction));
}

/// Returns the text with its table replaced by the current table of classes.
std::string withClassTable(const std::string& introduction) {
    std::string text;
    bool isWritten = false;
    for (const std::string& line : linesOf(introduction)) {
        if (!line.starts_with('|')) {
            text += line + "\n";
        } else if (!std::exchange(isWritten, true)) {
            for (const std::string& row : classTable()) {
                text += row + "\n";
            }
        }
    }
    return text;
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
        EXPECT_EQ(*documented, row) << "NEB_WRITE_ERRORS_TABLE=1 rewrites " << file;
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
    const std::vector<std::string> rows = classTable();
    for (const std::string& row : rows) {
        EXPECT_EQ(row.find("` |  |"), std::string::npos) << "no test shows a code: " << row;
    }
    if (_isWritten) {
        return;
    }
    std::vector<std::string> documented;
    for (const std::string& line : linesOf(introductionOf(_document))) {
        if (line.starts_with('|')) {
            documented.push_back(line);
        }
    }
    EXPECT_EQ(documented, rows) << "NEB_WRITE_ERRORS_TABLE=1 rewrites " << file;
}

void ErrorsTable::write() const {
    if (!_isWritten) {
        return;
    }
    std::vector<std::string> rows;
    std::string table = "| failure | class | message | verdict |\n|---|---|---|---|\n";
    for (const Failure& failure : allFailures()) {
        if (const auto row = _newRows.find(std::string(failure.how)); row != _newRows.end()) {
            rows.push_back(row->second);
            table += row->second + "\n";
        }
    }
    const std::string introduction = withClassTable(introductionOf(_document));
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
