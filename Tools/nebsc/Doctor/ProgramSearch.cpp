#include "Doctor/ProgramSearch.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "Platform/PathString.h"

namespace neb::nebsc {

bool isProgram(const std::string& path) {
    struct stat attributes {};
    return ::stat(path.c_str(), &attributes) == 0 && S_ISREG(attributes.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

bool isProgramIn(std::string_view folders, const std::string& name) {
    while (!folders.empty()) {
        const std::string_view folder = folders.substr(0, folders.find(':'));
        if (!folder.empty() && isProgram(pathByAppendingComponent(folder, name))) {
            return true;
        }
        folders.remove_prefix(std::min(folder.size() + 1, folders.size()));
    }
    return false;
}

}  // namespace neb::nebsc
