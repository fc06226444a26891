#include "NEBFoundation/NEBSourceControlPlugIn.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <cerrno>

#include "NEBFoundation/NEBSourceControlGuardedPrincipalClass.h"
#include "NEBFoundation/NEBSourceControlUnexpectedError.h"
#include "Platform/ErrnoText.h"

namespace neb {

namespace {

NEBSourceControlPlugInLoad failed(std::string failure) {
    return {std::nullopt, std::move(failure)};
}

std::string contractFailure(const std::string& path, std::uint32_t version) {
    return "The plug-in \"" + path + "\" was built for version " + std::to_string(version) +
           " of the host contract; this host has version " +
           std::to_string(NEBSourceControlContractVersion) + ".";
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

}  // namespace

NEBSourceControlPlugInLoad NEBSourceControlPlugIn::load(const std::string& path) {
    struct stat information {};
    if (::stat(path.c_str(), &information) != 0) {
        return failed("The plug-in \"" + path + "\" could not be read: " + textOfErrno(errno) +
                      ".");
    }
    if (!S_ISREG(information.st_mode)) {
        return failed("The plug-in \"" + path + "\" is not a file.");
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
    if (description->contractVersion != NEBSourceControlContractVersion) {
        return failed(contractFailure(path, description->contractVersion));
    }
    if (description->name == nullptr || description->version == nullptr ||
        description->program == nullptr || description->makePrincipalClass == nullptr) {
        return failed(
            "The plug-in \"" + path +
            "\" describes itself without a name, a version, a program or a principal class.");
    }
    return {NEBSourceControlPlugIn(description), {}};
}

std::unique_ptr<NEBSourceControlProtocol> NEBSourceControlPlugIn::makePrincipalClass() const {
    return NEBSourceControlGuardedPrincipalClass::create(_description->makePrincipalClass);
}

}  // namespace neb
