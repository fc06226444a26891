#include "GitOperations/GitBranch.h"

#include "GitOperations/GitLineParser.h"
#include "GitOperations/GitRevision.h"
#include "LOMFoundation/LOMFormat.h"
#include "NEBFoundation/NEBSourceControlAssertions.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Platform/Scanner.h"
#include "Platform/Text.h"

namespace neb {

namespace {

constexpr NEBSourceControlAssertionSite branchSite(int line) {
    return {.function = "-[GitBranchOperation initWithRequest:]",
            .file = "Classes/GitOperations",
            .line = line};
}

/// Returns the name in a line of a list of branches, without the mark of the current branch and
/// blanks.
std::string nameIn(std::string_view line) {
    constexpr std::string_view marks = "* ";
    const std::size_t first = line.find_first_not_of(marks);
    if (first == std::string_view::npos) {
        return {};
    }
    return std::string(line.substr(first, line.find_last_not_of(marks) + 1 - first));
}

NEBDictionary recordOfBranch(const Data& text, std::string_view line) {
    static_cast<void>(text);
    return {{NEBSourceControlOperationNameKey, nameIn(line)}};
}

std::string branchOfRemote(const NEBSourceControlRequest& request) {
    return formattedText("%@/%@",
                         {request.option(NEBSourceControlRequestOptionRemoteName).description(),
                          request.option(NEBSourceControlRequestOptionBranch).description()});
}

void reportMissingNames(const NEBSourceControlRequest& request) {
    NEBSourceControlAssertNonEmptyString(branchSite(803), request.destination,
                                         "request.destination");
    NEBSourceControlAssertNonEmptyString(
        branchSite(804), request.option(NEBSourceControlRequestOptionRemoteName),
        "[request.options objectForKey:NEBSourceControlRequestOptionRemoteName]");
    NEBSourceControlAssertNonEmptyString(
        branchSite(805), request.option(NEBSourceControlRequestOptionBranch),
        "[request.options objectForKey:NEBSourceControlRequestOptionBranch]");
}

/// Reads "object id TAB reference".
NEBDictionary recordOfHead(const Data& text, std::string_view line) {
    static_cast<void>(text);
    constexpr std::string_view heads = "refs/heads/";
    constexpr NEBSourceControlAssertionSite site{
        .function = "-[GitListRemoteBranchesOperation parseData]",
        .file = "Classes/GitOperations",
        .line = 1092};
    Scanner scanner(line);
    const std::string_view revision = scanner.takeUpTo('\t');
    scanner.skipOne('\t');
    const std::string_view reference = scanner.rest();

    NEBDictionary record;
    if (!revision.empty()) {
        record.set(NEBSourceControlOperationRevisionKey, gitAbbreviatedRevision(revision));
    }
    if (const std::size_t position = reference.find(heads); position != std::string_view::npos) {
        const NEBValue branchName(reference.substr(position + heads.size()));
        NEBSourceControlAssertNonEmptyString(site, branchName, "branchName");
        record.set(NEBSourceControlOperationNameKey, branchName);
    }
    return record;
}

}  // namespace

GitBranchOperation::GitBranchOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    std::vector<std::string> arguments{"branch"};
    setChangesRepository();
    switch (asked.type) {
        case NEBSourceControlRequestDeleteBranch:
            setChangesBranchSettings();
            arguments.emplace_back(
                asked.option(NEBSourceControlRequestOptionForce).boolValue() ? "-D" : "-d");
            appendIfPresent(arguments, asked.destination);
            break;
        case NEBSourceControlRequestTrackRemoteBranch:
            reportMissingNames(asked);
            setChangesBranchSettings();
            arguments.emplace_back("--track");
            appendIfPresent(arguments, asked.destination);
            arguments.push_back(branchOfRemote(asked));
            break;
        default:
            appendIfPresent(arguments, asked.destination);
            appendIfPresent(arguments, asked.option(NEBSourceControlRequestOptionSourceLocation));
            break;
    }
    setArguments(std::move(arguments));
}

GitCurrentBranchOperation::GitCurrentBranchOperation(
    std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    setArguments({"branch"});
}

void GitCurrentBranchOperation::parseData() {
    if (!data() || data()->empty()) {
        return;
    }
    std::optional<std::string> name;
    const std::string text = *_nebsc_stringFromData(data());
    forEachField(text, '\n', [&name](std::string_view line) {
        if (!name && line.starts_with('*')) {
            name = nameIn(line);
        }
    });
    if (name) {
        setResult({{{{NEBSourceControlOperationNameKey, *name}}}});
    }
}

GitListBranchesOperation::GitListBranchesOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    setArguments({"branch"});
}

std::unique_ptr<NEBSourceControlRecordParser> GitListBranchesOperation::makeRecordParser() {
    return std::make_unique<GitLineParser>(recordOfBranch);
}

void GitListBranchesOperation::parseData() {
    if (hasOutput()) {
        GitOperation::parseData();
    }
}

GitListRemoteBranchesOperation::GitListRemoteBranchesOperation(
    std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    std::vector<std::string> arguments{"ls-remote", "--heads"};
    if (this->request()->fileCount() == 1) {
        appendFiles(arguments);
    }
    setArgumentsBehindDefaults(arguments);
}

std::unique_ptr<NEBSourceControlRecordParser> GitListRemoteBranchesOperation::makeRecordParser() {
    return std::make_unique<GitLineParser>(recordOfHead);
}

}  // namespace neb
