#include "Browse/PageRequests.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <nlohmann/json.hpp>

#include "JSON/JSONText.h"
#include "JSON/RequestJSON.h"
#include "NEBFoundation/NEBSourceControlRequestType.h"
#include "Platform/PathString.h"
#include "Terminal/PrintableText.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

/// Whether the path stays in the folder, even if it is absolute or has "..". A file URL does not.
bool staysIn(const std::string& folder, std::string_view path) {
    if (path.starts_with("file:")) {
        return false;
    }
    const std::string whole =
        isAbsolutePath(path) ? std::string(path) : pathByAppendingComponent(folder, path);
    return liesWithin(std::filesystem::path(whole).lexically_normal().string(), folder);
}

std::string refusalOf(const NEBSourceControlRequest& request, const std::string& location) {
    // Types below name servers and files anywhere.
    if (request.type < NEBSourceControlFirstExtendedRequestType ||
        NEBSourceControlEffectOfRequest(request) != NEBSourceControlRequestEffect::reads ||
        NEBSourceControlRequestMayAuthenticate(request)) {
        return "A page can only make requests that read, of the types from 1000 on.";
    }
    for (const NEBValue& file : request.files.value_or(std::vector<NEBValue>())) {
        const std::string path = file.description();
        if (!staysIn(location, path)) {
            return "The path " + inQuotes(path) + " is not in the repository.";
        }
    }
    return {};
}

}  // namespace

struct PageRequests::Method {
    std::string_view name;
    /// Completes the params. Returns a sentence if they are refused.
    std::string (PageRequests::*complete)(JSON& params) const;
};

const PageRequests::Method PageRequests::methods[] = {
    {"sourceControl/perform", &PageRequests::completeRequest},
    {"sourceControl/open", &PageRequests::completeOpen},
    {"sourceControl/next", &PageRequests::accept},
    {"sourceControl/close", &PageRequests::accept},
    {"sourceControl/watch", &PageRequests::completeWatch},
    {"sourceControl/unwatch", &PageRequests::accept},
    {"$/cancelRequest", &PageRequests::accept},
};

PageMessage PageRequests::checked(std::string_view text) const {
    // Rejects what the two parsers could read in different ways, such as duplicate members.
    if (const JSONReading reading = readJSON(text); !reading.root) {
        return {.refusal = reading.failure};
    }
    JSON message = JSON::parse(text);
    const auto name = message.is_object() ? message.value("method", JSON()) : JSON();
    const auto* const method =
        std::find_if(std::begin(methods), std::end(methods), [&name](const Method& row) {
            return name.is_string() && row.name == name.get_ref<const std::string&>();
        });
    if (method == std::end(methods)) {
        return {.refusal = "A page cannot use this method."};
    }
    JSON& params = message["params"];
    if (!params.is_object()) {
        return {.refusal = "The member 'params' is not an object."};
    }
    std::string refusal = (this->*method->complete)(params);
    return refusal.empty() ? PageMessage{.text = message.dump()}
                           : PageMessage{.refusal = std::move(refusal)};
}

std::string PageRequests::completeRequest(JSON& params) const {
    params["sourceTree"] = {{"location", _location}};
    params.erase("trust");
    // The members of the message that are not part of the request.
    JSON request = params;
    for (const char* member : {"workDoneToken", "partialResultToken"}) {
        request.erase(member);
    }
    const RequestReading reading = requestFromJSON(request.dump());
    return reading.request ? refusalOf(*reading.request, _location) : reading.refusal;
}

std::string PageRequests::completeOpen(JSON& params) const {
    JSON& request = params["request"];
    return request.is_object() ? completeRequest(request)
                               : "The member 'request' is not an object.";
}

std::string PageRequests::completeWatch(JSON& params) const {
    params["sourceTree"] = {{"location", _location}};
    return {};
}

std::string PageRequests::accept(JSON& /*params*/) const {
    return {};
}

}  // namespace neb::nebsc
