#include "GitExtensions/GitChanges.h"

#include "GitExtensions/GitPatch.h"
#include "GitOperations/GitRevision.h"

namespace neb {

GitChangesOperation::GitChangesOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitReadingOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    std::vector<std::string> arguments{"diff",           "--patch",         "--full-index",
                                       "--find-renames", "--src-prefix=a/", "--dst-prefix=b/",
                                       "--no-ext-diff",  "--no-textconv",   "--submodule=short",
                                       "--diff-filter=u"};
    requireInteger(NEBSourceControlRequestOptionContextLines, 0);
    const NEBValue& context = asked.option(NEBSourceControlRequestOptionContextLines);
    if (context.isPresent()) {
        arguments.push_back("--unified=" + context.description());
    }
    if (asked.option(NEBSourceControlRequestOptionIgnoreWhiteSpace).boolValue()) {
        arguments.emplace_back("--ignore-all-space");
    }
    appendComparison(arguments);
    appendPaths(arguments);
    setArgumentsBehindDefaults(arguments);
}

void GitChangesOperation::appendComparison(std::vector<std::string>& arguments) const {
    const NEBValue start = gitRevisionOfCommit(request()->startingRevision);
    const NEBValue end = gitRevisionOfCommit(request()->endingRevision);
    const std::string first = start.isPresent() ? start.description() : "HEAD";
    if (request()->option(NEBSourceControlRequestOptionStaged).boolValue()) {
        arguments.emplace_back("--cached");
        appendIfPresent(arguments, start);
    } else if (!end.isPresent()) {
        arguments.push_back(start.isPresent() ? first : "--ours");
    } else if (request()->option(NEBSourceControlRequestOptionDiffFromCommonAncestor).boolValue()) {
        arguments.push_back(first + "..." + end.description());
    } else {
        arguments.insert(arguments.end(), {first, end.description()});
    }
}

std::unique_ptr<NEBSourceControlRecordParser> GitChangesOperation::makeRecordParser() {
    return std::make_unique<GitPatchParser>();
}

}  // namespace neb
