#include "Recording/RequestText.h"

#include <utility>

#include "JSON/Base64.h"
#include "Platform/Text.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

JSON jsonOfValue(const NEBValue& value) {
    if (const auto boolean = value.boolean()) {
        return *boolean;
    }
    if (const auto integer = value.integer()) {
        return *integer;
    }
    if (const Data* bytes = value.bytes()) {
        return jsonOfBytes(*bytes);
    }
    if (const auto* elements = value.array()) {
        JSON array = JSON::array();
        for (const NEBValue& element : *elements) {
            array.push_back(jsonOfValue(element));
        }
        return array;
    }
    if (value.object() != nullptr) {  // a number that is not a 64-bit integer
        return JSON::parse(value.description(), nullptr, false);
    }
    return value.isPresent() ? jsonOfBytes(value.description()) : JSON();
}

JSON jsonOfSourceTree(const NEBSourceControlSourceTree& tree) {
    JSON json{{"class", tree.className()}, {"name", tree.name}};
    if (tree.location) {
        json["location"] = *tree.location;
    }
    if (!tree.reachable) {
        json["reachable"] = false;
    }
    if (!tree.isValid) {
        json["isValid"] = false;
    }
    const auto* repository = dynamic_cast<const NEBSourceControlRepository*>(&tree);
    if (repository != nullptr && repository->isRemoteDistributedRepository) {
        json["isRemoteDistributedRepository"] = true;
    }
    return json;
}

void set(JSON& json, const char* name, const NEBValue& value) {
    if (value.isPresent()) {
        json[name] = jsonOfValue(value);
    }
}

}  // namespace

JSON jsonOfBytes(std::string_view bytes) {
    if (isUTF8(bytes)) {
        return bytes;
    }
    std::string text;
    appendBase64(text, bytes);
    return {{"base64", std::move(text)}};
}

std::string bytesOfJSON(const JSON& json) {
    return json.is_object() ? bytesOfBase64(json.at("base64").get<std::string>()).value_or("")
                            : json.get<std::string>();
}

JSON jsonOfRequest(const NEBSourceControlRequest& request) {
    JSON json{{"type", request.type}};
    if (request.sourceTree) {
        json["sourceTree"] = jsonOfSourceTree(*request.sourceTree);
    }
    if (request.repositoryToAuthenticate) {
        json["repositoryToAuthenticate"] = jsonOfSourceTree(*request.repositoryToAuthenticate);
    }
    set(json, "destination", request.destination);
    if (request.files) {
        json["files"] = jsonOfValue(NEBValue(*request.files));
    }
    set(json, "startingRevision", request.startingRevision);
    set(json, "endingRevision", request.endingRevision);
    if (request.remote) {
        json["remote"] = {{"representsGitSVNBridge", request.remote->representsGitSVNBridge}};
    }
    if (request.options) {
        JSON options = JSON::object();
        for (const NEBDictionary::Entry& entry : *request.options) {
            options[std::string(entry.key())] = jsonOfValue(entry.value());
        }
        json["options"] = std::move(options);
    }
    if (request.isInspected()) {
        json["trust"] = "inspect";
    }
    return json;
}

}  // namespace neb::nebsc
