// RequestsPage.h - docs/requests.md, whose examples the tests carry out.
//
// The page has a section for each type of request: "## 18 log". A section holds one line that tells
// of its class, written by the tests; a list whose entry "runs" has the command lines; and
// examples: a request as JSON, behind it the outcome, which the tests write too, and in front of
// it, where one is needed, a script of the shell that is run in the working copy first.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace neb::test {

struct RequestExample {
    /// Empty where there is none.
    std::string script;
    std::string request;
    /// The operation is made and not run.
    bool isPlan = false;
    /// As the page has it.
    std::string outcome;
};

struct RequestSection {
    std::int32_t type = -1;
    std::string name;
    /// The line about the class.
    std::string facts;
    /// The command lines of the entry "runs".
    std::vector<std::string> commandLines;
    /// All of the section, from its heading on.
    std::string text;
    std::vector<RequestExample> examples;
};

/// With the variable NEB_WRITE_REQUESTS_PAGE set, write() puts a new page in the old one's place,
/// in which the sections are as set() was told.
class RequestsPage {
public:
    static RequestsPage& instance();

    [[nodiscard]] bool isWritten() const { return _isWritten; }
    [[nodiscard]] const std::vector<RequestSection>& sections() const { return _sections; }
    /// Whether the page was made with the git that is installed: the texts then are the same.
    [[nodiscard]] bool isOfThisGit() const;

    /// Takes the facts and outcomes for the section of the same type.
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
