#include "GitExtensions/GitExtension.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/PathString.h"

namespace neb {

GitReadingOperation::GitReadingOperation(std::shared_ptr<NEBSourceControlRequest> request)
    : GitOperation(std::move(request)) {
    const NEBSourceControlRequest& asked = *this->request();
    setMayFetchObjects(asked.option(NEBSourceControlRequestOptionFetchMissingObjects).boolValue());
}

void GitReadingOperation::appendPaths(std::vector<std::string>& arguments) const {
    arguments.emplace_back("--");
    appendFiles(arguments);
}

void GitReadingOperation::requireOneOf(NEBConstant option,
                                       std::initializer_list<std::string_view> values) {
    const NEBValue& value = request()->option(option);
    if (value.isPresent() && std::ranges::find(values, value.description()) == values.end()) {
        setError(gitErrorOfOption(*request(), option));
    }
}

void GitReadingOperation::requireFile() {
    if (request()->fileCount() == 1 && !request()->files->front().description().empty() &&
        request()->files->front().isPresent()) {
        return;
    }
    auto refusal = NEBSourceControlError::withDescription(
        NEBSourceControlGenericError, "The request must have the name of exactly one file.");
    refusal.errorClass = NEBSourceControlRequestInvalidErrorClass;
    setError(std::move(refusal));
}

void GitReadingOperation::requireInteger(NEBConstant option, std::int64_t minimum) {
    if (!gitAcceptsInteger(*request(), option, minimum)) {
        setError(gitErrorOfOption(*request(), option));
    }
}

void GitReadingOperation::main() {
    if (!error()) {
        GitOperation::main();
    }
}

std::optional<NEBSourceControlError> GitReadingOperation::diagnoseFailure(
    std::string_view text) const {
    constexpr int usageError = 129;
    const bool isUsage = terminationStatus() && terminationStatus()->exitStatus() == usageError;
    if (_requiredGit.empty() || !isUsage || text.find("unknown ") == std::string_view::npos) {
        return std::nullopt;
    }
    auto error = NEBSourceControlError::withDescription(
        NEBSourceControlGenericError,
        "This type of request needs git " + std::string(_requiredGit) + " or later.");
    error.errorClass = NEBSourceControlRequestInvalidErrorClass;
    return error;
}

NEBSourceControlError gitErrorOfOption(const NEBSourceControlRequest& request, NEBConstant option) {
    const NEBValue& value = request.option(option);
    auto error = NEBSourceControlError::withDescription(
        NEBSourceControlGenericError,
        value.isPresent()
            ? "The value \"" + value.description() + "\" is not one of " + std::string(option) + "."
            : "The request lacks " + std::string(option) + ".");
    error.errorClass = NEBSourceControlRequestInvalidErrorClass;
    return error;
}

bool gitAcceptsInteger(const NEBSourceControlRequest& request, NEBConstant option,
                       std::int64_t minimum) {
    const NEBValue& value = request.option(option);
    if (!value.isPresent()) {
        return true;
    }
    const std::string text = value.description();
    std::int32_t number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    return failure == std::errc() && end == text.data() + text.size() && number >= minimum;
}

std::shared_ptr<NEBSourceControlRequest> gitRequestWithoutNames(
    const NEBSourceControlRequest& request) {
    auto copy = std::make_shared<NEBSourceControlRequest>(request);
    copy->destination = NEBValue();
    copy->files.reset();
    return copy;
}

std::string gitPathFromTop(const NEBSourceControlRequest& request) {
    if (request.fileCount() == 0 || !request.files->front().isPresent()) {
        return {};
    }
    return gitPathFromTop(request, request.files->front().description());
}

std::string gitPathFromTop(const NEBSourceControlRequest& request, std::string path) {
    const auto& location = request.sourceTree ? request.sourceTree->location : std::nullopt;
    const auto top = location ? pathOfLocation(*location) : std::nullopt;
    if (top && (path == *top || path.starts_with(pathByAppendingComponent(*top, "")))) {
        path.erase(0, std::min(path.size(), pathByAppendingComponent(*top, "").size()));
    }
    while (path.ends_with('/')) {
        path.pop_back();
    }
    return path;
}

void GitNULRecordParser::parseLastPiece(const Data& /*output*/, std::string_view /*piece*/,
                                        NEBSourceControlResult& records) {
    finish(records);
}

}  // namespace neb
