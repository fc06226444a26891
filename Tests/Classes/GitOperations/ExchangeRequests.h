// ExchangeRequests.h - requests of tests that fetch, pull and push.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlOperation.h"
#include "Support/Matchers.h"

namespace neb::test::exchange {

inline constexpr NEBConstant remoteNameKey = NEBSourceControlRequestOptionRemoteName;
inline constexpr NEBConstant branchKey = NEBSourceControlRequestOptionBranch;

/// Returns a request for a working copy with a remote.
inline std::shared_ptr<NEBSourceControlRequest> request(std::int32_t type,
                                                        std::optional<NEBDictionary> options = {},
                                                        NEBValue destination = {},
                                                        const std::string& location = "/w") {
    auto made = requestFor(type, location);
    made->options = std::move(options);
    made->destination = std::move(destination);
    made->remote = std::make_shared<NEBSourceControlRemote>();
    made->repositoryToAuthenticate = made->sourceTree;
    return made;
}

inline const NEBDictionary originAndTopic{{remoteNameKey, "origin"}, {branchKey, "topic"}};

/// Adds the paths of another repository and working copy.
inline NEBDictionary withPaths(NEBDictionary options) {
    options.set(NEBSourceControlRequestOptionRepositoryPath, "/r/.git");
    options.set(NEBSourceControlRequestOptionWorkingCopyPath, "/r");
    return options;
}

/// Returns the result with this content.
inline NEBSourceControlResult content(const std::string& text) {
    return {{{NEBSourceControlOperationContentKey, text}}};
}

}  // namespace neb::test::exchange
