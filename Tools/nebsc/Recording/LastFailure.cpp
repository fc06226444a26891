#include "Recording/LastFailure.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <utility>

#include "JSON/OutcomeJSON.h"
#include "Platform/FileDescriptor.h"
#include "Platform/PathString.h"
#include "Recording/RequestText.h"
#include "Recording/SecretRedaction.h"

namespace neb::nebsc {

namespace {

using JSON = nlohmann::ordered_json;

constexpr std::size_t longestLine = std::size_t{1} << 16;

/// Writes the text to a private file that replaces the old one at once.
void replaceFile(const std::string& path, const std::string& text) {
    std::error_code failure;
    std::filesystem::create_directories(pathByDeletingLastComponent(path), failure);
    std::string draft = path + ".XXXXXX";
    FileDescriptor file(::mkostemp(draft.data(), O_CLOEXEC));  // readable by the owner only
    if (!file.isOpen()) {
        return;
    }
    const bool isWritten = writeAll(file.get(), text, WhenFull::fail) == 0 && file.close() == 0;
    if (!isWritten || ::rename(draft.c_str(), path.c_str()) != 0) {
        ::unlink(draft.c_str());
    }
}

}  // namespace

std::string fileOfLastFailure() {
    const char* state = std::getenv("XDG_STATE_HOME");
    const char* home = std::getenv("HOME");
    std::string folder;
    if (state != nullptr && *state == '/') {
        folder = state;
    } else if (home != nullptr && *home == '/') {
        folder = pathByAppendingComponent(home, ".local/state");
    }
    return folder.empty() ? "" : pathByAppendingComponent(folder, "nebgit/last-failure.json");
}

void rememberFailure(const std::vector<std::string>& arguments, const std::string& folder) {
    const std::string path = fileOfLastFailure();
    JSON texts = JSON::array();
    bool hadSecret = false;
    for (const std::string& argument : arguments) {
        const std::string shown = withoutSecretBytes(argument);
        hadSecret = hadSecret || shown != argument;
        texts.push_back(jsonOfBytes(shown));
    }
    const std::string line = lineOfJSON({{"arguments", std::move(texts)},
                                         {"folder", jsonOfBytes(folder)},
                                         {"hadSecret", hadSecret}});
    if (!path.empty() && line.size() <= longestLine) {
        replaceFile(path, line);
    }
}

std::optional<LastFailure> lastFailure() {
    std::ifstream file(fileOfLastFailure(), std::ios::binary);
    std::string line;
    if (!std::getline(file, line)) {
        return std::nullopt;
    }
    try {
        const JSON json = JSON::parse(line);
        LastFailure failure{.arguments = {},
                            .folder = bytesOfJSON(json.at("folder")),
                            .hadSecret = json.at("hadSecret").get<bool>()};
        for (const JSON& argument : json.at("arguments")) {
            failure.arguments.push_back(bytesOfJSON(argument));
        }
        return failure;
    } catch (const JSON::exception&) {
        return std::nullopt;
    }
}

}  // namespace neb::nebsc
