#include "GitExtensions/GitChangeBranch.h"

#include <algorithm>
#include <iterator>

#include "GitExtensions/GitRecordFields.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Scanner.h"

namespace neb {

namespace {

constexpr std::string_view branchPrefix = "refs/heads/";

std::string fullNameOf(const std::string& branch) {
    return std::string(branchPrefix) + branch;
}

}  // namespace

void GitChangeBranchOperation::perform() {
    struct Row {
        std::string_view action;
        void (GitChangeBranchOperation::*carryOut)(const std::string& branch);
    };
    constexpr Row rows[] = {
        {"begin", &GitChangeBranchOperation::begin},
        {"rename", &GitChangeBranchOperation::rename},
        {"set-upstream", &GitChangeBranchOperation::setUpstream},
        {"unset-upstream", &GitChangeBranchOperation::unsetUpstream},
    };
    const auto* row = std::ranges::find(rows, action(""), &Row::action);
    if (row == std::end(rows)) {
        failForOption(NEBSourceControlRequestOptionAction);
    } else if (row->action != "unset-upstream" && !request()->destination.isPresent()) {
        fail(NEBSourceControlRequestInvalidErrorClass,
             "The request lacks the new name, or the name of the upstream branch.");
    } else if (const auto branch = queriedBranch()) {
        (this->*row->carryOut)(*branch);
    }
}

std::optional<std::string> GitChangeBranchOperation::queriedBranch() {
    const NEBValue& value = request()->option(NEBSourceControlRequestOptionBranch);
    if (value.isPresent()) {
        return queriedName(value);
    }
    const auto head = queriedLine({"symbolic-ref", "--quiet", "HEAD"});
    if (!head) {
        return std::nullopt;
    }
    if (!head->starts_with(branchPrefix)) {
        fail(NEBSourceControlNoCurrentBranchErrorClass, "No branch is checked out.");
        return std::nullopt;
    }
    return head->substr(branchPrefix.size());
}

std::optional<std::string> GitChangeBranchOperation::queriedName(const NEBValue& value) {
    const Data name = gitBytesOfValue(value).value_or(Data());
    return queriedLine({"check-ref-format", "--branch", std::string(name.bytes())});
}

std::optional<NEBDictionary> GitChangeBranchOperation::queriedRecord(const std::string& branch) {
    const auto line =
        queriedLine({"for-each-ref", "--format=%(objectname) %(upstream)", fullNameOf(branch)});
    if (!line) {
        return std::nullopt;
    }
    Scanner scanner(*line);
    NEBDictionary record;
    gitSetName(record, gitNameKeys, fullNameOf(branch));
    gitSetObjectID(record, NEBSourceControlOperationObjectIDKey, scanner.takeUpTo(' '));
    scanner.skipOne(' ');
    gitSetName(record, gitUpstreamKeys, std::string(scanner.rest()));
    return record;
}

void GitChangeBranchOperation::rename(const std::string& branch) {
    const auto name = queriedName(request()->destination);
    if (!name) {
        return;
    }
    std::vector<std::string> arguments{"branch", "--move"};
    if (hasOption(NEBSourceControlRequestOptionForce)) {
        arguments.emplace_back("--force");
    }
    arguments.insert(arguments.end(), {"--", branch, *name});
    auto record = runChange(arguments) ? queriedRecord(*name) : std::nullopt;
    if (record) {
        gitSetName(*record, gitSourceKeys, fullNameOf(branch));
        setResult({{*std::move(record)}});
    }
}

void GitChangeBranchOperation::begin(const std::string& branch) {
    if (request()->option(NEBSourceControlRequestOptionBranch).isPresent()) {
        fail(NEBSourceControlRequestInvalidErrorClass,
             "A branch without commits can only be begun from the current one.");
        return;
    }
    const auto name = queriedName(request()->destination);
    const auto commit =
        name ? queriedLine({"for-each-ref", "--format=%(objectname)", fullNameOf(branch)})
             : std::nullopt;
    if (!commit) {
        return;
    }
    if (!commit->empty()) {
        fail(NEBSourceControlRequestInvalidErrorClass, "The branch has commits.");
        return;
    }
    const auto record =
        runChange({"checkout", "--quiet", "-b", *name}) ? queriedRecord(*name) : std::nullopt;
    if (record) {
        setResult({{*record}});
    }
}

bool GitChangeBranchOperation::isSameBranch(const std::string& branch, const std::string& name) {
    const auto query = runQuery(request(), {"rev-parse", "--verify", "--quiet",
                                            "--symbolic-full-name", "--end-of-options", name});
    return query->line() == fullNameOf(branch);
}

/// git only warns about a branch that would be its own upstream branch, and changes nothing.
void GitChangeBranchOperation::setUpstream(const std::string& branch) {
    const std::string upstream(gitBytesOfValue(request()->destination).value_or(Data()).bytes());
    if (isSameBranch(branch, upstream)) {
        fail(NEBSourceControlRequestInvalidErrorClass,
             "A branch cannot be its own upstream branch.");
        return;
    }
    const bool isSet = runChange({"branch", "--set-upstream-to=" + upstream, "--", branch});
    if (!isSet && error()->errorClass == NEBSourceControlRemoteBranchUnknownErrorClass &&
        upstream.find('/') == std::string::npos) {
        // A remote-tracking branch has the name of its remote before a slash.
        fail(NEBSourceControlBranchUnknownErrorClass, "There is no branch \"" + upstream + "\".");
        return;
    }
    const auto record = isSet ? queriedRecord(branch) : std::nullopt;
    if (record) {
        setResult({{*record}});
    }
}

void GitChangeBranchOperation::unsetUpstream(const std::string& branch) {
    const auto record = runChange({"branch", "--unset-upstream", "--", branch})
                            ? queriedRecord(branch)
                            : std::nullopt;
    if (record) {
        setResult({{*record}});
    }
}

}  // namespace neb
