#include "NEBFoundation/NEBSourceControlPlugIn.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <cerrno>

#include "NEBFoundation/NEBSourceControlABIMismatch.h"
#include "NEBFoundation/NEBSourceControlGuardedPrincipalClass.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"
#include "Platform/ErrnoText.h"

namespace neb {

namespace {

NEBSourceControlPlugInLoad failed(std::string failure) {
    return {std::nullopt, std::move(failure)};
}

/// Returns why the stamp in the file forbids to load it; empty if it does not, and for a file that
/// cannot be loaded anyway.
std::string stampFailure(const std::string& path) {
    const NEBSourceControlFileStamp found = NEBSourceControlStampOfFile(path);
    if (!found.isLibrary) {
        return {};
    }
    return found.stamp.empty()
               ? "The file \"" + path +
                     "\" is not a source-control plug-in, or was built for version 6 of the host "
                     "contract or an older one: it has no stamp of its binary interface."
               : NEBSourceControlABIMismatch("The plug-in \"" + path + "\"", found.stamp);
}

struct Described {
    const NEBSourceControlPlugInDescription* description;  // null after a failure
    std::string failure;
};

/// Calls the function that the plug-in exports.
Described describe(const std::string& path, void* function) {
    try {
        const auto* description = reinterpret_cast<NEBSourceControlPlugInFunction>(function)();
        return {description, "The plug-in \"" + path + "\" does not describe itself."};
    } catch (...) {
        const auto error = NEBSourceControlErrorOfCurrentException();
        return {nullptr, "The plug-in \"" + path + "\" could not describe itself. " +
                             error.localizedDescription().value_or("")};
    }
}

/// Returns what is wrong with the description; empty if nothing is.
std::string descriptionFailure(const std::string& path,
                               const NEBSourceControlPlugInDescription& description) {
    if (description.contractVersion != NEBSourceControlContractVersion) {
        return "The plug-in \"" + path + "\" describes itself for version " +
               std::to_string(description.contractVersion) +
               " of the host contract; expected version " +
               std::to_string(NEBSourceControlContractVersion) + ".";
    }
    if (description.name == nullptr || description.version == nullptr ||
        description.program == nullptr || description.makePrincipalClass == nullptr) {
        return "The plug-in \"" + path +
               "\" describes itself without a name, a version, a program or a principal class.";
    }
    return {};
}

}  // namespace

NEBSourceControlPlugInLoad NEBSourceControlPlugIn::loadFile(const char* file) {
    const std::string path = file;
    struct stat information {};
    if (::stat(path.c_str(), &information) != 0) {
        return failed("The plug-in \"" + path + "\" could not be read: " + textOfErrno(errno) +
                      ".");
    }
    if (!S_ISREG(information.st_mode)) {
        return failed("The plug-in \"" + path + "\" is not a file.");
    }
    if (std::string failure = stampFailure(path); !failure.empty()) {
        return failed(std::move(failure));
    }
    // The loader does not search for a path with a "/".
    const std::string exactPath = path.find('/') == std::string::npos ? "./" + path : path;
    void* library = ::dlopen(exactPath.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library == nullptr) {
        return failed("The file \"" + path + "\" is not a plug-in: " + ::dlerror() + ".");
    }
    void* symbol = ::dlsym(library, NEBSourceControlPlugInFunctionName);
    if (symbol == nullptr) {
        return failed("The file \"" + path +
                      "\" is not a source-control plug-in: it does not export " +
                      NEBSourceControlPlugInFunctionName + ".");
    }
    const auto [description, failure] = describe(path, symbol);
    if (description == nullptr) {
        return failed(failure);
    }
    if (std::string wrong = descriptionFailure(path, *description); !wrong.empty()) {
        return failed(std::move(wrong));
    }
    return {NEBSourceControlPlugIn(description), {}};
}

std::unique_ptr<NEBSourceControlProtocol> NEBSourceControlPlugIn::makePrincipalClass() const {
    return NEBSourceControlGuardedPrincipalClass::create(_description->makePrincipalClass);
}

}  // namespace neb
