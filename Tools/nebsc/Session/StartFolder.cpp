#include "Session/StartFolder.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "Terminal/PrintableText.h"

namespace neb::nebsc {

std::optional<CommandOutput> enterFolders(std::span<const std::string> folders) {
    std::filesystem::path path;
    for (const std::string& folder : folders) {
        path /= folder;
        if (!folder.empty() && ::chdir(folder.c_str()) != 0) {
            const std::string reason = std::generic_category().message(errno);
            return refusal(
                "The folder " + inQuotes(path.string()) + " cannot be entered: " + reason + ".",
                exitUsageError);
        }
    }
    return std::nullopt;
}

}  // namespace neb::nebsc
