// RequestsPage.h - parser and writer of docs/requests.md, whose examples are tests.
//
// The page has a section for each request type: "## 18 log". A section contains a generated line
// that begins with "Class: ", a list whose entry "runs" has the command lines, and examples: a
// request as JSON, followed by its outcome, which is generated too. A shell script before the
// request is optional and runs first, in the working copy.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace neb::test {

struct RequestExample {
    /// Empty if the example has no script.
    std::string script;
    std::string request;
    /// The operation is created but not run.
    bool isPlan = false;
    /// As written on the page.
    std::string outcome;
};

struct RequestSection {
    std::int32_t type = -1;
    std::string name;
    /// The generated line about class, required values and authentication.
    std::string facts;
    /// The command lines of the entry "runs".
    std::vector<std::string> commandLines;
    /// The whole section, including its heading.
    std::string text;
    std::vector<RequestExample> examples;
};

/// The page, read once. If the variable NEB_WRITE_REQUESTS_PAGE is set, write() replaces the file
/// with a page that has the facts and outcomes passed to set().
class RequestsPage {
public:
    static RequestsPage& instance();

    [[nodiscard]] bool isWritten() const { return _isWritten; }
    [[nodiscard]] const std::vector<RequestSection>& sections() const { return _sections; }
    /// Whether the page was written with the installed version of git. Only then texts are equal.
    [[nodiscard]] bool isOfThisGit() const;

    /// Replaces the facts and outcomes of the section.
    void set(const RequestSection& section, const std::string& facts,
             const std::vector<std::string>& outcomes);
    void write() const;

private:
    RequestsPage();

    bool _isWritten;
    std::string _introduction;
    std::vector<RequestSection> _sections;
    std::map<std::int32_t, std::string> _newTexts;
};

}  // namespace neb::test
