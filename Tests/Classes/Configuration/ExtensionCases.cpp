#include "Classes/Configuration/ExtensionCases.h"

#include "NEBFoundation/NEBSourceControlKeys.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"

namespace neb::test {

namespace {

void nothingMore(const World& /*world*/, NEBSourceControlRequest& /*request*/) {}

}  // namespace

std::vector<RequestCase> extensionCases() {
    return {
        {"References", NEBSourceControlRequestReferences, "git tag -a -m Second v2", nothingMore},
    };
}

}  // namespace neb::test
