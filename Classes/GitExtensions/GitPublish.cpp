#include "GitExtensions/GitPublish.h"

#include <algorithm>
#include <iterator>

#include "GitExtensions/GitRecordFields.h"
#include "GitOperations/GitHookFailure.h"
#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlErrorDetails.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Text.h"

namespace neb {

namespace {

struct PushState {
    char flag;
    std::string_view state;
};

constexpr PushState pushStates[] = {
    {' ', "updated"}, {'+', "forced"},     {'-', "deleted"},
    {'*', "new"},     {'=', "up to date"}, {'!', "rejected"},
};

/// The line of a reference: "FLAG TAB FROM:TO TAB SUMMARY (REASON)".
struct PushLine {
    std::string_view state, from, to, summary;
};

/// Absent for a line that has not the form of one about a reference.
std::optional<PushLine> pushLineOf(std::string_view line) {
    if (line.size() < 2 || line[1] != '\t') {
        return std::nullopt;
    }
    const auto* row = std::ranges::find(pushStates, line.front(), &PushState::flag);
    const std::string_view rest = line.substr(2);
    const std::size_t tab = rest.find('\t');
    const std::size_t colon = rest.substr(0, tab).rfind(':');
    if (row == std::end(pushStates) || tab == std::string_view::npos ||
        colon == std::string_view::npos) {
        return std::nullopt;
    }
    return PushLine{.state = row->state,
                    .from = rest.substr(0, colon),
                    .to = rest.substr(colon + 1, tab - colon - 1),
                    .summary = rest.substr(tab + 1)};
}

/// Finds the lines of git in the output of git-push(1) with --porcelain. Those for one URL begin
/// with "To URL" and end with "Done" after a success; the hook before a push prints before them.
class PushReport {
public:
    /// Returns what the next line of the output says about a reference; absent for other lines.
    std::optional<PushLine> read(std::string_view line) {
        if (line.starts_with("To ")) {
            _isOfGit = true;
        } else if (line == "Done") {
            _isOfGit = false;
        }
        return _isOfGit ? pushLineOf(line) : std::nullopt;
    }

private:
    bool _isOfGit = false;
};

/// Sets both ids of "OLD..NEW" or "OLD...NEW (forced update)". Other summaries have none.
void setIDs(NEBDictionary& record, const Data& output, std::string_view summary) {
    const std::string_view range = summary.substr(0, summary.find(' '));
    const std::size_t dots = range.find("..");
    const std::size_t second = range.find_first_not_of('.', dots);
    if (dots == 0 || dots == std::string_view::npos || second == std::string_view::npos) {
        return;
    }
    gitSetText(record, NEBSourceControlOperationOldObjectIDKey, output, range.substr(0, dots));
    gitSetText(record, NEBSourceControlOperationNewObjectIDKey, output, range.substr(second));
}

/// Returns the text in parentheses at the end; otherwise the whole summary, "[remote failure]".
std::string_view reasonOf(std::string_view summary) {
    const std::size_t start = summary.find('(');
    if (start == std::string_view::npos || !summary.ends_with(')')) {
        return summary;
    }
    return summary.substr(start + 1, summary.size() - start - 2);
}

class PushParser : public NEBSourceControlRecordParser {
public:
    PushParser() : NEBSourceControlRecordParser('\n') {}

protected:
    void parsePiece(const Data& output, std::string_view text,
                    NEBSourceControlResult& records) override {
        const auto line = _report.read(text);
        if (!line) {
            return;
        }
        NEBDictionary& record = records.emplace_back();
        gitSetName(record, gitNameKeys, output, line->to);
        gitSetName(record, gitSourceKeys, output, line->from);
        record.set(NEBSourceControlOperationStateKey, line->state);
        if (line->state == "rejected") {
            gitSetText(record, NEBSourceControlOperationReasonKey, output, reasonOf(line->summary));
        } else {
            setIDs(record, output, line->summary);
        }
    }

private:
    PushReport _report;
};

}  // namespace

std::unique_ptr<NEBSourceControlRecordParser> GitPushPorcelainOperation::makeRecordParser() {
    return std::make_unique<PushParser>();
}

/// Writes refusals as git does without --porcelain: " ! [rejected] main -> main (fetch first)".
void GitPushPorcelainOperation::parseData() {
    GitChangeOperation::parseData();
    std::string text;
    PushReport report;
    forEachLine(data().value_or(Data()).bytes(), [&](std::string_view piece) {
        const auto line = report.read(piece);
        if (line && line->state == "rejected") {
            const std::size_t reason = std::min(line->summary.find('('), line->summary.size());
            text.append(" ! ").append(line->summary.substr(0, reason));
            text.append(line->from).append(" -> ").append(line->to).append(" ");
            text.append(line->summary.substr(reason)).append("\n");
        }
    });
    setErrorData(Data(text.append(errorData().value_or(Data()).bytes())));
}

std::optional<NEBSourceControlError> GitPushPorcelainOperation::diagnoseFailure(
    std::string_view text) const {
    return gitReportsRefusalBeforeSending(text)
               ? std::optional(gitErrorOfPushHook(data().value_or(Data()), text))
               : std::nullopt;
}

std::optional<std::string> GitPublishOperation::leaseArgument() {
    const NEBValue& lease = request()->option(NEBSourceControlRequestOptionForceWithLease);
    if (!lease.isString()) {
        return lease.boolValue() ? "--force-with-lease" : "";
    }
    const NEBValue& branch = request()->option(NEBSourceControlRequestOptionBranch);
    const NEBValue& there = request()->destination.isPresent() ? request()->destination : branch;
    if (!there.isPresent()) {
        fail(NEBSourceControlRequestInvalidErrorClass,
             "A lease with the id of a commit needs the name of the branch.");
        return std::nullopt;
    }
    return "--force-with-lease=" + there.description() + ":" + lease.description();
}

std::optional<std::vector<std::string>> GitPublishOperation::destinationArguments() {
    const NEBValue& remote = request()->option(NEBSourceControlRequestOptionRemoteName);
    const NEBValue& branch = request()->option(NEBSourceControlRequestOptionBranch);
    const NEBValue& there = request()->destination;
    if (!acceptsReference(branch) || !acceptsReference(there)) {
        return std::nullopt;
    }
    const bool deletes = action("push") == "delete";
    std::string reference;
    if (deletes) {
        reference = there.isPresent() ? there.description() : "";
    } else if (branch.isPresent() || there.isPresent() ||
               hasOption(NEBSourceControlRequestOptionSetUpstream)) {
        reference = branch.isPresent() ? branch.description() : "HEAD";
        reference += there.isPresent() ? ":" + there.description() : "";
    }
    if ((deletes && reference.empty()) || (!reference.empty() && !remote.isPresent())) {
        fail(NEBSourceControlRequestInvalidErrorClass,
             "The request lacks the name of the remote or of the branch.");
        return std::nullopt;
    }
    std::vector<std::string> arguments{"--"};
    if (remote.isPresent()) {
        arguments.push_back(remote.description());
    }
    if (!reference.empty()) {
        arguments.push_back(reference);
    }
    return arguments;
}

void GitPublishOperation::perform() {
    const std::string wanted = action("push");
    if (wanted != "push" && wanted != "delete") {
        failForOption(NEBSourceControlRequestOptionAction);
        return;
    }
    const auto destination = destinationArguments();
    const auto lease = destination ? leaseArgument() : std::nullopt;
    if (!lease) {
        return;
    }
    std::vector<std::string> arguments{"-c", "core.abbrev=no", "push", "--porcelain"};
    const std::pair<bool, std::string> flags[] = {
        {wanted == "delete", "--delete"},
        {hasOption(NEBSourceControlRequestOptionSetUpstream), "--set-upstream"},
        {hasOption(NEBSourceControlRequestOptionTags), "--tags"},
        {hasOption(NEBSourceControlRequestOptionDryRun), "--dry-run"},
        {!lease->empty(), *lease},
    };
    for (const auto& [isSet, flag] : flags) {
        if (isSet) {
            arguments.push_back(flag);
        }
    }
    arguments.insert(arguments.end(), destination->begin(), destination->end());
    const auto push =
        runOperation(std::make_shared<GitPushPorcelainOperation>(request(), arguments));
    const bool hasSucceeded = goesOnAfter(*push);
    if (!isCancelled()) {
        setResult(push->result());
    }
    if (hasSucceeded) {
        addRemoteLines(push->errorData().value_or(Data()));
    }
}

void GitPublishOperation::addRemoteLines(const Data& errorText) {
    const std::vector<std::string> lines = NEBSourceControlRemoteLinesInText(errorText);
    if (lines.empty()) {
        return;
    }
    NEBSourceControlResult records = result().value_or(NEBSourceControlResult());
    NEBDictionary& record = records.emplace_back();
    record.set(NEBSourceControlOperationKindKey, "remote lines");
    std::vector<NEBValue> values;
    for (const std::string& line : lines) {
        const Data bytes(line);
        values.push_back(gitTextOrBytes(bytes, bytes));
    }
    record.set(NEBSourceControlOperationRemoteLinesKey, std::move(values));
    setResult(std::move(records));
}

}  // namespace neb
