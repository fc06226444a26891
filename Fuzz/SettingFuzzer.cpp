// Parses the value of a setting: the location of the origin, the upstream of a branch, and where
// the Subversion bridge stores what it fetches ("trunk:refs/remotes/origin/trunk").

#include "GitOperations/GitInfo.h"
#include "GitOperations/GitSubversion.h"
#include "GitOperations/GitTrackingBranch.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Property.h"

using namespace neb::fuzz;

namespace {

/// Returns the last component after the last colon, without slashes at the end.
std::string expectedNameOf(const std::string& value) {
    std::string path = split(value, ':').back();
    const bool isRoot = !path.empty() && path.find_first_not_of('/') == std::string::npos;
    while (!path.empty() && path.back() == '/') {
        path.pop_back();
    }
    return isRoot ? "/" : split(path, '/').back();
}

void requireOneValue(const std::optional<std::vector<neb::NEBDictionary>>& result,
                     std::string_view key, const std::string& value) {
    require(result && result->size() == 1 && *result->front().value(key).string() == value,
            "there is one record with the value");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = bytesOf(data, size);
    const auto request =
        requestOf(38, {{neb::NEBSourceControlRequestOptionBranch, std::string("topic")}});
    neb::GitFetchRemoteOriginOperation origin(request);
    neb::GitRemoteRefForBranchOperation remote(request);
    neb::GitFetchSVNRemoteNameOperation subversion(request);
    const auto url = parsed(origin, bytes);
    const auto remoteName = parsed(remote, bytes);
    const auto fetched = parsed(subversion, bytes);
    if (bytes.empty()) {
        require(!url && !remoteName && !fetched, "empty output has no result");
        return 0;
    }
    const std::string value = *neb::_nebsc_stringFromData(bytes);
    requireOneValue(url, neb::NEBSourceControlOperationRemoteOriginKey, value);
    requireOneValue(remoteName, neb::NEBSourceControlOperationNameKey, value);
    const std::string name = expectedNameOf(value);
    require(fetched && fetched->size() == 1, "there is one record for the bridge");
    require(fetched->front().isEmpty() == name.empty(), "there is a name if the value has one");
    if (!name.empty()) {
        requireOneValue(fetched, neb::NEBSourceControlOperationRemoteNameKey, name);
        requireOneValue(fetched, neb::NEBSourceControlOperationTypeKey, "fetch");
    }
    return 0;
}
