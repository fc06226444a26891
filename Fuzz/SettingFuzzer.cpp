// The value of a setting, as git prints it for one key: where the origin is, what a branch tracks,
// and where the bridge to Subversion keeps what it fetches ("trunk:refs/remotes/origin/trunk").

#include "GitOperations/GitInfo.h"
#include "GitOperations/GitSubversion.h"
#include "GitOperations/GitTrackingBranch.h"
#include "NEBFoundation/NEBSourceControlText.h"
#include "Property.h"

using namespace neb::fuzz;

namespace {

/// The last component behind the last colon, slashes at its end left out.
std::string plainNameOf(const std::string& value) {
    std::string path = piecesOf(value, ':').back();
    const bool isRoot = !path.empty() && path.find_first_not_of('/') == std::string::npos;
    while (!path.empty() && path.back() == '/') {
        path.pop_back();
    }
    return isRoot ? "/" : piecesOf(path, '/').back();
}

void requireOneValue(const std::optional<std::vector<neb::NEBDictionary>>& result,
                     std::string_view key, const std::string& value) {
    require(result && result->size() == 1 && *result->front().value(key).string() == value,
            "one record with the value");
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
        require(!url && !remoteName && !fetched, "no output is no result");
        return 0;
    }
    const std::string value = *neb::_nebsc_stringFromData(bytes);
    requireOneValue(url, neb::NEBSourceControlOperationRemoteOriginKey, value);
    requireOneValue(remoteName, neb::NEBSourceControlOperationNameKey, value);
    const std::string name = plainNameOf(value);
    require(fetched && fetched->size() == 1, "one record for the bridge");
    require(fetched->front().isEmpty() == name.empty(), "a name where there is one");
    if (!name.empty()) {
        requireOneValue(fetched, neb::NEBSourceControlOperationRemoteNameKey, name);
        requireOneValue(fetched, neb::NEBSourceControlOperationTypeKey, "fetch");
    }
    return 0;
}
