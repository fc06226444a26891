#include "CommandFrame/Requests.h"

#include <algorithm>
#include <iterator>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/PathString.h"

namespace neb::nebsc {

namespace {

/// Whether git may read the content of files for the request, or their folders.
bool mayReadContents(const NEBSourceControlRequest& request) {
    constexpr std::int32_t types[] = {NEBSourceControlRequestWorkingCopyState,
                                      NEBSourceControlRequestContent,
                                      NEBSourceControlRequestAnnotation,
                                      NEBSourceControlRequestChanges, NEBSourceControlRequestTree};
    constexpr NEBConstant options[] = {NEBSourceControlRequestOptionSearchContent,
                                       NEBSourceControlRequestOptionLogOutputFilesChanged,
                                       NEBSourceControlRequestOptionLineCounts};
    const auto has = [&request](NEBConstant key) { return request.option(key).isPresent(); };
    return std::ranges::find(types, request.type) != std::end(types) ||
           (request.type == NEBSourceControlRequestHistory &&
            (request.fileCount() > 0 || std::ranges::any_of(options, has)));
}

}  // namespace

std::shared_ptr<NEBSourceControlRequest> newRequest(const WorkingCopyLocation& workingCopy,
                                                    std::int32_t type) {
    auto tree = std::make_shared<NEBSourceControlWorkingTree>();
    tree->location = workingCopy.location;
    tree->name = lastPathComponent(workingCopy.location);
    return NEBSourceControlRequest::initWithType(type, std::move(tree), std::nullopt, std::nullopt);
}

std::shared_ptr<NEBSourceControlRequest> newExchangeRequest(const WorkingCopyLocation& workingCopy,
                                                            std::int32_t type, Peer peer) {
    auto request = newRequest(workingCopy, type);
    request->repositoryToAuthenticate = request->sourceTree;
    request->remote = std::make_shared<NEBSourceControlRemote>();
    request->remote->representsGitSVNBridge = peer == Peer::subversion;
    request->options.emplace();
    return request;
}

std::shared_ptr<NEBSourceControlRequest> newFetchRequest(const WorkingCopyLocation& workingCopy,
                                                         const std::string& remote) {
    auto request = newExchangeRequest(workingCopy, NEBSourceControlRequestFetch, Peer::remote);
    request->options->set(NEBSourceControlRequestOptionRemoteName, remote);
    return request;
}

void allowFetches(NEBSourceControlRequest& request) {
    if (mayReadContents(request)) {
        NEBDictionary options = request.options.value_or(NEBDictionary());
        options.set(NEBSourceControlRequestOptionFetchMissingObjects, true);
        request.setOptions(std::move(options));
    }
}

}  // namespace neb::nebsc
