#include "NEBFoundation/NEBSourceControlRequest.h"

#include <algorithm>

#include "LOMFoundation/LOMFormat.h"

namespace neb {

namespace {

bool isPattern(const NEBValue& value) {
    const std::string name = value.isPresent() ? value.description() : std::string();
    return name.find_first_of("*?[\\") != std::string::npos || name.starts_with(':') ||
           name.find("/:") != std::string::npos;
}

}  // namespace

std::shared_ptr<NEBSourceControlRequest> NEBSourceControlRequest::initWithType(
    std::int32_t type, std::shared_ptr<NEBSourceControlSourceTree> sourceTree,
    std::optional<std::vector<NEBValue>> files, std::optional<NEBDictionary> options) {
    auto request = std::make_shared<NEBSourceControlRequest>();
    request->type = type;
    request->sourceTree = std::move(sourceTree);
    request->files = std::move(files);
    request->options = std::move(options);
    return request;
}

const NEBValue& NEBSourceControlRequest::option(std::string_view key) const {
    static const NEBValue nothing;
    return options ? options->value(key) : nothing;
}

bool NEBSourceControlRequest::hasPatternCharacters() const {
    return isPattern(destination) ||
           (files && std::any_of(files->begin(), files->end(), isPattern));
}

bool NEBSourceControlRequest::isInspected() const {
    return sourceTree && sourceTree->trust == NEBSourceControlTrust::inspect;
}

std::string NEBSourceControlRequest::sourceTreeName() const {
    return sourceTree ? sourceTree->name : std::string(absentValueText);
}

std::string NEBSourceControlRequest::descriptionForAssertionMessage() const {
    return "<NEBSourceControlRequest of type " + std::to_string(type) + ">";
}

}  // namespace neb
