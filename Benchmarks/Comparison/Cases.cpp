#include "Cases.h"

#include "GitExtensions/GitAnnotation.h"
#include "GitExtensions/GitHistory.h"
#include "GitExtensions/GitWorkingCopyState.h"
#include "GitOperations/GitBlame.h"
#include "GitOperations/GitBranch.h"
#include "GitOperations/GitDiff.h"
#include "GitOperations/GitInfo.h"
#include "GitOperations/GitList.h"
#include "GitOperations/GitLog.h"
#include "GitOperations/GitMerge.h"
#include "GitOperations/GitStatus.h"
#include "LibGit2.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"

namespace neb::benchmarks {

namespace {

Request requestTo(const std::string& path, std::int32_t type,
                  std::optional<NEBDictionary> options = std::nullopt,
                  std::optional<std::vector<NEBValue>> files = std::nullopt) {
    auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->location = path;
    return NEBSourceControlRequest::initWithType(type, tree, std::move(files), std::move(options));
}

Request between(Request request, const char* start, const char* end) {
    request->startingRevision = start;
    request->endingRevision = end;
    return request;
}

Request logRequest(const std::string& path) {
    return requestTo(path, NEBSourceControlRequestLog);
}
Request logWithFilesRequest(const std::string& path) {
    return requestTo(path, NEBSourceControlRequestLog,
                     NEBDictionary{{NEBSourceControlRequestOptionLogOutputFilesChanged, true}});
}
Request statusRequest(const std::string& path) {
    return requestTo(path, NEBSourceControlRequestStatus);
}
Request diffNamesRequest(const std::string& path) {
    return requestTo(path, NEBSourceControlRequestDiff,
                     NEBDictionary{{NEBSourceControlRequestOptionDiffFileNameAndStatusOnly, true}});
}
Request blameRequest(const std::string& path) {
    return requestTo(path, NEBSourceControlRequestBlame, std::nullopt, {{"lines.txt"}});
}
Request diffRequest(const std::string& path) {
    return between(requestTo(path, NEBSourceControlRequestDiff), "HEAD~1", "HEAD");
}
Request listRequest(const std::string& path) {
    return requestTo(path, NEBSourceControlRequestList, std::nullopt, {{"entries"}});
}
Request stateRequest(const std::string& path) {
    return requestTo(path, NEBSourceControlRequestWorkingCopyState);
}
Request historyRequest(const std::string& path) {
    return requestTo(path, NEBSourceControlRequestHistory);
}
Request annotationRequest(const std::string& path) {
    return requestTo(path, NEBSourceControlRequestAnnotation, std::nullopt, {{"lines.txt"}});
}
Request currentBranchRequest(const std::string& path) {
    return requestTo(path, NEBSourceControlRequestCurrentBranch);
}
Request configValueRequest(const std::string& path) {
    return requestTo(path, NEBSourceControlRequestInfo);
}
Request mergeBaseRequest(const std::string& path) {
    return between(requestTo(path, NEBSourceControlRequestMergeBase), "main", "topic");
}

template <typename Op>
std::shared_ptr<NEBSourceControlTaskOperation> make(const Request& request) {
    return initWithRequest<Op>(request);
}

}  // namespace

const std::vector<Case>& allCases() {
    using enum RepositoryKind;
    static const std::vector<Case> cases{
        {"log", history, "commits", &logRequest, &libgit2Log, &make<GitLogOperation>},
        {"log with files", history, "commits", &logWithFilesRequest, &libgit2LogWithFiles,
         &make<GitLogOperation>},
        {"status", workingCopy, "entries", &statusRequest, &libgit2Status,
         &make<GitStatusOperation>},
        {"diff names", workingCopy, "entries", &diffNamesRequest, &libgit2DiffNames,
         &make<GitDiffOperation>},
        {"blame", lines, "lines", &blameRequest, &libgit2Blame, &make<GitBlameOperation>},
        {"diff", patch, "MB", &diffRequest, &libgit2Diff, &make<GitDiffOperation>},
        {"list", folder, "entries", &listRequest, &libgit2List, &make<GitListFilesOperation>},
        {"state", workingCopy, "entries", &stateRequest, &libgit2State,
         &make<GitWorkingCopyStateOperation>},
        {"history", history, "commits", &historyRequest, &libgit2History,
         &make<GitHistoryOperation>},
        {"annotation", lines, "lines", &annotationRequest, &libgit2Annotation,
         &make<GitAnnotationOperation>},
        {"current branch", small, "", &currentBranchRequest, &libgit2CurrentBranch,
         &make<GitCurrentBranchOperation>},
        {"config value", small, "", &configValueRequest, &libgit2ConfigValue,
         &make<GitFetchRemoteOriginOperation>},
        {"merge base", small, "", &mergeBaseRequest, &libgit2MergeBase,
         &make<GitMergeBaseOperation>},
    };
    return cases;
}

}  // namespace neb::benchmarks
