#include "Server/Credentials/CredentialRequests.h"

#include <poll.h>

#include <array>
#include <utility>

#include "Session/Credentials/ServerContact.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

JSON textOrNull(const std::optional<std::string>& text) {
    return text ? JSON(*text) : JSON();
}

/// Returns the string "value" of the result; absent in any other result, which declines.
std::optional<std::string> valueIn(const JSONNode& result) {
    const JSONNode* value = memberOf(result, "value");
    if (value == nullptr || value->kind != JSONNode::Kind::string) {
        return std::nullopt;
    }
    return value->text;
}

}  // namespace

RunSettings CredentialRequests::settingsFor(const RequestReading& reading, const JSON& id) {
    RunSettings settings = reading.settings;
    if (_isEnabled && !settings.isBackgroundWork && mayContactServer(*reading.request)) {
        settings.credentials = _service.grant(id.dump());
    }
    return settings;
}

/// When `end` becomes readable, the question is withdrawn with "$/cancelRequest".
std::optional<std::string> CredentialRequests::ask(const CredentialQuestion& question,
                                                   const std::string& request, int end) {
    const auto open = std::make_shared<Question>();
    const std::string id = add(open);
    _writer.send(rpcRequest(id, "sourceControl/credentials",
                            {{"kind", nameOfCredentialKind(question.kind)},
                             {"prompt", question.prompt},
                             {"url", textOrNull(question.url)},
                             {"user", textOrNull(question.user)},
                             {"request", JSON::parse(request)}}));
    std::array<pollfd, 2> descriptors{
        {{.fd = end, .events = POLLIN, .revents = 0},
         {.fd = open->answered.descriptor(), .events = POLLIN, .revents = 0}}};
    while (::poll(descriptors.data(), descriptors.size(), -1) < 0) {
    }
    if (remove(id)) {
        _writer.send(rpcNotification("$/cancelRequest", {{"id", id}}));
        return std::nullopt;
    }
    return std::move(open->value);
}

void CredentialRequests::answer(const RPCResponse& response) {
    if (!response.id.is_string()) {
        return;
    }
    const MutexLock lock(_mutex);
    const auto entry = _questions.find(response.id.get<std::string>());
    if (entry == _questions.end()) {
        return;
    }
    entry->second->value = valueIn(response.result);
    entry->second->answered.wake();
    _questions.erase(entry);
}

std::string CredentialRequests::add(const std::shared_ptr<Question>& question) {
    const MutexLock lock(_mutex);
    std::string id = "credentials-" + std::to_string(++_lastNumber);
    _questions[id] = question;
    return id;
}

bool CredentialRequests::remove(const std::string& id) {
    const MutexLock lock(_mutex);
    return _questions.erase(id) > 0;
}

}  // namespace neb::nebsc
