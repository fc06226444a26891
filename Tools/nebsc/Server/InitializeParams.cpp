#include "Server/InitializeParams.h"

#include "Session/Trust.h"

namespace neb::nebsc {

bool declaresCredentials(const JSONNode& params) {
    const JSONNode* capabilities = memberOf(params, "capabilities");
    const JSONNode* credentials =
        capabilities != nullptr ? memberOf(*capabilities, "credentials") : nullptr;
    return credentials != nullptr && credentials->kind == JSONNode::Kind::boolean &&
           credentials->boolean;
}

std::optional<NEBSourceControlTrust> declaredTrust(const JSONNode& params) {
    const JSONNode* trust = memberOf(params, "trust");
    if (trust == nullptr || trust->kind == JSONNode::Kind::null) {
        return NEBSourceControlTrust::trusted;
    }
    return trust->kind == JSONNode::Kind::string ? trustWithName(trust->text) : std::nullopt;
}

}  // namespace neb::nebsc
