#include "Server/CursorParams.h"

#include <string_view>
#include <utility>

#include "Server/ProgressReports.h"

namespace neb::nebsc {

namespace {

std::string wrongKind(const JSONNode& member, std::string_view expected) {
    return subjectAt(member.name) + " is " + std::string(nameOfKind(member.kind)) + "; expected " +
           std::string(expected) + ".";
}

std::string takeCursor(JSONNode& member, CursorParams& params) {
    if (member.kind != JSONNode::Kind::string) {
        return wrongKind(member, "a string");
    }
    params.cursor = std::move(member.text);
    return {};
}

std::string takePageSize(const JSONNode& member, CursorParams& params) {
    const std::string expected = "an integer from 1 to " + std::to_string(largestPage);
    if (member.kind == JSONNode::Kind::null) {
        return {};
    }
    if (member.kind != JSONNode::Kind::integer) {
        return wrongKind(member, expected);
    }
    if (member.integer < 1 || member.integer > largestPage) {
        return subjectAt(member.name) + " is " + std::to_string(member.integer) + "; expected " +
               expected + ".";
    }
    params.pageSize = member.integer;
    return {};
}

/// Returns why the member is invalid; empty if it is valid.
std::string take(JSONNode& member, CursorParams& params) {
    if (member.name == "cursor") {
        return takeCursor(member, params);
    }
    if (member.name == "pageSize") {
        return takePageSize(member, params);
    }
    if (member.name == "record") {
        return subjectAt(member.name) +
               " is for 'sourceControl/perform'; requests with a cursor are not recorded.";
    }
    if (member.name != "request") {
        return subjectAt(shortened(member.name)) +
               " is unknown; expected one of request, cursor, pageSize.";
    }
    member.name.clear();
    params.request = std::move(member);
    return {};
}

}  // namespace

CursorParams takeCursorParams(JSONNode& params) {
    ProgressToken token = takeProgressToken(params, "workDoneToken");
    CursorParams taken{.progressToken = std::move(token.value),
                       .request = {},
                       .cursor = {},
                       .pageSize = {},
                       .refusal = std::move(token.refusal)};
    if (params.kind != JSONNode::Kind::object && params.kind != JSONNode::Kind::null) {
        taken.refusal = wrongKind(params, "an object");
    }
    for (JSONNode& member : params.children) {
        if (taken.refusal.empty()) {
            taken.refusal = take(member, taken);
        }
    }
    return taken;
}

}  // namespace neb::nebsc
