#include "CommandFrame/Requests.h"

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/PathString.h"

namespace neb::nebsc {

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

}  // namespace neb::nebsc
